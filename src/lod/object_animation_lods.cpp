#include "lod/level_building.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/script.h>

#include <algorithm>

namespace TW2
{
TW_ObjectAnimationLODs& TW_ObjectAnimationLODs::operator=(const TW_ObjectAnimationLODs& other)
{
    construct(other);
    return *this;
}

void TW_ObjectAnimationLODs::construct(S_Script* script, int levelCount, const int* blockIndices,
                                       const float* distances, bool keyframeFlag)
{
    build(
        [&]
        {
            const S_Vector<float> ranges = findRanges(script, levelCount, blockIndices, distances);
            setName(S_STR("TW_ObjectAnimationLODs %s %s", script->staticNesting(),
                          script->getBlockName(static_cast<unsigned int>(blockIndices[0]))));
            createLevels(levelCount);
            for (std::size_t i = 0; i < ranges.size(); ++i)
            {
                addLevel(ranges[i], [&](TW_ObjectAnimation& level)
                         { level.construct(script, blockIndices[i], nullptr, keyframeFlag); });
            }
        });
}

void TW_ObjectAnimationLODs::construct(S_Script* script, int levelCount, const int* blockIndices, bool keyframeFlag)
{
    construct(script, levelCount, blockIndices, nullptr, keyframeFlag);
}

void TW_ObjectAnimationLODs::construct(const TW_ObjectAnimationLODs& other)
{
    buildCopy(other,
              [](TW_ObjectAnimation& copy, const TW_ObjectAnimation& level) { copy.construct(level, false, nullptr); });
}

/// What moves moves on every level, what is asked is asked of the level in use.
TW_ObjectAnimation* TW_ObjectAnimationLODs::getPart(Operations operations, unsigned int i) const
{
    const bool goesToAll =
        operations == Operations::Move || operations == Operations::Show || operations == Operations::Texture;
    if (i >= (goesToAll ? getLevels().size() : std::min<std::size_t>(getLevels().size(), 1)))
    {
        return nullptr;
    }
    switch (operations)
    {
        case Operations::Freeze:
            return getUsedLODObject();
        case Operations::Ask:
        case Operations::AskTexture:
            return getUsedOrLast();
        default:
            return getLevels()[i];
    }
}

}  // namespace TW2
