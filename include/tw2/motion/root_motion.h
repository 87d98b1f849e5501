#pragma once

#include <tw2/export.h>
#include <tw2/motion/animation_clock.h>
#include <tw2/motion/rotation.h>

namespace TW2
{
class TW_KeyframeAnimation;
class TW_VirtualObject;

/// The travel of one animation: how far, and turned by how much, the object comes while the animation plays.
///
///     TW_RootMotion walk(soldier, soldier.findAnimation("walk"));
///     TW_AnimationClock clock(soldier, soldier.findAnimation("walk"));
///     TW_Travel place;
///     ... every frame: clock.advance(seconds); place = walk.getTravel(clock.getLastStep()) * place;
///     soldier.setMatrix(place.toMatrix());
///
/// A travel is rigid and in the space of the object as it stood at the beginning of the step, so it composes with
/// whatever the host does to the object. Loops go on where the one before ended; over any number of them nothing
/// drifts: steps end where the next begin, and a whole loop is always the same travel. An animation without travel
/// gives the identity.
///
/// Looks at the animation's track, which the object owns: valid until animations are added to it or deleted. Allocates
/// nothing.
class TW2_API TW_RootMotion
{
public:
    /// Without travel.
    TW_RootMotion() noexcept = default;
    /// Of an animation index; one that does not exist, or has no travel, gives the identity.
    TW_RootMotion(const TW_VirtualObject& object, int index);

    /// Whether the animation has a travel; without one every step's travel is none.
    [[nodiscard]] bool isMoving() const noexcept { return m_pTrack != nullptr; }
    /// From the beginning of a step to its end.
    [[nodiscard]] TW_Travel getTravel(const TW_ClockStep& step) const;
    /// From one moment to another, later or earlier.
    [[nodiscard]] TW_Travel getTravel(const TW_ClockMoment& from, const TW_ClockMoment& to) const;
    /// From one time to another, in seconds from the beginning of loop 0.
    [[nodiscard]] TW_Travel getTravel(double from, double to) const;
    /// Of one whole loop, from the loop-to frame to the end; of an animation that does not loop from its beginning to
    /// its end.
    [[nodiscard]] const TW_Travel& getLoopTravel() const noexcept { return m_loop; }

private:
    // From frame 0 of loop 0 to a moment.
    [[nodiscard]] TW_Travel getPlace(const TW_ClockMoment& moment) const;
    [[nodiscard]] TW_Travel sample(double frame) const;

    const TW_KeyframeAnimation* m_pTrack = nullptr;
    TW_AnimationCourse m_course;
    double m_dFramesPerSecond = 0.0;
    TW_Travel m_begin;  // from where the track begins to frame 0
    TW_Travel m_loop;
    TW_Travel m_whole;   // from frame 0 to the end
    TW_Travel m_loopTo;  // from frame 0 to the loop-to frame
};
}  // namespace TW2
