#pragma once

#include "keyframe/track_table.h"

namespace TW2
{
class TW_KeyframeAnimation;
class TW_RigidKeys;

/// What playing reads of an animation beside the track table.
struct TrackAccess
{
    /// The entry of an animation's transform track but for its search number. An animation without keys is one key, the
    /// identity.
    [[nodiscard]] static TrackEntry describe(const TW_KeyframeAnimation& animation) noexcept;

    /// The keys of a compact track that no other animation shares, else null. Whoever changes where they lie calls
    /// `tracksChanged`.
    [[nodiscard]] static TW_RigidKeys* accessUnsharedKeys(TW_KeyframeAnimation& animation) noexcept;

    /// The visibility at a frame; 1 without a visibility track. Writes no hint and nothing else.
    [[nodiscard]] static float getVisibility(const TW_KeyframeAnimation& animation, float frame) noexcept;
};
}  // namespace TW2
