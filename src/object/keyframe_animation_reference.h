#pragma once

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/keyframe/track_list.h>

namespace TW2
{
/// Lets go of one hold on a keyframe animation; the last holder deletes it. Null is ignored.
inline void dropReference(TW_KeyframeAnimation* animation) noexcept
{
    if (animation && animation->decreaseObjectReferenceCount() == 0)
    {
        animation->increaseObjectReferenceCount();  // the hold under which it gives its tracks up
        delete animation;
    }
}

/// One more hold on every animation of a record.
inline void holdTracks(const TW_TrackList& tracks) noexcept
{
    for (const TW_KeyframeAnimation* animation : tracks)
    {
        if (animation)
        {
            animation->increaseObjectReferenceCount();
        }
    }
}
}  // namespace TW2
