#pragma once

#include "convert/model_import.h"

namespace TW2::convert
{
/// A matrix of sixteen numbers, four to a row, for row vectors; the last of each row is taken for what it has to be.
[[nodiscard]] inline Matrixd takeRows(const double* values)
{
    Matrixd matrix;
    for (int row = 0; row < 4; ++row)
    {
        const double* const own = values + row * 4;
        matrix.setRow(row, {own[0], own[1], own[2]});
    }
    return matrix;
}

/// Mirrored at z before and after, which makes a right-handed space left-handed: what goes from or to z changes its
/// sign.
[[nodiscard]] inline Matrixd mirrorZ(Matrixd matrix)
{
    for (int row = 0; row < 4; ++row)
    {
        matrix.m[row][2] = row == 2 ? matrix.m[row][2] : -matrix.m[row][2];
    }
    matrix.m[2][0] = -matrix.m[2][0];
    matrix.m[2][1] = -matrix.m[2][1];
    return matrix;
}

/// What turns a space that was made left-handed by mirroring z into one in which the given axis of it points up.
[[nodiscard]] inline Matrixd makeRoot(ImportOptions::UpAxis up, double scale)
{
    Matrixd root;
    if (up == ImportOptions::UpAxis::Z)
    {
        // The file's z axis points along -z.
        root.setRow(1, {0.0, 0.0, 1.0});
        root.setRow(2, {0.0, -1.0, 0.0});
    }
    else if (up == ImportOptions::UpAxis::X)
    {
        root.setRow(0, {0.0, 1.0, 0.0});
        root.setRow(1, {-1.0, 0.0, 0.0});
    }
    for (int row = 0; row < 3; ++row)
    {
        root.setRow(row, root.getRow(row) * scale);
    }
    return root;
}
}  // namespace TW2::convert
