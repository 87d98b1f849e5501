#include "tests/support/character_files.h"
#include "tests/unload/system.h"

#include <tw2/core/static_data.h>
#include <tw2/io/loader.h>
#include <tw2/io/loader_callbacks.h>
#include <tw2/material/texture.h>
#include <tw2/skin/vertex_animation.h>

#include <cstring>
#include <exception>
#include <string>

namespace
{
class Nobody : public TW2::TW_HelperCallback
{
public:
    void operator()(const TW2::HelperChunk&) override {}
};
Nobody s_nobody;

/// Null when everything is as after the process has just loaded the libraries, else what is not.
const char* findLeftovers()
{
    if (TW2::TW_VirtualObject::getLiveCount() != 0)
    {
        return "there are animated objects";
    }
    if (TW2::TW_Texture::getTexturePathCount() != 0 || TW2::TW_Texture::areMissingFilesAllowed())
    {
        return "the textures' settings are not those of the beginning";
    }
    return TW2::TW_Loader::getHelperCallback() ? "the loader has a callback" : nullptr;
}

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
    TW2::TW_Loader::setHelperCallback(&s_nobody);
    TW2::TW_Loader::pushState();
    TW2::TW_Loader::setHelperCallback(&s_nobody);
    const TW2::MeshChunk legacyWorkListsAreThere;
    TW2::TW_Texture::addTexturePath(".");
    TW2::TW_Texture::setMissingFilesAllowed(true);
    if (!holding)
    {
        TW2::TW_Loader::freeCachedFile();
        TW2::TW_Loader::popState();
        TW2::TW_Loader::setHelperCallback(nullptr);
        TW2::deleteStaticData();
        TW2::TW_Texture::clearTexturePathList();
    }
}
}  // namespace

/// What the host calls; `mode` is "idle", "used" or "holding".
PLUGIN_EXPORT const char* tw2_plugin_run(const char* mode)
{
    static std::string s_fault;
    try
    {
        if (const char* leftovers = findLeftovers())
        {
            return leftovers;
        }
        if (std::strcmp(mode, "idle") != 0)
        {
            use(std::strcmp(mode, "holding") == 0);
        }
        return nullptr;
    }
    catch (const std::exception& exception)
    {
        s_fault = exception.what();
        return s_fault.c_str();
    }
}
