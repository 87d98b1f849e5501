#include "tests/support/character_files.h"

#include <tw2/core/static_data.h>
#include <tw2/io/loader.h>
#include <tw2/material/texture.h>
#include <tw2/skin/vertex_animation.h>

#include <cstring>

namespace
{
/// Makes use of everything that has static data; `holding` leaves all of it full for the unloading.
void use(bool holding)
{
    const support::CharacterFiles files;
    {
        const TW2::TW_VertexAnimation character(files.write().c_str(), "skeleton", "skin");
    }
    TW2::deleteStaticData();
    TW2::deleteStaticData();
    const std::string body = files.getDirectory().file("body.tw");
    TW2::TW_Loader::cacheFileForLoading(body);
    TW2::TW_Loader::pushState();
    const TW2::MeshChunk legacyWorkListsAreThere;
    TW2::TW_Texture::addTexturePath(".");
    if (!holding)
    {
        TW2::TW_Loader::freeCachedFile();
        TW2::TW_Loader::popState();
        TW2::deleteStaticData();
        TW2::TW_Texture::clearTexturePathList();
    }
}
}  // namespace

/// What the host calls; `mode` is "idle", "used" or "holding".
extern "C" [[gnu::visibility("default")]] void tw2_plugin_run(const char* mode)
{
    if (std::strcmp(mode, "idle") != 0)
    {
        use(std::strcmp(mode, "holding") == 0);
    }
}
