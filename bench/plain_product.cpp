#include "bench/plain_product.h"

namespace TW2::bench
{
void plainProduct(const PlainMatrix& a, const PlainMatrix& b, PlainMatrix& result) noexcept
{
    for (int row = 0; row < 4; ++row)
    {
        const float x = a.m[row][0];
        const float y = a.m[row][1];
        const float z = a.m[row][2];
        result.m[row][0] = x * b.m[0][0] + y * b.m[1][0] + z * b.m[2][0];
        result.m[row][1] = x * b.m[0][1] + y * b.m[1][1] + z * b.m[2][1];
        result.m[row][2] = x * b.m[0][2] + y * b.m[1][2] + z * b.m[2][2];
    }
    result.m[3][0] += b.m[3][0];
    result.m[3][1] += b.m[3][1];
    result.m[3][2] += b.m[3][2];
}
}  // namespace TW2::bench
