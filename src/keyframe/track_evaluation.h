#pragma once

#include "keyframe/track_table.h"

#include <platform/math/matrix4x3.h>

namespace TW2
{
/// The floats of two keys of a rigid track: each a quaternion w x y z and a translation and one float more.
struct RigidKeyFloats
{
    const float* m_pLowerRotation;
    const float* m_pUpperRotation;
    const float* m_pLowerTranslation;
    const float* m_pUpperTranslation;
};

/// Where they lie; those of packed keys are copied to `copies` first.
[[nodiscard]] RigidKeyFloats getKeyFloats(const TrackEntry& track, const KeyPair& keys, float (&copies)[16]) noexcept;

/// The pose of a track, of any kind but Absent, between two of its keys; `wrappedFrame` is the frame that they were
/// found for, wrapped into the track. One track by itself: many at a time are the business of PoseBatch, with the same
/// bits.
void evaluateTrack(M_Matrix4x3Template<float>& matrix, const TrackEntry& track, const KeyPair& keys,
                   float wrappedFrame) noexcept;
}  // namespace TW2
