#pragma once

#include "render/bounds.h"
#include "render/view.h"

#include <span>

class P_BaseObject;

namespace TW2
{
class TW_ObjectAnimation;
}

namespace TW2::viewer
{
class Extent;
struct Show;

/// What a picture is of.
struct Shown
{
    P_BaseObject& m_object;
    TW_ObjectAnimation& m_skeleton;  ///< its meshes are the bones
    TW_ObjectAnimation& m_drawn;     ///< the same, or the skin
    float m_fSize = 0.0F;            ///< of the object in its first pose
    render::GroundPlane m_ground;    ///< what grid and shadow lie on
    render::Bounds m_around;         ///< around everybody, in the world: the grid lies below it
    render::Bounds m_casters;        ///< around everybody that throws a shadow
    int m_iPickedBone = -1;          ///< mesh index; -1: none
    bool m_bOnlyBones = false;       ///< no vertices, so that the bones are drawn

    /// Somebody stands at a place and needs some room around it.
    void add(const render::Bounds& room, const M_Vector3Template<float>& place);
};

/// An object alone, where it stands, with the room that what it plays takes. The ground is level, at the lowest point
/// of its first pose.
[[nodiscard]] Shown makeShown(P_BaseObject& object, TW_ObjectAnimation& skeleton, TW_ObjectAnimation& drawn,
                              const Extent& extent, std::span<const int> animations);
/// Draws the box and the sphere that an object is bounded by.
void addVolumes(render::View& view, P_BaseObject& object, TW_ObjectAnimation& drawn);
/// How the renderer shows it: the same for the window, the page and `tw2 render`. Lights and camera are the scene's.
[[nodiscard]] render::View makeView(const Show& show, const Shown& shown);
/// With nothing to see yet.
[[nodiscard]] render::View makeView(const Show& show);
}  // namespace TW2::viewer
