#pragma once

#include "render/bounds.h"

#include <platform/image/fcolor.h>
#include <platform/scene/context.h>

#include <optional>
#include <vector>

class P_VirtualObject;

namespace TW2::render
{
/// Ground without an end: level, or rising evenly.
struct GroundPlane
{
    float m_fHeight = 0.0F;  ///< y at the world's origin
    float m_fRiseX = 0.0F;   ///< how much higher it is a unit further along x
    float m_fRiseZ = 0.0F;   ///< and along z

    /// y of the ground below or above a point.
    [[nodiscard]] float getHeight(const M_Vector3Template<float>& point) const noexcept
    {
        return m_fHeight + m_fRiseX * point.x + m_fRiseZ * point.z;
    }
    /// Upwards, of length 1.
    [[nodiscard]] M_Vector3Template<float> getNormal() const noexcept
    {
        return M_Vector3Template<float>(-m_fRiseX, 1.0F, -m_fRiseZ).normalized();
    }
};

/// The shadow that the scene's first directional light throws on the ground.
struct GroundShadow
{
    Bounds m_casters;           ///< what throws it, in world space; what lies outside throws none
    GroundPlane m_ground = {};  ///< what it falls on
    float m_fStrength = 0.4F;   ///< 0: none, 1: black
};

/// What a picture shows besides the scene, and how the scene's surfaces are shown. Colours are on the scale 0 to 255.
struct View
{
    /// A line in world space, with its colour.
    using Line = P_Context::DebugLine;

    /// What the colour of a surface says.
    enum class Surface
    {
        Materials,   ///< its material under the lights
        Unlit,       ///< its material as under full light: textures and colours as they are
        Normals,     ///< its normals in world space: x, y, z from -1 to 1 as red, green, blue
        BoneWeights  ///< how much the picked bone moves it: from blue (not at all) over green to red (it alone)
    };

    /// Triangles as lines.
    enum class Wireframe
    {
        None,
        Over,  ///< over the surfaces
        Only   ///< instead of the surfaces
    };

    /// What throws the shadow, on which ground.
    using Shadow = GroundShadow;

    /// @name Background and light
    /// @{
    G_FColor m_topColor{206.0F, 217.0F, 230.0F};     ///< background at the upper edge
    G_FColor m_bottomColor{244.0F, 244.0F, 242.0F};  ///< background at the lower edge
    /// No background: the picture has the scene's coverage as alpha, with colours multiplied by it.
    bool m_bTransparent = false;
    G_FColor m_ambientSky{112.0F, 116.0F, 124.0F};  ///< ambient light on surfaces that face up
    G_FColor m_ambientGround{70.0F, 66.0F, 62.0F};  ///< ambient light on surfaces that face down
    /// Of the scene's first directional light; empty: none.
    std::optional<Shadow> m_shadow;
    /// @}

    /// @name Fog, on the materials that ask for it
    /// @{
    bool m_bFog = false;                          ///< off: materials are drawn without
    G_FColor m_fogColor{225.0F, 230.0F, 236.0F};  ///< components 0 to 255
    float m_fFogStart = 0.0F;                     ///< depth at which fog begins
    float m_fFogEnd = 10000.0F;                   ///< depth at which nothing but fog is seen
    /// @}

    /// @name Surfaces
    /// @{
    bool m_bSurfaces = true;                            ///< without: lines alone
    Surface m_eSurface = Surface::Materials;            ///< how surfaces are coloured
    Wireframe m_eWireframe = Wireframe::None;           ///< triangles as lines
    G_FColor m_wireColor{40.0F, 44.0F, 52.0F, 150.0F};  ///< alpha: how much they cover
    /// @}

    /// @name The picked bone, for `Surface::BoneWeights` and for the highlight
    /// @{
    int m_iPickedBone = -1;                            ///< its number in every skinned mesh; -1: none
    const P_VirtualObject* m_pPickedMesh = nullptr;    ///< a mesh that is a bone itself; all of it counts
    bool m_bHighlight = false;                         ///< mixes a colour into what the picked bone moves
    G_FColor m_highlightColor{255.0F, 150.0F, 30.0F};  ///< components 0 to 255
    /// @}

    /// @name Lines in world space
    /// @{
    float m_fLineWidth = 1.5F;            ///< in pixels
    std::vector<Line> m_vecLines;         ///< hidden by what is before them
    std::vector<Line> m_vecOverlayLines;  ///< drawn over everything
    /// @}
};
}  // namespace TW2::render
