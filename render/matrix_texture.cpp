#include "render/matrix_texture.h"

#include "render/render_exception.h"

#include <platform/runtime/str.h>

#include <algorithm>
#include <bit>
#include <cstddef>

namespace TW2::render
{
namespace
{
constexpr std::size_t floatsPerMatrix = 12;
constexpr unsigned int texelsPerRow = 3 * MatrixTexture::perRow;
}  // namespace

MatrixTexture::MatrixTexture() : m_texture(GLTexture::create())
{
    GLint side = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    m_uiMostRows = static_cast<unsigned int>(side);
}

unsigned int MatrixTexture::add(const M_Matrix4x3Template<float>& matrix)
{
    const std::size_t place = m_vecTexels.size();
    m_vecTexels.resize(place + floatsPerMatrix);
    float* texel = m_vecTexels.data() + place;
    for (int column = 0; column < 3; ++column)
    {
        for (int row = 0; row < 4; ++row)
        {
            *texel++ = matrix.m[row][column];
        }
    }
    return static_cast<unsigned int>(place / floatsPerMatrix);
}

void MatrixTexture::upload()
{
    const std::size_t matrices = m_vecTexels.size() / floatsPerMatrix;
    const auto rows = static_cast<unsigned int>(matrices / perRow + 1);
    if (rows > m_uiMostRows)
    {
        throw RenderException(
            S_STR("A picture has %zu matrices, the driver takes %zu", matrices, std::size_t{m_uiMostRows} * perRow));
    }
    m_vecTexels.resize(std::size_t{rows} * perRow * floatsPerMatrix);
    glActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, m_texture.get());
    glBindSampler(unit, 0);
    if (rows > m_uiRows)
    {
        m_uiRows = std::min(std::bit_ceil(rows), m_uiMostRows);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, texelsPerRow, static_cast<GLsizei>(m_uiRows), 0, GL_RGBA, GL_FLOAT,
                     nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, texelsPerRow, static_cast<GLsizei>(rows), GL_RGBA, GL_FLOAT,
                    m_vecTexels.data());
}
}  // namespace TW2::render
