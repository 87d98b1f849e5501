#pragma once

#include "render/view.h"

#include <platform/scene/material.h>

#include <array>
#include <cstdint>
#include <optional>

namespace TW2::render
{
/// What the text of a surface's program depends on; everything else about a material is a uniform or a texture.
struct SurfaceKind
{
    static constexpr unsigned int mostLayers = 24;
    static constexpr unsigned int mostUnits = 8;  ///< maps
    static constexpr unsigned int mostSets = 8;   ///< texture coordinate sets

    /// How the layers become a colour.
    enum class Join : std::uint8_t
    {
        Layers,         ///< one after the other
        Texture,        ///< texture x light, doubled
        Environment,    ///< texture x (light + second texture), doubled
        SpecularShader  ///< texture x light + second texture x highlight
    };
    enum class LayerKind : std::uint8_t
    {
        Texture,
        Gouraud,
        Specular
    };
    /// How a texture layer joins the layers before it; in the order of the material's blending modes.
    enum class Blending : std::uint8_t
    {
        Opaque,
        Add,
        Modulate,
        VertexAlpha,
        TextureAlpha,
        TextureAndVertexAlpha
    };
    struct Layer
    {
        LayerKind m_eKind = LayerKind::Texture;
        Blending m_eBlending = Blending::Opaque;
        std::uint8_t m_uiUnit = 0;
        std::uint8_t m_uiSet = 0;
        bool m_bEmissive = false;  ///< shows the emissive colour instead of its map
        friend bool operator==(const Layer&, const Layer&) = default;
    };

    View::Surface m_eSurface;
    std::uint8_t m_uiSlots;  ///< bones per vertex
    bool m_bHighlighted;
    bool m_bLit;
    Join m_eJoin = Join::Layers;
    bool m_bBlended = false;
    bool m_bAlphaTested = false;
    bool m_bFogged = false;
    std::uint8_t m_uiLayers = 0;
    std::uint8_t m_uiUnits = 0;
    std::array<Layer, mostLayers> m_layers{};
    std::array<std::optional<P_Material::CoordinateSet>, mostSets> m_sets{};  ///< those that layers lie on

    friend bool operator==(const SurfaceKind&, const SurfaceKind&) = default;
};

/// The kind of surface that a material (null: plain white under the lights) gives a mesh with `slots` bones per vertex,
/// shown as `view` says. Of a material's layers the first 24 count, of its maps and coordinate sets the first 8.
[[nodiscard]] SurfaceKind describeSurface(const P_Material* material, unsigned int slots, const View& view);
}  // namespace TW2::render
