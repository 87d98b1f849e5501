#include "convert/foot_slide.h"

#include "convert/clip_sampler.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace TW2::convert
{
namespace
{
constexpr int perSecond = 30;
constexpr double closeToGround = 0.03;  // of the height of the hips
constexpr double slow = 0.2;            // of that height, per second

/// Where a node goes in a clip, in the scene.
std::vector<Vector3d> findCourse(const Model& model, const Clip& clip, int node)
{
    const ClipSampler sampler(model, clip);
    std::vector<Vector3d> course;
    const int samples = static_cast<int>(clip.m_dDuration * perSecond) + 1;
    for (int i = 0; i < samples; ++i)
    {
        Matrixd world;
        for (int at = node; at >= 0; at = model.m_vecNodes[static_cast<std::size_t>(at)].m_iParent)
        {
            world = world * sampler.sample(static_cast<std::size_t>(at), static_cast<double>(i) / perSecond);
        }
        course.push_back(world.getTranslation());
    }
    return course;
}

double measureAlongGround(const Vector3d& a, const Vector3d& b)
{
    return std::hypot(a.x - b.x, a.z - b.z);
}
}  // namespace

std::optional<MotionSource::FootSlide> measureFootSlide(const Fitting& fitting, const Clip& clip, const Clip& fitted)
{
    std::optional<MotionSource::FootSlide> slide;
    const double height = fitting.getOtherHeight();
    for (std::size_t node = 0; node < fitting.getBody().m_vecNodes.size(); ++node)
    {
        if (!fitting.isFoot(node))
        {
            continue;
        }
        const std::vector<Vector3d> before = findCourse(fitting.getOther(), clip, fitting.getPlace(node).m_iFrom);
        const std::vector<Vector3d> after = findCourse(fitting.getBody(), fitted, static_cast<int>(node));
        double low = before.front().y;
        for (const Vector3d& place : before)
        {
            low = std::min(low, place.y);
        }
        // Where the foot was set down; `before.size()` while it is in the air.
        std::size_t down = before.size();
        for (std::size_t i = 1; i < before.size(); ++i)
        {
            const bool stands = before[i].y < low + closeToGround * height &&
                                (before[i] - before[i - 1]).length() * perSecond < slow * height;
            down = stands ? std::min(down, i - 1) : before.size();
            if (stands)
            {
                slide = slide.value_or(MotionSource::FootSlide());
                slide->m_dDistance = std::max(slide->m_dDistance, measureAlongGround(after[i], after[down]));
                slide->m_dBefore =
                    std::max(slide->m_dBefore, fitting.getRatio() * measureAlongGround(before[i], before[down]));
            }
        }
    }
    return slide;
}
}  // namespace TW2::convert
