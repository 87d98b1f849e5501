#include "core/unit_init.h"
#include "core/with_hint.h"
#include "material/white_image.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/texture.h>

#include <platform/runtime/file.h>
#include <platform/runtime/str.h>
#include <platform/runtime/system.h>
#include <platform/scene/map.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace TW2
{
/// An engine map and who uses it.
struct TW_Texture::SharedMap : S_Allocated
{
    S_String filename;
    S_String alphaFilename;
    S_String path;
    S_String alphaPath;
    S_Counter<int> referenceCount;
    std::unique_ptr<G_Image> plainImage;  ///< of a map without a file
    std::unique_ptr<P_Map> map;
};

namespace
{
/// The search path, for messages.
S_String describeSearchPath()
{
    S_String text;
    for (int i = 0; i < TW_Texture::getTexturePathCount(); ++i)
    {
        text.append(text.empty() ? "\"" : ", \"").append(TW_Texture::getTexturePath(i)).append("\"");
    }
    return S_STR("looked for in %s from \"%s\"", text.empty() ? "no directory" : text.c_str(),
                 File.getCurrentDirectory().c_str())
        .str();
}

TW_Exception_TextureNotFound makeTextureNotFound(const S_String& filename)
{
    return withHint(TW_Exception_TextureNotFound(filename.c_str()), describeSearchPath().c_str());
}
}  // namespace

TW_Texture& TW_Texture::operator=(const TW_Texture& other)
{
    construct(other);
    return *this;
}

void TW_Texture::initializeMembers() noexcept
{
    m_bConstructed = false;
    S_String().swap(m_strName);
    m_pSharedMap = nullptr;
}

void TW_Texture::construct(const CreateInfo& info)
{
    destruct();
    S_String name = info.name;
    SharedMap* const found = findMap(info.filename, info.alphaFilename);
    SharedMap* const map = found ? found : createMap(info);
    destruct();  // what the callback has made of this texture meanwhile
    m_pSharedMap = map;
    ++m_pSharedMap->referenceCount;
    m_strName.swap(name);
    m_bConstructed = true;
}

void TW_Texture::construct(const TW_Texture& other)
{
    if (this == &other)
    {
        return;
    }
    destruct();
    if (!other.m_bConstructed)
    {
        return;
    }
    m_strName = other.m_strName;
    m_pSharedMap = other.safeSharedMapPointer();
    ++m_pSharedMap->referenceCount;
    m_bConstructed = true;
}

void TW_Texture::destruct() noexcept
{
    if (!m_bConstructed)
    {
        return;
    }
    if (m_pSharedMap && --m_pSharedMap->referenceCount == 0)
    {
        s_lstTextureList.remove(m_pSharedMap);
        delete m_pSharedMap;
    }
    initializeMembers();
}

const S_String& TW_Texture::getFilename() const noexcept
{
    return m_pSharedMap->filename;
}

const S_String& TW_Texture::getAlphaFilename() const noexcept
{
    return m_pSharedMap->alphaFilename;
}

const S_String& TW_Texture::getPath() const noexcept
{
    return m_pSharedMap->path;
}

const S_String& TW_Texture::getAlphaPath() const noexcept
{
    return m_pSharedMap->alphaPath;
}

P_Map* TW_Texture::getMap() const noexcept
{
    return m_pSharedMap->map.get();
}

void TW_Texture::addToTextureMemory()
{
    getMap()->addToTextureMemory();
}

void TW_Texture::removeFromTextureMemory() noexcept
{
    getMap()->removeFromTextureMemory();
}

void TW_Texture::addTexturePath(const S_String& directories)
{
    constexpr char divider = ';';
    constexpr const char* blanks = " \t\n\v\f\r";
    S_Vector<S_String> added;  // the text may be an entry of the list
    for (std::size_t begin = 0; begin <= directories.size();)
    {
        const std::size_t next = std::min(directories.find(divider, begin), directories.size());
        const S_String entry = directories.substr(begin, next - begin);
        if (const std::size_t first = entry.find_first_not_of(blanks); first != S_String::npos)
        {
            S_String directory = entry.substr(first, entry.find_last_not_of(blanks) + 1 - first);
            if (directory.back() != '\\' && directory.back() != '/')
            {
                directory += '\\';
            }
            added.push_back(std::move(directory));
        }
        begin = next + 1;
    }
    s_vecTexturePathList.insert(s_vecTexturePathList.end(), std::make_move_iterator(added.begin()),
                                std::make_move_iterator(added.end()));
}

const S_String& TW_Texture::getTexturePath(int index) noexcept
{
    return s_vecTexturePathList[static_cast<std::size_t>(index)];
}

TW_Texture::SharedMap* TW_Texture::findMap(const S_String& filename, const S_String& alphaFilename) noexcept
{
    const auto found = std::find_if(s_lstTextureList.begin(), s_lstTextureList.end(),
                                    [&](const SharedMap* map)
                                    { return map->filename == filename && map->alphaFilename == alphaFilename; });
    return found == s_lstTextureList.end() ? nullptr : *found;
}

bool TW_Texture::findFileFromGlobalPathList(S_String& directory, const S_String& filename)
{
    const auto found = std::find_if(s_vecTexturePathList.begin(), s_vecTexturePathList.end(),
                                    [&](const S_String& entry) { return File.exists((entry + filename).c_str()); });
    directory = found == s_vecTexturePathList.end() ? S_String() : *found;
    return !directory.empty();
}

/// The absolute directory of a texture file that a directory of the search path holds. Without one it is empty where
/// files may be missing, and an exception elsewhere.
S_String TW_Texture::locateFile(const S_String& filename)
{
    S_String entry;
    if (findFileFromGlobalPathList(entry, filename))
    {
        return File.isAbsolute(entry) ? entry : File.getCurrentDirectory() + entry;
    }
    if (!sm_bMissingFilesAllowed)
    {
        throw makeTextureNotFound(filename);
    }
    Sys.verbose("%s\n", makeTextureNotFound(filename).what());
    return {};
}

/// Makes the map of the two files, as far as they are there.
void TW_Texture::loadMap(SharedMap& shared)
{
    shared.path = locateFile(shared.filename);
    if (!shared.alphaFilename.empty())
    {
        shared.alphaPath = locateFile(shared.alphaFilename);
    }
    if (shared.path.empty())
    {
        shared.plainImage = createWhiteImage();
        shared.map = std::make_unique<P_Map>(shared.plainImage.get(), nullptr);
        return;
    }
    const S_String alphaFullName = shared.alphaPath + shared.alphaFilename;
    shared.map = std::make_unique<P_Map>((shared.path + shared.filename).c_str(),
                                         shared.alphaPath.empty() ? nullptr : alphaFullName.c_str());
}

/// Loads a new map and enters it in the list.
TW_Texture::SharedMap* TW_Texture::createMap(const CreateInfo& info)
{
    auto shared = std::make_unique<SharedMap>();
    shared->filename = info.filename;
    shared->alphaFilename = info.alphaFilename;
    loadMap(*shared);
    if (info.mipLevels != 0)
    {
        shared->map->setMipLevelCount(info.mipLevels);
    }
    CreateInfo completed = info;
    completed.path = shared->path;
    completed.alphaPath = shared->alphaPath;
    if (sm_pTextureCallback)
    {
        (*sm_pTextureCallback)(shared->map.get(), completed);
    }
    shared->map->validate();
    shared->map->setDescription(S_STR("TW: %s%s", shared->path.c_str(), shared->filename.c_str()));
    s_lstTextureList.push_back(shared.get());
    return shared.release();
}
}  // namespace TW2
