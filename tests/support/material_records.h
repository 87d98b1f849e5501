#pragma once

#include "tests/support/picture_files.h"
#include "tests/support/temporary_directory.h"

#include <tw2/material/material.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/texture.h>

#include <platform/runtime/allocator.h>
#include <platform/scene/driver.h>
#include <platform/scene/material.h>

#include <initializer_list>
#include <string>

namespace support
{
/// A folder of small pictures on the texture search path, for tests that build materials.
///
/// Every picture is a PNG of its own colour. At the end of the scope the search path is empty, no callback of textures
/// or materials is installed and the built-in driver is in use.
class TextureFolder
{
public:
    TextureFolder();
    ~TextureFolder();
    TextureFolder(const TextureFolder&) = delete;
    TextureFolder& operator=(const TextureFolder&) = delete;

    /// Writes pictures.
    void add(std::initializer_list<const char*> names);
    [[nodiscard]] const TemporaryDirectory& getDirectory() const { return m_directory; }

    /// Makes a driver of these capabilities the one in use.
    void useDriver(const P_DriverCaps& caps);

private:
    TemporaryDirectory m_directory;
    P_Driver m_driver;
    P_Driver* m_pPreviousDriver;
    unsigned char m_shade = 0;
};

/// Fills a texture slot: its name, and the files of its frames.
inline TW2::MaterialTextureChunk& fillTexture(TW2::MaterialTextureChunk& texture, const char* name,
                                              std::initializer_list<const char*> files)
{
    texture.name = name;
    texture.frameFiles.assign(files.begin(), files.end());
    return texture;
}

/// Everything that an engine material says about itself, one line per layer, coordinate set and state that is not the
/// default; maps by their file names, blendings and filters by names of their own.
[[nodiscard]] std::string describe(const P_Material& material);
/// The same, and what meshes must know.
[[nodiscard]] std::string describe(const TW2::TW_Material& material);
}  // namespace support
