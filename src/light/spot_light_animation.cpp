#include <tw2/light/light_animation_chunks.h>
#include <tw2/light/spot_light_animation.h>

#include <platform/scene/spot_light.h>

namespace TW2
{
TW_SpotLightAnimation::TW_SpotLightAnimation(const SpotLightAnimationChunk& chunk)
{
    construct(chunk);
}

TW_SpotLightAnimation::TW_SpotLightAnimation(const TW_SpotLightAnimation& other) = default;
TW_SpotLightAnimation& TW_SpotLightAnimation::operator=(const TW_SpotLightAnimation& other) = default;
TW_SpotLightAnimation::~TW_SpotLightAnimation() = default;

void TW_SpotLightAnimation::construct(const SpotLightAnimationChunk& chunk)
{
    constructFromRecord(chunk);
}

void TW_SpotLightAnimation::construct(const TW_SpotLightAnimation& other)
{
    constructFromCopy(other);
}

void TW_SpotLightAnimation::animate(P_SpotLight* light, float time) const
{
    animateFrame(light, toFrame(time));
}

void TW_SpotLightAnimation::animateFrame(P_SpotLight* light, float frame) const
{
    applyColor(*light, frame);
    if (float range = 0.0f; evaluate(TRACK_FALL_OFF, range, frame))
    {
        light->setFalloffRange(range);
    }
    if (float angle = 0.0f; evaluate(TRACK_FALL_OFF_ANGLE, angle, frame))
    {
        light->setFalloffAngle(angle, -1.0f);
    }
    if (float angle = 0.0f; evaluate(TRACK_HOT_SPOT_ANGLE, angle, frame))
    {
        light->setHotspotAngle(angle);
    }
}

void TW_SpotLightAnimation::dump() const
{
    dumpAs("Spot");
}
}  // namespace TW2
