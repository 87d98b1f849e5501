#pragma once

#include <tw2/export.h>
#include <tw2/light/light_animation.h>

class P_SpotLight;

namespace TW2
{
struct SpotLightAnimationChunk;

/// Animation of one spot light: colour, brightness, fall-off range and the angles of its cones.
///
///     TW_SpotLightAnimation lamp(record);   // inside the loader's light callback
///     ... every frame: lamp.animate(light, seconds); ...
class TW2_API TW_SpotLightAnimation : public TW_LightAnimation
{
public:
    /// @name Life
    /// A form that throws leaves the animation not constructed.
    /// @{
    TW_SpotLightAnimation() noexcept = default;
    /// Builds the tracks of a record.
    explicit TW_SpotLightAnimation(const SpotLightAnimationChunk& chunk) : TW_SpotLightAnimation() { construct(chunk); }

    /// Builds the tracks of a record, in the place of what was there.
    void construct(const SpotLightAnimationChunk& chunk);
    /// Shares the tracks of `other`; an animation given itself changes nothing.
    void construct(const TW_SpotLightAnimation& other) { constructFromCopy(other); }
    /// @}

    /// @name Evaluation
    /// Any time or frame; looping is as the record said.
    /// @{

    /// Gives `light` its values at `time` in seconds; nothing happens to null.
    void animate(P_SpotLight* light, float time) const { animateFrame(light, toFrame(time)); }
    /// The same at a frame, which may lie between two whole ones.
    void animateFrame(P_SpotLight* light, float frame) const;
    /// @}

    /// @name Tracks
    /// Null while the animation is not constructed.
    /// @{

    /// Distance at which the light has faded to nothing.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getFallOffContainer() const noexcept { return m_pFallOff; }
    /// Distance of full strength; held for the host, not applied to the light.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getHotSpotContainer() const noexcept { return m_pHotSpot; }
    /// Cone outside of which there is no light, in degrees.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getFallOffAngleContainer() const noexcept
    {
        return m_pFallOffAngle;
    }
    /// Cone of full strength, in degrees.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getHotSpotAngleContainer() const noexcept
    {
        return m_pHotSpotAngle;
    }
    /// @}

    /// Writes name and frame rate to the verbose log.
    void dump() const { dumpAs("Spot"); }
};
}  // namespace TW2
