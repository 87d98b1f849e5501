#include "core/memory_scope.h"
#include "core/unit_init.h"
#include "keyframe/track_value.h"

#include <tw2/light/directional_light_animation.h>
#include <tw2/light/light_animation.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/light/point_light_animation.h>
#include <tw2/light/spot_light_animation.h>

#include <platform/runtime/rollback.h>
#include <platform/runtime/system.h>
#include <platform/scene/directional_light.h>
#include <platform/scene/light.h>
#include <platform/scene/point_light.h>
#include <platform/scene/spot_light.h>

namespace TW2
{
namespace
{
/// The value of a track at a frame; false, and nothing changes, without keys. `hint` becomes that of the next look-up.
template <typename T>
bool readValue(const LinearlyOptimizedContainer<T>* track, T& value, float frame, int& hint)
{
    if (!track || track->m_vecFrames.empty())
    {
        return false;
    }
    hint = track->getValue(value, frame, hint);
    return true;
}

/// A new track of a record's keys, each with the member `value`.
template <typename T, typename Key, typename Record>
void create(LinearlyOptimizedContainer<T>*& track, const S_Vector<Key>& keys, T Key::*value, const Record& record)
{
    track = new LinearlyOptimizedContainer<T>;
    fillTrack(*track, record, static_cast<unsigned int>(record.totalFrameCount) - 1U, keys,
              [value](const Key& key) { return key.*value; });
}
}  // namespace

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
    m_pColor = nullptr;
    m_pBrightness = m_pFallOff = m_pHotSpot = m_pFallOffAngle = m_pHotSpotAngle = nullptr;
    m_iColorFrame = m_iBrightnessFrame = m_iFallOffFrame = 0;
    m_iHotSpotFrame = m_iFallOffAngleFrame = m_iHotSpotAngleFrame = 0;
    m_piReferenceCount = nullptr;
}

template <typename Record>
void TW_LightAnimation::constructFromRecord(const Record& record)
{
    const MemoryScope scope;
    destruct();
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_bConstructed = true;
    m_piReferenceCount = new S_OwnCounter(1);
    create(m_pColor, record.colorKeys, &ColorKey::color, record);
    create(m_pBrightness, record.brightnessKeys, &FloatKey::value, record);
    if constexpr (requires { record.fallOffKeys; })
    {
        create(m_pFallOff, record.fallOffKeys, &FloatKey::value, record);
        create(m_pHotSpot, record.hotSpotKeys, &FloatKey::value, record);
    }
    if constexpr (requires { record.fallOffAngleKeys; })
    {
        create(m_pFallOffAngle, record.fallOffAngleKeys, &FloatKey::value, record);
        create(m_pHotSpotAngle, record.hotSpotAngleKeys, &FloatKey::value, record);
    }
    m_strAnimationTargetName = record.header.targetName;
    m_iFrameRate = record.header.frameRate;
    rollback.keep();
}

void TW_LightAnimation::constructFromCopy(const TW_LightAnimation& other)
{
    if (&other == this)
    {
        return;
    }
    const MemoryScope scope;
    destruct();
    m_strAnimationTargetName = other.m_strAnimationTargetName;
    m_iFrameRate = other.m_iFrameRate;
    if (!other.m_bConstructed)
    {
        return;
    }
    m_pColor = other.m_pColor;
    m_pBrightness = other.m_pBrightness;
    m_pFallOff = other.m_pFallOff;
    m_pHotSpot = other.m_pHotSpot;
    m_pFallOffAngle = other.m_pFallOffAngle;
    m_pHotSpotAngle = other.m_pHotSpotAngle;
    m_piReferenceCount = other.m_piReferenceCount;
    increaseReferenceCount();
    m_bConstructed = true;
}

void TW_LightAnimation::destruct() noexcept
{
    if (m_piReferenceCount && decreaseReferenceCount() == 0)
    {
        delete m_pColor;
        for (const auto* track : {m_pBrightness, m_pFallOff, m_pHotSpot, m_pFallOffAngle, m_pHotSpotAngle})
        {
            delete track;
        }
        delete m_piReferenceCount;
    }
    initializeMembers();
}

template <typename Apply>
void TW_LightAnimation::applyTrack(const LinearlyOptimizedContainer<float>* track, int& hint, float frame,
                                   const Apply& apply) const
{
    if (float value = 0.0F; readValue(track, value, frame, hint))
    {
        apply(value);
    }
}

void TW_LightAnimation::applyColor(P_Light& light, float frame) const
{
    G_FColor color;
    if (readValue(m_pColor, color, frame, m_iColorFrame))
    {
        float brightness = 1.0F;
        readValue(m_pBrightness, brightness, frame, m_iBrightnessFrame);
        light.setColor(color * brightness);
    }
}

void TW_LightAnimation::dumpAs(const char* kind) const
{
    Sys.verbose("%s light animation for object: \"%s\"\n", kind, m_strAnimationTargetName.c_str());
    Sys.verbose("Frame rate: %i\n", m_iFrameRate);
}

void TW_PointLightAnimation::construct(const PointLightAnimationChunk& chunk)
{
    constructFromRecord(chunk);
}

void TW_PointLightAnimation::animateFrame(P_PointLight* light, float frame) const
{
    if (light)
    {
        applyColor(*light, frame);
        applyTrack(m_pFallOff, m_iFallOffFrame, frame, [light](float range) { light->setFalloffRange(range); });
    }
}

void TW_DirectionalLightAnimation::construct(const DirectionalLightAnimationChunk& chunk)
{
    constructFromRecord(chunk);
}

void TW_DirectionalLightAnimation::animateFrame(P_DirectionalLight* light, float frame) const
{
    if (light)
    {
        applyColor(*light, frame);
    }
}

void TW_SpotLightAnimation::construct(const SpotLightAnimationChunk& chunk)
{
    constructFromRecord(chunk);
}

void TW_SpotLightAnimation::animateFrame(P_SpotLight* light, float frame) const
{
    if (light)
    {
        applyColor(*light, frame);
        applyTrack(m_pFallOff, m_iFallOffFrame, frame, [light](float range) { light->setFalloffRange(range); });
        applyTrack(m_pFallOffAngle, m_iFallOffAngleFrame, frame,
                   [light](float angle) { light->setFalloffAngle(angle, -1.0F); });
        applyTrack(m_pHotSpotAngle, m_iHotSpotAngleFrame, frame,
                   [light](float angle) { light->setHotspotAngle(angle); });
    }
}

}  // namespace TW2
