#include "convert/joint_course.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace TW2::convert
{
namespace
{
/// The frame, as the timeline's index, on which a jump lies; nothing for jumps that are left to what lies between the
/// frames.
std::optional<std::size_t> findFrame(const Timeline& timeline, double seconds)
{
    constexpr double onFrame = 0.05;
    const double wanted = seconds * timeline.getRate();
    const double frame = std::round(wanted);
    const std::size_t last = timeline.getFrameCount() - 1;
    if (frame < std::max(timeline.getFrame(0), 1U) || frame > timeline.getFrame(last) ||
        std::abs(wanted - frame) > onFrame)
    {
        return std::nullopt;
    }
    return timeline.find(static_cast<unsigned int>(frame));
}
}  // namespace

Course sampleCourse(const ClipSampler& sampler, const Timeline& timeline, std::size_t joint,
                    const std::vector<double>& jumps, const Matrices* parentWorld)
{
    Course course;
    course.m_bMoved = sampler.isMoved(joint);
    std::vector<Matrixd> local(course.m_bMoved ? timeline.getCount() : 1);
    for (std::size_t i = 0; i < local.size(); ++i)
    {
        local[i] = sampler.sample(joint, course.m_bMoved ? timeline.getSeconds(i) : 0.0);
    }
    for (const double seconds : jumps)
    {
        const std::optional<std::size_t> frame = findFrame(timeline, seconds);
        course.m_jumps.m_bBetween |=
            !frame && seconds > timeline.getSeconds(0) && seconds < timeline.getSeconds(timeline.getCount() - 1);
        if (!frame || (!course.m_vecJumps.empty() && course.m_vecJumps.back().m_uiFrame == *frame))
        {
            continue;
        }
        const double exact = timeline.getSeconds(timeline.at(*frame));
        course.m_jumps.m_bOnFrames = true;
        if (*frame > 0)
        {
            const double before = std::min(seconds, exact) - ClipSampler::jumpTime;
            course.m_vecJumps.push_back({*frame, sampler.sample(joint, before)});
        }
        local[timeline.at(*frame)] = sampler.sample(joint, std::max(seconds, exact));
    }
    const bool still =
        !course.m_jumps.m_bOnFrames &&
        std::all_of(local.begin(), local.end(), [&local](const Matrixd& m) { return m == local.front(); });
    course.m_local = still ? Matrices(local.front()) : Matrices(std::move(local));
    if (!parentWorld)
    {
        course.m_world = course.m_local;
        return course;
    }
    std::vector<Matrixd> world(course.m_local.isStill() && parentWorld->isStill() ? 1 : timeline.getCount());
    for (std::size_t i = 0; i < world.size(); ++i)
    {
        world[i] = course.m_local[i] * (*parentWorld)[i];
    }
    course.m_world = world.size() == 1 ? Matrices(world.front()) : Matrices(std::move(world));
    return course;
}
}  // namespace TW2::convert
