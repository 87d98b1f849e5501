#pragma once

#include "render/gl_handle.h"
#include "render/view.h"

#include <platform/math/matrix4.h>

#include <array>

class P_Camera;
class P_Scene;

namespace TW2::render
{
/// What all programs read about a picture: camera, lights, ambient light, fog. Handed over once a picture.
class FrameBlock
{
public:
    static constexpr GLuint binding = 0;  ///< of the block "Frame" of the programs
    static constexpr int mostLights = 16;

    FrameBlock();

    /// Takes the values in and hands them to the driver.
    void upload(const P_Scene& scene, const P_Camera& camera, const View& view);
    /// World space to the driver's clip space, whose depth runs from -w to w.
    [[nodiscard]] const M_Matrix4Template<float>& getViewProjection() const noexcept
    {
        return m_values.m_viewProjection;
    }

private:
    using Float4 = std::array<float, 4>;
    /// The block "Frame" of shaders.cpp, member by member, in the layout std140.
    struct Values
    {
        M_Matrix4Template<float> m_view;
        M_Matrix4Template<float> m_viewProjection;
        Float4 m_eye{};
        Float4 m_ambientSky{};
        Float4 m_ambientGround{};
        Float4 m_fogColor{};                 ///< colour, depth at which fog ends
        Float4 m_fog{};                      ///< depth at which it begins
        std::array<int, 4> m_lightCounts{};  ///< directional lights, which come first; all lights
        std::array<Float4, mostLights> m_lightColors{};
        std::array<Float4, mostLights> m_lightPositions{};   ///< position, range
        std::array<Float4, mostLights> m_lightDirections{};  ///< direction; 1: has a cone
        std::array<Float4, mostLights> m_lightCones{};       ///< cosines of the inner and the outer half angle
    };
    void setLights(const P_Scene& scene);

    GLBuffer m_buffer;
    Values m_values;
};

/// A projection whose depth runs from 0 to w, turned into one for OpenGL, whose depth runs from -w to w.
[[nodiscard]] M_Matrix4Template<float> convertDepth(const M_Matrix4Template<float>& projection) noexcept;
}  // namespace TW2::render
