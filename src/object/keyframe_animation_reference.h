#pragma once

#include <tw2/keyframe/keyframe_animation.h>

namespace TW2
{
/// Lets go of one hold on a keyframe animation; the last holder deletes it. Null is ignored.
inline void dropReference(TW_KeyframeAnimation* animation) noexcept
{
    if (!animation)
    {
        return;
    }
    if (animation->decreaseObjectReferenceCount() == 0)
    {
        animation->increaseObjectReferenceCount();  // the hold under which it gives its tracks up
        delete animation;
    }
}
}  // namespace TW2
