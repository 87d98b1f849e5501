#pragma once

#include <platform/image/fcolor.h>
#include <platform/scene/context.h>

#include <vector>

namespace TW2::render
{
/// What a picture shows besides the scene: background, ambient light, fog, lines.
struct View
{
    using Line = P_Context::DebugLine;

    G_FColor m_topColor{206.0F, 217.0F, 230.0F};     ///< background at the upper edge
    G_FColor m_bottomColor{244.0F, 244.0F, 242.0F};  ///< background at the lower edge
    G_FColor m_ambientSky{112.0F, 116.0F, 124.0F};   ///< ambient light on surfaces that face up
    G_FColor m_ambientGround{70.0F, 66.0F, 62.0F};   ///< ambient light on surfaces that face down
    bool m_bFog = false;                             ///< fogs the materials that ask for it
    G_FColor m_fogColor{225.0F, 230.0F, 236.0F};
    float m_fFogStart = 0.0F;             ///< depth at which fog begins
    float m_fFogEnd = 10000.0F;           ///< depth at which nothing but fog is seen
    std::vector<Line> m_vecLines;         ///< lines in world space, hidden by what is before them
    std::vector<Line> m_vecOverlayLines;  ///< lines in world space, drawn over everything
};
}  // namespace TW2::render
