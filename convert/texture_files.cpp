#include "convert/texture_files.h"

#include "convert/color_space.h"
#include "convert/pictures.h"

#include <platform/image/image_exception.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string_view>

namespace TW2::convert
{
namespace
{
/// The ending that the content of a picture file calls for.
const char* findEnding(const std::vector<unsigned char>& bytes)
{
    const std::string_view head(reinterpret_cast<const char*>(bytes.data()), std::min<std::size_t>(bytes.size(), 4));
    if (head.starts_with("\x89PNG"))
    {
        return ".png";
    }
    if (head.starts_with("\xFF\xD8"))
    {
        return ".jpg";
    }
    return head.starts_with("BM") ? ".bmp" : ".tga";
}

/// The last part of a file's name without its ending, in letters that every system takes.
std::string makeStem(const std::string& name)
{
    std::string stem = name.substr(name.find_last_of("/\\") + 1);
    stem = stem.substr(0, stem.find_last_of('.'));
    for (char& c : stem)
    {
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-')
        {
            c = '_';
        }
    }
    return stem;
}

void multiply(G_Image& image, const G_FColor& factor)
{
    const std::array<float, 3> factors{factor.red, factor.green, factor.blue};
    std::array<std::array<unsigned char, 256>, 3> table{};
    for (std::size_t c = 0; c < 3; ++c)
    {
        const double light = toLight(static_cast<double>(factors[c]) / 255.0);
        for (std::size_t i = 0; i < 256; ++i)
        {
            table[c][i] = static_cast<unsigned char>(
                std::lround(255.0 * toStored(light * toLight(static_cast<double>(i) / 255.0))));
        }
    }
    unsigned char* pixels = image.accessPixels();
    for (std::size_t i = 0; i < image.getSize(); i += G_Image::bytesPerPixel)
    {
        for (std::size_t c = 0; c < 3; ++c)
        {
            pixels[i + c] = table[c][pixels[i + c]];
        }
    }
}

G_Image mirror(const G_Image& image, bool right, bool below)
{
    const unsigned int width = image.getWidth();
    const unsigned int height = image.getHeight();
    G_Image result(right ? 2 * width : width, below ? 2 * height : height);
    for (unsigned int y = 0; y < result.getHeight(); ++y)
    {
        for (unsigned int x = 0; x < result.getWidth(); ++x)
        {
            std::memcpy(result.accessPixel(x, y),
                        image.getPixel(x < width ? x : 2 * width - 1 - x, y < height ? y : 2 * height - 1 - y),
                        G_Image::bytesPerPixel);
        }
    }
    return result;
}
}  // namespace

std::string TextureFiles::add(int picture, const Retouch& retouch)
{
    const G_FColor& f = retouch.m_factor;
    const Key key(picture, f.red, f.green, f.blue, retouch.m_bMirrorU, retouch.m_bMirrorV);
    if (const auto known = m_mapNames.find(key); known != m_mapNames.end())
    {
        return known->second;
    }
    const Picture& source = m_pictures[static_cast<std::size_t>(picture)];
    const bool colored = f.red < 255.0F || f.green < 255.0F || f.blue < 255.0F;
    const bool mirrored = retouch.m_bMirrorU || retouch.m_bMirrorV;
    const std::string& sourceName = source.m_strFile.empty() ? source.m_strName : source.m_strFile;
    std::vector<unsigned char> content = loadPicture(source);
    std::string name;
    if (!colored && !mirrored && !isWebP(content))
    {
        name = m_names.make(makeStem(sourceName)) + findEnding(content);
        m_files.add(std::string(folderName) + "/" + name, std::move(content));
    }
    else
    {
        content = {};
        G_Image image = decode(source, sourceName);
        if (colored)
        {
            multiply(image, f);
        }
        name = add(mirrored ? mirror(image, retouch.m_bMirrorU, retouch.m_bMirrorV) : image, makeStem(sourceName));
    }
    return m_mapNames.emplace(key, name).first->second;
}

/// That a picture is damaged shows only now where nothing but its size was asked before.
G_Image TextureFiles::decode(const Picture& picture, const std::string& name)
{
    try
    {
        return decodePicture(picture);
    }
    catch (const G_ImageException& exception)
    {
        m_warnings.add("texture \"" + name + "\" is left out: " + exception.getErrorMessage());
        G_Image white(1, 1);
        std::memset(white.accessPixels(), 255, white.getSize());
        return white;
    }
}

std::string TextureFiles::add(const G_Image& image, const std::string& name)
{
    std::string file = m_names.make(makeStem(name)) + ".png";
    m_files.add(std::string(folderName) + "/" + file, encodePicture(image));
    return file;
}
}  // namespace TW2::convert
