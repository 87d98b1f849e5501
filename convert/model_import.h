#pragma once

#include "convert/model.h"

#include <string>
#include <vector>

namespace TW2::convert
{
/// How a model's space becomes the library's: left-handed, y up.
struct ImportOptions
{
    enum class UpAxis
    {
        Automatic,  ///< as the format and the file say
        X,
        Y,
        Z
    };
    UpAxis m_eUp = UpAxis::Automatic;              ///< the axis of the file that points up
    double m_dScale = 1.0;                         ///< scene units per unit of the file
    std::vector<std::string> m_vecTextureFolders;  ///< searched for pictures besides the model's own folder
};

/// Reads a model of any format that Assimp knows. Throws ConvertException for a file that cannot be read or has neither
/// triangles nor motion. What is left out (points, lines, morph targets, pictures that are not there) is told in the
/// warnings.
[[nodiscard]] Model importModel(const std::string& fileName, const ImportOptions& options);
}  // namespace TW2::convert
