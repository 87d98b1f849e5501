#pragma once

#include "convert/loop_seam.h"
#include "convert/model.h"
#include "convert/pose_error.h"
#include "convert/skeleton.h"
#include "convert/spare_threads.h"
#include "convert/track_form.h"

#include <cstddef>
#include <vector>

namespace TW2::convert
{
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

/// A clip as whole frames and keys.
struct ReducedClip
{
    int m_iFrameRate = 0;
    unsigned int m_uiFrames = 0;
    std::vector<double> m_vecLookedAt;  ///< the times at which it was looked at, in frames, ascending
    Seam m_eSeam = Seam::Open;
    std::vector<Track> m_vecTracks;   ///< one per joint
    std::size_t m_uiSampledKeys = 0;  ///< before the reduction: a key per frame of moved joints, one of the others
    PoseError m_error;                ///< of the composed pose, at the frames and between them
};

/// Samples a clip and leaves out every key without which the composed pose stays within the tolerance: from parents to
/// children, each joint's course is compared in world space, on top of what its parents have become, so that errors do
/// not add up along a limb. Where a clip jumps, two keys on one frame say what was before and what follows.
///
/// `frameRate` 0: chosen by `chooseFrameRate`, and multiplied (up to 960) as long as the motion between two frames
/// bends more than the tolerance allows and more frames help. Frame numbers end at 32767: long clips get fewer per
/// second. What comes out does not tell how many of `threads` have helped.
[[nodiscard]] ReducedClip reduceClip(const Model& model, const Skeleton& skeleton, const Clip& clip,
                                     const Tolerance& tolerance, int frameRate, SpareThreads& threads);
}  // namespace TW2::convert
