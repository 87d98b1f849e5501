#include <tw2/light/directional_light_animation.h>
#include <tw2/light/light_animation_chunks.h>

#include <platform/scene/directional_light.h>

namespace TW2
{
TW_DirectionalLightAnimation::TW_DirectionalLightAnimation(const DirectionalLightAnimationChunk& chunk)
{
    construct(chunk);
}

TW_DirectionalLightAnimation::TW_DirectionalLightAnimation(const TW_DirectionalLightAnimation& other) = default;
TW_DirectionalLightAnimation& TW_DirectionalLightAnimation::operator=(const TW_DirectionalLightAnimation& other) =
    default;
TW_DirectionalLightAnimation::~TW_DirectionalLightAnimation() = default;

void TW_DirectionalLightAnimation::construct(const DirectionalLightAnimationChunk& chunk)
{
    constructFromRecord(chunk);
}

void TW_DirectionalLightAnimation::construct(const TW_DirectionalLightAnimation& other)
{
    constructFromCopy(other);
}

void TW_DirectionalLightAnimation::animate(P_DirectionalLight* light, float time) const
{
    animateFrame(light, toFrame(time));
}

void TW_DirectionalLightAnimation::animateFrame(P_DirectionalLight* light, float frame) const
{
    applyColor(*light, frame);
}

void TW_DirectionalLightAnimation::dump() const
{
    // The log knows lights with and without a cone only.
    dumpAs("Point");
}
}  // namespace TW2
