#pragma once

#include <tw2/export.h>
#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/object/virtual_object.h>

#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/flat_map.h>
#include <platform/runtime/hash_map.h>
#include <platform/scene/transform_block.h>

class S_Script;

namespace TW2
{
class TW_KeyframeAnimation;
class TW_LoadMeshCallback;
class TW_MaterialManager;
class TW_MeshCallback;
class TW_MeshLoadedCallback;
class TW_MeshParentNotFoundCallback;
class TW_ObjectKeyframeAnimationCallback;

/// A hierarchy of meshes with their materials and any number of numbered animations, built from a script block that
/// names one geometry file and the animation files.
///
///     TW_ObjectAnimation soldier("soldier.txt", "soldier", nullptr, false);
///     soldier.addTo(&scene);
///     soldier.animateObject(walk, seconds, nullptr);
///
/// **Ownership.** The object owns its meshes and its material manager. Keyframe animations are shared by reference
/// count: copies of an object and shared animations play the same ones, and the last holder deletes.
///
/// **Loading.** File names in a script are relative to the current directory. While the geometry file's meshes are
/// read, the loader's other callbacks are those of the host: cameras, lights and the like reach them. The loader's mesh
/// callback is taken for the purpose, and null afterwards.
///
/// **Failure.** A construction that throws leaves the object unconstructed, the loader's callbacks and the current
/// directory as they were.
///
/// Playing allocates nothing. One thread at a time, for all objects together.
class TW2_API TW_ObjectAnimation : public TW_VirtualObject
{
public:
    /// One numbered animation: for every mesh the keyframe animation that moves it, or null.
    class TW2_API ObjectAnimation
    {
    public:
        ObjectAnimation() noexcept;
        /// Without tracks, for an object of `meshCount` meshes.
        explicit ObjectAnimation(int meshCount);
        /// Copies do not count as holders of the tracks: that is the object's business.
        ObjectAnimation(const ObjectAnimation&);
        ObjectAnimation(ObjectAnimation&&) noexcept;
        ObjectAnimation& operator=(const ObjectAnimation&);
        ObjectAnimation& operator=(ObjectAnimation&&) noexcept;
        ~ObjectAnimation();

        int m_iFrameRate = 0;              ///< frames per second, of the first track added
        unsigned int m_uiFrames = 0;       ///< largest frame count of the tracks
        unsigned int m_uiLoopToFrame = 0;  ///< of the first track added
        /// One slot per mesh index; each that is not null holds a reference.
        S_Vector<TW_KeyframeAnimation*> m_vecKeyframeAnimations;
        int m_iKeyframeAnimationCount = 0;  ///< number of tracks added
        /// One per mesh index: the key found by the last evaluation, where the next one begins to search.
        S_Vector<unsigned int> m_vecLastFrames;
        int m_iInstance = 0;  ///< number of this record among all that were loaded
        /// Records loaded so far, in all objects.
        static int s_instanceCnt;
    };

    /// @name Life
    /// Every `construct` drops what the object was before. `meshCallback` builds the meshes, null for the object's own
    /// way. `withVisibility` also reads the tracks that `updateVisibility` needs.
    /// @{

    /// Not constructed: no meshes, no materials, no animations.
    TW_ObjectAnimation();
    /// Builds from the block `blockName` of a script file.
    TW_ObjectAnimation(const char* scriptFileName, const char* blockName, TW_MeshCallback* meshCallback,
                       bool withVisibility);
    /// Builds from a block of an open script: the only block of that name at the script's position, or a block by its
    /// position in the file.
    TW_ObjectAnimation(S_Script* script, const char* blockName, TW_MeshCallback* meshCallback, bool withVisibility);
    TW_ObjectAnimation(S_Script* script, int blockIndex, TW_MeshCallback* meshCallback, bool withVisibility);
    /// A copy that shares geometry and keyframe animations, with materials of its own. It hangs under nothing.
    TW_ObjectAnimation(const TW_ObjectAnimation& source);
    TW_ObjectAnimation& operator=(const TW_ObjectAnimation& source);
    ~TW_ObjectAnimation() override;

    void construct(const char* scriptFileName, const char* blockName, TW_MeshCallback* meshCallback,
                   bool withVisibility);
    void construct(S_Script* script, const char* blockName, TW_MeshCallback* meshCallback, bool withVisibility);
    void construct(S_Script* script, int blockIndex, TW_MeshCallback* meshCallback, bool withVisibility);
    /// `deepCopy` gives the copy geometry of its own; `materials` (null: the source's manager) is what the copy's
    /// material manager is a copy of. A copy of itself changes nothing.
    void construct(const TW_ObjectAnimation& source, bool deepCopy, TW_MaterialManager* materials);
    /// Drops materials, meshes and animations.
    void destruct() noexcept;
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Meshes
    /// @{

    /// Adds a mesh, which then belongs to the object, under the name that it has; its mesh index is the present count.
    /// Of several meshes of one name the first is found by that name. Animations added before do not move it. Null and
    /// a mesh that the object has already change nothing. When memory runs out nothing has changed, and the mesh is
    /// still the caller's.
    void addMesh(P_VirtualObject* mesh);
    [[nodiscard]] unsigned int getTotalMeshes() const override { return static_cast<unsigned int>(m_vecMeshes.size()); }
    [[nodiscard]] P_VirtualObject* getMesh(unsigned int mesh) const override
    {
        return mesh < m_vecMeshes.size() ? m_vecMeshes[mesh] : nullptr;
    }
    /// The mesh of that name, whatever the case of its letters; null when there is none.
    [[nodiscard]] virtual P_VirtualObject* getMeshByName(const S_String& name) const;
    [[nodiscard]] virtual P_VirtualObject* getMeshByName(const char* name) const;
    /// The mesh of exactly that name; null when there is none.
    [[nodiscard]] virtual P_VirtualObject* getMeshByNameCaseSensitive(const S_String& name) const;
    [[nodiscard]] virtual P_VirtualObject* getMeshByNameCaseSensitive(const char* name) const;
    /// Mesh index of a mesh; -1 when it is none of the object's.
    [[nodiscard]] int getMeshIndex(const P_VirtualObject* mesh) const noexcept;
    /// The matrices of all meshes side by side, mesh i at index i. Empty while the object is being constructed.
    [[nodiscard]] P_TransformBlock& accessMeshTransforms() noexcept { return m_meshTransforms; }
    [[nodiscard]] const P_TransformBlock& getMeshTransforms() const noexcept { return m_meshTransforms; }
    /// @}

    /// @name Animations
    /// @{

    /// Loads the "animation" blocks of a block of another script. An index that the object has already is replaced.
    /// When one fails, those before it stay; the object then has no animation of the failing one's index.
    void appendAnimations(const char* scriptFileName, const char* blockName, bool withVisibility);
    void appendAnimations(S_Script* script, const char* blockName, bool withVisibility);
    void appendAnimations(S_Script* script, int blockIndex, bool withVisibility);
    /// Loads one animation file as animation `index`, replacing what the object has under it.
    void appendSingleAnimation(int index, const S_String& fileName, bool withVisibility);
    /// Lets `animation` move the mesh of exactly that name in animation `index`, instead of what moved it before, and
    /// takes a reference. False, and nothing changes, when there is no such mesh or no such animation.
    bool insertAnimation(const char* meshName, int index, TW_KeyframeAnimation* animation);
    /// Drops an animation; its record stays, empty, and still counts in `getTotalAnimations`. Nothing happens when
    /// there is none.
    void deleteAnimation(int index);
    /// Drops what moves the mesh of exactly that name in animation `index`; nothing happens when nothing does.
    void deleteAnimation(const char* meshName, int index);
    /// Plays animation `index` of `source` as the object's own, sharing the tracks. Meshes correspond by mesh index. An
    /// animation that the object has under that index is replaced; nothing happens when the source has none.
    void shareAnimation(int index, TW_ObjectAnimation* source);
    /// The record of an animation index; null when there is none. Valid until animations are added.
    [[nodiscard]] const ObjectAnimation* getAnimation(int index) const noexcept;
    [[nodiscard]] ObjectAnimation* accessAnimation(int index) noexcept;
    [[nodiscard]] unsigned int getTotalAnimations() const override;
    [[nodiscard]] int getMaximumAnimationIndex() const override { return m_iMaximumAnimationIndex; }
    [[nodiscard]] bool isValidAnimation(int index) const override;
    [[nodiscard]] unsigned int getAnimationFrames(int index) const override;
    [[nodiscard]] float getAnimationLength(int index) const override;
    [[nodiscard]] float getAnimationFPS(int index) const override;
    void setAnimationFPS(int index, float fps) override;
    [[nodiscard]] unsigned int getAnimationLoopToFrame(int index) const override;
    [[nodiscard]] float getAnimationLoopToTime(int index) const override;
    /// @}

    /// @name Playing
    /// Meshes that an animation does not move take the pose of animation 0 at frame 0 when that one moves them.
    /// @{
    bool animateObject(int index, float time, TW_BoneGroupHandle* group) override;
    bool animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group) override;
    /// Moves the meshes that animation `index` moves from where they are towards its pose, by `weight` (1 or more: all
    /// the way), and corrects all meshes by the cross mode.
    virtual bool subAnimateObject(int index, float time, float weight);
    /// Shows and hides the meshes as the animation's visibility tracks say, which must have been loaded.
    bool updateVisibility(int index, float time);
    bool updateVisibilityFrame(int index, float frame);
    void freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group) override;
    void restoreAnimationState(TW_ObjectAnimationState* state) override;
    [[nodiscard]] TW_BoneHandle getBoneHandle(const char* name) override;
    /// @}

    /// @name Blending
    /// @{
    bool crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1, float time1, float weight1,
                            int index2, float time2, float weight2, TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                            const TW_BoneHandle& reference, TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                            TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                            TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(int index1, float time1, float weight1, int index2, float time2, float weight2, int index3,
                            float time3, TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                            TW_BoneGroupHandle* group) override;
    bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1, float frame1,
                                 float weight1, int index2, float frame2, float weight2,
                                 TW_BoneGroupHandle* group) override;
    bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                 TW_BoneGroupHandle* group) override;
    bool crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2, float weight2,
                                 int index3, float frame3, TW_BoneGroupHandle* group) override;
    bool crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                 TW_BoneGroupHandle* group) override;
    /// How blended matrices are corrected.
    [[nodiscard]] InterpolationMode getCrossMode() const noexcept { return m_eCrossMode; }
    /// @}

    /// @name Materials and texture animation
    /// @{

    /// Null while the object is not constructed.
    [[nodiscard]] TW_MaterialManager* getMaterialManager() const noexcept { return m_pMaterialManager; }
    /// Replaces the object's materials by those of the same names in an animation file. When that fails the object
    /// keeps its materials. Throws TW_Exception_MaterialNotFound for a file without materials.
    void loadMaterials(const char* fileName);
    /// Adds the materials of an animation file to `manager`. Throws TW_Exception_MaterialNotFound when `manager` then
    /// has none.
    static void loadMaterials(TW_MaterialManager* manager, const char* fileName);
    /// Replaces the object's materials by a copy of `manager`'s, by their names.
    void remapMaterials(TW_MaterialManager* manager);
    void uploadTextures() override;
    [[nodiscard]] bool isValidTextureAnimationSet(const S_String& set) const override;
    [[nodiscard]] bool isValidTextureAnimation(const S_String& set, int index) const override;
    [[nodiscard]] unsigned int getTotalTextureAnimationSets() const override;
    [[nodiscard]] unsigned int getTotalTextureAnimations(const S_String& set) const override;
    [[nodiscard]] unsigned int getTextureAnimationFrames(const S_String& set, int index) const override;
    [[nodiscard]] float getTextureAnimationLength(const S_String& set, int index) const override;
    [[nodiscard]] float getTextureAnimationFPS(const S_String& set, int index) const override;
    void setTextureAnimationFPS(const S_String& set, int index, float fps) override;
    bool animateTexture(const S_String& set, float time) override;
    bool animateTextureFrame(const S_String& set, float frame) override;
    /// @}

    /// @name Bounding volumes
    /// Those set here when they are in use, else the engine's.
    /// @{
    [[nodiscard]] float getBoundingRadius() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMin() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMax() override;
    void setUseManualBoundingSphere(bool use) noexcept { m_bUseManualBoundingSphere = use; }
    void setUseManualBoundingBox(bool use) noexcept { m_bUseManualBoundingBox = use; }
    [[nodiscard]] bool getUseManualBoundingSphere() const noexcept { return m_bUseManualBoundingSphere; }
    [[nodiscard]] bool getUseManualBoundingBox() const noexcept { return m_bUseManualBoundingBox; }
    void setManualBoundingSphereRadius(float radius) noexcept { m_fManualBoundingSphereRadius = radius; }
    void setManualBoundingBoxMin(const M_Vector3Template<float>& corner) noexcept { m_vManualBoundingBoxMin = corner; }
    void setManualBoundingBoxMax(const M_Vector3Template<float>& corner) noexcept { m_vManualBoundingBoxMax = corner; }
    [[nodiscard]] float getManualBoundingSphereRadius() const noexcept { return m_fManualBoundingSphereRadius; }
    [[nodiscard]] const M_Vector3Template<float>& getManualBoundingBoxMin() const noexcept
    {
        return m_vManualBoundingBoxMin;
    }
    [[nodiscard]] const M_Vector3Template<float>& getManualBoundingBoxMax() const noexcept
    {
        return m_vManualBoundingBoxMax;
    }
    /// @}

    [[nodiscard]] const char* getObjectType() const override;
    void dump(bool details) const override;

    /// @name Callbacks for all objects; null when unset
    /// @{
    [[nodiscard]] static TW_LoadMeshCallback* getLoadMeshCallback() noexcept { return sm_pLoadMeshCallback; }
    static void setLoadMeshCallback(TW_LoadMeshCallback* callback) noexcept { sm_pLoadMeshCallback = callback; }
    [[nodiscard]] static TW_MeshLoadedCallback* getMeshLoadedCallback() noexcept { return sm_pMeshLoadedCallback; }
    static void setMeshLoadedCallback(TW_MeshLoadedCallback* callback) noexcept { sm_pMeshLoadedCallback = callback; }
    [[nodiscard]] static TW_MeshParentNotFoundCallback* getMeshParentNotFoundCallback() noexcept
    {
        return sm_pMeshParentNotFoundCallback;
    }
    static void setMeshParentNotFoundCallback(TW_MeshParentNotFoundCallback* callback) noexcept
    {
        sm_pMeshParentNotFoundCallback = callback;
    }
    [[nodiscard]] static TW_ObjectKeyframeAnimationCallback* getKeyframeAnimationCallback() noexcept
    {
        return sm_pKeyframeAnimationCallback;
    }
    static void setKeyframeAnimationCallback(TW_ObjectKeyframeAnimationCallback* callback) noexcept
    {
        sm_pKeyframeAnimationCallback = callback;
    }
    /// @}

protected:
    bool executeAlways() override;

private:
    /// The steps of construction and loading.
    class Builder;
    /// The steps of playing.
    friend class PosePlayer;

    /// Every member as in an object that is not constructed.
    void initializeMembers() noexcept;
    /// Brings the matrices of all meshes together in `m_meshTransforms`.
    void adoptMeshTransforms();

    bool m_bConstructed = false;
    TW_MaterialManager* m_pMaterialManager = nullptr;
    S_Vector<P_VirtualObject*> m_vecMeshes;
    S_CaselessNameMap<P_VirtualObject*> m_mapMeshesByLowerCaseName;
    S_NameMap<P_VirtualObject*> m_mapMeshesByName;
    S_HashMap<const P_VirtualObject*, int> m_mapMeshIndices;
    int m_iMaximumAnimationIndex = -1;
    S_Vector<ObjectAnimation> m_vecAnimations;
    S_FlatMap<int, int> m_mapAnimationIndices;
    InterpolationMode m_eCrossMode = InterpolationMode::Linear;
    bool m_bUseManualBoundingSphere = false;
    bool m_bUseManualBoundingBox = false;
    float m_fManualBoundingSphereRadius;
    M_Vector3Template<float> m_vManualBoundingBoxMin;
    M_Vector3Template<float> m_vManualBoundingBoxMax;
    P_TransformBlock m_meshTransforms;
    /// While many meshes are added: they keep their own matrices, and the block is filled when all are there.
    bool m_bMeshTransformsDeferred = false;
    /// Identifies the present list of meshes: no two lists of the process have the same number.
    unsigned long long m_uiMeshListNumber = 0;

    static TW_LoadMeshCallback* sm_pLoadMeshCallback;
    static TW_MeshLoadedCallback* sm_pMeshLoadedCallback;
    static TW_MeshParentNotFoundCallback* sm_pMeshParentNotFoundCallback;
    static TW_ObjectKeyframeAnimationCallback* sm_pKeyframeAnimationCallback;
};
}  // namespace TW2
