#include "keyframe/track_access.h"

#include "keyframe/packed_keys.h"
#include "keyframe/track_value.h"

#include <tw2/keyframe/keyframe_animation.h>

namespace TW2
{
namespace
{
constexpr std::size_t rigidFloats = sizeof(TW_KeyframeMatrix) / sizeof(float);

template <typename Track>
TrackEntry describeFrames(const Track& track, TrackEntry::Kind kind) noexcept
{
    TrackEntry entry;
    entry.m_kind = kind;
    entry.m_loop = getLoop(track);
    entry.m_pFrames = track.m_vecFrames.data();
    entry.m_iKeyCount = static_cast<int>(track.m_vecFrames.size());
    return entry;
}

TrackEntry describeNothing() noexcept
{
    static constexpr M_Matrix4x3Template<float> identityMatrix;
    static constexpr std::int16_t onlyFrame = 0;
    TrackEntry entry;
    entry.m_kind = TrackEntry::Kind::Full;
    entry.m_loop.m_uTotalFrameCount = 1;
    entry.m_pFrames = &onlyFrame;
    entry.m_iKeyCount = 1;
    entry.m_pMatrices = identityMatrix.data();
    return entry;
}
}  // namespace

TrackEntry TrackAccess::describe(const TW_KeyframeAnimation& animation) noexcept
{
    const auto* const data = animation.m_pSharedData;
    const auto* const matrices = data ? data->m_pMatrices : nullptr;
    if (matrices && !matrices->m_vecFrames.empty())
    {
        TrackEntry entry =
            describeFrames(*matrices, animation.m_bKeepScale ? TrackEntry::Kind::Scaled : TrackEntry::Kind::Full);
        entry.m_mode = animation.m_eInterpolationMode;
        entry.m_pMatrices = matrices->m_vecValues.front().data();
        return entry;
    }
    if (!data || matrices || data->m_keyframes.m_vecFrames.empty())
    {
        return describeNothing();
    }
    const TW_RigidKeys& keys = data->m_keyframes.m_vecValues;
    TrackEntry entry = describeFrames(data->m_keyframes, TrackEntry::Kind::Rigid);
    entry.m_mode = animation.m_eInterpolationMode;
    entry.m_bPacked = keys.m_pPacked != nullptr;
    if (keys.m_pPacked)
    {
        const PackedView view = keys.m_pPacked->getView(keys.m_uiLane);
        entry.m_pTranslations = view.m_pTranslations;
        entry.m_pRotations = view.m_pRotations;
        entry.m_uTranslationStep = view.m_uiTranslationStep;
        entry.m_uRotationStep = view.m_uiRotationStep;
        return entry;
    }
    const auto* const floats = reinterpret_cast<const float*>(keys.m_vecOwn.data());
    entry.m_pTranslations = floats;
    entry.m_pRotations = floats + 3;
    entry.m_uTranslationStep = rigidFloats;
    entry.m_uRotationStep = rigidFloats;
    return entry;
}

TW_RigidKeys* TrackAccess::accessUnsharedKeys(TW_KeyframeAnimation& animation) noexcept
{
    auto* const data = animation.m_pSharedData;
    return data && !data->m_pMatrices && animation.getDataReferenceCount() == 1 ? &data->m_keyframes.m_vecValues
                                                                                : nullptr;
}

float TrackAccess::getVisibility(const TW_KeyframeAnimation& animation, float frame) noexcept
{
    const auto* const track = animation.getVisibilityContainer();
    if (!track || track->m_vecFrames.empty())
    {
        return 1.0F;
    }
    const KeyPair keys = findKeys(locateFrame(getLoop(*track), frame), track->m_vecFrames.data(),
                                  static_cast<int>(track->m_vecFrames.size()), 0);
    return interpolate(track->m_vecValues[static_cast<std::size_t>(keys.m_iLower)],
                       track->m_vecValues[static_cast<std::size_t>(keys.m_iUpper)], keys.getFraction());
}
}  // namespace TW2
