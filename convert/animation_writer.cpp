#include "convert/animation_writer.h"

#include <platform/runtime/memory_file_writer.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <utility>

namespace TW2::convert
{
std::string makeFileName(const std::string& text)
{
    std::string name;
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        name += std::isalnum(byte) != 0 || c == '-' ? static_cast<char>(std::tolower(byte)) : '_';
    }
    return name;
}

std::string makeLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20; }, ' ');
    return text;
}

Tolerance chooseTolerance(const Model& model, const Skeleton& skeleton)
{
    constexpr double ofSize = 1.0 / 2000.0;
    constexpr double degrees = 0.1;
    return {std::max(measureSize(model, skeleton) * ofSize, 1e-9), degrees};
}

/// A clip as it is written.
struct AnimationWriter::Written
{
    ReducedClip m_reduced;
    std::vector<KeyframeAnimationChunk> m_vecRecords;
    std::optional<KeyframeAnimationChunk> m_travel;
    PoseError m_error;
};

namespace
{
/// The events that lie within a clip, in order, in seconds from its beginning.
std::vector<Event> findEvents(const Clip& clip, double end)
{
    constexpr double rounding = 1e-6;  // of times that are cut at frames
    std::vector<Event> events;
    for (const Event& event : clip.m_vecEvents)
    {
        const double seconds = event.m_dTime - clip.m_dStart;
        if (seconds >= -rounding && seconds <= clip.m_dDuration + rounding)
        {
            events.push_back({std::clamp(seconds, 0.0, end), makeLine(event.m_strName)});
        }
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.m_dTime < b.m_dTime; });
    return events;
}

/// How far from the origin anything stands in the pose at rest.
double measureExtent(const Skeleton& skeleton, const DrawnBounds& bounds)
{
    double extent = bounds.getRadius();
    for (const Joint& joint : skeleton.m_vecJoints)
    {
        extent = std::max(extent, joint.m_world.getTranslation().length());
    }
    return extent;
}
}  // namespace

AnimationWriter::AnimationWriter(const Model& model, const Skeleton& skeleton, const Options& options,
                                 const Tolerance& tolerance, const std::string& base, OutputFiles& files,
                                 DrawnBounds& bounds)
    : m_model(model),
      m_skeleton(skeleton),
      m_options(options),
      m_tolerance(tolerance),
      m_strBase(base),
      m_files(files),
      m_bounds(bounds),
      m_meter(model, skeleton)
{
}

Seam AnimationWriter::chooseSeam(const ReducedClip& clip) const
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

AnimationWriter::Written AnimationWriter::reduce(const Clip& clip) const
{
    // The library plays in single precision: what that adds is made up for by a tighter reduction.
    constexpr double tighter = 0.7;
    constexpr int mostTries = 4;
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
    Written written;
    for (int tries = 0; tries < mostTries; ++tries)
    {
        written.m_reduced = reduceClip(m_model, m_skeleton, played, tolerance, m_options.m_iFrameRate);
        const Seam seam = chooseSeam(written.m_reduced);
        written.m_vecRecords = makeRecords(m_skeleton, written.m_reduced, seam);
        const int rate = written.m_reduced.m_iFrameRate;
        const std::vector<double>& times = written.m_reduced.m_vecLookedAt;
        if (travel)
        {
            written.m_travel =
                makeTravelRecord(*travel, written.m_reduced, seam, tolerance, measureExtent(m_skeleton, m_bounds));
            written.m_error = m_meter.measure(clip, written.m_vecRecords, *travel, *written.m_travel, rate, times);
        }
        else
        {
            written.m_error = m_meter.measure(clip, written.m_vecRecords, rate, times);
        }
        if (written.m_error.isWithin(m_tolerance) || !written.m_reduced.m_error.isWithin(tolerance))
        {
            break;
        }
        tolerance = {tolerance.m_dDistance * tighter, tolerance.m_dDegrees * tighter};
    }
    return written;
}

ScriptBlock::Animation AnimationWriter::addRest(const std::string& comment)
{
    ScriptBlock::Animation animation;
    animation.m_strFile = addRecords(m_fileNames.make("rest") + ".anim.tw", makeRestRecords(m_skeleton));
    animation.m_strName = m_scriptNames.make("rest");
    animation.m_strComment = comment;
    return animation;
}

ScriptBlock::Animation AnimationWriter::addClip(int index, const Clip& clip)
{
    const Written written = reduce(clip);
    const ReducedClip& reduced = written.m_reduced;
    m_meter.addBounds(written.m_vecRecords, m_bounds);
    ClipSummary summary;
    summary.m_iIndex = index;
    summary.m_strName = clip.m_strName;
    summary.m_iFrameRate = reduced.m_iFrameRate;
    summary.m_uiFrames = reduced.m_uiFrames;
    summary.m_bLooping = chooseSeam(reduced) != Seam::Open;
    summary.m_uiSampledKeys = reduced.m_uiSampledKeys;
    summary.m_error = written.m_error;
    for (const Track& track : reduced.m_vecTracks)
    {
        summary.m_uiKeys += track.m_vecKeys.size();
        m_bScaled |= track.m_eForm != TrackForm::Rigid;
    }
    const std::string name = makeClipName(clip.m_strName);
    ScriptBlock::Animation animation;
    animation.m_iIndex = index;
    animation.m_strFile = summary.m_strFile = addRecords(name + ".anim.tw", written.m_vecRecords);
    animation.m_strName = m_scriptNames.make(makeLine(clip.m_strName));
    animation.m_strComment = makeLine(clip.m_strName) + ": " + std::to_string(reduced.m_uiFrames) + " frames at " +
                             std::to_string(reduced.m_iFrameRate) + " per second" +
                             (summary.m_bLooping ? ", looping" : "");
    if (written.m_travel)
    {
        animation.m_strTravelFile = summary.m_strTravelFile = addRecords(name + ".travel.tw", {*written.m_travel});
    }
    const double end = static_cast<double>(reduced.m_uiFrames - 1) / reduced.m_iFrameRate;
    animation.m_vecEvents = findEvents(clip, end);
    summary.m_uiEvents = animation.m_vecEvents.size();
    summary.m_uiBytes = m_files.getSize(summary.m_strFile) + m_files.getSize(summary.m_strTravelFile);
    m_vecSummaries.push_back(std::move(summary));
    return animation;
}

std::string AnimationWriter::makeClipName(const std::string& clip)
{
    std::string name;
    do
    {
        name = m_fileNames.make(makeFileName(clip));
    } while (!m_strAvoided.empty() &&
             std::filesystem::exists(std::filesystem::path(m_strAvoided) / (m_strBase + "_" + name + ".anim.tw")));
    return name;
}

std::string AnimationWriter::addRecords(const std::string& name, const std::vector<KeyframeAnimationChunk>& records)
{
    const std::string file = m_strBase + "_" + name;
    S_MemoryFileWriter writer;
    write(writer, records);
    m_files.add(file, writer);
    return file;
}
}  // namespace TW2::convert
