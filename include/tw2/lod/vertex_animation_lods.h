#pragma once

#include <tw2/export.h>
#include <tw2/lod/levels_of_detail.h>

class S_Script;

namespace TW2
{
class TW_MaterialManager;

/// One skinned character at several levels of detail: a vertex animation per level, all on one skeleton, of which the
/// engine shows the one that fits the camera's distance.
///
///     const int skins[] = {1, 2};  // blocks of soldier.txt, finest first; block 0 is the skeleton
///     TW_VertexAnimationLODs soldier(&script, 0, 2, &script, skins);
///     soldier.addTo(&scene);
///     ... every frame: soldier.animateObject(WALK, time, nullptr); ...
///
/// Playing, blending, states and what is asked about bones and animations go to level 0, whose skeleton moves the skins
/// of all levels and hangs below this object; its manual bounding volumes are those of the whole. Textures are animated
/// and uploaded on every level; what is asked about them is asked of the level in use or, while none is in use, of the
/// last one.
class TW2_API TW_VertexAnimationLODs : public TW_LevelsOfDetail<TW_VertexAnimation>
{
public:
    /// @name Life
    /// Every form builds from scratch: what the object was before is destructed first. A form that throws leaves the
    /// object not constructed. A level count below 1 is a TW_Exception_InvalidScriptParameter that names the skin
    /// script. Blocks are positions at their script's current level. `withVisibility`: the skins' tracks carry
    /// visibility.
    /// @{

    /// Not constructed: no levels.
    TW_VertexAnimationLODs() = default;
    /// The skeleton from a block; level i is the skin of block `blockIndices[i]`, shown up to the distance
    /// `distances[i]`.
    TW_VertexAnimationLODs(S_Script* skeletonScript, int skeletonBlock, int levelCount, S_Script* skinScript,
                           const int* blockIndices, const float* distances, bool withVisibility = false)
        : TW_VertexAnimationLODs()
    {
        construct(skeletonScript, skeletonBlock, levelCount, skinScript, blockIndices, distances, withVisibility);
    }
    /// Distances from the key "distance" of each skin block's "geometry" block; 0, or none, is the largest float.
    TW_VertexAnimationLODs(S_Script* skeletonScript, int skeletonBlock, int levelCount, S_Script* skinScript,
                           const int* blockIndices, bool withVisibility = false)
        : TW_VertexAnimationLODs()
    {
        construct(skeletonScript, skeletonBlock, levelCount, skinScript, blockIndices, nullptr, withVisibility);
    }
    /// The same on a copy of an object animation, which may be the skeleton that the object has now.
    TW_VertexAnimationLODs(const TW_ObjectAnimation& skeleton, int levelCount, S_Script* skinScript,
                           const int* blockIndices, bool withVisibility = false)
        : TW_VertexAnimationLODs()
    {
        construct(skeleton, levelCount, skinScript, blockIndices, withVisibility);
    }
    /// Copies of skeleton and levels, with the same distances.
    TW_VertexAnimationLODs(const TW_VertexAnimationLODs& other) : TW_VertexAnimationLODs()
    {
        construct(other, nullptr);
    }
    /// The same; copying an object onto itself does nothing.
    TW_VertexAnimationLODs& operator=(const TW_VertexAnimationLODs& other);
    /// Takes the levels out of the tree and deletes them; the skeleton goes with its last holder.
    ~TW_VertexAnimationLODs() override { destruct(); }

    /// As the constructors of the same arguments, in the place of what the object was before. When it throws, the
    /// object is not constructed.
    void construct(S_Script* skeletonScript, int skeletonBlock, int levelCount, S_Script* skinScript,
                   const int* blockIndices, const float* distances, bool withVisibility = false);
    void construct(S_Script* skeletonScript, int skeletonBlock, int levelCount, S_Script* skinScript,
                   const int* blockIndices, bool withVisibility = false);
    void construct(const TW_ObjectAnimation& skeleton, int levelCount, S_Script* skinScript, const int* blockIndices,
                   bool withVisibility = false);
    /// Copies with the materials of a manager; null: with the levels' own.
    void construct(const TW_VertexAnimationLODs& source, TW_MaterialManager* materials);
    /// @}

    /// The skeleton of all levels; null for an object that is not constructed.
    [[nodiscard]] TW_ObjectAnimation* getSkeleton() const;

    /// Replaces the skins' materials on every level by those of a manager (not taken over).
    void remapMaterials(TW_MaterialManager* manager);

    /// @name Scene object
    /// @{
    [[nodiscard]] ObjectType getType() const override { return ObjectType::SkinnedLevels; }
    [[nodiscard]] const char* getObjectType() const override { return "TW_VertexAnimationLODs"; }
    /// @}

private:
    [[nodiscard]] TW_ObjectAnimation* getPart(Operations operations, unsigned int i) const override;
    template <typename ConstructFirst>
    void buildFromScript(int levelCount, S_Script* script, const int* blockIndices, const float* distances,
                         bool withVisibility, const ConstructFirst& constructFirst);
    void complete() override;
};
}  // namespace TW2
