#pragma once

#include <tw2/export.h>
#include <tw2/object/virtual_object.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

class S_Script;

namespace TW2
{
class TW_MaterialManager;
class TW_ObjectAnimation;

/// Skinned character: a skeleton that is animated but never drawn, a skin whose meshes follow it, and the skin data
/// that bind the skin's vertices to the bones.
///
///     TW_VertexAnimation soldier("soldier.txt", "skeleton", "skin");
///     soldier.addTo(&scene);
///     ... every frame: soldier.animateObject(WALK, time, nullptr); then the scene's frame ...
///
/// Animation operations go to the skeleton: its meshes are the bones, and they are the meshes that this object reports.
/// Texture animation, visibility and materials belong to the skin. Every frame the scene calls `executeAlways`, which
/// turns the skeleton's pose into one bone matrix per bone; the skin's meshes read those in place.
///
/// Several vertex animations may share one skeleton; the last of them deletes it. Skin and skin data are each object's
/// own. Playing and moving allocate nothing. One thread at a time.
class TW2_API TW_VertexAnimation : public TW_VirtualObject
{
public:
    class Skin;

    /// @name Life
    /// Every form builds from scratch: what the object was before is destructed first. A form that throws (scripts and
    /// files: their exceptions; skin data that do not fit: TW_Exception_InvalidGeometry; a vertex with more than 4
    /// bones: P_DriverException_TooManyBonesPerVertex; memory: S_MemoryException_Allocation) leaves the object not
    /// constructed. Given a skin block, it must name skin data ("skindata"). Objects and scripts that are passed in
    /// stay the caller's; they may be parts of the object itself, which are copied before they go.
    /// @{

    /// Not constructed: no skeleton, no skin, no skin data. Only `construct` and `isConstructed` may be called then.
    TW_VertexAnimation();
    /// Skeleton and skin from two named blocks of one script file.
    TW_VertexAnimation(const char* scriptFile, const char* skeletonBlock, const char* skinBlock);
    TW_VertexAnimation(S_Script* script, const char* skeletonBlock, const char* skinBlock);
    /// Skeleton and skin from a named block each, of two scripts.
    TW_VertexAnimation(S_Script* skeletonScript, const char* skeletonBlock, S_Script* skinScript,
                       const char* skinBlock);
    TW_VertexAnimation(const char* skeletonScriptFile, const char* skeletonBlock, const char* skinScriptFile,
                       const char* skinBlock);
    /// Skeleton and skin from the blocks at two positions (from 0, at each script's current level).
    TW_VertexAnimation(S_Script* skeletonScript, int skeletonBlock, S_Script* skinScript, int skinBlock);
    /// Copies of two object animations; without skin data, so that no bone matrix is ever updated.
    TW_VertexAnimation(TW_ObjectAnimation* skeleton, TW_ObjectAnimation* skin);
    /// A new skin on the skeleton of another vertex animation, which both share from then on.
    TW_VertexAnimation(TW_VertexAnimation* skeletonSource, S_Script* script, int skinBlock);
    /// A copy of a skin (with the given materials; null: the skin's own) on the skeleton of another vertex animation.
    TW_VertexAnimation(TW_VertexAnimation* skeletonSource, const TW_VertexAnimation& skinSource,
                       TW_MaterialManager* materialManager);
    /// A new skin on a copy of an object animation.
    TW_VertexAnimation(const TW_ObjectAnimation& skeleton, S_Script* script, int skinBlock);
    /// Copies of skeleton, skin (with the given materials; null: the skin's own) and skin data.
    TW_VertexAnimation(const TW_VertexAnimation& other, TW_MaterialManager* materialManager);
    TW_VertexAnimation(const TW_VertexAnimation& other);
    /// The same copy; copying an object onto itself does nothing.
    TW_VertexAnimation& operator=(const TW_VertexAnimation& other);
    ~TW_VertexAnimation() override;

    void construct(const char* scriptFile, const char* skeletonBlock, const char* skinBlock);
    void construct(S_Script* script, const char* skeletonBlock, const char* skinBlock);
    void construct(S_Script* skeletonScript, const char* skeletonBlock, S_Script* skinScript, const char* skinBlock);
    void construct(const char* skeletonScriptFile, const char* skeletonBlock, const char* skinScriptFile,
                   const char* skinBlock);
    void construct(S_Script* skeletonScript, int skeletonBlock, S_Script* skinScript, int skinBlock);
    void construct(TW_ObjectAnimation* skeleton, TW_ObjectAnimation* skin);
    void construct(TW_VertexAnimation* skeletonSource, S_Script* script, int skinBlock);
    void construct(TW_VertexAnimation* skeletonSource, const TW_VertexAnimation& skinSource,
                   TW_MaterialManager* materialManager);
    void construct(const TW_ObjectAnimation& skeleton, S_Script* script, int skinBlock);
    void construct(const TW_VertexAnimation& other, TW_MaterialManager* materialManager = nullptr);
    void destruct() noexcept;
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Parts
    /// @{

    /// The skeleton, perhaps shared; its meshes are the bones.
    [[nodiscard]] TW_ObjectAnimation* getSkeleton() const noexcept
    {
        return m_pSharedSkeleton ? m_pSharedSkeleton->m_pSkeleton : nullptr;
    }
    [[nodiscard]] TW_ObjectAnimation* getSkin() const noexcept { return m_pSkin; }
    /// Null when the object was built from two object animations.
    [[nodiscard]] Skin* getSkinData() const noexcept { return m_pSkinData; }
    /// @}

    /// @name Bone matrices
    /// Matrix i takes a vertex of the skin's first mesh from its rest position to where bone i carries it, both in that
    /// mesh's space. Written by `executeAlways`; at rest all are the identity.
    /// @{
    [[nodiscard]] int getBoneMatrixCount() const noexcept { return static_cast<int>(m_vecBoneMatrices.size()); }
    /// Bone 0 to `getBoneMatrixCount()` - 1.
    [[nodiscard]] const M_Matrix4x3Template<float>& getBoneMatrix(int bone) const noexcept
    {
        return m_vecBoneMatrices[static_cast<std::size_t>(bone)];
    }
    /// @}

    /// @name Skin
    /// @{

    /// Shows and hides the skin's meshes as its visibility tracks say; false when it has no such animation.
    bool updateVisibility(int index, float time);
    bool updateVisibilityFrame(int index, float frame);
    /// Replaces the skin's materials by those of a file; see TW_ObjectAnimation.
    void loadMaterials(const char* fileName);
    /// Replaces the skin's materials by those of a manager (not taken over).
    void remapMaterials(TW_MaterialManager* manager);
    /// @}

    /// @name Animated object: skeleton
    /// @{
    [[nodiscard]] unsigned int getTotalMeshes() const override;
    [[nodiscard]] P_VirtualObject* getMesh(unsigned int i) const override;
    [[nodiscard]] unsigned int getTotalAnimations() const override;
    [[nodiscard]] int getMaximumAnimationIndex() const override;
    [[nodiscard]] bool isValidAnimation(int index) const override;
    [[nodiscard]] unsigned int getAnimationFrames(int index) const override;
    [[nodiscard]] float getAnimationLength(int index) const override;
    [[nodiscard]] float getAnimationFPS(int index) const override;
    void setAnimationFPS(int index, float fps) override;
    bool animateObject(int index, float time, TW_BoneGroupHandle* group) override;
    bool animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group) override;
    void freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group) override;
    void restoreAnimationState(TW_ObjectAnimationState* state) override;
    [[nodiscard]] TW_BoneHandle getBoneHandle(const char* name) override;
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
    [[nodiscard]] unsigned int getAnimationLoopToFrame(int index) const override;
    [[nodiscard]] float getAnimationLoopToTime(int index) const override;
    /// @}

    /// @name Animated object: skin
    /// @{
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

    /// @name Scene object
    /// The skin's manual bounding volumes come first, then the skeleton's, then the engine's own.
    /// @{
    [[nodiscard]] float getBoundingRadius() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMin() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMax() override;
    [[nodiscard]] const char* getObjectType() const override;
    void dump(bool details) const override;
    /// @}

protected:
    /// Writes the bone matrices, unless nothing has moved since they were written; a skin with manual bounding volumes
    /// that lies outside the view of the context's camera is not updated and stays hidden. Returns false.
    bool executeAlways() override;

private:
    struct SharedSkeleton : S_Allocated
    {
        TW_ObjectAnimation* m_pSkeleton = nullptr;
        int m_iReferenceCount = 1;
    };

    /// Per bone: from the space of the skin's first mesh to the bone's own, at rest. Copies share them, so that a crowd
    /// has them in the cache once; never changed once they are shared.
    struct ReferencePose : S_Allocated
    {
        S_Vector<M_Matrix4x3Template<float>> m_vecMatrices;
        int m_iReferenceCount = 1;
    };

    void initializeMembers() noexcept;
    /// What all forms have in common around the steps of one.
    template <typename Steps>
    void build(const Steps& steps);
    void handOverTo(TW_VertexAnimation& keeper) noexcept;

    /// @name Skeleton
    /// @{
    TW_ObjectAnimation& createSkeleton();
    [[nodiscard]] SharedSkeleton* holdSkeleton(const TW_VertexAnimation& source);
    void addSkeleton(S_Script& script, int block);
    void copySkeleton(const TW_ObjectAnimation& source);
    void hideSkeleton();
    void releaseSkeleton() noexcept;
    /// @}

    /// @name Skin
    /// @{
    void addSkin(S_Script& script, int block);
    void copySkin(const TW_ObjectAnimation& source, const Skin* skinData, TW_MaterialManager* materialManager);
    void readSkinData(S_Script& script);
    void takeBoundingVolumes();
    void releaseSkin() noexcept;
    /// @}

    /// The skin, else the skeleton, if it uses a manual volume of the kind asked for; null when neither does.
    [[nodiscard]] TW_ObjectAnimation* findManualVolume(bool (TW_ObjectAnimation::*isUsed)() const noexcept) const;
    void buildByName(S_Script& skeletonScript, const char* skeletonBlock, S_Script& skinScript, const char* skinBlock);
    void nameAfterParts();

    /// @name Bones
    /// @{
    void setUpBones();
    void handOutBoneMatrices();
    void shareReferencePose(const TW_VertexAnimation& source) noexcept;
    void takeReferencePose();
    void releaseReferencePose() noexcept;
    void updateBoneMatrices();
    [[nodiscard]] bool hasMovedSinceUpdate();
    /// @}

    bool m_bConstructed;
    SharedSkeleton* m_pSharedSkeleton;
    TW_ObjectAnimation* m_pSkin;
    Skin* m_pSkinData;
    ReferencePose* m_pReferencePose;
    S_Vector<M_Matrix4x3Template<float>> m_vecBoneMatrices;
    /// Change counts of bones and skin when the bone matrices were written, and whether all their world matrices were
    /// up to date then: only then is it sure that equal counts mean equal matrices.
    unsigned long long m_uBoneChange;
    unsigned long long m_uSkinChange;
    bool m_bWorldsWereValid;
};

/// The content of one skin data file.
///
/// Copies share the record. Indices are not checked by the queries: primitives, vertices and influences must exist. The
/// record itself is checked when it comes in, so that a vertex of a primitive always leads to influences and bones that
/// exist.
class TW2_API TW_VertexAnimation::Skin : public S_Allocated
{
public:
    /// @name Life
    /// A failed form leaves the object not constructed.
    /// @{
    Skin() noexcept;
    /// Copies a record. Throws TW_Exception_InvalidGeometry when one of its indices points outside its list.
    explicit Skin(const SkinChunk& chunk);
    /// Reads a skin data file. Throws what reading throws: S_FileException, S_MemoryFileException.
    explicit Skin(const S_String& fileName);
    Skin(const Skin& other);
    /// Copies the flag and the record.
    Skin& operator=(const Skin& other);
    ~Skin();

    void construct(const SkinChunk& chunk);
    void construct(const S_String& fileName);
    void construct(const Skin& other);
    /// The record keeps its contents until it is overwritten or destroyed.
    void destruct() noexcept { m_bConstructed = false; }
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Vertices
    /// @{

    /// False for old files, whose data know no primitives: all vertices are one.
    [[nodiscard]] bool isSortedByPrimitive() const noexcept { return m_pChunk->sortedByPrimitive; }
    [[nodiscard]] int getPrimitiveVertexCount(int primitive) const noexcept
    {
        return static_cast<int>(m_pChunk->primitiveVertexCounts[static_cast<std::size_t>(primitive)]);
    }
    /// Number of influences of a vertex.
    [[nodiscard]] int getVertexBoneCount(int primitive, int vertex) const noexcept
    {
        return m_pChunk->vertexBoneCounts[find(primitive, vertex)];
    }
    /// The bone counts of a primitive's vertices, in order; valid as long as the object is unchanged.
    [[nodiscard]] const int* getVertexBoneCountList(int primitive) const noexcept
    {
        return m_pChunk->vertexBoneCounts.data() + find(primitive, 0);
    }
    /// The bone of an influence, as an index into the record's bone names.
    [[nodiscard]] int getVertexBone(int primitive, int vertex, int influence) const noexcept
    {
        return m_pChunk->influenceBones[find(primitive, vertex, influence)];
    }
    [[nodiscard]] float getVertexWeight(int primitive, int vertex, int influence) const noexcept
    {
        return m_pChunk->influenceWeights[find(primitive, vertex, influence)];
    }
    /// @}

    /// @name Whole record
    /// @{
    [[nodiscard]] const SkinChunk& getSkinChunk() const noexcept { return *m_pChunk; }
    /// Whether any vertex follows the bone of that name (any letter case).
    [[nodiscard]] bool boneHasVerticesWeighted(const char* boneName) const;
    /// Throws TW_Exception_InvalidGeometry unless the object names are those of the skin's meshes, in order, and every
    /// bone name is that of a mesh of the skeleton (any letter case).
    void checkDataValidity(TW_VertexAnimation* vertexAnimation) const;
    /// @}

private:
    [[nodiscard]] std::size_t find(int primitive, int vertex) const noexcept
    {
        return std::size_t{m_pChunk->primitiveFirstVertices[static_cast<std::size_t>(primitive)]} +
               static_cast<std::size_t>(vertex);
    }
    [[nodiscard]] std::size_t find(int primitive, int vertex, int influence) const noexcept
    {
        return static_cast<std::size_t>(m_pChunk->vertexInfluenceStarts[find(primitive, vertex)]) +
               static_cast<std::size_t>(influence);
    }

    struct SharedChunk;

    void initializeMembers() noexcept;
    void take(SkinChunk&& chunk);
    void share(const Skin& other) noexcept;
    void release() noexcept;

    bool m_bConstructed;
    SharedChunk* m_pShared;     // by all copies
    const SkinChunk* m_pChunk;  // the shared one, or an empty one
};
}  // namespace TW2
