#pragma once

#include "convert/color_atlas.h"
#include "convert/model.h"

#include <array>
#include <cstddef>
#include <vector>

namespace TW2::convert
{
/// Where the coordinates of one of a material's textures come from.
struct LayerCoordinates
{
    Texture m_texture;                      ///< how it lies on the mesh; unused: every vertex has the same coordinates
    unsigned int m_uiWidth = 1;             ///< of its picture, in pixels
    unsigned int m_uiHeight = 1;            ///< of its picture, in pixels
    bool m_bMirrorU = false;                ///< its mirror image stands beside it
    bool m_bMirrorV = false;                ///< its mirror image stands below it
    const ColorAtlas* m_pColors = nullptr;  ///< it shows the colours of the vertices instead
};

/// The mesh as it is drawn: its coordinate sets are those that a material's textures take, in their order. Triangles
/// are cut where a texture that is clamped ends. `mesh` stays as it is.
[[nodiscard]] Mesh arrangeMesh(const Mesh& mesh, const std::vector<LayerCoordinates>& layers);

/// The colours of the corners of a triangle, `first` being the place of its first index. White without colours.
[[nodiscard]] std::array<Color, 3> getCornerColors(const Mesh& mesh, std::size_t first);
/// The coordinates of a texture on a mesh, before its edges count. Of a mesh without the set all are 0.
[[nodiscard]] std::vector<Vector3> makeCoordinates(const Mesh& mesh, const Texture& texture);
/// Whether coordinates reach beyond the picture's edges in u (0) or v (1).
[[nodiscard]] bool reachesBeyond(const std::vector<Vector3>& coordinates, int axis);
}  // namespace TW2::convert
