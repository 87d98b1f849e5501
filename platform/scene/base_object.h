#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>
#include <platform/scene/object_container.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/transform_storage.h>
#include <platform/scene/user_data.h>

#include <memory>

class P_Camera;
class P_Context;
class P_FramePreparation;
class P_LODObject;
class P_Scene;
class P_VirtualObject;

/// An object of the scene: a place in the tree, a transform relative to its parent, bounding volumes, a name.
///
/// **Matrices.** An object has a local matrix (relative to its container), a world matrix and the inverse of that.
/// World matrices are computed when asked for and kept: one product per object that moved. Whoever changes a local
/// matrix through `accessMatrix` calls `invalidateMatrices`, before or after. The following always holds: everything
/// below an object that is out of date is out of date too; so marking stops where it meets an object that is already
/// marked. The matrices lie outside of the object: those of a P_TransformBlock's members side by side.
///
/// **Tree.** `addTo` hangs the object under a container, `remove` takes it out. Nothing is owned: an object that is
/// destroyed takes itself out, and its children then hang under nothing.
///
/// **Drawing.** `enable(false)` hides this object, not what hangs below it. The scene calls `executeAlways` on every
/// object each frame, also on disabled ones, and `executeVisible` on those that are enabled and in view.
///
/// **Idle objects.** Bones are many, and a frame has nothing to do with them: a P_VirtualObject itself, of no derived
/// class, without a vertex or not enabled, in a P_TransformBlock, with neither a volume to test nor a debugging aid
/// switched on. The scene passes over such objects, and does not even look at them where nothing but such objects
/// hangs.
///
/// No operation recurses with the depth of the tree. One thread at a time per tree below the scene; trees that hang
/// below one scene may be moved and asked on several threads, but not hung up and taken out.
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

    /// Bits of the engine flag word, which has 16.
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
    /// The object as a mesh, of a derived class too; null when it is none.
    [[nodiscard]] const P_VirtualObject* asMesh() const noexcept;
    /// The object as one with levels of detail, of a derived class too; null when it is none.
    [[nodiscard]] const P_LODObject* asLODObject() const noexcept;
    /// Shows or hides the object itself. New objects are enabled.
    virtual void enable(bool enabled);

    /// @name Position: the translation of the local matrix
    /// @{

    /// Moves the object and marks it, and everything below it, as out of date.
    virtual void setPosition(float x, float y, float z);
    virtual void setPosition(const M_Vector3Template<float>& position);
    /// In the space of what it hangs under.
    [[nodiscard]] virtual M_Vector3Template<float> getPosition() const;
    /// Marks the object as out of date and returns the three floats x, y, z for writing.
    [[nodiscard]] virtual float* accessPosition();
    /// @}

    /// @name Bounding volumes, in the object's own space
    /// The sphere's centre is the object's origin. Unless the volumes are fixed, they hold the enabled meshes in the
    /// object's subtree (of a level-of-detail object: of the level in use), every vertex as it stands now; an object
    /// without such a mesh has radius 0 and a box of size 0 at its origin. They are made of one box for each piece of
    /// geometry and, of skins, for each bone, so they may be somewhat larger than what they hold. Computing them
    /// allocates nothing unless meshes hang more than 16 levels below.
    /// @{

    /// In scene units, around the object's origin.
    [[nodiscard]] virtual float getBoundingRadius();
    /// Smallest corner.
    [[nodiscard]] virtual M_Vector3Template<float> getBoundingBoxMin();
    /// Largest corner.
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
    /// Called when the object has come into a scene, whose context is the object's own from then on. May add objects
    /// below this one, not remove any.
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
    /// The next child of the same container, in the order of adding; null for the last.
    [[nodiscard]] P_BaseObject* getNextSibling() const noexcept { return m_pNextSibling; }
    /// The scene whose tree the object is in; null when it is in none.
    [[nodiscard]] P_Scene* getScene() const noexcept { return m_bInScene ? m_pScene : nullptr; }
    /// @}

    /// @name Matrices
    /// @{

    /// Relative to what the object hangs under.
    [[nodiscard]] const M_Matrix4x3Template<float>& getMatrix() const noexcept
    {
        return m_pStorage->m_pLocal[m_uiPlace];
    }
    /// The local matrix for writing; marks nothing.
    [[nodiscard]] M_Matrix4x3Template<float>& accessMatrix() noexcept { return m_pStorage->m_pLocal[m_uiPlace]; }
    /// Writes the local matrix and marks the object.
    void setMatrix(const M_Matrix4x3Template<float>& matrix) noexcept
    {
        accessMatrix() = matrix;
        invalidateMatrices();
    }
    /// Marks the world matrices of this object and of everything below it as out of date.
    void invalidateMatrices() noexcept
    {
        if (isObjectToWorldMatrixValid())
        {
            markSubtree();
        }
    }
    /// False from marking until somebody asks for the world matrix.
    [[nodiscard]] bool isObjectToWorldMatrixValid() const noexcept
    {
        return getState() == P_TransformBlock::STATE_VALID;
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
        return m_pStorage->m_pWorld[m_uiPlace];
    }
    /// The inverse of the world matrix, computed each time.
    [[nodiscard]] M_Matrix4x3Template<float> getWorldToObjectMatrix() const noexcept
    {
        return getObjectToWorldMatrix().inverse();
    }
    /// A value that changes whenever the object is marked as out of date (for a member of a block: whenever any member
    /// is), and never returns to an earlier one. Remember it together with a world matrix to tell that the object has
    /// not moved since.
    [[nodiscard]] unsigned long long getMatrixChangeCount() const noexcept
    {
        return m_bMember ? m_pStorage->m_pBlock->getChangeCount() : m_pStorage->m_uiChangeCount;
    }
    /// The block that holds the matrices; null when the object is in none.
    [[nodiscard]] P_TransformBlock* getTransformBlock() const noexcept
    {
        return m_bMember ? m_pStorage->m_pBlock : nullptr;
    }
    /// The object's place in its block; only with a block.
    [[nodiscard]] unsigned int getTransformBlockIndex() const noexcept { return m_uiPlace; }
    /// @}

    /// @name State
    /// @{

    /// Whether the object itself is shown; that what it hangs under is shown is not asked.
    [[nodiscard]] bool isEnabled() const noexcept { return m_bEnabled; }
    /// Whether the last frame's test found the object in view; true until tested. An idle object is in view unless
    /// something above it that is out of view hides what hangs below.
    [[nodiscard]] bool isInView() const noexcept { return m_bIdle ? !isHiddenFromAbove() : m_bInView; }
    void setInView(bool inView) noexcept;
    /// Whether frames pass over the object.
    [[nodiscard]] bool isIdle() const noexcept { return m_bIdle; }

    /// A combination of EngineFlag values.
    [[nodiscard]] unsigned int getEngineFlags() const noexcept { return m_uiEngineFlags; }
    void setEngineFlags(unsigned int flags) noexcept
    {
        m_uiEngineFlags = static_cast<std::uint16_t>(flags);
        updateIdle();
    }
    /// Takes over all of the other's engine flags.
    void copyEngineFlags(const P_BaseObject& other) noexcept { setEngineFlags(other.m_uiEngineFlags); }
    /// One of the flags.
    [[nodiscard]] bool hasEngineFlag(EngineFlag flag) const noexcept { return (getEngineFlags() & flag) != 0; }
    void setEngineFlag(EngineFlag flag, bool on) noexcept
    {
        setEngineFlags(on ? getEngineFlags() | flag : getEngineFlags() & ~static_cast<unsigned int>(flag));
    }

    /// 0 to 31; 0 until set.
    [[nodiscard]] int getCollisionGroup() const noexcept { return getRare().m_iCollisionGroup; }
    /// Bit g: it meets objects of group g; all bits until set.
    [[nodiscard]] unsigned int getCollisionMask() const noexcept { return getRare().m_uiCollisionMask; }
    /// Whether each object's mask names the other's group.
    [[nodiscard]] bool collidesWith(const P_BaseObject& other) const noexcept;
    /// @}

    /// @name Stored bounding volumes
    /// @{

    /// In scene units; 0 until set or computed.
    [[nodiscard]] float getStoredBoundingRadius() const noexcept { return getRare().m_fBoundingRadius; }
    /// Smallest corner.
    [[nodiscard]] const M_Vector3Template<float>& getStoredBoundingBoxMin() const noexcept
    {
        return getRare().m_vBoundingBoxMin;
    }
    /// Largest corner.
    [[nodiscard]] const M_Vector3Template<float>& getStoredBoundingBoxMax() const noexcept
    {
        return getRare().m_vBoundingBoxMax;
    }
    /// In scene units; used while the volumes are fixed.
    void setBoundingRadius(float radius) { accessRare().m_fBoundingRadius = radius; }
    /// Corners in the object's own space; used while the volumes are fixed.
    void setBoundingBox(const M_Vector3Template<float>& minimum, const M_Vector3Template<float>& maximum);
    /// @}

    /// @name Debugging aids
    /// @{

    /// The bounding volumes that are switched on as lines.
    void enableVisualization(bool on) noexcept
    {
        m_bVisualization = on;
        updateIdle();
    }
    /// A line per vertex normal.
    void enableVertexNormalVisualization(bool on) noexcept
    {
        m_bVertexNormalVisualization = on;
        updateIdle();
    }
    /// @}

protected:
    /// The context stored for the object: that of the scene that it is in or was in last, else the process's default
    /// one.
    [[nodiscard]] P_Context* getStoredContext() const noexcept;
    /// A copy that is in no block.
    P_BaseObject(const P_BaseObject& other, Kind kind);
    /// A copy whose matrices lie in `block` from the start, at its next index.
    P_BaseObject(const P_BaseObject& other, Kind kind, P_TransformBlock& block);
    /// An object that is a mesh, a light, ... to its container and its scene.
    explicit P_BaseObject(Kind kind);
    /// What may be done ahead of the object's frame (not owned; null, as at first: nothing). A copy begins with null.
    /// Allocates for meshes only.
    void setFramePreparation(P_FramePreparation* preparation);
    /// Called whenever something has changed that decides whether the object is idle.
    void updateIdle() noexcept
    {
        if (m_bMember || m_bPlain)
        {
            m_bPlain = isPlain();
            setIdle(m_bPlain && !isShown());
        }
    }

private:
    friend class P_ObjectContainer;
    friend class P_Scene;
    friend class P_TransformBlock;

    /// What few objects have.
    struct Rare : S_Allocated
    {
        float m_fBoundingRadius = 0.0F;
        M_Vector3Template<float> m_vBoundingBoxMin;
        M_Vector3Template<float> m_vBoundingBoxMax;
        int m_iCollisionGroup = 0;
        unsigned int m_uiCollisionMask = 0xFFFFFFFFU;
        P_FramePreparation* m_pFramePreparation = nullptr;
    };

    P_BaseObject(const P_BaseObject& other, Kind kind, P_TransformBlock* block);
    [[nodiscard]] const Rare& getRare() const noexcept { return m_pRare ? *m_pRare : sm_usual; }
    [[nodiscard]] Rare& accessRare();
    [[nodiscard]] unsigned char getState() const noexcept
    {
        if (m_bMember)
        {
            return m_pStorage->m_pStates[m_uiPlace];
        }
        return m_bOutOfDate ? P_TransformBlock::STATE_OUT_OF_DATE : P_TransformBlock::STATE_VALID;
    }
    void setState(unsigned char state) const noexcept
    {
        if (m_bMember)
        {
            m_pStorage->m_pStates[m_uiPlace] = state;
        }
        else
        {
            m_bOutOfDate = state != P_TransformBlock::STATE_VALID;
        }
    }

    void markSubtree() noexcept;
    bool mark(unsigned long long change) noexcept;
    void computeWorldMatrix() const noexcept;
    [[nodiscard]] bool isBelowThis(const P_BaseObject& object) const noexcept;
    void linkInto(P_ObjectContainer& container) noexcept;
    void leaveContainer(bool staysInScene = false) noexcept;
    void enterScene(P_Scene& scene);
    void leaveScene() noexcept;
    void updateBoundingVolumes();
    [[nodiscard]] bool isPlain() const noexcept;
    [[nodiscard]] bool isShown() const noexcept;
    void setIdle(bool idle) noexcept;
    [[nodiscard]] bool isHiddenFromAbove() const noexcept;
    /// Whether a frame has something to do with the object or with something below it.
    [[nodiscard]] bool isBusySubtree() const noexcept { return !m_bIdle || m_uiBusyChildren != 0; }
    static void countBusyChild(P_ObjectContainer* container, bool comes) noexcept;
    [[nodiscard]] P_BaseObject* getFirstShownChild(bool passOverIdle) const noexcept;
    [[nodiscard]] P_BaseObject* getNextShownSibling(bool passOverIdle) const noexcept;
    [[nodiscard]] P_BaseObject* skipIdle(bool passOverIdle) noexcept;

    /// A number for a marking that no other marking of the process has, never 0: the source of the change counts.
    [[nodiscard]] static unsigned long long takeChangeNumber() noexcept;

    static const Rare sm_usual;

    void tellFrame() const noexcept;

    // Ordered for size, and so that a frame that passes by looks at one cache line: there are many objects.
    P_TransformStorage* m_pStorage = nullptr;
    /// The object's place in its storage, which in a block is its index.
    unsigned int m_uiPlace = 0;
    /// Where the running frame of the scene names this object.
    unsigned int m_uiScenePlace = 0;
    P_BaseObject* m_pNextSibling = nullptr;
    P_ObjectContainer* m_pContainer = nullptr;
    /// Of a first child: the last one, which for an only child is itself.
    P_BaseObject* m_pPreviousSibling = nullptr;
    /// Of an object in a scene that scene, else the context stored for it.
    union
    {
        P_Context* m_pContext;
        P_Scene* m_pScene;
    };
    std::unique_ptr<Rare> m_pRare;
};
