#pragma once

#include <platform/export.h>
#include <platform/scene/material.h>

/// Ready-made materials. Each function sets up a new material, without maps, and returns whether the driver can do it;
/// the material is unchanged when it cannot.
class TW2_PLATFORM_API P_MaterialHelpers
{
public:
    /// Texture x gouraud, doubled: one texture layer, coordinate set 0.
    [[nodiscard]] static bool makeTexture(P_Material* material, P_Material::FILTER_MODE filter);
    /// Texture x (gouraud + environment), doubled: texture layer 0 with set 0, environment layer 1 with set 1, whose
    /// coordinates are the reflected line of sight, transformed and projected.
    [[nodiscard]] static bool makeTextureEnv(P_Material* material, P_Material::FILTER_MODE filter);
    /// Texture x gouraud, doubled, drawn where the map is not transparent. `blend`: blended by the map's alpha;
    /// `alphaTest`: pixels below the material's alpha reference are left out; `gouraud`: shaded (else the plain
    /// texture).
    [[nodiscard]] static bool makeTextureTransparent(P_Material* material, P_Material::FILTER_MODE filter, bool blend,
                                                     bool alphaTest, bool gouraud);
};
