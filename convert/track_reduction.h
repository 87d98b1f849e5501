#pragma once

#include "convert/clip_sampler.h"
#include "convert/model.h"
#include "convert/pose_error.h"

#include <cstddef>
#include <vector>

namespace TW2::convert
{
/// What a track's matrices are like, which decides how playback treats them between two keys.
enum class TrackForm
{
    Rigid,   ///< rotation and translation: rows are made orthonormal
    Scaled,  ///< with scale along its own axes: the same, and the rows get their lengths back
    General  ///< sheared: element by element
};

struct TrackKey
{
    unsigned int m_uiFrame;
    Matrixd m_matrix;
};

struct Track
{
    TrackForm m_eForm = TrackForm::Rigid;
    std::vector<TrackKey> m_vecKeys;
};

/// How a clip's end joins its beginning.
enum class Seam
{
    Open,       ///< it does not
    SameFrame,  ///< the last frame is the first one again
    NextFrame   ///< the first frame follows on the last one as any frame follows on another
};

/// A clip as whole frames and keys.
struct ReducedClip
{
    int m_iFrameRate = 0;
    unsigned int m_uiFrames = 0;
    Seam m_eSeam = Seam::Open;
    std::vector<Track> m_vecTracks;   ///< one per node
    std::size_t m_uiSampledKeys = 0;  ///< keys of the moved nodes before the reduction: one per frame at the first rate
    PoseError m_error;                ///< of the composed pose, at the frames and between them
};

/// Samples a clip and leaves out every key without which the composed pose stays within the tolerance: from parents to
/// children, each node's course is compared in world space, on top of what its parents have become, so that errors do
/// not add up along a limb. `frameRate` 0: chosen by `chooseFrameRate`, and multiplied (up to 960) while the motion
/// between two frames bends more than the tolerance allows. Frame numbers end at 32767: long clips get fewer per
/// second.
[[nodiscard]] ReducedClip reduceClip(const Model& model, const Clip& clip, const Tolerance& tolerance, int frameRate);

/// What playback makes of two keys, `fraction` of the way from `a` to `b`.
[[nodiscard]] Matrixd blendKeys(const Matrixd& a, const Matrixd& b, double fraction, TrackForm form);
}  // namespace TW2::convert
