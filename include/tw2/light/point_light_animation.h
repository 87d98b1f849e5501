#pragma once

#include <tw2/export.h>
#include <tw2/light/light_animation.h>

class P_PointLight;

namespace TW2
{
struct PointLightAnimationChunk;

/// Animation of one point light: colour, brightness and fall-off range.
///
///     TW_PointLightAnimation lamp(record);   // inside the loader's light callback
///     ... every frame: lamp.animate(light, seconds); ...
class TW2_API TW_PointLightAnimation : public TW_LightAnimation
{
public:
    /// @name Life
    /// A form that throws leaves the animation not constructed.
    /// @{
    TW_PointLightAnimation() noexcept = default;
    /// Builds the tracks of a record.
    explicit TW_PointLightAnimation(const PointLightAnimationChunk& chunk) : TW_PointLightAnimation()
    {
        construct(chunk);
    }

    /// Builds the tracks of a record, in the place of what was there.
    void construct(const PointLightAnimationChunk& chunk);
    /// Shares the tracks of `other`; an animation given itself changes nothing.
    void construct(const TW_PointLightAnimation& other) { constructFromCopy(other); }
    /// @}

    /// @name Evaluation
    /// Any time or frame; looping is as the record said.
    /// @{

    /// Gives `light` its values at `time` in seconds; nothing happens to null.
    void animate(P_PointLight* light, float time) const { animateFrame(light, toFrame(time)); }
    /// The same at a frame, which may lie between two whole ones.
    void animateFrame(P_PointLight* light, float frame) const;
    /// @}

    /// @name Tracks
    /// Null while the animation is not constructed.
    /// @{

    /// Distance at which the light has faded to nothing.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getFallOffContainer() const noexcept { return m_pFallOff; }
    /// Distance of full strength; held for the host, not applied to the light.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getHotSpotContainer() const noexcept { return m_pHotSpot; }
    /// @}

    /// Writes name and frame rate to the verbose log.
    void dump() const { dumpAs("Point"); }
};
}  // namespace TW2
