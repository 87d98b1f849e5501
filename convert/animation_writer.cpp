#include "convert/animation_writer.h"

#include "convert/clip_gathering.h"
#include "convert/clip_sampler.h"

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

namespace
{
/// The largest diagonal of the box around what is drawn, in the middle of the clips.
double measurePlayedSize(const Model& model, const Skeleton& skeleton)
{
    double size = 0.0;
    const DrawnBounds nothing(model, skeleton);
    for (const Clip& clip : model.m_vecClips)
    {
        const ClipSampler sampler(model, clip);
        std::vector<Matrixd> local(skeleton.m_vecJoints.size());
        for (std::size_t joint = 0; joint < local.size(); ++joint)
        {
            local[joint] = sampler.sample(joint, clip.m_dDuration / 2.0);
        }
        std::vector<Matrixd> world;
        composeWorld(skeleton, local, world);
        DrawnBounds bounds = nothing;
        bounds.add(world);
        size = bounds.getBox().isEmpty() ? size : std::max(size, bounds.getBox().getDiagonal());
    }
    return size;
}
}  // namespace

Tolerance chooseTolerance(const Model& model, const Skeleton& skeleton)
{
    constexpr double ofSize = 1.0 / 2000.0;
    constexpr double degrees = 0.1;
    constexpr double grown = 4.0;  // what is so much larger in its clips was bound in a size that nobody sees
    const double atRest = measureSize(model, skeleton);
    const double played = measurePlayedSize(model, skeleton);
    return {std::max((played > atRest * grown ? played : atRest) * ofSize, 1e-9), degrees};
}

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
}  // namespace

AnimationWriter::AnimationWriter(const Model& model, const Skeleton& skeleton, const Options& options,
                                 const Tolerance& tolerance, const std::optional<TravelChoice>& travel,
                                 const std::string& base, OutputFiles& files, DrawnBounds& bounds)
    : m_model(model),
      m_skeleton(skeleton),
      m_options(options),
      m_strBase(base),
      m_files(files),
      m_bounds(bounds),
      m_reducer(model, skeleton, options, tolerance, travel),
      m_clipsAhead(m_reducer, model.m_vecClips, options.m_uiThreads)
{
}

ScriptBlock::Animation AnimationWriter::addRest(const std::string& comment)
{
    ScriptBlock::Animation animation;
    animation.m_strFile = addRecords(m_fileNames.make("rest") + ".anim.tw", makeRestRecords(m_skeleton));
    animation.m_strName = m_scriptNames.make("rest");
    animation.m_strComment = comment;
    return animation;
}

std::vector<ScriptBlock::Animation> AnimationWriter::addClips(int firstIndex)
{
    std::vector<ScriptBlock::Animation> animations;
    for (const Clip& clip : m_model.m_vecClips)
    {
        const auto done = static_cast<double>(animations.size());
        m_options.tell("clip " + clip.m_strName,
                       partOfReading + (1.0 - partOfReading) * done / static_cast<double>(m_model.m_vecClips.size()));
        animations.push_back(addClip(firstIndex + static_cast<int>(animations.size()), clip, m_clipsAhead.takeNext()));
    }
    return animations;
}

ScriptBlock::Animation AnimationWriter::addClip(int index, const Clip& clip, const WrittenClip& written)
{
    const ReducedClip& reduced = written.m_reduced;
    m_reducer.getMeter().addBounds(written.m_vecRecords, m_bounds);
    ClipSummary summary;
    summary.m_iIndex = index;
    summary.m_strName = clip.m_strName;
    summary.m_iFrameRate = reduced.m_iFrameRate;
    summary.m_uiFrames = reduced.m_uiFrames;
    summary.m_bLooping = written.m_eSeam != Seam::Open;
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
    summary.m_dLonger = std::max(end - clip.m_dDuration, 0.0);
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
