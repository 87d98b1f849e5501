#pragma once

#include "convert/color_atlas.h"
#include "convert/mesh_arrangement.h"
#include "convert/model.h"
#include "convert/texture_files.h"
#include "convert/warnings.h"

#include <memory>
#include <string>
#include <vector>

namespace TW2::convert
{
/// How a surface is shown with what the library's materials can say: a base texture and at most one more on top of it,
/// with coordinates of their own.
struct SurfacePlan
{
    /// How the second texture joins what is shown without it.
    enum class Second
    {
        None,
        Multiply,  ///< colours of the vertices
        Add        ///< light of its own
    };
    std::string m_strBase;     ///< file of the base texture; empty: the surface has one colour
    std::string m_strOpacity;  ///< file of the base texture's alpha; empty: it has none
    std::string m_strSecond;   ///< file of the second texture
    Second m_eSecond = Second::None;
    G_FColor m_color;           ///< of a surface without base texture
    float m_fOpacity = 1.0F;    ///< 0 to 1, of the whole surface
    bool m_bInvisible = false;  ///< nothing of it is to be seen

    std::vector<LayerCoordinates> m_vecLayers;  ///< what the textures' coordinates are made from, in their order
    std::shared_ptr<const ColorAtlas> m_pColors;
};

/// A plan for every surface of the model, by the meshes that have it; the pictures that it needs are added to
/// `textures`. What cannot be shown is named in `warnings`.
[[nodiscard]] std::vector<SurfacePlan> planSurfaces(const Model& model, TextureFiles& textures, Warnings& warnings);
}  // namespace TW2::convert
