#pragma once

#include <cstddef>

/// Checks that an image file is whole, which the decoder takes on trust: that a PNG's checksums are right and its data
/// can give all pixels, that a JPEG reaches its end mark, that a TGA or BMP holds all its pixels. Returns what is wrong
/// (a literal), or null. `data` has been recognised as an image of `width` x `height` pixels.
[[nodiscard]] const char* findImageDamage(const unsigned char* data, std::size_t size, std::size_t width,
                                          std::size_t height) noexcept;
