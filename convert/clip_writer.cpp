#include "convert/clip_writer.h"

#include "convert/clip_sampler.h"
#include "convert/precision.h"

#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_animation.h>

#include <memory>

namespace TW2::convert
{
std::vector<KeyframeAnimationChunk> makeRecords(const Model& model, const ReducedClip& clip, Seam seam)
{
    std::vector<KeyframeAnimationChunk> records;
    for (std::size_t node = 0; node < clip.m_vecTracks.size(); ++node)
    {
        const Track& track = clip.m_vecTracks[node];
        KeyframeAnimationChunk record;
        record.header.targetName = model.m_vecNodes[node].m_strName.c_str();
        record.header.frameRate = clip.m_iFrameRate;
        record.header.looping = seam != Seam::Open;
        record.loopInterpolation = seam == Seam::NextFrame;
        record.objectName = record.header.targetName;
        record.totalFrameCount = clip.m_uiFrames;
        record.interpolationMode = static_cast<int>(
            track.m_eForm == TrackForm::General ? InterpolationMode::Linear : InterpolationMode::Orthonormalized);
        record.keepScale = track.m_eForm == TrackForm::Scaled;
        for (const TrackKey& key : track.m_vecKeys)
        {
            record.keys.push_back({key.m_uiFrame, toFloat(key.m_matrix)});
        }
        records.push_back(std::move(record));
    }
    return records;
}

std::vector<KeyframeAnimationChunk> makeStillRecords(const Model& model, const std::vector<Matrixd>& local)
{
    std::vector<KeyframeAnimationChunk> records;
    for (std::size_t node = 0; node < local.size(); ++node)
    {
        KeyframeAnimationChunk record;
        record.header.targetName = model.m_vecNodes[node].m_strName.c_str();
        record.header.frameRate = 1;
        record.objectName = record.header.targetName;
        record.totalFrameCount = 1;
        record.keys.push_back({0, toFloat(local[node])});
        records.push_back(std::move(record));
    }
    return records;
}

PoseError measurePlayback(const Model& model, const Clip& clip, const std::vector<KeyframeAnimationChunk>& records,
                          int frameRate)
{
    constexpr unsigned int perFrame = 4;
    std::vector<std::unique_ptr<TW_KeyframeAnimation>> tracks;
    for (const KeyframeAnimationChunk& record : records)
    {
        tracks.push_back(std::make_unique<TW_KeyframeAnimation>(record, false));
    }
    const ClipSampler sampler(model, clip);
    const std::vector<double> reach = measureReach(model);
    std::vector<Matrixd> shouldLocal;
    std::vector<Matrixd> shouldBe;
    std::vector<Matrixd> local(tracks.size());
    std::vector<Matrixd> world;
    PoseError error;
    // A clip that begins again at its last frame is compared up to there.
    const unsigned int samples = records.empty() ? 0 : (records.front().totalFrameCount - 1) * perFrame + 1;
    const bool again = samples > 1 && records.front().header.looping && !records.front().loopInterpolation;
    const unsigned int end = again ? samples - 1 : samples;
    for (unsigned int i = 0; i < end; ++i)
    {
        const double frame = static_cast<double>(i) / perFrame;
        sampler.sampleLocal(frame / frameRate, shouldLocal);
        ClipSampler::composeWorld(model, shouldLocal, shouldBe);
        for (std::size_t node = 0; node < tracks.size(); ++node)
        {
            M_Matrix4x3Template<float> matrix;
            tracks[node]->animateFrame(matrix, static_cast<float>(frame));
            local[node] = toDouble(matrix);
        }
        ClipSampler::composeWorld(model, local, world);
        for (std::size_t node = 0; node < tracks.size(); ++node)
        {
            error.add(compare(world[node], shouldBe[node], reach[node]));
        }
    }
    return error;
}

void write(S_MemoryFileWriter& writer, const std::vector<KeyframeAnimationChunk>& records)
{
    for (const KeyframeAnimationChunk& record : records)
    {
        writer << record;
    }
}
}  // namespace TW2::convert
