#pragma once

#include <platform/image/image.h>

#include <memory>

namespace TW2
{
/// A white picture without alpha as large as the driver's smallest texture.
[[nodiscard]] std::unique_ptr<G_Image> createWhiteImage();
}  // namespace TW2
