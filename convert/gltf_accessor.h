#pragma once

#include "convert/gltf_file.h"

#include <cstddef>
#include <string>
#include <vector>

namespace TW2::convert
{
/// @name Lists of numbers of a glTF file, sparse ones filled in
/// `place` is who asks, for messages. Throw ConvertException for a list that does not fit its bytes or its purpose.
/// @{

/// A list of elements of `components` numbers each, element after element. Whole numbers are divided by the largest of
/// their kind where the file calls them normalized.
[[nodiscard]] std::vector<float> readNumbers(const GltfFile& file, int accessor, std::size_t components,
                                             const std::string& place);
/// A list of elements of `components` whole numbers each, element after element.
[[nodiscard]] std::vector<unsigned int> readIndices(const GltfFile& file, int accessor, std::size_t components,
                                                    const std::string& place);
/// How many numbers an element of the list has; 0 for a list that does not exist.
[[nodiscard]] std::size_t getComponents(const GltfFile& file, int accessor);
/// The largest number that elements of a normalized list can have; 1 for a list that is not.
[[nodiscard]] float getNormalizer(const GltfFile& file, int accessor);
/// @}
}  // namespace TW2::convert
