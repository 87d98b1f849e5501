#include "keyframe/track_evaluation.h"

#include "keyframe/packed_keys.h"
#include "keyframe/pose_kernel_body.h"

#include <platform/math/inverse_sqrt.h>

#include <cmath>
#include <cstddef>

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;
using Lanes = PoseLanes<M_Float4>;

// a + (b - a) x fraction, and exactly a at fraction 0.
void blend(Matrix& matrix, const float* a, const float* b, float fraction) noexcept
{
    for (std::size_t e = 0; e < 12; ++e)
    {
        matrix.data()[e] = fraction == 0.0F ? a[e] : (b[e] - a[e]) * fraction + a[e];
    }
}

const float* gather(const float* packed, std::size_t count, float* copy) noexcept
{
    copy[3] = 0.0F;
    for (std::size_t i = 0; i < count; ++i)
    {
        copy[i] = packed[i * packLanes];
    }
    return copy;
}

// Both keys become matrices at once, side by side.
void blendRigid(Matrix& matrix, const TrackEntry& track, const KeyPair& keys) noexcept
{
    float copies[16];
    const RigidKeyFloats floats = getKeyFloats(track, keys, copies);
    const float* const rotations[4] = {floats.m_pLowerRotation, floats.m_pUpperRotation, floats.m_pLowerRotation,
                                       floats.m_pUpperRotation};
    const float* const translations[4] = {floats.m_pLowerTranslation, floats.m_pUpperTranslation,
                                          floats.m_pLowerTranslation, floats.m_pUpperTranslation};
    float ends[2][12];
    float* const places[2] = {ends[0], ends[1]};
    Lanes::loadRigid(rotations, translations).store(places, 2);
    blend(matrix, ends[0], ends[1], keys.getFraction());
}

void applyMode(Matrix& matrix, InterpolationMode mode) noexcept
{
    if (mode == InterpolationMode::Linear)
    {
        return;
    }
    float* const places[4] = {matrix.data(), matrix.data(), matrix.data(), matrix.data()};
    Lanes pose = Lanes::load(places);
    Lanes::correct(&pose, mode, std::make_index_sequence<1>());
    pose.store(places, 1);
}

// Multiplies each basis row by the length that the keys give it at the frame. A length that is not finite leaves its
// row alone.
void restoreScale(Matrix& matrix, const TrackEntry& track, const KeyPair& keys, float wrappedFrame) noexcept
{
    const auto getLength = [&track](int key, int row)
    {
        const float* const v = track.getMatrix(key) + std::ptrdiff_t{3} * row;
        return M_fastLength({v[0], v[1], v[2]});
    };
    const auto frameA = static_cast<float>(track.m_pFrames[keys.m_iLower]);
    const auto frameB = static_cast<float>(track.m_pFrames[keys.m_iUpper]);
    for (int r = 0; r < 3; ++r)
    {
        float length = getLength(keys.m_iLower, r);
        if (frameA != frameB)
        {
            const float lengthB = getLength(keys.m_iUpper, r);
            length = (lengthB * (wrappedFrame - frameA) + length * (frameB - wrappedFrame)) / (frameB - frameA);
        }
        if (std::isfinite(length))
        {
            matrix.setRow(r, matrix.getRow(r) * length);
        }
    }
}
}  // namespace

RigidKeyFloats getKeyFloats(const TrackEntry& track, const KeyPair& keys, float (&copies)[16]) noexcept
{
    RigidKeyFloats floats{track.getRotation(keys.m_iLower), track.getRotation(keys.m_iUpper),
                          track.getTranslation(keys.m_iLower), track.getTranslation(keys.m_iUpper)};
    if (track.m_bPacked)
    {
        floats = {gather(floats.m_pLowerRotation, 4, copies), gather(floats.m_pUpperRotation, 4, copies + 4),
                  gather(floats.m_pLowerTranslation, 3, copies + 8),
                  gather(floats.m_pUpperTranslation, 3, copies + 12)};
    }
    return floats;
}

void evaluateTrack(Matrix& matrix, const TrackEntry& track, const KeyPair& keys, float wrappedFrame) noexcept
{
    if (track.m_kind == TrackEntry::Kind::Rigid)
    {
        blendRigid(matrix, track, keys);
    }
    else
    {
        blend(matrix, track.getMatrix(keys.m_iLower), track.getMatrix(keys.m_iUpper), keys.getFraction());
    }
    applyMode(matrix, track.m_mode);
    if (track.m_kind == TrackEntry::Kind::Scaled)
    {
        restoreScale(matrix, track, keys, wrappedFrame);
    }
}
}  // namespace TW2
