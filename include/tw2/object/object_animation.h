#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/track_list.h>
#include <tw2/object/animation_description.h>
#include <tw2/object/mesh_list.h>
#include <tw2/object/virtual_object.h>

#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/counter.h>
#include <platform/runtime/flat_map.h>
#include <platform/runtime/handle.h>
#include <platform/runtime/hash_map.h>
#include <platform/scene/transform_block.h>

#include <memory>

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
/// **Loading.** File names in a script are relative to the current directory, or else to the script's folder. While the
/// geometry file's meshes are read, the loader's other callbacks are those of the host: cameras, lights and the like
/// reach them. The loader's mesh callback is taken for the purpose, and null once the meshes are read. Inside the
/// callback of another load all callbacks are that load's: none hears of this one, and all stay as they are.
///
/// **Failure.** A construction that throws leaves the object unconstructed and the current directory as it was; the
/// loader's callbacks too, but for the mesh callback where the meshes were read already. A host's callback may load and
/// build what it likes; one that destructs or rebuilds the very object that is being loaded ends its load with
/// TW_Exception_InvalidGeometry.
///
/// Playing allocates nothing and may be done on several threads, each object on one at a time; constructing and copying
/// is for one thread (docs/threads.md).
class TW2_API TW_ObjectAnimation : public TW_VirtualObject
{
public:
    /// One numbered animation: for every mesh the keyframe animation that moves it, or null.
    class TW2_API ObjectAnimation
    {
    public:
        ObjectAnimation() noexcept = default;
        /// Without tracks, for an object of `meshCount` meshes.
        explicit ObjectAnimation(int meshCount);
        /// That of the longest track, the first of several. The frames of one that loops end at its last frame, or one
        /// frame later when it has a frame between its last and its first.
        [[nodiscard]] TW_AnimationCourse getCourse() const noexcept;

        int m_iFrameRate = 0;              ///< frames per second, of the first track added
        unsigned int m_uiFrames = 0;       ///< largest frame count of the tracks
        unsigned int m_uiLoopToFrame = 0;  ///< of the first track added
        int m_iIndex = -1;                 ///< the animation's index in its object; -1 while it has none
        /// One slot per mesh index; each that is not null holds a reference, which copies of the record do not count:
        /// that is the object's business.
        TW_TrackList m_vecKeyframeAnimations;
        int m_iKeyframeAnimationCount = 0;  ///< number of tracks added
        /// One per mesh index: the key found by the last evaluation, where the next one begins to search.
        S_Vector<unsigned int> m_vecLastFrames;
        int m_iInstance = 0;  ///< number of this record among all that were loaded
        /// Name and events; null when the animation has none.
        std::shared_ptr<const TW_AnimationDescription> m_pDescription;
        /// Records loaded so far, in all objects.
        static S_Counter<int> s_instanceCnt;
    };

    /// @name Life
    /// Every `construct` drops what the object was before; what it is passed may be the object's own. `meshCallback`
    /// builds the meshes, null for the object's own way. `withVisibility` also reads the tracks that `updateVisibility`
    /// needs.
    /// @{

    /// Not constructed: no meshes, no materials, no animations.
    TW_ObjectAnimation() { initializeMembers(); }
    /// Builds from the block `blockName` of a script file.
    TW_ObjectAnimation(const char* scriptFileName, const char* blockName, TW_MeshCallback* meshCallback,
                       bool withVisibility)
        : TW_ObjectAnimation()
    {
        construct(scriptFileName, blockName, meshCallback, withVisibility);
    }
    /// Builds from a block of an open script: the only block of that name at the script's position, or a block by its
    /// position in the file.
    TW_ObjectAnimation(S_Script* script, const char* blockName, TW_MeshCallback* meshCallback, bool withVisibility)
        : TW_ObjectAnimation()
    {
        construct(script, blockName, meshCallback, withVisibility);
    }
    TW_ObjectAnimation(S_Script* script, int blockIndex, TW_MeshCallback* meshCallback, bool withVisibility)
        : TW_ObjectAnimation()
    {
        construct(script, blockIndex, meshCallback, withVisibility);
    }
    /// The same with strings.
    template <typename File, typename Block>
    requires TW_Texts<File, Block> TW_ObjectAnimation(const File& scriptFileName, const Block& blockName,
                                                      TW_MeshCallback* meshCallback, bool withVisibility)
        : TW_ObjectAnimation(asCString(scriptFileName), asCString(blockName), meshCallback, withVisibility)
    {
    }
    /// The same with a string of the host's.
    template <TW_String Block>
    TW_ObjectAnimation(S_Script* script, const Block& blockName, TW_MeshCallback* meshCallback, bool withVisibility)
        : TW_ObjectAnimation(script, blockName.c_str(), meshCallback, withVisibility)
    {
    }
    /// A copy that shares geometry and keyframe animations, with materials of its own. It hangs under nothing.
    TW_ObjectAnimation(const TW_ObjectAnimation& source) : TW_ObjectAnimation() { construct(source, false, nullptr); }
    /// The same copy; an object assigned to itself stays as it is.
    TW_ObjectAnimation& operator=(const TW_ObjectAnimation& source);
    /// Deletes the meshes, which hosts may no longer use, and lets animations and materials go.
    ~TW_ObjectAnimation() override { destruct(); }

    /// As the constructors of the same arguments.
    void construct(const char* scriptFileName, const char* blockName, TW_MeshCallback* meshCallback,
                   bool withVisibility);
    void construct(S_Script* script, const char* blockName, TW_MeshCallback* meshCallback, bool withVisibility);
    void construct(S_Script* script, int blockIndex, TW_MeshCallback* meshCallback, bool withVisibility);
    /// The same with a string of the host's.
    template <typename File, typename Block>
    requires TW_Texts<File, Block>
    void construct(const File& scriptFileName, const Block& blockName, TW_MeshCallback* meshCallback,
                   bool withVisibility)
    {
        construct(asCString(scriptFileName), asCString(blockName), meshCallback, withVisibility);
    }
    /// The same with a string of the host's.
    template <TW_String Block>
    void construct(S_Script* script, const Block& blockName, TW_MeshCallback* meshCallback, bool withVisibility)
    {
        construct(script, blockName.c_str(), meshCallback, withVisibility);
    }
    /// `deepCopy` gives the copy geometry of its own; `materials` (null: the source's manager) is what the copy's
    /// material manager is a copy of. A copy of itself changes nothing.
    void construct(const TW_ObjectAnimation& source, bool deepCopy, TW_MaterialManager* materials);
    /// Drops materials, meshes and animations.
    void destruct() noexcept;
    /// False before the first `construct`, after `destruct` and after a construction that threw.
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
    /// The same with a string of the host's.
    template <TW_ForeignString Name>
    [[nodiscard]] P_VirtualObject* getMeshByName(const Name& name) const
    {
        return getMeshByName(name.c_str());
    }
    /// The same with a string of the host's.
    template <TW_ForeignString Name>
    [[nodiscard]] P_VirtualObject* getMeshByNameCaseSensitive(const Name& name) const
    {
        return getMeshByNameCaseSensitive(name.c_str());
    }
    /// Mesh index of a mesh; -1 when it is none of the object's.
    [[nodiscard]] int getMeshIndex(const P_VirtualObject* mesh) const noexcept;
    /// The matrices of all meshes side by side, mesh i at index i. They move when meshes are added.
    [[nodiscard]] P_TransformBlock& accessMeshTransforms() noexcept { return m_meshTransforms; }
    [[nodiscard]] const P_TransformBlock& getMeshTransforms() const noexcept { return m_meshTransforms; }
    /// @}

    /// @name Animations
    /// @{

    /// Loads the "animation" blocks of a block of another script. An index that the object has already is replaced.
    /// When loading one fails, those before it stay, and the object has no animation of the failing one's index. One
    /// whose block is wrong, whose file is nowhere, or whose index the call has loaded already, changes nothing.
    void appendAnimations(const char* scriptFileName, const char* blockName, bool withVisibility);
    void appendAnimations(S_Script* script, const char* blockName, bool withVisibility);
    void appendAnimations(S_Script* script, int blockIndex, bool withVisibility);
    /// The same with a string of the host's.
    template <typename File, typename Block>
    requires TW_Texts<File, Block>
    void appendAnimations(const File& scriptFileName, const Block& blockName, bool withVisibility)
    {
        appendAnimations(asCString(scriptFileName), asCString(blockName), withVisibility);
    }
    /// The same with a string of the host's.
    template <TW_String Block>
    void appendAnimations(S_Script* script, const Block& blockName, bool withVisibility)
    {
        appendAnimations(script, blockName.c_str(), withVisibility);
    }
    /// Loads one animation file as animation `index`, replacing what the object has under it.
    void appendSingleAnimation(int index, const S_String& fileName, bool withVisibility);
    /// The same with a string of the host's.
    template <TW_ForeignString File>
    void appendSingleAnimation(int index, const File& fileName, bool withVisibility)
    {
        appendSingleAnimation(index, asString(fileName), withVisibility);
    }
    /// Lets `animation` move the mesh of exactly that name in animation `index`, instead of what moved it before, and
    /// takes a reference. False, and nothing changes, when there is no such mesh or no such animation.
    bool insertAnimation(const char* meshName, int index, TW_KeyframeAnimation* animation);
    /// The same with a string of the host's.
    template <TW_String Mesh>
    bool insertAnimation(const Mesh& meshName, int index, TW_KeyframeAnimation* animation)
    {
        return insertAnimation(meshName.c_str(), index, animation);
    }
    /// Drops an animation; its record stays, empty, and still counts in `getTotalAnimations`. Nothing happens when
    /// there is none.
    void deleteAnimation(int index);
    /// Drops what moves the mesh of exactly that name in animation `index`; nothing happens when nothing does.
    void deleteAnimation(const char* meshName, int index);
    /// The same with a string of the host's.
    template <TW_String Mesh>
    void deleteAnimation(const Mesh& meshName, int index)
    {
        deleteAnimation(meshName.c_str(), index);
    }
    /// Plays animation `index` of `source` as the object's own, sharing the tracks. Meshes correspond by mesh index. An
    /// animation that the object has under that index is replaced; nothing happens when the source has none.
    void shareAnimation(int index, TW_ObjectAnimation* source);
    /// The record of an animation index; null when there is none. Valid until animations are added.
    [[nodiscard]] const ObjectAnimation* getAnimation(int index) const noexcept;
    [[nodiscard]] ObjectAnimation* accessAnimation(int index) noexcept;
    [[nodiscard]] unsigned int getTotalAnimations() const override;
    [[nodiscard]] int getMaximumAnimationIndex() const override { return m_iMaximumAnimationIndex; }
    [[nodiscard]] bool isValidAnimation(int index) const override { return m_mapAnimationIndices.contains(index); }
    [[nodiscard]] unsigned int getAnimationFrames(int index) const override;
    [[nodiscard]] float getAnimationLength(int index) const override;
    [[nodiscard]] float getAnimationFPS(int index) const override;
    void setAnimationFPS(int index, float fps) override;
    [[nodiscard]] unsigned int getAnimationLoopToFrame(int index) const override;
    [[nodiscard]] float getAnimationLoopToTime(int index) const override;
    [[nodiscard]] TW_ObjectAnimation* getPlayedObject(unsigned int i) const override;
    /// @}

    /// @name Playing
    /// Meshes that an animation does not move take the pose of animation 0 at frame 0 when that one moves them.
    /// @{
    bool animateObject(int index, float time, TW_BoneGroupHandle* group = nullptr) override;
    bool animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group = nullptr) override;
    /// Moves the meshes that animation `index` moves from where they are towards its pose, by `weight` (1 or more: all
    /// the way), and corrects all meshes by the cross mode.
    virtual bool subAnimateObject(int index, float time, float weight);
    /// Shows and hides the meshes as the animation's visibility tracks say. False when there is no such animation or it
    /// was loaded without them.
    bool updateVisibility(int index, float time) { return updateVisibilityFrame(index, getAnimationFPS(index) * time); }
    /// The same at a frame.
    bool updateVisibilityFrame(int index, float frame);
    void freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group = nullptr) override;
    void restoreAnimationState(TW_ObjectAnimationState* state) override;
    [[nodiscard]] TW_BoneHandle getBoneHandle(const char* name) override;
    using TW_VirtualObject::getBoneHandle;
    /// @}

    /// @name Blending
    /// @{
    bool crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1, float time1, float weight1,
                            int index2, float time2, float weight2, TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                            const TW_BoneHandle& reference, TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                            TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                            TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(int index1, float time1, float weight1, int index2, float time2, float weight2, int index3,
                            float time3, TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                            TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(int, float, int, float, TW_BoneGroupHandle* = nullptr) = delete;
    bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1, float frame1,
                                 float weight1, int index2, float frame2, float weight2,
                                 TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                 TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2, float weight2,
                                 int index3, float frame3, TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                 TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObjectFrame(int, float, int, float, TW_BoneGroupHandle* = nullptr) = delete;
    /// How blended matrices are corrected: as the script says until it is set.
    [[nodiscard]] InterpolationMode getCrossMode() const noexcept { return m_eCrossMode; }
    void setCrossMode(InterpolationMode mode) noexcept { m_eCrossMode = mode; }
    /// @}

    /// @name Materials and texture animation
    /// @{

    /// Null while the object is not constructed; there are no materials to replace then, and nothing happens below.
    [[nodiscard]] TW_MaterialManager* getMaterialManager() const noexcept { return m_pMaterialManager; }
    /// Replaces the object's materials by those of the same names in an animation file. When that fails the object
    /// keeps its materials. Throws TW_Exception_MaterialNotFound for a file without materials.
    void loadMaterials(const char* fileName);
    /// Adds the materials of an animation file to `manager`. Throws TW_Exception_MaterialNotFound when `manager` then
    /// has none.
    static void loadMaterials(TW_MaterialManager* manager, const char* fileName);
    /// The same with a string of the host's.
    template <TW_String File>
    void loadMaterials(const File& fileName)
    {
        loadMaterials(fileName.c_str());
    }
    /// The same with a string of the host's.
    template <TW_String File>
    static void loadMaterials(TW_MaterialManager* manager, const File& fileName)
    {
        loadMaterials(manager, fileName.c_str());
    }
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
    using TW_VirtualObject::animateTexture;
    using TW_VirtualObject::animateTextureFrame;
    using TW_VirtualObject::getTextureAnimationFPS;
    using TW_VirtualObject::getTextureAnimationFrames;
    using TW_VirtualObject::getTextureAnimationLength;
    using TW_VirtualObject::getTotalTextureAnimations;
    using TW_VirtualObject::isValidTextureAnimation;
    using TW_VirtualObject::isValidTextureAnimationSet;
    using TW_VirtualObject::setTextureAnimationFPS;
    [[nodiscard]] const char* getTextureAnimationSetName(int set) const override;
    bool animateTextureSet(std::string_view set, float time) override;
    bool animateTextureSetFrame(std::string_view set, float frame) override;
    /// @}

    /// @name Bounding volumes
    /// Those set here when they are in use, else the engine's.
    /// @{
    [[nodiscard]] float getBoundingRadius() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMin() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMax() override;
    /// Takes the sphere set here, or, with false, the engine's: computed from the meshes, unless the script fixed both
    /// volumes.
    void setUseManualBoundingSphere(bool use) noexcept { m_bUseManualBoundingSphere = use; }
    /// Takes the box set here, or, with false, the engine's, likewise.
    void setUseManualBoundingBox(bool use) noexcept { m_bUseManualBoundingBox = use; }
    /// Whether the sphere set here counts.
    [[nodiscard]] bool getUseManualBoundingSphere() const noexcept { return m_bUseManualBoundingSphere; }
    /// Whether the box set here counts.
    [[nodiscard]] bool getUseManualBoundingBox() const noexcept { return m_bUseManualBoundingBox; }
    /// In scene units, around the object's origin.
    void setManualBoundingSphereRadius(float radius) noexcept { m_fManualBoundingSphereRadius = radius; }
    /// Smallest corner, in the object's own space.
    void setManualBoundingBoxMin(const M_Vector3Template<float>& corner) noexcept { m_vManualBoundingBoxMin = corner; }
    /// Largest corner, in the object's own space.
    void setManualBoundingBoxMax(const M_Vector3Template<float>& corner) noexcept { m_vManualBoundingBoxMax = corner; }
    /// In scene units, whether or not it is in use.
    [[nodiscard]] float getManualBoundingSphereRadius() const noexcept { return m_fManualBoundingSphereRadius; }
    /// Smallest corner, whether or not the box is in use.
    [[nodiscard]] const M_Vector3Template<float>& getManualBoundingBoxMin() const noexcept
    {
        return m_vManualBoundingBoxMin;
    }
    /// Largest corner, whether or not the box is in use.
    [[nodiscard]] const M_Vector3Template<float>& getManualBoundingBoxMax() const noexcept
    {
        return m_vManualBoundingBoxMax;
    }
    /// @}

    [[nodiscard]] const char* getObjectType() const override { return "TW_ObjectAnimation"; }
    void dump(bool details) const override;

    /// @name Callbacks for all objects; null when unset
    /// @{

    /// Called before a mesh is made of a record; see TW_LoadMeshCallback. The host keeps callbacks alive while they
    /// are set.
    [[nodiscard]] static TW_LoadMeshCallback* getLoadMeshCallback() noexcept { return sm_pLoadMeshCallback; }
    static void setLoadMeshCallback(TW_LoadMeshCallback* callback) noexcept { sm_pLoadMeshCallback = callback; }
    /// Called for every mesh that was added; see TW_MeshLoadedCallback.
    [[nodiscard]] static TW_MeshLoadedCallback* getMeshLoadedCallback() noexcept { return sm_pMeshLoadedCallback; }
    static void setMeshLoadedCallback(TW_MeshLoadedCallback* callback) noexcept { sm_pMeshLoadedCallback = callback; }
    /// Called for a mesh whose parent the object does not have; see TW_MeshParentNotFoundCallback.
    [[nodiscard]] static TW_MeshParentNotFoundCallback* getMeshParentNotFoundCallback() noexcept
    {
        return sm_pMeshParentNotFoundCallback;
    }
    static void setMeshParentNotFoundCallback(TW_MeshParentNotFoundCallback* callback) noexcept
    {
        sm_pMeshParentNotFoundCallback = callback;
    }
    /// Called for every track that was read; see TW_ObjectKeyframeAnimationCallback.
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
    friend class TW_VertexAnimation;  // hands over `m_pGeometryData`
    /// Finds animations by name.
    friend class TW_VirtualObject;

    /// Every member as in an object that is not constructed.
    void initializeMembers() noexcept;
    template <typename Steps>
    void build(const Steps& steps);
    /// The meshes' indices by the names that they were added under; of several meshes of one name the first. Copies
    /// share them until one gets another mesh.
    struct MeshNames : S_Allocated
    {
        MeshNames() = default;
        MeshNames(const MeshNames& other);
        MeshNames& operator=(const MeshNames&) = delete;

        /// Adds the name of the next mesh; when memory runs out nothing has changed.
        void add(const S_String& name);
        void dropLast() noexcept;

        S_Vector<S_String> m_vecNames;
        S_CaselessNameMap<unsigned int> m_mapMeshesByLowerCaseName;
        S_NameMap<unsigned int> m_mapMeshesByName;
        S_Counter<int> m_iReferenceCount{1};
    };

    [[nodiscard]] MeshNames& accessMeshNames();
    [[nodiscard]] bool areMeshNamesCurrent() const noexcept;

    bool m_bConstructed;
    TW_MaterialManager* m_pMaterialManager;
    TW_MeshList m_vecMeshes;
    S_Handle<MeshNames> m_pMeshNames;
    int m_iMaximumAnimationIndex;
    S_Vector<ObjectAnimation> m_vecAnimations;
    S_FlatMap<int, int> m_mapAnimationIndices;
    InterpolationMode m_eCrossMode;
    bool m_bUseManualBoundingSphere;
    bool m_bUseManualBoundingBox;
    float m_fManualBoundingSphereRadius;
    M_Vector3Template<float> m_vManualBoundingBoxMin;
    M_Vector3Template<float> m_vManualBoundingBoxMax;
    /// Mesh i at index i: tells the index of a mesh as well.
    P_TransformBlock m_meshTransforms;
    /// What the geometry of the meshes reads in place, such as a skin's bone counts; copies, which share the geometry,
    /// hold it too.
    std::shared_ptr<const void> m_pGeometryData;
    /// How often the object was destructed, by which a load sees that a host's callback did it meanwhile.
    unsigned int m_uiDestructions = 0;

    static TW_LoadMeshCallback* sm_pLoadMeshCallback;
    static TW_MeshLoadedCallback* sm_pMeshLoadedCallback;
    static TW_MeshParentNotFoundCallback* sm_pMeshParentNotFoundCallback;
    static TW_ObjectKeyframeAnimationCallback* sm_pKeyframeAnimationCallback;
};
}  // namespace TW2
