#include "convert/clip_reducer.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace TW2::convert
{
namespace
{
/// How far from the origin anything stands in the pose at rest.
double measureExtent(const Model& model, const Skeleton& skeleton)
{
    std::vector<Matrixd> rest;
    double extent = 0.0;
    for (const Joint& joint : skeleton.m_vecJoints)
    {
        rest.push_back(joint.m_world);
        extent = std::max(extent, joint.m_world.getTranslation().length());
    }
    DrawnBounds bounds(model, skeleton);
    bounds.add(rest);
    return std::max(extent, bounds.getRadius());
}
}  // namespace

ClipReducer::ClipReducer(const Model& model, const Skeleton& skeleton, const Options& options,
                         const Tolerance& tolerance, const std::optional<TravelChoice>& travel)
    : m_model(model),
      m_skeleton(skeleton),
      m_options(options),
      m_tolerance(tolerance),
      m_travel(travel),
      m_dReach(travel ? measureExtent(model, skeleton) : 0.0),
      m_meter(model, skeleton),
      m_threads(options.m_uiThreads)
{
}

Seam ClipReducer::chooseSeam(const ReducedClip& clip) const
{
    switch (m_options.m_eLoop)
    {
        case Options::Loop::Always:
            return clip.m_eSeam == Seam::Open ? Seam::SameFrame : clip.m_eSeam;
        case Options::Loop::Never:
            return Seam::Open;
        case Options::Loop::Automatic:
            break;
    }
    return clip.m_eSeam;
}

WrittenClip ClipReducer::reduce(const Clip& clip) const
{
    // The library plays in single precision: what that adds is made up for by a tighter reduction.
    constexpr double tighter = 0.7;
    constexpr int mostTries = 4;
    const SpareThreads::Working working(m_threads);
    std::shared_ptr<const Travel> travel;
    if (m_travel)
    {
        travel = std::make_shared<Travel>(m_model, clip, *m_travel);
        travel = travel->isFartherThan(m_tolerance.m_dDistance, m_tolerance.m_dDegrees) ? travel : nullptr;
    }
    const Clip played = travel ? makeStandingClip(travel) : clip;
    // Pose and travel share what is allowed.
    const double share = travel ? 0.5 : 1.0;
    Tolerance tolerance{m_tolerance.m_dDistance * share, m_tolerance.m_dDegrees * share};
    WrittenClip written;
    for (int tries = 0; tries < mostTries; ++tries)
    {
        written.m_reduced = reduceClip(m_model, m_skeleton, played, tolerance, m_options.m_iFrameRate, m_threads);
        written.m_eSeam = chooseSeam(written.m_reduced);
        written.m_vecRecords = makeRecords(m_skeleton, written.m_reduced, written.m_eSeam);
        const int rate = written.m_reduced.m_iFrameRate;
        const std::vector<double>& times = written.m_reduced.m_vecLookedAt;
        if (travel)
        {
            written.m_travel =
                makeTravelRecord(*travel, written.m_reduced, written.m_eSeam, tolerance, m_dReach, m_threads);
            written.m_error =
                m_meter.measure(clip, written.m_vecRecords, *travel, *written.m_travel, rate, times, m_threads);
        }
        else
        {
            written.m_error = m_meter.measure(clip, written.m_vecRecords, rate, times, m_threads);
        }
        if (written.m_error.isWithin(m_tolerance) || !written.m_reduced.m_error.isWithin(tolerance))
        {
            break;
        }
        tolerance = {tolerance.m_dDistance * tighter, tolerance.m_dDegrees * tighter};
    }
    return written;
}

ClipsAhead::ClipsAhead(const ClipReducer& reducer, const std::vector<Clip>& clips, unsigned int threads)
    : m_reducer(reducer), m_clips(clips), m_uiThreads(threads)
{
    begin();
}

void ClipsAhead::begin()
{
    // More than there are threads: a long clip does not hold up those behind it.
    const std::size_t most = m_uiThreads > 1 ? std::size_t{2} * m_uiThreads : 1;
    const std::launch how = m_uiThreads > 1 ? std::launch::async | std::launch::deferred : std::launch::deferred;
    for (; m_uiBegun < m_clips.size() && m_begun.size() < most; ++m_uiBegun)
    {
        m_begun.push_back(std::async(how, [this, &clip = m_clips[m_uiBegun]] { return m_reducer.reduce(clip); }));
    }
}

WrittenClip ClipsAhead::takeNext()
{
    std::future<WrittenClip> next = std::move(m_begun.front());
    m_begun.pop_front();
    begin();
    return next.get();
}
}  // namespace TW2::convert
