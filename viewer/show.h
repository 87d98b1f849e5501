#pragma once

#include "render/view.h"

namespace TW2::viewer
{
/// What is shown of the object, and with what around it.
struct Show
{
    bool m_bMesh = true;          ///< the surfaces
    bool m_bSkeleton = false;     ///< a line from each bone to its parent
    bool m_bBoneNames = false;    ///< a label at each bone: faces draw them, from `Viewer::getLabels`
    bool m_bAxes = false;         ///< the axes of each bone: x red, y green, z blue
    bool m_bBounds = false;       ///< bounding box and sphere
    bool m_bGrid = true;          ///< ground
    bool m_bShadow = true;        ///< on the ground
    bool m_bStudioLights = true;  ///< lights that follow the eye
    bool m_bFileLights = true;    ///< lights that the file brings
    bool m_bVisibility = true;    ///< visibility tracks are followed
    bool m_bDark = false;         ///< dark background
    bool m_bTransparent = false;  ///< no background at all
    render::View::Surface m_eSurface = render::View::Surface::Materials;
    render::View::Wireframe m_eWireframe = render::View::Wireframe::None;
};
}  // namespace TW2::viewer
