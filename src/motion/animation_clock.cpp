#include <tw2/motion/animation_clock.h>
#include <tw2/object/virtual_object.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace TW2
{
namespace
{
double getLoopBegin(const TW_AnimationCourse& course, long long loop) noexcept
{
    return loop > 0 ? course.m_dLoopToFrame : 0.0;
}
}  // namespace

TW_ClockWalk::TW_ClockWalk(const TW_ClockStep& step) noexcept
    : m_course(step.m_course),
      m_moment(step.m_from),
      m_iLoopLimit(step.m_course.m_bLooping ? step.m_iLoopLimit : 1),
      m_dLeft(std::isfinite(step.m_dFrames) ? std::abs(step.m_dFrames) : 0.0),
      m_bBackward(step.m_dFrames < 0.0)
{
}

double TW_ClockWalk::getBegin() const noexcept
{
    return getLoopBegin(m_course, m_moment.m_iLoop);
}

// Whether the animation stops at the end of the present loop, in the direction that it is played.
bool TW_ClockWalk::isLast() const noexcept
{
    if (m_iLoopLimit <= 0)
    {
        return false;
    }
    // A clock that has been turned round may stand outside of the rounds of its new direction.
    return m_bBackward ? m_moment.m_iLoop <= (m_course.m_bLooping ? -m_iLoopLimit : 0)
                       : m_moment.m_iLoop >= m_iLoopLimit - 1;
}

// Leaves out whole rounds of a very long step, as many as are alike.
void TW_ClockWalk::skipLoops() noexcept
{
    constexpr double most = 1e6;  // rounds that are gone through
    const double left = m_dLeft - most * m_course.m_dEndFrame;
    const bool later = m_moment.m_iLoop > 0;
    if (!m_course.m_bLooping || !(m_course.m_dEndFrame > 0.0) || !(left > 0.0) ||
        (!m_bBackward && m_moment.m_iLoop == 0 && m_course.m_dLoopToFrame > 0.0))
    {
        return;
    }
    constexpr double limit = 9e15;  // rounds that are counted: whole numbers in a double
    constexpr double any = std::numeric_limits<double>::infinity();
    const double round = m_course.m_dEndFrame - (later ? m_course.m_dLoopToFrame : 0.0);
    const auto loop = static_cast<double>(m_moment.m_iLoop);
    double alike = m_bBackward ? (later ? loop - 1.0 : any) : (loop < 0.0 ? -loop : any);
    if (m_iLoopLimit > 0)
    {
        const auto last = static_cast<double>(m_iLoopLimit);
        alike = std::min(alike, std::max(0.0, m_bBackward ? loop + last : last - 1.0 - loop));
    }
    const double rounds = std::min(std::floor(left / round), alike);
    m_dLeft = rounds < alike ? most * m_course.m_dEndFrame + std::fmod(left, round) : m_dLeft - rounds * round;
    m_moment.m_iLoop = static_cast<long long>(std::clamp(m_bBackward ? loop - rounds : loop + rounds, -limit, limit));
}

bool TW_ClockWalk::next() noexcept
{
    m_dTravelled += std::abs(m_dTo - m_dFrom);
    m_dFrom = m_dTo = m_moment.m_dFrame;
    m_bPassingOn = false;
    if (m_dLeft <= 0.0 || m_bFinished)
    {
        return false;
    }
    skipLoops();
    if (m_bBackward)
    {
        goBackward();
    }
    else
    {
        goForward();
    }
    return true;
}

void TW_ClockWalk::goForward() noexcept
{
    m_dFrom = m_moment.m_dFrame;
    m_dTo = m_dFrom + m_dLeft;
    if (m_dTo < m_course.m_dEndFrame)
    {
        m_moment.m_dFrame = m_dTo;
        m_dLeft = 0.0;
        return;
    }
    m_dTo = m_course.m_dEndFrame;
    m_dLeft -= m_dTo - m_dFrom;
    if (isLast() || m_course.m_dEndFrame <= 0.0)
    {
        m_moment.m_dFrame = m_dTo;
        m_bFinished = true;
        m_dLeft = 0.0;
        return;
    }
    ++m_moment.m_iLoop;
    m_bPassingOn = true;
    m_moment.m_dFrame = m_dOtherSide = getBegin();
}

void TW_ClockWalk::goBackward() noexcept
{
    if (m_moment.m_dFrame <= getBegin() && !isLast() && m_course.m_dEndFrame > 0.0)
    {
        // The same moment, at the end of the loop before: it was arrived at by an earlier step.
        --m_moment.m_iLoop;
        m_moment.m_dFrame = m_course.m_dEndFrame;
    }
    const double begin = getBegin();
    m_dFrom = m_moment.m_dFrame;
    m_moment.m_dFrame = m_dTo = m_dFrom - m_dLeft;
    if (m_dTo > begin)
    {
        m_dLeft = 0.0;
        return;
    }
    m_moment.m_dFrame = m_dTo = begin;
    m_dLeft -= m_dFrom - m_dTo;
    if (isLast() || m_course.m_dEndFrame <= 0.0)
    {
        m_bFinished = true;
        m_dLeft = 0.0;
        return;
    }
    m_bPassingOn = true;
    m_dOtherSide = m_course.m_dEndFrame;
}

TW_EventIterator::TW_EventIterator(const TW_ClockStep& step, std::span<const TW_AnimationEvent> events) noexcept
    : m_walk(step), m_events(events), m_bBackward(step.m_dFrames < 0.0)
{
    if (step.m_bFirst)
    {
        m_dRangeFrom = step.m_from.m_dFrame;
        setRange(m_dRangeFrom, true, m_dRangeFrom, true);
    }
}

void TW_EventIterator::setRange(double low, bool withLow, double high, bool withHigh) noexcept
{
    const auto before = [&](double frame, bool inclusive)
    {
        const auto place = std::partition_point(m_events.begin(), m_events.end(),
                                                [&](const TW_AnimationEvent& event) {
                                                    return inclusive ? event.m_dFrame <= frame : event.m_dFrame < frame;
                                                });
        return static_cast<std::size_t>(place - m_events.begin());
    };
    m_uiBegin = before(low, !withLow);
    m_uiEnd = std::max(m_uiBegin, before(high, withHigh));
    m_uiNext = 0;
}

// Goes on to the next range of events; false when the step is over.
bool TW_EventIterator::advance() noexcept
{
    if (m_bOtherSideLeft)
    {
        m_bOtherSideLeft = false;
        m_dRangeTravelled = m_walk.getTravelled() + std::abs(m_walk.getTo() - m_walk.getFrom());
        m_dRangeFrom = m_walk.getOtherSide();
        setRange(m_dRangeFrom, true, m_dRangeFrom, true);
        return true;
    }
    if (!m_walk.next())
    {
        return false;
    }
    m_dRangeFrom = m_walk.getFrom();
    m_dRangeTravelled = m_walk.getTravelled();
    const bool arrives = m_walk.getTo() != m_walk.getFrom();
    m_bOtherSideLeft = arrives && m_walk.isPassingOn();
    if (m_bBackward)
    {
        setRange(m_walk.getTo(), arrives, m_walk.getFrom(), false);
    }
    else
    {
        setRange(m_walk.getFrom(), false, m_walk.getTo(), arrives);
    }
    return true;
}

const TW_AnimationEvent* TW_EventIterator::next() noexcept
{
    while (m_uiNext >= m_uiEnd - m_uiBegin)
    {
        if (m_events.empty() || !advance())
        {
            return nullptr;
        }
    }
    const std::size_t place = m_bBackward ? m_uiEnd - 1 - m_uiNext : m_uiBegin + m_uiNext;
    ++m_uiNext;
    const TW_AnimationEvent& event = m_events[place];
    m_dTravelled = m_dRangeTravelled + std::abs(event.m_dFrame - m_dRangeFrom);
    return &event;
}

TW_ClockMoment findMoment(const TW_AnimationCourse& course, double frames, long long loopLimit) noexcept
{
    TW_ClockWalk walk({course, {}, frames, loopLimit, false});
    walk.finish();
    return walk.getMoment();
}

float getPoseFrame(const TW_AnimationCourse& course, const TW_ClockMoment& moment) noexcept
{
    const auto frame = static_cast<float>(moment.m_dFrame);
    const auto end = static_cast<float>(course.m_dEndFrame);
    return course.m_bLooping && frame >= end ? std::nextafter(end, 0.0F) : frame;
}

TW_AnimationClock::TW_AnimationClock(const TW_VirtualObject& object, int index, double start, long long loops)
    : m_pObject(&object), m_iAnimation(index)
{
    m_step.m_course = object.getAnimationCourse(index);
    m_step.m_iLoopLimit = loops;
    seek(start);
    m_bFresh = true;
}

void TW_AnimationClock::advance(double seconds) noexcept
{
    m_step.m_from = m_moment;
    m_step.m_dFrames = seconds * static_cast<double>(m_pObject->getAnimationFPS(m_iAnimation));
    m_step.m_dFrames = std::isfinite(m_step.m_dFrames) ? m_step.m_dFrames : 0.0;
    m_step.m_bFirst = m_bFresh;
    m_bFresh = false;
    TW_ClockWalk walk(m_step);
    walk.finish();
    m_moment = walk.getMoment();
    m_bFinished = walk.isFinished();
}

void TW_AnimationClock::seek(double seconds) noexcept
{
    const double frames = seconds * static_cast<double>(m_pObject->getAnimationFPS(m_iAnimation));
    m_moment = findMoment(m_step.m_course, frames, m_step.m_iLoopLimit);
    m_step.m_from = m_moment;
    m_step.m_dFrames = 0.0;
    m_step.m_bFirst = false;
    m_bFinished = false;
    m_bFresh = false;
}

float TW_AnimationClock::getFrame() const noexcept
{
    return getPoseFrame(m_step.m_course, m_moment);
}

TW_EventIterator TW_AnimationClock::getEvents() const noexcept
{
    return {m_step, m_pObject->getAnimationEvents(m_iAnimation)};
}
}  // namespace TW2
