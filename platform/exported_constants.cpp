// The constants of exported classes. A program that asks for the address of one (by a reference: std::min, an
// expectation of a test) finds it where a DLL defines it, and a compiler that sees only its value used would not define
// it there.

#include <platform/image/image.h>
#include <platform/runtime/memory_file.h>
#include <platform/scene/driver.h>
#include <platform/scene/material.h>
#include <platform/scene/vertex_format.h>

// NOLINTBEGIN(readability-redundant-declaration): it is what makes the compiler keep them
constexpr unsigned int G_Image::bytesPerPixel;
constexpr std::size_t G_Image::maximumPixels;
constexpr unsigned int P_Driver::renderStateCount;
constexpr unsigned int P_Material::defaultSortPriority;
constexpr unsigned int P_Material::maximumTextureLayers;
constexpr unsigned int P_VertexFormat::boneCountShift;
constexpr unsigned int P_VertexFormat::maximumBonesPerVertex;
constexpr unsigned int P_VertexFormat::maximumTextureLayers;
constexpr std::size_t S_MemoryFile::headerSize;
// NOLINTEND(readability-redundant-declaration)
