#include "viewer/scene_view.h"

#include "render/overlays.h"
#include "render/studio.h"
#include "viewer/extent.h"
#include "viewer/show.h"

#include <tw2/object/object_animation.h>

namespace TW2::viewer
{
using Vector = M_Vector3Template<float>;

void Shown::add(const render::Bounds& room, const Vector& place)
{
    if (room.isEmpty())
    {
        return;
    }
    m_around.add(room.m_vMinimum + place);
    m_around.add(room.m_vMaximum + place);
    // What turns, or is moved by more than its animations, reaches further than its bones do.
    const float reach = 0.25F * m_fSize;
    m_casters.add(room.m_vMinimum + place - Vector{reach, reach, reach});
    m_casters.add(room.m_vMaximum + place + Vector{reach, reach, reach});
}

Shown makeShown(P_BaseObject& object, TW_ObjectAnimation& skeleton, TW_ObjectAnimation& drawn, const Extent& extent,
                std::span<const int> animations)
{
    const render::Bounds& rest = extent.getRest();
    Shown shown{object, skeleton, drawn, rest.getSize(),       {.m_fHeight = rest.m_vMinimum.y},
                {},     {},       -1,    !extent.hasVertices()};
    shown.add(extent.getRoom(animations), object.getPosition());
    return shown;
}

void addVolumes(render::View& view, P_BaseObject& object, TW_ObjectAnimation& drawn)
{
    const G_FColor color(60.0F, 130.0F, 230.0F);
    // A character whose files give no volume has none of its own; what is drawn of it has.
    P_BaseObject& bounded = object.getBoundingRadius() > 0.0F ? object : static_cast<P_BaseObject&>(drawn);
    render::addBoundingBox(view, bounded, color);
    render::addBoundingSphere(view, bounded, color);
}

render::View makeView(const Show& show)
{
    render::View view;
    if (show.m_bDark)
    {
        view.m_topColor = {44.0F, 49.0F, 57.0F};
        view.m_bottomColor = {24.0F, 26.0F, 30.0F};
    }
    view.m_bTransparent = show.m_bTransparent;
    view.m_bSurfaces = show.m_bMesh;
    view.m_eSurface = show.m_eSurface;
    view.m_eWireframe = show.m_eWireframe;
    return view;
}

render::View makeView(const Show& show, const Shown& shown)
{
    render::View view = makeView(show);
    view.m_iPickedBone = shown.m_iPickedBone;
    if (shown.m_iPickedBone >= 0)
    {
        view.m_bHighlight = show.m_eSurface == render::View::Surface::Materials;
        view.m_pPickedMesh = &shown.m_skeleton != &shown.m_drawn
                                 ? nullptr
                                 : shown.m_skeleton.getMesh(static_cast<unsigned int>(shown.m_iPickedBone));
    }
    if (show.m_bShadow && show.m_bMesh)
    {
        view.m_shadow.emplace(render::View::Shadow{shown.m_casters, shown.m_ground});
    }
    if (show.m_bGrid)
    {
        render::addGroundGrid(view, shown.m_around, shown.m_ground);
    }
    if (show.m_bSkeleton || shown.m_bOnlyBones)
    {
        render::addSkeleton(view, shown.m_skeleton, G_FColor(230.0F, 80.0F, 40.0F));
    }
    if (show.m_bAxes)
    {
        render::addAxes(view, shown.m_skeleton, 0.03F * shown.m_fSize);
    }
    if (show.m_bBounds)
    {
        addVolumes(view, shown.m_object, shown.m_drawn);
    }
    return view;
}
}  // namespace TW2::viewer
