#include "core/unit_init.h"

#include <tw2/light/light_animation.h>
#include <tw2/light/light_animation_chunks.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/system.h>
#include <platform/scene/light.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>

namespace TW2
{
namespace
{
/// Containers hold the low 16 bits of a key's frame.
std::int16_t toKeyFrame(unsigned int frame)
{
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(frame));
}

const G_FColor& valueOf(const ColorKey& key)
{
    return key.color;
}

float valueOf(const FloatKey& key)
{
    return key.value;
}

template <typename T, typename Key, typename Record>
void fill(LinearlyOptimizedContainer<T>& track, const S_Vector<Key>& keys, const Record& record)
{
    track.construct(static_cast<unsigned int>(keys.size()));
    track.m_bLooping = record.header.looping;
    track.m_bLoopInterpolation = record.loopInterpolation;
    track.m_uTotalFrameCount = static_cast<unsigned int>(record.totalFrameCount);
    track.m_uLoopToFrame =
        record.header.looping || record.totalFrameCount == 0 ? record.loopToFrame : track.m_uTotalFrameCount - 1u;
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        track.m_vecFrames[i] = toKeyFrame(keys[i].frame);
        track.m_vecValues[i] = valueOf(keys[i]);
    }
}
}  // namespace

/// What copies share.
struct TW_LightAnimation::Tracks : S_Allocated
{
    LinearlyOptimizedContainer<G_FColor> m_color;
    LinearlyOptimizedContainer<float> m_numbers[TRACK_COUNT];
    int m_iReferenceCount = 1;
};

TW_LightAnimation::TW_LightAnimation(const TW_LightAnimation& other)
{
    initializeMembers();
    constructFromCopy(other);
}

TW_LightAnimation& TW_LightAnimation::operator=(const TW_LightAnimation& other)
{
    constructFromCopy(other);
    return *this;
}

void TW_LightAnimation::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_strAnimationTargetName.clear();
    m_iFrameRate = 0;
    m_pTracks = nullptr;
    m_iColorFrame = 0;
    std::fill(std::begin(m_aiFrames), std::end(m_aiFrames), 0);
}

template <typename Record>
void TW_LightAnimation::constructFromRecord(const Record& record)
{
    const S_MemoryScope scope("TW Memory Container");
    destruct();
    auto tracks = std::make_unique<Tracks>();
    fill(tracks->m_color, record.colorKeys, record);
    fill(tracks->m_numbers[TRACK_BRIGHTNESS], record.brightnessKeys, record);
    if constexpr (requires { record.fallOffKeys; })
    {
        fill(tracks->m_numbers[TRACK_FALL_OFF], record.fallOffKeys, record);
        fill(tracks->m_numbers[TRACK_HOT_SPOT], record.hotSpotKeys, record);
    }
    if constexpr (requires { record.fallOffAngleKeys; })
    {
        fill(tracks->m_numbers[TRACK_FALL_OFF_ANGLE], record.fallOffAngleKeys, record);
        fill(tracks->m_numbers[TRACK_HOT_SPOT_ANGLE], record.hotSpotAngleKeys, record);
    }
    m_strAnimationTargetName = record.header.targetName;
    m_iFrameRate = record.header.frameRate;
    m_pTracks = tracks.release();
    m_bConstructed = true;
}

template void TW_LightAnimation::constructFromRecord(const PointLightAnimationChunk&);
template void TW_LightAnimation::constructFromRecord(const DirectionalLightAnimationChunk&);
template void TW_LightAnimation::constructFromRecord(const SpotLightAnimationChunk&);

void TW_LightAnimation::constructFromCopy(const TW_LightAnimation& other)
{
    if (&other == this)
    {
        return;
    }
    destruct();
    m_strAnimationTargetName = other.m_strAnimationTargetName;
    m_iFrameRate = other.m_iFrameRate;
    if (other.m_bConstructed)
    {
        m_pTracks = other.m_pTracks;
        increaseReferenceCount();
        m_bConstructed = true;
    }
}

void TW_LightAnimation::destruct() noexcept
{
    if (m_bConstructed && decreaseReferenceCount() == 0)
    {
        delete m_pTracks;
    }
    initializeMembers();
}

int TW_LightAnimation::increaseReferenceCount() const noexcept
{
    return ++m_pTracks->m_iReferenceCount;
}

int TW_LightAnimation::decreaseReferenceCount() const noexcept
{
    return --m_pTracks->m_iReferenceCount;
}

LinearlyOptimizedContainer<G_FColor>* TW_LightAnimation::getColorContainer() const noexcept
{
    return m_pTracks ? &m_pTracks->m_color : nullptr;
}

LinearlyOptimizedContainer<float>* TW_LightAnimation::getTrack(Track track) const noexcept
{
    return m_pTracks ? &m_pTracks->m_numbers[track] : nullptr;
}

void TW_LightAnimation::applyColor(P_Light& light, float frame) const
{
    const LinearlyOptimizedContainer<G_FColor>* track = getColorContainer();
    if (!track || track->m_vecValues.empty())
    {
        return;
    }
    G_FColor color;
    float brightness = 1.0f;
    m_iColorFrame = track->getValue(color, frame, m_iColorFrame);
    evaluate(TRACK_BRIGHTNESS, brightness, frame);
    light.setColor(color * brightness);
}

bool TW_LightAnimation::evaluate(Track track, float& value, float frame) const
{
    const LinearlyOptimizedContainer<float>* container = getTrack(track);
    if (!container || container->m_vecValues.empty())
    {
        return false;
    }
    m_aiFrames[track] = container->getValue(value, frame, m_aiFrames[track]);
    return true;
}

void TW_LightAnimation::dumpAs(const char* kind) const
{
    Sys.verbose("%s light animation for object: \"%s\"\n", kind, m_strAnimationTargetName.c_str());
    Sys.verbose("Frame rate: %i\n", m_iFrameRate);
}
}  // namespace TW2
