#include "convert/pictures.h"

#include <platform/image/image_exception.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <string_view>

#ifdef TW2_HAS_WEBP
#include <webp/decode.h>
#endif

namespace TW2::convert
{
namespace
{
std::string getBase(const std::string& path)
{
    return path.substr(path.find_last_of("/\\") + 1);
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool isPictureName(const std::string& ending)
{
    constexpr std::array endings = {".png", ".jpg", ".jpeg", ".tga", ".bmp", ".webp"};
    return std::find(endings.begin(), endings.end(), lower(ending)) != endings.end();
}

#ifdef TW2_HAS_WEBP
G_Image::Description inspectWebP(const std::vector<unsigned char>& content, const std::string& name)
{
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(content.data(), content.size(), &features) != VP8_STATUS_OK)
    {
        throw G_ImageException(name.c_str(), "is no WebP picture");
    }
    std::size_t size = 8;
    for (std::size_t i = 0; i < 4; ++i)
    {
        size += std::size_t{content[4 + i]} << 8 * i;
    }
    if (size > content.size())
    {
        throw G_ImageException(name.c_str(), "its data ends too early");
    }
    return {static_cast<unsigned int>(features.width), static_cast<unsigned int>(features.height),
            features.has_alpha != 0};
}

G_Image decodeWebP(const std::vector<unsigned char>& content, const std::string& name)
{
    const G_Image::Description description = inspectWebP(content, name);
    G_Image image(description.m_uiWidth, description.m_uiHeight);
    const auto stride = static_cast<int>(description.m_uiWidth * G_Image::bytesPerPixel);
    if (!WebPDecodeRGBAInto(content.data(), content.size(), image.accessPixels(), image.getSize(), stride))
    {
        throw G_ImageException(name.c_str(), "its data is damaged");
    }
    return image;
}
#else
G_Image::Description inspectWebP(const std::vector<unsigned char>&, const std::string& name)
{
    throw G_ImageException(name.c_str(), "is a WebP picture, which this program was built without");
}

G_Image decodeWebP(const std::vector<unsigned char>&, const std::string&)
{
    return {};
}
#endif
G_Image decodeContent(const std::vector<unsigned char>& content, const std::string& name)
{
    return isWebP(content) ? decodeWebP(content, name) : G_Image::decode(content.data(), content.size(), name.c_str());
}

std::string getFullName(const Picture& picture)
{
    return picture.m_strFile.empty() ? picture.m_strName : picture.m_strFile;
}

/// Fills in what there is to know about a picture. Pixels take much more memory than the file: without alpha, nobody
/// needs them for that.
void describe(Picture& picture)
{
    const std::vector<unsigned char> content = loadPicture(picture);
    const std::string name = getFullName(picture);
    const G_Image::Description description =
        isWebP(content) ? inspectWebP(content, name) : G_Image::inspect(content.data(), content.size(), name.c_str());
    picture.m_uiWidth = description.m_uiWidth;
    picture.m_uiHeight = description.m_uiHeight;
    if (!description.m_bAlpha)
    {
        return;
    }
    const G_Image image = decodeContent(content, name);
    for (std::size_t i = 3; i < image.getSize(); i += G_Image::bytesPerPixel)
    {
        picture.m_bAlpha |= image.getPixels()[i] < 255;
        picture.m_bClear |= image.getPixels()[i] < 128;
    }
}
}  // namespace

std::vector<unsigned char> loadPicture(const Picture& picture)
{
    if (picture.m_strFile.empty())
    {
        return picture.m_vecBytes;
    }
    const S_Bytes content = File.read(picture.m_strFile);
    return {content.begin(), content.end()};
}

bool isWebP(const std::vector<unsigned char>& content)
{
    return content.size() > 12 && std::memcmp(content.data(), "RIFF", 4) == 0 &&
           std::memcmp(content.data() + 8, "WEBP", 4) == 0;
}

G_Image decodePicture(const Picture& picture)
{
    return decodeContent(loadPicture(picture), getFullName(picture));
}

PictureCollector::PictureCollector(std::string modelFile, std::vector<std::string> folders)
{
    const std::string folder = std::filesystem::path(modelFile).parent_path().string();
    const std::string beside = folder.empty() ? std::string() : folder + "/";
    m_vecFolders = {beside, beside + "textures/", beside + "../textures/"};
    for (const std::string& given : folders)
    {
        m_vecFolders.push_back(given.ends_with('/') ? given : given + "/");
    }
}

int PictureCollector::add(Picture picture, std::string& reason)
{
    const bool carried = !picture.m_vecBytes.empty();
    if (!carried)
    {
        picture.m_strFile = find(picture.m_strName);
        if (picture.m_strFile.empty())
        {
            reason = "was not found";
            return -1;
        }
        if (const auto known = m_mapFiles.find(picture.m_strFile); known != m_mapFiles.end())
        {
            reason = known->second.m_strReason;
            return known->second.m_iIndex;
        }
    }
    Known result;
    const std::string file = picture.m_strFile;
    try
    {
        describe(picture);
        result.m_iIndex = static_cast<int>(m_vecPictures.size());
        m_vecPictures.push_back(std::move(picture));
    }
    catch (const S_Exception& exception)
    {
        result.m_strReason = exception.getErrorMessage();
    }
    if (!carried)
    {
        m_mapFiles.emplace(file, result);
    }
    reason = result.m_strReason;
    return result.m_iIndex;
}

std::string PictureCollector::find(const std::string& name) const
{
    if (name.empty())
    {
        return {};
    }
    std::vector<std::string> candidates{name};
    for (const std::string& folder : m_vecFolders)
    {
        candidates.push_back(folder + name);
        candidates.push_back(folder + getBase(name));
    }
    for (const std::string& candidate : candidates)
    {
        if (File.exists(candidate.c_str()))
        {
            const S_String found = File.findOnDisk(candidate);
            return {found.begin(), found.end()};
        }
    }
    return findByStem(name);
}

std::string PictureCollector::findByStem(const std::string& name) const
{
    const std::string stem = lower(std::filesystem::path(getBase(name)).stem().string());
    for (const std::string& folder : m_vecFolders)
    {
        std::vector<std::string> found;
        std::error_code error;
        const std::filesystem::path place = folder.empty() ? "." : folder;
        for (std::filesystem::directory_iterator entry(place, error), end; !error && entry != end;
             entry.increment(error))
        {
            const std::filesystem::path& file = entry->path();
            if (isPictureName(file.extension().string()) && lower(file.stem().string()) == stem)
            {
                found.push_back(file.string());
            }
        }
        if (!found.empty())
        {
            return *std::min_element(found.begin(), found.end());  // the same one on every machine
        }
    }
    return {};
}
}  // namespace TW2::convert
