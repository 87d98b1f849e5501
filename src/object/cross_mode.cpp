#include "object/cross_mode.h"

#include <platform/math/float4.h>

#include <array>

namespace TW2
{
namespace
{
constexpr std::size_t LANES = 4;

// The same row of four matrices, a matrix per lane.
struct Row
{
    M_Float4 x;
    M_Float4 y;
    M_Float4 z;

    [[nodiscard]] M_Float4 dot(const Row& other) const noexcept { return x * other.x + y * other.y + z * other.z; }

    void normalize() noexcept
    {
        const M_Float4 one(1.0F);
        const M_Float4 lengthSquared = dot(*this);
        const M_Float4 factor = whereNotZero(lengthSquared, one / sqrt(lengthSquared), one);
        x = x * factor;
        y = y * factor;
        z = z * factor;
    }

    void removeProjectionOn(const Row& u) noexcept
    {
        const M_Float4 uu = u.dot(u);
        const M_Float4 factor = whereNotZero(uu, u.dot(*this) / uu, M_Float4(0.0F));
        x = x - u.x * factor;
        y = y - u.y * factor;
        z = z - u.z * factor;
    }
};
}  // namespace

void correctMatrices(InterpolationMode mode, M_Matrix4x3Template<float>* const* matrices, std::size_t count) noexcept
{
    if (mode == InterpolationMode::Linear)
    {
        return;
    }
    // Lanes to spare repeat the first matrix and write the same result over it.
    std::array<float*, LANES> values;
    for (std::size_t lane = 0; lane < LANES; ++lane)
    {
        values[lane] = matrices[lane < count ? lane : 0]->data();
    }
    // Elements 0-3, 4-7 and 8-11 of each matrix; transposed, element e of all four lies in e[e / 4][e % 4].
    M_Float4 e[3][LANES];
    for (std::size_t third = 0; third < 3; ++third)
    {
        for (std::size_t lane = 0; lane < LANES; ++lane)
        {
            e[third][lane] = M_Float4::load(values[lane] + 4 * third);
        }
        transpose(e[third][0], e[third][1], e[third][2], e[third][3]);
    }
    Row row0{e[0][0], e[0][1], e[0][2]};
    Row row1{e[0][3], e[1][0], e[1][1]};
    Row row2{e[1][2], e[1][3], e[2][0]};
    row0.normalize();
    if (mode == InterpolationMode::Orthonormalized)
    {
        row1.removeProjectionOn(row0);
    }
    row1.normalize();
    if (mode == InterpolationMode::Orthonormalized)
    {
        row2.removeProjectionOn(row0);
        row2.removeProjectionOn(row1);
    }
    row2.normalize();
    const M_Float4 corrected[3][LANES] = {
        {row0.x, row0.y, row0.z, row1.x}, {row1.y, row1.z, row2.x, row2.y}, {row2.z, e[2][1], e[2][2], e[2][3]}};
    for (std::size_t third = 0; third < 3; ++third)
    {
        M_Float4 lanes[LANES] = {corrected[third][0], corrected[third][1], corrected[third][2], corrected[third][3]};
        transpose(lanes[0], lanes[1], lanes[2], lanes[3]);
        for (std::size_t lane = 0; lane < LANES; ++lane)
        {
            lanes[lane].store(values[lane] + 4 * third);
        }
    }
}
}  // namespace TW2
