#pragma once

#include "render/gl_handle.h"

#include <platform/math/matrix4x3.h>

#include <vector>

namespace TW2::render
{
/// The matrices of one picture as vertex shaders read them: all of them in one float texture, handed over once.
///
/// Three texels a matrix, each one column of it: the x, y or z that a point (x, y, z, 1) is multiplied to. The
/// numbers below stand in the shaders as well.
class MatrixTexture
{
public:
    static constexpr GLuint unit = 8;            ///< texture unit
    static constexpr unsigned int perRow = 512;  ///< matrices in a row of texels

    MatrixTexture();

    /// Forgets all matrices.
    void clear() noexcept { m_vecTexels.clear(); }
    /// Appends a matrix and returns its number.
    unsigned int add(const M_Matrix4x3Template<float>& matrix);
    /// Hands the matrices to the driver and binds the texture to its unit. Throws RenderException when there are more
    /// than the driver's textures can hold.
    void upload();

private:
    GLTexture m_texture;
    unsigned int m_uiRows = 0;
    unsigned int m_uiMostRows = 0;
    std::vector<float> m_vecTexels;
};
}  // namespace TW2::render
