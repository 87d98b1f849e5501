#pragma once

#include <platform/runtime/allocator.h>

#include <cstddef>

/// @file
/// The image decoder and the PNG encoder. Everything they allocate goes through S_Memory, and is released also when an
/// exception passes through them.

/// Decodes a file's content into four bytes per pixel, rows from top to bottom. Throws G_ImageException.
[[nodiscard]] S_Bytes decodeImage(const unsigned char* data, std::size_t size, const char* name, std::size_t pixelLimit,
                                  unsigned int& width, unsigned int& height);

/// What there is to know about a file's content without decoding it. Throws G_ImageException.
void inspectImage(const unsigned char* data, std::size_t size, const char* name, std::size_t pixelLimit,
                  unsigned int& width, unsigned int& height, bool& alpha);

/// The content of a PNG file. The sides are at least 1.
[[nodiscard]] S_Bytes encodeImage(const unsigned char* pixels, unsigned int width, unsigned int height);
