#pragma once

#include "render/bounds.h"

#include <map>
#include <span>

class P_Context;
class P_Scene;

namespace TW2
{
class TW_ObjectAnimation;
class TW_VirtualObject;
}  // namespace TW2

namespace TW2::viewer
{
class AnimatedScript;

/// Where an animated object stands and how far its animations carry it: by this ground and shadow are laid out, in the
/// window, in the page and by `tw2 render` alike. Seen from where the object is placed.
class Extent
{
public:
    Extent() = default;
    /// Plays all animations of an object that hangs in `scene` and stands at the world's origin. The object is left in
    /// its first pose: the beginning of the animation that is played when nobody chooses one.
    Extent(AnimatedScript& script, P_Scene& scene, P_Context& context);

    /// Whether the first pose shows any; what does not is seen by its bones.
    [[nodiscard]] bool hasVertices() const noexcept { return m_bVertices; }
    /// Around the vertices of the first pose, or around its bones when it has none. The ground lies at the lowest
    /// point.
    [[nodiscard]] const render::Bounds& getRest() const noexcept { return m_rest; }
    /// The same with the room that animations take besides, by their indices; others than there are take none.
    [[nodiscard]] render::Bounds getRoom(std::span<const int> animations) const;

private:
    bool m_bVertices = false;
    render::Bounds m_rest;
    std::map<int, render::Bounds> m_mapRooms;
};
}  // namespace TW2::viewer
