#include "viewer/crowd.h"

#include "viewer/loaded_object.h"
#include "viewer/playback.h"
#include "viewer/visibility.h"

#include <tw2/object/virtual_object.h>

#include <platform/scene/scene.h>

#include <cmath>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace TW2::viewer
{
namespace
{
std::size_t getHeapBytes()
{
#if defined(__GLIBC__)
    return mallinfo2().uordblks;
#else
    return 0;
#endif
}
}  // namespace

Crowd::~Crowd()
{
    clear();
}

void Crowd::build(const LoadedObject& object, P_Scene& scene, std::size_t count, float spacing)
{
    clear();
    m_vecCopies.reserve(count);
    const std::size_t before = getHeapBytes();
    // Rows behind the object, as wide as deep.
    const auto columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(count) + 1.0)));
    for (std::size_t i = 1; i <= count; ++i)
    {
        std::unique_ptr<TW_VirtualObject>& copy = m_vecCopies.emplace_back(object.copy());
        const auto column = static_cast<float>((i % columns + 1) / 2) * (i % columns % 2 == 0 ? 1.0F : -1.0F);
        const auto row = static_cast<float>(i / columns);
        copy->setPosition(column * spacing, 0.0F, row * spacing);
        copy->addTo(&scene);
    }
    m_cost = {};
    const std::size_t after = getHeapBytes();
    m_cost.m_uiBytesPerCopy = count > 0 && after > before ? (after - before) / count : 0;
}

void Crowd::clear() noexcept
{
    m_vecCopies.clear();
}

void Crowd::standOn(const render::GroundPlane& ground) const
{
    for (const std::unique_ptr<TW_VirtualObject>& copy : m_vecCopies)
    {
        const M_Vector3Template<float> place = copy->getPosition();
        copy->setPosition(place.x, ground.getHeight(place), place.z);
    }
}

void Crowd::pose(Playback& playback, int visibilityAnimation) const
{
    // A step that no loop is a multiple of: nobody marches in step with a neighbour.
    constexpr double step = 0.137;
    double offset = 0.0;
    for (const std::unique_ptr<TW_VirtualObject>& copy : m_vecCopies)
    {
        playback.apply(*copy, offset += step);
        followVisibility(*copy, visibilityAnimation, static_cast<float>(playback.getTime(offset)));
    }
}

void Crowd::addCost(double poseSeconds, double frameSeconds, std::size_t bones) noexcept
{
    constexpr double share = 0.05;
    const auto blend = [](double& mean, double value) { mean = mean > 0.0 ? mean + (value - mean) * share : value; };
    const double perBone = 1e9 / static_cast<double>(bones > 0 ? bones : 1);
    blend(m_cost.m_dPoseNanosecondsPerBone, poseSeconds * perBone);
    blend(m_cost.m_dFrameNanosecondsPerBone, frameSeconds * perBone);
    blend(m_cost.m_dMilliseconds, (poseSeconds + frameSeconds) * 1e3);
}
}  // namespace TW2::viewer
