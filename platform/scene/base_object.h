#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>
#include <platform/scene/object_container.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/user_data.h>

#include <cstddef>

class P_Camera;
class P_Context;
class P_Scene;

/// An object of the scene: a place in the tree, a transform relative to its parent, bounding volumes, a name.
///
/// **Matrices.** An object has a local matrix (relative to its container), a world matrix and the inverse of that.
/// World matrices are computed when asked for and kept: one product per object that moved. Whoever changes a local
/// matrix through `accessMatrix` calls `invalidateMatrices`, before or after. The following always holds: everything
/// below an object that is out of date is out of date too; so marking stops where it meets an object that is already
/// marked. The matrices live in the object or in a P_TransformBlock.
///
/// **Tree.** `addTo` hangs the object under a container, `remove` takes it out. Nothing is owned: an object that is
/// destroyed takes itself out, and its children then hang under nothing.
///
/// **Drawing.** `enable(false)` hides this object, not what hangs below it. The scene calls `executeAlways` on every
/// object each frame, also on disabled ones, and `executeVisible` on those that are enabled and in view.
///
/// No operation recurses with the depth of the tree. One thread at a time.
class TW2_PLATFORM_API P_BaseObject : public P_ObjectContainer, public P_UserData
{
public:
    /// Kinds of object that the engine tells apart.
    enum class ObjectType : int
    {
        Object = 0,
        Mesh = 1,
        LevelOfDetail = 2,
        ObjectLevels = 3,   ///< an animated object made of levels of detail
        SkinnedLevels = 4,  ///< a skinned animated object made of levels of detail
        Light = 5,
        Camera = 6
    };

    /// Bits of the engine flag word.
    enum EngineFlag : unsigned int
    {
        FLAG_BOUNDING_SPHERE = 0x2,               ///< the sphere is tested against the view volume
        FLAG_BOUNDING_BOX = 0x4,                  ///< the box is tested against the view volume
        FLAG_CULL_SUBTREE = 0x8,                  ///< out of view, everything below is out of view as well
        FLAG_AUTOMATIC_BOUNDING_VOLUME = 0x1000,  ///< the volumes follow the meshes below
        FLAG_FIXED_BOUNDING_VOLUME = 0x2000       ///< the volumes are what was set; nothing computes them
    };

    ~P_BaseObject() override;
    P_BaseObject& operator=(const P_BaseObject&) = delete;

    /// The context whose current camera the object is tested against. Derived classes return `getStoredContext()`.
    [[nodiscard]] P_Context* getContext() const override = 0;

    /// @name Tree
    /// @{

    /// Hangs the object under `container`, after its other children; leaves the present container first. Null only
    /// leaves. Throws P_SceneException when `container` is the object itself or lies below it, and changes nothing
    /// then.
    virtual void addTo(P_ObjectContainer* container);
    /// Takes the object out of its container; nothing happens when it is in none.
    virtual void remove();
    /// @}

    /// The kind of object.
    [[nodiscard]] virtual ObjectType getType() const;
    /// Shows or hides the object itself. New objects are enabled.
    virtual void enable(bool enabled);

    /// @name Position: the translation of the local matrix
    /// @{
    virtual void setPosition(float x, float y, float z);
    virtual void setPosition(const M_Vector3Template<float>& position);
    [[nodiscard]] virtual M_Vector3Template<float> getPosition() const;
    /// Marks the object as out of date and returns the three floats x, y, z for writing.
    [[nodiscard]] virtual float* accessPosition();
    /// @}

    /// @name Bounding volumes, in the object's own space
    /// The sphere's centre is the object's origin. Unless the volumes are fixed, they are those of the enabled meshes
    /// in the object's subtree (of a level-of-detail object: of the level in use), each vertex as it stands now; an
    /// object without such a mesh has radius 0 and a box of size 0 at its origin.
    /// @{
    [[nodiscard]] virtual float getBoundingRadius();
    [[nodiscard]] virtual M_Vector3Template<float> getBoundingBoxMin();
    [[nodiscard]] virtual M_Vector3Template<float> getBoundingBoxMax();
    /// Whether the volumes that the engine flags switch on, as the three operations above give them, touch the camera's
    /// view volume: true when no volume is switched on or `camera` is null; with both, both must touch.
    [[nodiscard]] virtual bool isInsideViewVolume(P_Camera* camera);
    /// Computes radius and box from the subtree's meshes and stores them, fixed or not.
    virtual void calculateBoundingVolumes();
    /// @}

    /// @name Collision
    /// @{

    /// The group this object belongs to, 0 to 31; another one throws P_SceneException.
    virtual void setCollisionGroup(int group);
    /// Bit g set: this object meets objects of group g.
    virtual void setCollisionMask(unsigned int mask);
    /// @}

    /// The name of the object's class.
    [[nodiscard]] virtual const char* getObjectType() const;
    /// Makes this object like `other`: name, local matrix, enabled state, flags, volumes, collision; not its place in
    /// the tree and not its children.
    virtual void duplicate(const P_BaseObject& other);

protected:
    P_BaseObject();
    /// A copy that hangs under nothing, has no children and is in no block.
    P_BaseObject(const P_BaseObject& other);

    /// Called every frame. The engine has set the in-view flag before. Returning true puts the object in view whatever
    /// the test said; with false the flag stays as the object leaves it.
    virtual bool executeAlways();
    /// Called every frame after all `executeAlways` calls, when the object is enabled and in view.
    virtual void executeVisible();
    /// Called when the object has come into a scene; takes over the scene's context. May add objects below this one,
    /// not remove any.
    virtual void linkToScene();
    /// Adds the bounding volumes that are switched on to the context's debug lines; called every frame while
    /// `enableVisualization` is on.
    virtual void visualization();
    /// Adds a line per vertex normal to the context's debug lines; called every frame while
    /// `enableVertexNormalVisualization` is on.
    virtual void vertexNormalVisualization();

public:
    void dump(bool details) const override;
    /// Takes over the name only.
    void duplicate(const P_UserData& other) override;

    /// @name Place in the tree
    /// @{

    /// What the object hangs under; null when it hangs under nothing.
    [[nodiscard]] P_ObjectContainer* getContainer() const noexcept { return m_pContainer; }
    /// The object it hangs under; null under a scene or under nothing.
    [[nodiscard]] P_BaseObject* getParent() const noexcept
    {
        return m_pContainer && m_pContainer->m_eKind != Kind::Scene ? static_cast<P_BaseObject*>(m_pContainer)
                                                                    : nullptr;
    }
    [[nodiscard]] P_BaseObject* getNextSibling() const noexcept { return m_pNextSibling; }
    /// The scene whose tree the object is in; null when it is in none.
    [[nodiscard]] P_Scene* getScene() const noexcept { return m_pScene; }
    /// @}

    /// @name Matrices
    /// @{
    [[nodiscard]] const M_Matrix4x3Template<float>& getMatrix() const noexcept { return *m_pLocalMatrix; }
    /// The local matrix for writing; marks nothing.
    [[nodiscard]] M_Matrix4x3Template<float>& accessMatrix() noexcept { return *m_pLocalMatrix; }
    /// Writes the local matrix and marks the object.
    void setMatrix(const M_Matrix4x3Template<float>& matrix) noexcept
    {
        *m_pLocalMatrix = matrix;
        invalidateMatrices();
    }
    /// Marks the world matrices of this object and of everything below it as out of date.
    void invalidateMatrices() noexcept
    {
        if (!(*m_pState & P_TransformBlock::STATE_WORLD_OUT_OF_DATE))
        {
            markSubtree();
        }
    }
    [[nodiscard]] bool isObjectToWorldMatrixValid() const noexcept
    {
        return !(*m_pState & P_TransformBlock::STATE_WORLD_OUT_OF_DATE);
    }
    /// Computes the world matrices that are out of date on the way from the root to this object: each is
    /// local x parent's world; without a parent the local matrix itself.
    void calculateObjectToWorldMatrix() const noexcept;
    /// The world matrix, computed first when it is out of date.
    [[nodiscard]] const M_Matrix4x3Template<float>& getObjectToWorldMatrix() const noexcept
    {
        if (!isObjectToWorldMatrixValid())
        {
            calculateObjectToWorldMatrix();
        }
        return *m_pWorldMatrix;
    }
    /// The inverse of the world matrix, computed first when it is out of date.
    [[nodiscard]] const M_Matrix4x3Template<float>& getWorldToObjectMatrix() const noexcept;
    /// A value that changes whenever the object is marked as out of date (for a member of a block: whenever any member
    /// is), and never returns to an earlier one. Remember it together with a world matrix to tell that the object has
    /// not moved since.
    [[nodiscard]] unsigned long long getMatrixChangeCount() const noexcept
    {
        return m_pBlock ? m_pBlock->getChangeCount() : m_uiChangeCount;
    }
    /// The block that holds the matrices; null when the object holds them itself.
    [[nodiscard]] P_TransformBlock* getTransformBlock() const noexcept { return m_pBlock; }
    /// The object's place in its block; only with a block.
    [[nodiscard]] unsigned int getTransformBlockIndex() const noexcept { return m_uiBlockIndex; }
    /// @}

    /// @name State
    /// @{
    [[nodiscard]] bool isEnabled() const noexcept { return m_bEnabled; }
    /// Whether the last frame's test found the object in view; true until tested.
    [[nodiscard]] bool isInView() const noexcept { return m_bInView; }
    void setInView(bool inView) noexcept { m_bInView = inView; }

    [[nodiscard]] unsigned int getEngineFlags() const noexcept { return m_uiEngineFlags; }
    void setEngineFlags(unsigned int flags) noexcept { m_uiEngineFlags = flags; }
    /// Takes over all of the other's engine flags.
    void copyEngineFlags(const P_BaseObject& other) noexcept { m_uiEngineFlags = other.m_uiEngineFlags; }
    [[nodiscard]] bool hasEngineFlag(EngineFlag flag) const noexcept { return (m_uiEngineFlags & flag) != 0; }
    void setEngineFlag(EngineFlag flag, bool on) noexcept
    {
        m_uiEngineFlags = on ? m_uiEngineFlags | flag : m_uiEngineFlags & ~static_cast<unsigned int>(flag);
    }

    [[nodiscard]] int getCollisionGroup() const noexcept { return m_iCollisionGroup; }
    [[nodiscard]] unsigned int getCollisionMask() const noexcept { return m_uiCollisionMask; }
    /// Whether each object's mask names the other's group.
    [[nodiscard]] bool collidesWith(const P_BaseObject& other) const noexcept;
    /// @}

    /// @name Stored bounding volumes
    /// @{
    [[nodiscard]] float getStoredBoundingRadius() const noexcept { return m_fBoundingRadius; }
    [[nodiscard]] const M_Vector3Template<float>& getStoredBoundingBoxMin() const noexcept { return m_vBoundingBoxMin; }
    [[nodiscard]] const M_Vector3Template<float>& getStoredBoundingBoxMax() const noexcept { return m_vBoundingBoxMax; }
    void setBoundingRadius(float radius) noexcept { m_fBoundingRadius = radius; }
    void setBoundingBox(const M_Vector3Template<float>& minimum, const M_Vector3Template<float>& maximum) noexcept
    {
        m_vBoundingBoxMin = minimum;
        m_vBoundingBoxMax = maximum;
    }
    /// @}

    /// @name Debugging aids
    /// @{
    void enableVisualization(bool on) noexcept { m_bVisualization = on; }
    [[nodiscard]] bool isVisualizationEnabled() const noexcept { return m_bVisualization; }
    void enableVertexNormalVisualization(bool on) noexcept { m_bVertexNormalVisualization = on; }
    [[nodiscard]] bool isVertexNormalVisualizationEnabled() const noexcept { return m_bVertexNormalVisualization; }
    /// @}

protected:
    /// The context stored for the object: the process's default one, that of the scene once it is in one, or what was
    /// set.
    [[nodiscard]] P_Context* getStoredContext() const noexcept { return m_pContext; }
    /// A null context means that no camera is current.
    void setStoredContext(P_Context* context) noexcept { m_pContext = context; }
    P_BaseObject(const P_BaseObject& other, Kind kind);
    explicit P_BaseObject(Kind kind);

private:
    friend class P_ObjectContainer;
    friend class P_Scene;
    friend class P_TransformBlock;

    void markSubtree() noexcept;
    bool mark(unsigned long long change) noexcept;
    void computeWorldMatrix() const noexcept;
    [[nodiscard]] bool isBelowThis(const P_BaseObject& object) const noexcept;
    void linkInto(P_ObjectContainer& container) noexcept;
    void leaveContainer() noexcept;
    void enterScene(P_Scene* scene);
    void leaveScene() noexcept;
    void updateBoundingVolumes();
    [[nodiscard]] P_BaseObject* getFirstShownChild() const noexcept;
    [[nodiscard]] P_BaseObject* getNextShownSibling() const noexcept;

    /// Counts every marking of the process: the source of the change counts.
    static unsigned long long sm_uiChanges;

    M_Matrix4x3Template<float>* m_pLocalMatrix;
    M_Matrix4x3Template<float>* m_pWorldMatrix;
    unsigned char* m_pState;
    P_ObjectContainer* m_pContainer = nullptr;
    P_BaseObject* m_pNextSibling = nullptr;
    P_BaseObject* m_pPreviousSibling = nullptr;
    P_TransformBlock* m_pBlock = nullptr;
    unsigned int m_uiBlockIndex = 0;
    unsigned char m_ownState = P_TransformBlock::STATE_OUT_OF_DATE;
    bool m_bEnabled = true;
    bool m_bInView = true;
    bool m_bVisualization = false;
    bool m_bVertexNormalVisualization = false;
    /// `linkToScene` was called for the present scene.
    bool m_bLinked = false;
    /// The volumes were just computed: nobody computes them again.
    bool m_bVolumesHeld = false;
    unsigned int m_uiEngineFlags = 0;
    unsigned long long m_uiChangeCount = 0;
    /// Where the scene's lists of the running frame name this object, and the last frame that visited it.
    std::size_t m_uiScenePlace = 0;
    unsigned long long m_uiVisitedFrame = 0;
    /// While a chain of world matrices is computed: the next object on the way down.
    mutable const P_BaseObject* m_pWayDown = nullptr;
    P_Context* m_pContext;
    P_Scene* m_pScene = nullptr;
    M_Matrix4x3Template<float> m_ownLocalMatrix;
    M_Matrix4x3Template<float> m_ownWorldMatrix;
    mutable M_Matrix4x3Template<float> m_worldToObjectMatrix;
    float m_fBoundingRadius = 0.0f;
    M_Vector3Template<float> m_vBoundingBoxMin;
    M_Vector3Template<float> m_vBoundingBoxMax;
    int m_iCollisionGroup = 0;
    unsigned int m_uiCollisionMask = 0xFFFFFFFFu;
};
