#pragma once

#include "render/bounds.h"
#include "render/view.h"

#include <platform/scene/directional_light.h>

#include <array>
#include <span>

class P_BaseObject;
class P_Camera;
class P_Scene;

namespace TW2::render
{
/// From where a picture is taken.
struct Viewpoint
{
    float m_fAzimuth = 35.0F;        ///< degrees around the upright axis; 0: from the front (negative z), 90: from +x
    float m_fElevation = 12.0F;      ///< degrees above the horizon
    float m_fVerticalAngle = 35.0F;  ///< field of view from bottom to top, in degrees
    float m_fMargin = 1.08F;         ///< how much larger than the bounds the shown field is; 1: they touch the edge
};

/// Places the camera (which hangs under nothing) so that `points` (at least one, all finite) fill the picture.
/// `aspect`: width over height.
void frameCamera(P_Camera& camera, std::span<const M_Vector3Template<float>> points, const Viewpoint& viewpoint,
                 float aspect);

/// Soft light for looking at a model: a main light from the upper left before the camera, a weaker one from the right,
/// and one from behind that draws the outline.
class StudioLights
{
public:
    /// Hangs the lights into `scene`, seen along the camera's direction. `strength`: 1 lights a surface that is
    /// multiplied with the light once; ready-made set-ups, which double it, want about half.
    StudioLights(P_Scene& scene, const P_Camera& camera, float strength);

private:
    std::array<P_DirectionalLight, 3> m_lights;
};

/// The strength that suits the materials of what hangs below `root`: see StudioLights.
[[nodiscard]] float chooseLightStrength(const P_BaseObject& root);

/// Adds a ground grid to the lines of a view: level at the lowest point of `bounds`, around it, with lines at a round
/// distance.
void addGroundGrid(View& view, const Bounds& bounds);
/// The same on a ground of the caller's; `bounds` say around what, and how far.
void addGroundGrid(View& view, const Bounds& bounds, const GroundPlane& ground);

/// Adds a line from each mesh in `root`'s subtree to its parent mesh, drawn over everything: a skeleton.
void addSkeleton(View& view, const P_BaseObject& root, const G_FColor& color);
}  // namespace TW2::render
