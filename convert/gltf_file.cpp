#include "convert/gltf_file.h"

#include "convert/convert_exception.h"
#include "convert/gltf_compression.h"
#include "convert/gltf_value.h"

#include <platform/runtime/file.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <set>
#include <string_view>

namespace TW2::convert
{
namespace
{
using Json = nlohmann::json;

constexpr std::array honouredExtensions = {"KHR_draco_mesh_compression",
                                           "KHR_lights_punctual",
                                           "KHR_materials_emissive_strength",
                                           "KHR_materials_pbrSpecularGlossiness",
                                           "KHR_materials_unlit",
                                           "KHR_mesh_quantization",
                                           "KHR_texture_transform",
                                           "EXT_meshopt_compression",
                                           "EXT_texture_webp"};

/// What a model is seen without: its pictures are left out, its shape and its motion come through.
constexpr std::array pictureExtensions = {"KHR_texture_basisu", "MSFT_texture_dds", "EXT_texture_avif"};

std::string oneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && text.back() == ' ')
    {
        text.pop_back();
    }
    return text;
}

std::uint32_t readNumber(GltfFile::Bytes bytes, std::size_t offset)
{
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;)
    {
        number = number << 8U | bytes[offset + i];
    }
    return number;
}

/// The two parts of a glTF file: a text file has the first alone.
struct Parts
{
    GltfFile::Bytes m_description;
    GltfFile::Bytes m_binary;
};

/// What is wrong with the layout of a binary file is put into `error`, with its place.
Parts split(GltfFile::Bytes bytes, std::string& error)
{
    constexpr std::size_t headerSize = 12;
    constexpr std::size_t chunkHeaderSize = 8;
    constexpr std::uint32_t description = 0x4E4F534A;
    constexpr std::uint32_t binary = 0x004E4942;
    Parts parts;
    if (bytes.size() < 4 || std::string_view(reinterpret_cast<const char*>(bytes.data()), 4) != "glTF")
    {
        parts.m_description = bytes;
        return parts;
    }
    if (bytes.size() < headerSize)
    {
        error = "byte 4: the header is cut off";
        return parts;
    }
    if (const std::uint32_t version = readNumber(bytes, 4); version != 2)
    {
        error = "byte 4: is version " + std::to_string(version) + " of binary glTF, version 2 is read";
        return parts;
    }
    for (std::size_t at = headerSize; at + chunkHeaderSize <= bytes.size();)
    {
        const std::size_t size = readNumber(bytes, at);
        const std::uint32_t kind = readNumber(bytes, at + 4);
        at += chunkHeaderSize;
        if (size > bytes.size() - at)
        {
            error = "byte " + std::to_string(at) + ": a part of " + std::to_string(size) + " bytes is cut off after " +
                    std::to_string(bytes.size() - at);
            return parts;
        }
        if (kind == description && parts.m_description.empty())
        {
            parts.m_description = bytes.subspan(at, size);
        }
        else if (kind == binary && parts.m_binary.empty())
        {
            parts.m_binary = bytes.subspan(at, size);
        }
        at += size;
    }
    if (parts.m_description.empty())
    {
        error = "byte 12: there is no description in it";
    }
    return parts;
}

/// Readers of nested values call themselves: a description that would take their stack is no description.
bool isTooDeep(GltfFile::Bytes text)
{
    constexpr int mostLevels = 256;
    int level = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const unsigned char c = text[i];
        if (quoted)
        {
            i += c == '\\' ? 1 : 0;
            quoted = c != '"';
        }
        else if (c == '"')
        {
            quoted = true;
        }
        else if (c == '[' || c == '{')
        {
            if (++level > mostLevels)
            {
                return true;
            }
        }
        else if (c == ']' || c == '}')
        {
            --level;
        }
    }
    return false;
}

std::string getText(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

template <typename T>
T getNumber(const Json& object, const char* key, T otherwise)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_number() ? found->get<T>() : otherwise;
}

bool hasExtension(const Json& object, const char* name)
{
    const auto extensions = object.find("extensions");
    return extensions != object.end() && extensions->is_object() && extensions->contains(name);
}

/// The version that a description says it is of, or that it looks like: before 2.0 nodes were called by name.
std::string findVersion(const Json& description)
{
    if (const auto asset = description.find("asset"); asset != description.end() && asset->is_object())
    {
        if (const std::string version = getText(*asset, "version"); !version.empty())
        {
            return version;
        }
    }
    const auto nodes = description.find("nodes");
    return nodes != description.end() && nodes->is_object() ? "1.0" : "2.0";
}

/// Whether an extension is about how surfaces look: the model's shape and motion come through without it.
bool concernsSurfaces(const std::string& name)
{
    return name.find("_materials_") != std::string::npos || name.find("_techniques_") != std::string::npos ||
           name.find("_technique_") != std::string::npos ||
           std::find(pictureExtensions.begin(), pictureExtensions.end(), name) != pictureExtensions.end();
}

/// The list of that name, taken out of the description; an empty one when there is none.
Json takeList(Json& description, const char* name)
{
    Json list = Json::array();
    if (const auto found = description.find(name); found != description.end() && found->is_array())
    {
        list = std::move(*found);
        description.erase(found);
    }
    return list;
}

/// Indices of packed primitives have no bytes of their own, which tinygltf takes for a fault; the packed data has them.
void dropPackedIndices(Json& description)
{
    const auto meshes = description.find("meshes");
    if (meshes == description.end() || !meshes->is_array())
    {
        return;
    }
    for (Json& mesh : *meshes)
    {
        if (!mesh.is_object() || !mesh.contains("primitives") || !mesh["primitives"].is_array())
        {
            continue;
        }
        for (Json& primitive : mesh["primitives"])
        {
            if (primitive.is_object() && hasExtension(primitive, "KHR_draco_mesh_compression"))
            {
                primitive.erase("indices");
            }
        }
    }
}

int hexDigit(char c)
{
    constexpr std::string_view digits = "0123456789abcdef";
    const std::size_t at = digits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

/// A file name as a URI writes it: %20 is a blank.
std::string decodeName(const std::string& uri)
{
    std::string name;
    for (std::size_t i = 0; i < uri.size(); ++i)
    {
        const bool coded =
            uri[i] == '%' && i + 2 < uri.size() && hexDigit(uri[i + 1]) >= 0 && hexDigit(uri[i + 2]) >= 0;
        name += coded ? static_cast<char>(hexDigit(uri[i + 1]) * 16 + hexDigit(uri[i + 2])) : uri[i];
        i += coded ? 2 : 0;
    }
    return name;
}

bool isData(const std::string& uri)
{
    return uri.starts_with("data:");
}

/// The bytes that a data URI holds; none when it holds them in another way than base64.
std::vector<unsigned char> decodeData(const std::string& uri)
{
    constexpr std::string_view mark = ";base64,";
    const std::size_t at = uri.find(mark);
    if (at == std::string::npos)
    {
        return {};
    }
    // Only some kinds of data are known to tinygltf by their names; the bytes are written alike in all.
    std::vector<unsigned char> bytes;
    std::string kind;
    tinygltf::DecodeDataURI(&bytes, kind, "data:application/octet-stream;base64," + uri.substr(at + mark.size()), 0,
                            false);
    return bytes;
}
}  // namespace

GltfFile::GltfFile(const std::string& fileName, Warnings& warnings)
    : m_strName(fileName), m_vecContent(File.read(fileName))
{
    std::string error;
    const Parts parts = split({m_vecContent.data(), m_vecContent.size()}, error);
    if (!error.empty())
    {
        throw ConvertException(m_strName.c_str(), error.c_str());
    }
    if (isTooDeep(parts.m_description))
    {
        throw ConvertException(m_strName.c_str(), "its description is nested too deeply");
    }
    try
    {
        Json description = Json::parse(parts.m_description.begin(), parts.m_description.end());
        if (const std::string version = findVersion(description); !version.starts_with("2."))
        {
            throw ConvertException(m_strName.c_str(),
                                   ("asset.version: is version " + version + " of glTF, version 2.0 is read").c_str());
        }
        const Json buffers = takeList(description, "buffers");
        const Json images = takeList(description, "images");
        dropPackedIndices(description);
        const std::string text = description.dump();
        description = Json();
        std::string warning;
        tinygltf::TinyGLTF reader;
        if (!reader.LoadASCIIFromString(&m_model, &error, &warning, text.c_str(),
                                        static_cast<unsigned int>(text.size()), ""))
        {
            throw ConvertException(m_strName.c_str(), oneLine(error).c_str());
        }
        checkExtensions(warnings);
        for (std::size_t i = 0; i < buffers.size(); ++i)
        {
            const Json& buffer = buffers[i];
            loadBuffer(getText(buffer, "uri"), getNumber<std::size_t>(buffer, "byteLength", 0),
                       hasExtension(buffer, "EXT_meshopt_compression"), i, parts.m_binary);
        }
        for (const Json& image : images)
        {
            m_vecImages.push_back({getText(image, "name"), getText(image, "uri"), getNumber(image, "bufferView", -1)});
        }
    }
    catch (const nlohmann::json::exception& exception)
    {
        throw ConvertException(m_strName.c_str(), ("is no glTF file: " + oneLine(exception.what())).c_str());
    }
    m_vecPackedViews.resize(m_model.bufferViews.size());
}

void GltfFile::checkExtensions(Warnings& warnings) const
{
    const auto isKnown = [](const std::string& name)
    {
        return std::find(honouredExtensions.begin(), honouredExtensions.end(), name) != honouredExtensions.end() &&
               !(name == "KHR_draco_mesh_compression" && !canUnpackDraco()) &&
               !(name == "EXT_meshopt_compression" && !canUnpackMeshopt());
    };
    for (const std::string& name : m_model.extensionsRequired)
    {
        if (!isKnown(name) && !concernsSurfaces(name))
        {
            fail("extensionsRequired", "needs the extension " + name + ", which is not known here");
        }
    }
    std::set<std::string> named(m_model.extensionsUsed.begin(), m_model.extensionsUsed.end());
    named.insert(m_model.extensionsRequired.begin(), m_model.extensionsRequired.end());
    for (const std::string& name : named)
    {
        if (!isKnown(name))
        {
            warnings.add("what the extension " + name + " says is left out");
        }
    }
}

void GltfFile::loadBuffer(const std::string& uri, std::size_t size, bool mayBeAbsent, std::size_t index, Bytes binary)
{
    const std::string place = "buffers[" + std::to_string(index) + "]";
    Bytes bytes;
    std::string source = "the binary part";
    if (isData(uri))
    {
        bytes = m_vecOwnBuffers.emplace_back(decodeData(uri));
        source = "the text";
    }
    else if (!uri.empty())
    {
        const std::filesystem::path file = std::filesystem::path(m_strName).parent_path() / decodeName(uri);
        source = "\"" + file.string() + "\"";
        if (!File.exists(file.c_str()))
        {
            fail(place, "there is no file " + source);
        }
        const S_Bytes content = File.read(file.string());
        bytes = m_vecOwnBuffers.emplace_back(content.begin(), content.end());
        m_vecSources.push_back(file.string());
    }
    else if (index == 0)
    {
        bytes = binary;
    }
    if (bytes.size() < size && !(mayBeAbsent && bytes.empty()))
    {
        fail(place,
             source + " holds " + std::to_string(bytes.size()) + " bytes, " + std::to_string(size) + " are needed");
    }
    m_vecBuffers.push_back(bytes);
}

GltfFile::Bytes GltfFile::getBytes(int buffer, std::size_t offset, std::size_t length, const std::string& place) const
{
    const Bytes& bytes = at(m_vecBuffers, buffer, "buffers", place);
    if (offset > bytes.size() || length > bytes.size() - offset)
    {
        fail(place, "ends " + std::to_string(offset) + " + " + std::to_string(length) + " bytes into buffers[" +
                        std::to_string(buffer) + "], which has " + std::to_string(bytes.size()));
    }
    return bytes.subspan(offset, length);
}

GltfFile::Bytes GltfFile::getView(int index, const std::string& place) const
{
    const tinygltf::BufferView& view = at(m_model.bufferViews, index, "bufferViews", place);
    const std::string own = "bufferViews[" + std::to_string(index) + "]";
    if (const auto packed = view.extensions.find("EXT_meshopt_compression"); packed != view.extensions.end())
    {
        return unpack(index, packed->second, own);
    }
    return getBytes(view.buffer, view.byteOffset, view.byteLength, own);
}

std::size_t GltfFile::getStride(int index) const
{
    const tinygltf::BufferView& view = m_model.bufferViews[static_cast<std::size_t>(index)];
    const auto packed = view.extensions.find("EXT_meshopt_compression");
    return packed == view.extensions.end() ? view.byteStride : getSize(packed->second, "byteStride", 0);
}

GltfFile::Bytes GltfFile::unpack(int index, const tinygltf::Value& extension, const std::string& place) const
{
    const PackedView& view = m_vecPackedViews[static_cast<std::size_t>(index)];
    if (!view.m_bUnpacked)
    {
        const Bytes packed = getBytes(static_cast<int>(getSize(extension, "buffer", m_vecBuffers.size())),
                                      getSize(extension, "byteOffset", 0), getSize(extension, "byteLength", 0), place);
        const std::string error = unpackMeshopt(packed,
                                                {getSize(extension, "count", 0), getSize(extension, "byteStride", 0),
                                                 getWord(extension, "mode", ""), getWord(extension, "filter", "NONE")},
                                                view.m_vecUnpacked);
        if (!error.empty())
        {
            fail(place, error);
        }
        view.m_bUnpacked = true;
    }
    return view.m_vecUnpacked;
}

Picture GltfFile::getImage(std::size_t index) const
{
    const Image& image = m_vecImages[index];
    Picture source;
    source.m_strName = image.m_strName.empty() ? "image_" + std::to_string(index) : image.m_strName;
    if (image.m_iView >= 0)
    {
        const Bytes bytes = getView(image.m_iView, "images[" + std::to_string(index) + "]");
        source.m_vecBytes.assign(bytes.begin(), bytes.end());
    }
    else if (isData(image.m_strURI))
    {
        source.m_vecBytes = decodeData(image.m_strURI);
    }
    else
    {
        source.m_strName = decodeName(image.m_strURI);
    }
    return source;
}

void GltfFile::fail(const std::string& place, const std::string& reason) const
{
    throw ConvertException(m_strName.c_str(), (place + ": " + reason).c_str());
}

void GltfFile::failIndex(const std::string& place, const char* what, int index, std::size_t count) const
{
    fail(place,
         "names " + std::string(what) + "[" + std::to_string(index) + "], the file has " + std::to_string(count));
}
}  // namespace TW2::convert
