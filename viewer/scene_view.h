#pragma once

#include "render/bounds.h"
#include "render/view.h"

class P_BaseObject;

namespace TW2
{
class TW_ObjectAnimation;
}

namespace TW2::viewer
{
struct Show;

/// What a picture is of.
struct Shown
{
    P_BaseObject& m_object;
    TW_ObjectAnimation& m_skeleton;  ///< its meshes are the bones
    TW_ObjectAnimation& m_drawn;     ///< the same, or the skin
    render::Bounds m_ground;         ///< around everybody in the first pose: the grid lies below them
    render::Bounds m_casters;        ///< around everybody that throws a shadow
    float m_fSize = 0.0F;            ///< of the object
    int m_iPickedBone = -1;          ///< mesh index; -1: none
};

/// How the renderer shows it: the same for the window, the page and `tw2 render`. Lights and camera are the scene's.
[[nodiscard]] render::View makeView(const Show& show, const Shown& shown);
/// With nothing to see yet.
[[nodiscard]] render::View makeView(const Show& show);
}  // namespace TW2::viewer
