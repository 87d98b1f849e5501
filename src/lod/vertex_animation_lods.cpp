#include "core/release_guard.h"
#include "lod/level_building.h"
#include "object/object_animation_script.h"

#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>

#include <algorithm>

namespace TW2
{
TW_VertexAnimationLODs& TW_VertexAnimationLODs::operator=(const TW_VertexAnimationLODs& other)
{
    construct(other, nullptr);
    return *this;
}

/// The skeleton of all levels hangs below the object as well, so that the scene reaches it.
void TW_VertexAnimationLODs::complete()
{
    requireObject(getSkeleton());
    TW_LevelsOfDetail::complete();
    getSkeleton()->addTo(this);
}

/// Builds all levels; `constructFirst` constructs level 0, which brings the skeleton.
template <typename ConstructFirst>
void TW_VertexAnimationLODs::buildFromScript(int levelCount, S_Script* script, const int* blockIndices,
                                             const float* distances, bool withVisibility,
                                             const ConstructFirst& constructFirst)
{
    build(
        [&]
        {
            const S_Vector<float> ranges = findRanges(script, levelCount, blockIndices, distances);
            const S_String nesting = script->staticNesting();
            const char* const block = script->getBlockName(static_cast<unsigned int>(blockIndices[0]));
            createLevels(levelCount);
            TW_VertexAnimation& first = addLevel(ranges[0], constructFirst);
            first.setName(S_STR("TW_VertexAnimationLODs %d %s, %s", 0, nesting.c_str(), block));
            setName(
                S_STR("TW_VertexAnimationLODs %s; %s, %s", getSkeleton()->getName().c_str(), nesting.c_str(), block));
            for (std::size_t i = 1; i < ranges.size(); ++i)
            {
                addLevel(ranges[i], [&](TW_VertexAnimation& level)
                         { level.construct(&first, script, blockIndices[i], withVisibility); });
            }
        });
}

void TW_VertexAnimationLODs::construct(S_Script* skeletonScript, int skeletonBlock, int levelCount,
                                       S_Script* skinScript, const int* blockIndices, const float* distances,
                                       bool withVisibility)
{
    buildFromScript(levelCount, skinScript, blockIndices, distances, withVisibility,
                    [&](TW_VertexAnimation& level)
                    { level.construct(skeletonScript, skeletonBlock, skinScript, blockIndices[0], withVisibility); });
}

void TW_VertexAnimationLODs::construct(S_Script* skeletonScript, int skeletonBlock, int levelCount,
                                       S_Script* skinScript, const int* blockIndices, bool withVisibility)
{
    construct(skeletonScript, skeletonBlock, levelCount, skinScript, blockIndices, nullptr, withVisibility);
}

void TW_VertexAnimationLODs::construct(const TW_ObjectAnimation& skeleton, int levelCount, S_Script* skinScript,
                                       const int* blockIndices, bool withVisibility)
{
    const ReleaseGuard passed(&skeleton);
    buildFromScript(levelCount, skinScript, blockIndices, nullptr, withVisibility,
                    [&](TW_VertexAnimation& level)
                    { level.construct(skeleton, skinScript, blockIndices[0], withVisibility); });
}

void TW_VertexAnimationLODs::construct(const TW_VertexAnimationLODs& source, TW_MaterialManager* materials)
{
    const ReleaseGuard passed(materials);
    buildCopy(source,
              [&](TW_VertexAnimation& copy, const TW_VertexAnimation& level)
              {
                  TW_VertexAnimation* const first = getLevels().front();
                  if (&copy == first)
                  {
                      copy.construct(level, materials);
                  }
                  else
                  {
                      copy.construct(first, level, materials);
                  }
              });
}

/// Animation belongs to the skeleton that all levels share, textures to the skin of each.
TW_ObjectAnimation* TW_VertexAnimationLODs::getPart(Operations operations, unsigned int i) const
{
    if (i >= (operations == Operations::Texture ? getLevels().size() : std::min<std::size_t>(getLevels().size(), 1)))
    {
        return nullptr;
    }
    switch (operations)
    {
        case Operations::Show:
        case Operations::Texture:
            return getLevels()[i]->getSkin();
        case Operations::AskTexture:
            return getUsedOrLast()->getSkin();
        default:
            return getSkeleton();
    }
}

TW_ObjectAnimation* TW_VertexAnimationLODs::getSkeleton() const
{
    return getLevels().empty() ? nullptr : getLevels().front()->getSkeleton();
}

void TW_VertexAnimationLODs::remapMaterials(TW_MaterialManager* manager)
{
    const ReleaseGuard passed(manager);
    for (TW_VertexAnimation* level : getLevels())
    {
        level->remapMaterials(manager);
    }
}

}  // namespace TW2
