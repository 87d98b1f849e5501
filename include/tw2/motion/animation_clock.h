#pragma once

#include <tw2/export.h>
#include <tw2/object/animation_description.h>

#include <cstddef>
#include <span>

namespace TW2
{
class TW_VirtualObject;

/// A moment of an animation that runs: the frame, and how often it has gone round.
///
/// In loop 0 frames go from 0 to the end; in later ones from the loop-to frame to the end, in earlier ones (played
/// backwards) from 0 to the end. The end of a loop and the beginning of the next are one moment, told as the beginning
/// except at the very end of an animation that stops there.
struct TW_ClockMoment
{
    double m_dFrame = 0.0;  ///< 0 to the end of its loop
    long long m_iLoop = 0;  ///< rounds since it began; negative backwards; counted up to 9e15
    friend bool operator==(const TW_ClockMoment&, const TW_ClockMoment&) = default;
};

/// A movement of a clock: from a moment over so many frames. What lies in it can be gone through any number of times.
struct TW_ClockStep
{
    TW_AnimationCourse m_course;  ///< how the animation runs
    TW_ClockMoment m_from;        ///< where the step begins
    double m_dFrames = 0.0;       ///< negative backwards
    long long m_iLoopLimit = 0;   ///< rounds after which it stops, in either direction; 0: none
    bool m_bFirst = false;        ///< what stands at `m_from` belongs to the step: it is where playing began
};

/// The pieces of a step within single loops, one after the other.
///
/// A step of more than a million loops leaves out whole loops, as many as that takes: nothing is heard of them.
class TW2_API TW_ClockWalk
{
public:
    /// Stands before the first piece; `next` goes to it.
    explicit TW_ClockWalk(const TW_ClockStep& step) noexcept;

    /// Goes on to the next piece; false at the end of the step, where `getMoment` is the moment that the clock has
    /// then.
    bool next() noexcept;
    /// Goes on to the end of the step.
    void finish() noexcept
    {
        while (next())
        {
        }
    }
    /// @name The present piece
    /// @{

    /// Frame at which the piece begins.
    [[nodiscard]] double getFrom() const noexcept { return m_dFrom; }
    /// Frame at which the piece ends; below `getFrom` when the clock runs backwards.
    [[nodiscard]] double getTo() const noexcept { return m_dTo; }
    /// Whether it arrives at where one loop becomes the next and the animation goes on there, so that what stands on
    /// the other side of the seam is reached as well.
    [[nodiscard]] bool isPassingOn() const noexcept { return m_bPassingOn; }
    /// Frames from the step's beginning to the piece's.
    [[nodiscard]] double getTravelled() const noexcept { return m_dTravelled; }
    /// @}
    /// The moment reached so far; at the end of the step the one that the clock has then.
    [[nodiscard]] const TW_ClockMoment& getMoment() const noexcept { return m_moment; }
    /// Whether the animation has come to its end.
    [[nodiscard]] bool isFinished() const noexcept { return m_bFinished; }
    /// The other side of the seam that the present piece arrives at.
    [[nodiscard]] double getOtherSide() const noexcept { return m_dOtherSide; }

private:
    [[nodiscard]] double getBegin() const noexcept;
    [[nodiscard]] bool isLast() const noexcept;
    void skipLoops() noexcept;
    void goForward() noexcept;
    void goBackward() noexcept;

    TW_AnimationCourse m_course;
    TW_ClockMoment m_moment;
    long long m_iLoopLimit;
    double m_dLeft;  // frames, above 0
    bool m_bBackward;
    bool m_bFinished = false;
    bool m_bPassingOn = false;
    double m_dFrom = 0.0;
    double m_dTo = 0.0;
    double m_dOtherSide = 0.0;
    double m_dTravelled = 0.0;
};

/// The events of a step, in the order of time, each once.
///
///     for (TW_EventIterator i(clock.getLastStep(), soldier.getAnimationEvents(WALK)); const auto* event = i.next();)
///
/// An event belongs to the step that arrives at it, forwards or backwards; the one that stands where playing began
/// belongs to the first step. So it is delivered once per crossing, however time is cut into steps. Allocates nothing;
/// the events must outlive the iterator.
class TW2_API TW_EventIterator
{
public:
    TW_EventIterator() noexcept : TW_EventIterator({}, {}) {}
    /// The events of a step; they must outlive the iterator and be in the order of their frames.
    TW_EventIterator(const TW_ClockStep& step, std::span<const TW_AnimationEvent> events) noexcept;

    /// The next event; null when there is none left.
    const TW_AnimationEvent* next() noexcept;
    /// How far into the step the event that `next` gave lies, in frames, not negative.
    [[nodiscard]] double getTravelled() const noexcept { return m_dTravelled; }

private:
    // The events that stand in [low, high], without those on an end that does not belong to it.
    void setRange(double low, bool withLow, double high, bool withHigh) noexcept;
    bool advance() noexcept;

    TW_ClockWalk m_walk;
    std::span<const TW_AnimationEvent> m_events;
    bool m_bBackward;
    bool m_bOtherSideLeft = false;
    std::size_t m_uiNext = 0;  // of the range, counted in its direction
    std::size_t m_uiBegin = 0;
    std::size_t m_uiEnd = 0;
    double m_dRangeFrom = 0.0;       // the frame where the range begins, in its direction
    double m_dRangeTravelled = 0.0;  // how far into the step that is
    double m_dTravelled = 0.0;
};

/// Runs through one animation of an object: a host's own clock, with the loops, the end and the events.
///
///     TW_AnimationClock clock(soldier, soldier.findAnimation("walk"));
///     ... every frame:
///     clock.advance(seconds);
///     soldier.animateObjectFrame(clock.getAnimation(), clock.getFrame(), nullptr);
///     for (TW_EventIterator i = clock.getEvents(); const TW_AnimationEvent* event = i.next();) { ... }
///
/// It keeps the object's address and asks it for frame rate and events; the object must outlive it. What the
/// animation's tracks are is looked up once, by the constructor. Allocates nothing.
class TW2_API TW_AnimationClock
{
public:
    /// At `start` seconds. `loops`: rounds after which a looping animation stops, 0 for none. An index that does not
    /// exist gives a clock that stands at 0 and has no events.
    TW_AnimationClock(const TW_VirtualObject& object, int index, double start = 0.0, long long loops = 0);

    /// Moves by `seconds` (negative: backwards; not finite: not at all) at the animation's frame rate.
    void advance(double seconds) noexcept;
    /// Goes to a time in seconds from the beginning of loop 0; there are no events on the way.
    void seek(double seconds) noexcept;

    /// Index of the animation that the clock was made for.
    [[nodiscard]] int getAnimation() const noexcept { return m_iAnimation; }
    /// Where the clock stands.
    [[nodiscard]] const TW_ClockMoment& getMoment() const noexcept { return m_moment; }
    /// The frame to play; of a looping animation always before its end.
    [[nodiscard]] float getFrame() const noexcept;
    /// Whether it stands at the end of an animation that stops, or at its beginning, played backwards.
    [[nodiscard]] bool isFinished() const noexcept { return m_bFinished; }
    /// The last movement, and its events.
    [[nodiscard]] const TW_ClockStep& getLastStep() const noexcept { return m_step; }
    /// The events of the last movement, in the order in which it meets them. Valid until the clock moves again or the
    /// animation is deleted.
    [[nodiscard]] TW_EventIterator getEvents() const noexcept;

private:
    const TW_VirtualObject* m_pObject;
    int m_iAnimation;
    TW_ClockMoment m_moment;
    TW_ClockStep m_step;
    bool m_bFinished = false;
    bool m_bFresh = true;
};

/// The moment that is `frames` from the beginning of loop 0.
[[nodiscard]] TW2_API TW_ClockMoment findMoment(const TW_AnimationCourse& course, double frames,
                                                long long loopLimit) noexcept;
/// The frame at which tracks give the pose of a moment: of a looping animation always before its end, where the tracks
/// would begin again at frame 0.
[[nodiscard]] TW2_API float getPoseFrame(const TW_AnimationCourse& course, const TW_ClockMoment& moment) noexcept;
}  // namespace TW2
