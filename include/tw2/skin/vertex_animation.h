#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/object/forwarding_object.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/counter.h>
#include <platform/runtime/handle.h>
#include <platform/scene/frame_preparation.h>

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
/// own. Playing and moving allocate nothing. Threads as of TW_ObjectAnimation; those that share a skeleton are one
/// object in this.
class TW2_API TW_VertexAnimation : public TW_ForwardingObject, private P_FramePreparation
{
public:
    class Skin;

    /// @name Life
    /// Every form builds from scratch: what the object was before is destructed first. A form that throws (scripts and
    /// files: their exceptions; skin data that do not fit: TW_Exception_InvalidGeometry; a vertex with more than 4
    /// bones: P_DriverException_TooManyBonesPerVertex; memory: S_MemoryException_Allocation) leaves the object not
    /// constructed. Given a skin block, it must name skin data ("skindata"); `withVisibility`: the skin's tracks carry
    /// visibility, for `updateVisibility`. Objects and scripts that are passed in stay the caller's; they may be parts
    /// of the object itself, which are copied before they go.
    /// @{

    /// Not constructed: no skeleton, no skin, no skin data.
    TW_VertexAnimation() { initializeMembers(); }
    /// Skeleton and skin from two named blocks of one script file.
    TW_VertexAnimation(const char* scriptFile, const char* skeletonBlock, const char* skinBlock,
                       bool withVisibility = false)
        : TW_VertexAnimation()
    {
        construct(scriptFile, skeletonBlock, skinBlock, withVisibility);
    }
    TW_VertexAnimation(S_Script* script, const char* skeletonBlock, const char* skinBlock, bool withVisibility = false)
        : TW_VertexAnimation()
    {
        construct(script, skeletonBlock, skinBlock, withVisibility);
    }
    /// Skeleton and skin from a named block each, of two scripts.
    TW_VertexAnimation(S_Script* skeletonScript, const char* skeletonBlock, S_Script* skinScript, const char* skinBlock,
                       bool withVisibility = false)
        : TW_VertexAnimation()
    {
        construct(skeletonScript, skeletonBlock, skinScript, skinBlock, withVisibility);
    }
    TW_VertexAnimation(const char* skeletonScriptFile, const char* skeletonBlock, const char* skinScriptFile,
                       const char* skinBlock, bool withVisibility = false)
        : TW_VertexAnimation()
    {
        construct(skeletonScriptFile, skeletonBlock, skinScriptFile, skinBlock, withVisibility);
    }
    /// The same with strings.
    template <typename File, typename Skeleton, typename Block>
    requires TW_Texts<File, Skeleton, Block> TW_VertexAnimation(const File& scriptFile, const Skeleton& skeletonBlock,
                                                                const Block& skinBlock, bool withVisibility = false)
        : TW_VertexAnimation(asCString(scriptFile), asCString(skeletonBlock), asCString(skinBlock), withVisibility)
    {
    }
    /// The same with a string of the host's.
    template <typename Skeleton, typename Block>
    requires TW_Texts<Skeleton, Block> TW_VertexAnimation(S_Script* script, const Skeleton& skeletonBlock,
                                                          const Block& skinBlock, bool withVisibility = false)
        : TW_VertexAnimation(script, asCString(skeletonBlock), asCString(skinBlock), withVisibility)
    {
    }
    /// The same with a string of the host's.
    template <typename Skeleton, typename Block>
    requires TW_Texts<Skeleton, Block> TW_VertexAnimation(S_Script* skeletonScript, const Skeleton& skeletonBlock,
                                                          S_Script* skinScript, const Block& skinBlock,
                                                          bool withVisibility = false)
        : TW_VertexAnimation(skeletonScript, asCString(skeletonBlock), skinScript, asCString(skinBlock), withVisibility)
    {
    }
    /// The same with a string of the host's.
    template <typename File, typename Skeleton, typename SkinFile, typename Block>
    requires TW_Texts<File, Skeleton, SkinFile, Block> TW_VertexAnimation(const File& skeletonScriptFile,
                                                                          const Skeleton& skeletonBlock,
                                                                          const SkinFile& skinScriptFile,
                                                                          const Block& skinBlock,
                                                                          bool withVisibility = false)
        : TW_VertexAnimation(asCString(skeletonScriptFile), asCString(skeletonBlock), asCString(skinScriptFile),
                             asCString(skinBlock), withVisibility)
    {
    }
    /// Skeleton and skin from the blocks at two positions (from 0, at each script's current level).
    TW_VertexAnimation(S_Script* skeletonScript, int skeletonBlock, S_Script* skinScript, int skinBlock,
                       bool withVisibility = false)
        : TW_VertexAnimation()
    {
        construct(skeletonScript, skeletonBlock, skinScript, skinBlock, withVisibility);
    }
    /// Copies of two object animations; without skin data, so that no bone matrix is ever updated.
    TW_VertexAnimation(TW_ObjectAnimation* skeleton, TW_ObjectAnimation* skin) : TW_VertexAnimation()
    {
        construct(skeleton, skin);
    }
    /// A new skin on the skeleton of another vertex animation, which both share from then on.
    TW_VertexAnimation(TW_VertexAnimation* skeletonSource, S_Script* script, int skinBlock, bool withVisibility = false)
        : TW_VertexAnimation()
    {
        construct(skeletonSource, script, skinBlock, withVisibility);
    }
    /// A copy of a skin (with the given materials; null: the skin's own) on the skeleton of another vertex animation.
    TW_VertexAnimation(TW_VertexAnimation* skeletonSource, const TW_VertexAnimation& skinSource,
                       TW_MaterialManager* materialManager)
        : TW_VertexAnimation()
    {
        construct(skeletonSource, skinSource, materialManager);
    }
    /// A new skin on a copy of an object animation.
    TW_VertexAnimation(const TW_ObjectAnimation& skeleton, S_Script* script, int skinBlock, bool withVisibility = false)
        : TW_VertexAnimation()
    {
        construct(skeleton, script, skinBlock, withVisibility);
    }
    /// Copies of skeleton, skin (with the given materials; null: the skin's own) and skin data.
    TW_VertexAnimation(const TW_VertexAnimation& other, TW_MaterialManager* materialManager) : TW_VertexAnimation()
    {
        construct(other, materialManager);
    }
    TW_VertexAnimation(const TW_VertexAnimation& other) : TW_VertexAnimation() { construct(other, nullptr); }
    /// The same copy; copying an object onto itself does nothing.
    TW_VertexAnimation& operator=(const TW_VertexAnimation& other);
    /// Deletes skeleton and skin, unless other characters share the skeleton.
    ~TW_VertexAnimation() override { destruct(); }

    /// As the constructors of the same arguments, in the place of what the object was before. When it throws, the
    /// object is not constructed.
    void construct(const char* scriptFile, const char* skeletonBlock, const char* skinBlock,
                   bool withVisibility = false);
    void construct(S_Script* script, const char* skeletonBlock, const char* skinBlock, bool withVisibility = false);
    void construct(S_Script* skeletonScript, const char* skeletonBlock, S_Script* skinScript, const char* skinBlock,
                   bool withVisibility = false);
    void construct(const char* skeletonScriptFile, const char* skeletonBlock, const char* skinScriptFile,
                   const char* skinBlock, bool withVisibility = false);
    /// The same with a string of the host's.
    template <typename File, typename Skeleton, typename Block>
    requires TW_Texts<File, Skeleton, Block>
    void construct(const File& scriptFile, const Skeleton& skeletonBlock, const Block& skinBlock,
                   bool withVisibility = false)
    {
        construct(asCString(scriptFile), asCString(skeletonBlock), asCString(skinBlock), withVisibility);
    }
    /// The same with a string of the host's.
    template <typename Skeleton, typename Block>
    requires TW_Texts<Skeleton, Block>
    void construct(S_Script* script, const Skeleton& skeletonBlock, const Block& skinBlock, bool withVisibility = false)
    {
        construct(script, asCString(skeletonBlock), asCString(skinBlock), withVisibility);
    }
    /// The same with a string of the host's.
    template <typename Skeleton, typename Block>
    requires TW_Texts<Skeleton, Block>
    void construct(S_Script* skeletonScript, const Skeleton& skeletonBlock, S_Script* skinScript,
                   const Block& skinBlock, bool withVisibility = false)
    {
        construct(skeletonScript, asCString(skeletonBlock), skinScript, asCString(skinBlock), withVisibility);
    }
    /// The same with a string of the host's.
    template <typename File, typename Skeleton, typename SkinFile, typename Block>
    requires TW_Texts<File, Skeleton, SkinFile, Block>
    void construct(const File& skeletonScriptFile, const Skeleton& skeletonBlock, const SkinFile& skinScriptFile,
                   const Block& skinBlock, bool withVisibility = false)
    {
        construct(asCString(skeletonScriptFile), asCString(skeletonBlock), asCString(skinScriptFile),
                  asCString(skinBlock), withVisibility);
    }
    /// The other forms, as the constructors.
    void construct(S_Script* skeletonScript, int skeletonBlock, S_Script* skinScript, int skinBlock,
                   bool withVisibility = false);
    void construct(TW_ObjectAnimation* skeleton, TW_ObjectAnimation* skin);
    void construct(TW_VertexAnimation* skeletonSource, S_Script* script, int skinBlock, bool withVisibility = false);
    void construct(TW_VertexAnimation* skeletonSource, const TW_VertexAnimation& skinSource,
                   TW_MaterialManager* materialManager);
    void construct(const TW_ObjectAnimation& skeleton, S_Script* script, int skinBlock, bool withVisibility = false);
    void construct(const TW_VertexAnimation& other, TW_MaterialManager* materialManager = nullptr);
    /// @}

    /// @name Parts
    /// @{

    /// The skeleton, perhaps shared; its meshes are the bones.
    [[nodiscard]] TW_ObjectAnimation* getSkeleton() const noexcept
    {
        return m_pSharedSkeleton ? m_pSharedSkeleton->m_pSkeleton : nullptr;
    }
    /// The skin's meshes and materials; null while the object is not constructed.
    [[nodiscard]] TW_ObjectAnimation* getSkin() const noexcept { return m_pSkin; }
    /// Null when the object was built from two object animations.
    [[nodiscard]] Skin* getSkinData() const noexcept { return m_pSkinData; }
    /// @}

    /// @name Bone matrices
    /// Matrix i takes a vertex of the skin's first mesh from its rest position to where bone i carries it, both in that
    /// mesh's space. Written by `executeAlways` and `updateBones`, after which all are the identity at rest; before the
    /// first of these, and for good without skin data, they are where the bones stand at rest, in that mesh's space.
    /// @{

    /// For hosts without a scene that calls `executeAlways`: writes the bone matrices for the pose as it is, whatever
    /// the camera sees. Nothing happens without skin data or meshes of the skin. Allocates nothing.
    void updateBones();
    /// One per mesh of the skeleton, in the order of its meshes; skin data may name fewer, in another order.
    [[nodiscard]] int getBoneMatrixCount() const noexcept { return static_cast<int>(m_vecBoneMatrices.size()); }
    /// Bone 0 to `getBoneMatrixCount()` - 1.
    [[nodiscard]] const M_Matrix4x3Template<float>& getBoneMatrix(int bone) const noexcept
    {
        return m_vecBoneMatrices[static_cast<std::size_t>(bone)];
    }
    /// @}

    /// @name Skin
    /// @{

    /// Replaces the skin's materials by those of a file; see TW_ObjectAnimation.
    void loadMaterials(const char* fileName);
    /// The same with a string of the host's.
    template <TW_String File>
    void loadMaterials(const File& fileName)
    {
        loadMaterials(fileName.c_str());
    }
    /// Replaces the skin's materials by those of a manager (not taken over).
    void remapMaterials(TW_MaterialManager* manager);
    /// @}

    /// @name Scene object
    /// The skin's manual bounding volumes come first, then the skeleton's, then the engine's own.
    /// @{
    [[nodiscard]] const char* getObjectType() const override { return "TW_VertexAnimation"; }
    void dump(bool details) const override;
    /// @}

protected:
    /// Writes the bone matrices, unless nothing has moved since they were written; a skin with manual bounding volumes
    /// that lies outside the view of the context's camera is not updated and stays hidden. Returns false.
    bool executeAlways() override;

private:
    struct SharedSkeleton : S_Allocated
    {
        SharedSkeleton() = default;
        ~SharedSkeleton();
        SharedSkeleton(const SharedSkeleton&) = delete;
        SharedSkeleton& operator=(const SharedSkeleton&) = delete;

        /// Whether nobody else has taken the skeleton for this frame; it is the caller's then.
        [[nodiscard]] bool takeFor(unsigned long long frame) noexcept
        {
            return m_uFrame.exchange(frame, std::memory_order_relaxed) != frame;
        }

        TW_ObjectAnimation* m_pSkeleton = nullptr;  ///< owned
        S_Counter<int> m_iReferenceCount{1};
        std::atomic<unsigned long long> m_uFrame = 0;
    };

    /// Per bone: from the space of the skin's first mesh to the bone's own, at rest. Copies share them, so that a crowd
    /// has them in the cache once; never changed once they are shared.
    struct ReferencePose : S_Allocated
    {
        S_Vector<M_Matrix4x3Template<float>> m_vecReferenceMatrices;
        S_Counter<int> m_iReferenceCount{1};
    };

    [[nodiscard]] TW_ObjectAnimation* getPart(Operations operations, unsigned int i) const override;
    void takeApart() noexcept override;
    void initializeMembers() noexcept;

    /// @name Skeleton
    /// @{
    TW_ObjectAnimation& createSkeleton();
    [[nodiscard]] S_Handle<SharedSkeleton> holdSkeleton(const TW_VertexAnimation* source);
    void addSkeleton(S_Script& script, int block);
    void copySkeleton(const TW_ObjectAnimation& source);
    void hideSkeleton();
    /// @}

    /// @name Skin
    /// @{
    void addSkin(S_Script& script, int block, bool withVisibility);
    template <typename Block>
    void constructSkin(S_Script& script, Block block, bool withVisibility);
    void copySkin(const TW_ObjectAnimation& source, const Skin* skinData, TW_MaterialManager* materialManager);
    void readSkinData(S_Script& script);
    void takeBoundingVolumes();
    /// @}

    void buildByName(S_Script& skeletonScript, const char* skeletonBlock, S_Script& skinScript, const char* skinBlock,
                     bool withVisibility);
    void nameAfterParts();

    /// @name Bones
    /// @{
    /// Fixes the rest pose and lets the skin's meshes read the bone matrices.
    void complete() override;
    void handOutBoneMatrices();
    void takeReferencePose();
    void prepareFrame(unsigned long long frame) noexcept override;
    [[nodiscard]] bool isSkinVisible() const;
    void updateBoneMatrices();
    [[nodiscard]] bool hasMovedSinceUpdate();
    void validateWorldMatrices();
    /// @}

    S_Handle<SharedSkeleton> m_pSharedSkeleton;
    TW_ObjectAnimation* m_pSkin;
    Skin* m_pSkinData;
    S_Handle<ReferencePose> m_pReferencePose;
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
/// record of a file is checked when it is read, so that a vertex of a primitive always leads to influences and bones
/// that exist; one that a host has made is taken as it is, and `SkinChunk::findInvalidValue` tells whether it is sound.
class TW2_API TW_VertexAnimation::Skin : public S_Allocated
{
public:
    /// @name Life
    /// A failed form leaves the object not constructed.
    /// @{

    /// Not constructed, with an empty record.
    Skin() noexcept;
    /// Copies a record, which may be incomplete: a query needs the lists that it reads.
    explicit Skin(const SkinChunk& chunk) : Skin() { construct(chunk); }
    /// Reads a skin data file. Throws what reading throws: S_FileException, S_MemoryFileException.
    explicit Skin(const S_String& fileName) : Skin() { construct(fileName); }
    /// The same with a string of the host's.
    template <TW_ForeignString File>
    explicit Skin(const File& fileName) : Skin(asString(fileName))
    {
    }
    /// Shares the record.
    Skin(const Skin& other) : Skin() { construct(other); }
    /// Copies the flag and the record.
    Skin& operator=(const Skin& other);
    /// The record goes with its last holder.
    ~Skin();

    /// As the constructors of the same arguments.
    void construct(const SkinChunk& chunk);
    void construct(const S_String& fileName);
    /// The same with a string of the host's.
    template <TW_ForeignString File>
    void construct(const File& fileName)
    {
        construct(asString(fileName));
    }
    /// Shares the record.
    void construct(const Skin& other);
    /// The record keeps its contents until it is overwritten or destroyed.
    void destruct() noexcept { m_bConstructed = false; }
    /// Whether the record is that of a file, of another skin or of the host.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Vertices
    /// @{

    /// False for old files, whose data know no primitives: all vertices are one.
    [[nodiscard]] bool isSortedByPrimitive() const noexcept { return m_pChunk->sortedByPrimitive; }
    /// Vertices of a primitive of the skin's meshes, counted over all of them.
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
    /// Weight of an influence of a vertex; those of one vertex usually add up to 1.
    [[nodiscard]] float getVertexWeight(int primitive, int vertex, int influence) const noexcept
    {
        return m_pChunk->influenceWeights[find(primitive, vertex, influence)];
    }
    /// @}

    /// @name Whole record
    /// @{

    /// The whole record; valid until the skin is constructed anew.
    [[nodiscard]] const SkinChunk& getSkinChunk() const noexcept { return *m_pChunk; }
    /// Whether any vertex follows the bone of that name (any letter case; null is the empty name).
    [[nodiscard]] bool boneHasVerticesWeighted(const char* boneName) const;
    /// The same with a string of the host's.
    template <TW_String Bone>
    [[nodiscard]] bool boneHasVerticesWeighted(const Bone& boneName) const
    {
        return boneHasVerticesWeighted(boneName.c_str());
    }
    /// Throws TW_Exception_InvalidGeometry unless the object names are those of the skin's meshes, in order, and every
    /// bone name is that of a mesh of the skeleton (any letter case). So it does for null and for an object that is not
    /// constructed.
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

    bool m_bConstructed;
    S_Handle<SharedChunk> m_pShared;  // by all copies
    const SkinChunk* m_pChunk;        // the shared one, or an empty one
};
}  // namespace TW2
