#pragma once

#include <tw2/export.h>
#include <tw2/light/light_animation.h>

class P_DirectionalLight;

namespace TW2
{
struct DirectionalLightAnimationChunk;

/// Animation of one directional light: colour and brightness.
///
///     TW_DirectionalLightAnimation lamp(record);   // inside the loader's light callback
///     ... every frame: lamp.animate(light, seconds); ...
class TW2_API TW_DirectionalLightAnimation : public TW_LightAnimation
{
public:
    /// @name Life
    /// A form that throws leaves the animation not constructed.
    /// @{
    TW_DirectionalLightAnimation() noexcept = default;
    /// Builds the tracks of a record.
    explicit TW_DirectionalLightAnimation(const DirectionalLightAnimationChunk& chunk) : TW_DirectionalLightAnimation()
    {
        construct(chunk);
    }

    /// Builds the tracks of a record, in the place of what was there.
    void construct(const DirectionalLightAnimationChunk& chunk);
    /// Shares the tracks of `other`; an animation given itself changes nothing.
    void construct(const TW_DirectionalLightAnimation& other) { constructFromCopy(other); }
    /// @}

    /// @name Evaluation
    /// Any time or frame; looping is as the record said.
    /// @{

    /// Gives `light` its values at `time` in seconds; nothing happens to null.
    void animate(P_DirectionalLight* light, float time) const { animateFrame(light, toFrame(time)); }
    /// The same at a frame, which may lie between two whole ones.
    void animateFrame(P_DirectionalLight* light, float frame) const;
    /// @}

    /// Writes name and frame rate to the verbose log.
    void dump() const { dumpAs("Point"); }  // the log knows lights with and without a cone only
};
}  // namespace TW2
