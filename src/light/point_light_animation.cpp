#include <tw2/light/light_animation_chunks.h>
#include <tw2/light/point_light_animation.h>

#include <platform/scene/point_light.h>

namespace TW2
{
TW_PointLightAnimation::TW_PointLightAnimation(const PointLightAnimationChunk& chunk)
{
    construct(chunk);
}

TW_PointLightAnimation::TW_PointLightAnimation(const TW_PointLightAnimation& other) = default;
TW_PointLightAnimation& TW_PointLightAnimation::operator=(const TW_PointLightAnimation& other) = default;
TW_PointLightAnimation::~TW_PointLightAnimation() = default;

void TW_PointLightAnimation::construct(const PointLightAnimationChunk& chunk)
{
    constructFromRecord(chunk);
}

void TW_PointLightAnimation::construct(const TW_PointLightAnimation& other)
{
    constructFromCopy(other);
}

void TW_PointLightAnimation::animate(P_PointLight* light, float time) const
{
    animateFrame(light, toFrame(time));
}

void TW_PointLightAnimation::animateFrame(P_PointLight* light, float frame) const
{
    applyColor(*light, frame);
    if (float range = 0.0f; evaluate(TRACK_FALL_OFF, range, frame))
    {
        light->setFalloffRange(range);
    }
}

void TW_PointLightAnimation::dump() const
{
    dumpAs("Point");
}
}  // namespace TW2
