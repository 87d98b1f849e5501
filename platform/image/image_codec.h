#pragma once

#include <platform/runtime/allocator.h>

#include <cstddef>

/// @file
/// The image decoder and the PNG encoder. Everything they allocate goes through S_Memory, and is released also when an
/// exception passes through them.

/// Decodes a file's content into four bytes per pixel, rows from top to bottom. Throws G_ImageException.
[[nodiscard]] S_Bytes decodeImage(const unsigned char* data, std::size_t size, const char* name, std::size_t pixelLimit,
                                  unsigned int& width, unsigned int& height);

/// The content of a PNG file. The sides are at least 1.
[[nodiscard]] S_Bytes encodeImage(const unsigned char* pixels, unsigned int width, unsigned int height);
