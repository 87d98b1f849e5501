#pragma once

#include <cstddef>

/// @file
/// Checks of an image file for what the decoder takes on trust. Each returns what is wrong (a literal), or null.

/// Before anything is decoded: that a PNG's checksums are right, that a JPEG has sound code tables, and that both reach
/// their ends.
[[nodiscard]] const char* findImageDamage(const unsigned char* data, std::size_t size) noexcept;

/// Once the sides are known (at least 1): that a TGA or BMP holds all its pixels, and that a PNG's data can unpack to
/// them. `findImageDamage` found nothing.
[[nodiscard]] const char* findMissingPixels(const unsigned char* data, std::size_t size, std::size_t width,
                                            std::size_t height) noexcept;
