#pragma once

#include <platform/image/image.h>

#include <vector>

namespace TW2::render
{
/// All pictures side by side in rows, reading order, with a thin border between them. `columns` 0: as many as leave
/// few places empty and make the sheet a little wider than high. Pictures have one size; an empty list throws
/// RenderException.
[[nodiscard]] G_Image makeContactSheet(const std::vector<G_Image>& pictures, unsigned int columns = 0);
}  // namespace TW2::render
