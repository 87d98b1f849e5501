#include "keyframe/packed_keys.h"

#include <platform/bit_cast.h>

#include <algorithm>
#include <cstdint>

namespace TW2
{
namespace
{
constexpr std::size_t groupRotationFloats = 4 * packLanes;
constexpr std::size_t groupTranslationFloats = 3 * packLanes;

bool haveSameBits(const M_Vector3Template<float>& a, const M_Vector3Template<float>& b) noexcept
{
    const auto isSame = [](float x, float y) { return S_bitCast<std::uint32_t>(x) == S_bitCast<std::uint32_t>(y); };
    return isSame(a.x, b.x) && isSame(a.y, b.y) && isSame(a.z, b.z);
}

bool staysInPlace(const TW_RigidKeys* keys, std::size_t count) noexcept
{
    for (std::size_t key = 1; keys && key < count; ++key)
    {
        if (!haveSameBits((*keys)[key].m_vTranslation, (*keys)[0].m_vTranslation))
        {
            return false;
        }
    }
    return true;
}
}  // namespace

PackedKeys::PackedKeys(const TW_RigidKeys* const* tracks, std::size_t count, std::size_t keyCount)
    : m_uiKeyCount(keyCount)
{
    m_vecGroups.resize((count + packLanes - 1) / packLanes);
    m_uiRotationStep = m_vecGroups.size() * groupRotationFloats;
    std::size_t translationFloats = 0;
    for (std::size_t group = 0; group < m_vecGroups.size(); ++group)
    {
        const auto* const first = tracks + group * packLanes;
        const auto* const end = tracks + std::min(count, (group + 1) * packLanes);
        const bool stays =
            std::all_of(first, end, [keyCount](const TW_RigidKeys* keys) { return staysInPlace(keys, keyCount); });
        m_vecGroups[group] = {translationFloats, stays ? 0 : groupTranslationFloats};
        translationFloats += groupTranslationFloats * (stays ? 1 : keyCount);
    }
    m_vecRotations.resize(keyCount * m_uiRotationStep);
    m_vecTranslations.resize(translationFloats);
    for (std::size_t lane = 0; lane < count; ++lane)
    {
        if (!tracks[lane])
        {
            continue;
        }
        const Group& group = m_vecGroups[lane / packLanes];
        float* rotation = m_vecRotations.data() + lane / packLanes * groupRotationFloats + lane % packLanes;
        float* translation = m_vecTranslations.data() + group.m_uiTranslations + lane % packLanes;
        for (std::size_t key = 0; key < keyCount; ++key)
        {
            const TW_KeyframeMatrix value = (*tracks[lane])[key];
            rotation[0] = value.m_fRotationW;
            rotation[packLanes] = value.m_vRotation.x;
            rotation[2 * packLanes] = value.m_vRotation.y;
            rotation[3 * packLanes] = value.m_vRotation.z;
            translation[0] = value.m_vTranslation.x;
            translation[packLanes] = value.m_vTranslation.y;
            translation[2 * packLanes] = value.m_vTranslation.z;
            rotation += m_uiRotationStep;
            translation += group.m_uiTranslationStep;
        }
    }
}

void PackedKeys::handTo(TW_RigidKeys& keys, std::size_t lane) noexcept
{
    keys.clear();
    hold();
    keys.m_pPacked = this;
    keys.m_uiPackedCount = static_cast<unsigned int>(m_uiKeyCount);
    keys.m_uiLane = static_cast<unsigned int>(lane);
}

PackedView PackedKeys::getView(std::size_t lane) const noexcept
{
    const Group& group = m_vecGroups[lane / packLanes];
    return {m_vecRotations.data() + lane / packLanes * groupRotationFloats + lane % packLanes,
            m_vecTranslations.data() + group.m_uiTranslations + lane % packLanes, m_uiRotationStep,
            group.m_uiTranslationStep};
}

TW_KeyframeMatrix PackedKeys::getKey(std::size_t lane, std::size_t key) const noexcept
{
    const PackedView view = getView(lane);
    const float* const rotation = view.m_pRotations + key * view.m_uiRotationStep;
    const float* const translation = view.m_pTranslations + key * view.m_uiTranslationStep;
    TW_KeyframeMatrix value;
    value.m_vTranslation = {translation[0], translation[packLanes], translation[2 * packLanes]};
    value.m_fRotationW = rotation[0];
    value.m_vRotation = {rotation[packLanes], rotation[2 * packLanes], rotation[3 * packLanes]};
    return value;
}
}  // namespace TW2
