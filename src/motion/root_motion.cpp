#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/motion/root_motion.h>
#include <tw2/object/virtual_object.h>

#include <algorithm>

namespace TW2
{
TW_RootMotion::TW_RootMotion(const TW_VirtualObject& object, int index)
    : m_pTrack(object.getRootMotionTrack(index)),
      m_course(object.getAnimationCourse(index)),
      m_dFramesPerSecond(static_cast<double>(object.getAnimationFPS(index)))
{
    if (m_pTrack)
    {
        m_begin = sample(0.0).inverse();
        m_whole = sample(m_course.m_dEndFrame);
        m_loopTo = sample(m_course.m_dLoopToFrame);
        m_loop = m_whole * m_loopTo.inverse();
    }
}

// The track tells where the object stands in the space of frame 0, which need not be the identity there.
TW_Travel TW_RootMotion::sample(double frame) const
{
    M_Matrix4x3Template<float> place;
    m_pTrack->animateFrameWithLastFrame(place, static_cast<float>(frame), 0);
    return TW_Travel::ofMatrix(place) * m_begin;
}

TW_Travel TW_RootMotion::getPlace(const TW_ClockMoment& moment) const
{
    const TW_Travel place = sample(moment.m_dFrame);
    if (moment.m_iLoop == 0)
    {
        return place;
    }
    if (moment.m_iLoop < 0)
    {
        return place * m_whole.repeated(moment.m_iLoop);
    }
    return place * m_loopTo.inverse() * m_loop.repeated(moment.m_iLoop - 1) * m_whole;
}

TW_Travel TW_RootMotion::getTravel(const TW_ClockMoment& from, const TW_ClockMoment& to) const
{
    if (!m_pTrack)
    {
        return {};
    }
    // Loops that both have behind them cancel out; near the first ones nothing large is multiplied.
    const auto [first, last] = std::minmax(from.m_iLoop, to.m_iLoop);
    const long long common = first > 1 ? first - 1 : last < -1 ? last + 1 : 0;
    return getPlace({to.m_dFrame, to.m_iLoop - common}) * getPlace({from.m_dFrame, from.m_iLoop - common}).inverse();
}

TW_Travel TW_RootMotion::getTravel(const TW_ClockStep& step) const
{
    TW_ClockWalk walk(step);
    while (m_pTrack && walk.next())
    {
    }
    return getTravel(step.m_from, walk.getMoment());
}

TW_Travel TW_RootMotion::getTravel(double from, double to) const
{
    return getTravel(findMoment(m_course, from * m_dFramesPerSecond, 0),
                     findMoment(m_course, to * m_dFramesPerSecond, 0));
}
}  // namespace TW2
