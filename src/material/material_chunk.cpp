#include <tw2/io/chunk_id.h>
#include <tw2/material/material_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

namespace TW2
{
namespace
{
constexpr unsigned int versionWithGloss = 1;
constexpr unsigned int versionWithAlphaTest = 2;
constexpr unsigned int newestVersion = 2;

void makeBlack(G_FColor& color) noexcept
{
    color = G_FColor(0.0f, 0.0f, 0.0f, color.alpha);
}

void readColor(S_MemoryFile& file, G_FColor& color)
{
    file >> color.red >> color.green >> color.blue >> color.alpha;
}

void writeColor(S_MemoryFileWriter& writer, const G_FColor& color)
{
    writer << color.red << color.green << color.blue << color.alpha;
}

/// Reads a slot's flag and, when it is set, its texture into what `access` gives.
template <typename Access>
void readSlot(S_MemoryFile::Chunk& chunk, Access access)
{
    bool present = false;
    chunk.getMemoryFile() >> present;
    if (present)
    {
        chunk.getMemoryFile() >> access();
        chunk.skipChunk();
    }
}

void writeSlot(S_MemoryFileWriter& writer, const MaterialTextureChunk* texture)
{
    writer << (texture != nullptr);
    if (texture)
    {
        writer << *texture;
    }
}
}  // namespace

TWMaterialChunk::Slot::Slot(const Slot& other)
    : m_pTexture(other.m_bPresent ? std::make_unique<SlotRecord>(*other.m_pTexture) : nullptr),
      m_bPresent(other.m_bPresent)
{
}

TWMaterialChunk& TWMaterialChunk::operator=(const TWMaterialChunk& other)
{
    if (this != &other)
    {
        *this = TWMaterialChunk(other);
    }
    return *this;
}

void TWMaterialChunk::reset() noexcept
{
    name.clear();
    twoSided = fog = reservedFlag = invisibleGeometry = vertexAlpha = false;
    shadeReflection = alphaTest = alphaBlend = false;
    alphaReference = 240;
    makeBlack(ambientColor);
    makeBlack(diffuseColor);
    makeBlack(specularColor);
    shading = SHADING_CONSTANT;
    specular = reflectionMapping = glossChannel = diffuseBlend = reflectionBlend = 0;
    vertexAlphaValue = specularExponent = 0.0f;
    for (Slot& slot : m_slots)
    {
        if (slot.m_bPresent)
        {
            slot.m_pTexture->reset();
            slot.m_bPresent = false;
        }
    }
}

MaterialTextureChunk& TWMaterialChunk::accessSlot(SlotIndex slot)
{
    Slot& accessed = m_slots[slot];
    if (!accessed.m_pTexture)
    {
        accessed.m_pTexture = std::make_unique<SlotRecord>();
    }
    accessed.m_bPresent = true;
    return *accessed.m_pTexture;
}

bool operator==(const TWMaterialChunk& a, const TWMaterialChunk& b) noexcept
{
    const bool flags = a.twoSided == b.twoSided && a.fog == b.fog && a.reservedFlag == b.reservedFlag &&
                       a.invisibleGeometry == b.invisibleGeometry && a.vertexAlpha == b.vertexAlpha &&
                       a.shadeReflection == b.shadeReflection && a.alphaTest == b.alphaTest &&
                       a.alphaBlend == b.alphaBlend;
    const bool selectors = a.alphaReference == b.alphaReference && a.shading == b.shading && a.specular == b.specular &&
                           a.reflectionMapping == b.reflectionMapping && a.glossChannel == b.glossChannel &&
                           a.diffuseBlend == b.diffuseBlend && a.reflectionBlend == b.reflectionBlend;
    if (!flags || !selectors)
    {
        return false;
    }
    for (std::size_t slot = 0; slot < TWMaterialChunk::SLOT_COUNT; ++slot)
    {
        const MaterialTextureChunk* textureA = a.getSlot(static_cast<TWMaterialChunk::SlotIndex>(slot));
        const MaterialTextureChunk* textureB = b.getSlot(static_cast<TWMaterialChunk::SlotIndex>(slot));
        if (!textureA != !textureB)
        {
            return false;
        }
        if (textureA && (textureA->filter != textureB->filter || textureA->mipLevels != textureB->mipLevels))
        {
            return false;
        }
    }
    return true;
}

S_MemoryFile& operator>>(S_MemoryFile& file, TWMaterialChunk& material)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MATERIAL);
    const unsigned int version = chunk.getVersion();
    S_MemoryFile& body = chunk.getMemoryFile();
    body >> material.name >> material.twoSided >> material.fog >> material.reservedFlag >> material.invisibleGeometry >>
        material.vertexAlpha;
    body >> material.shading >> material.specular >> material.reflectionMapping;
    readColor(body, material.ambientColor);
    readColor(body, material.diffuseColor);
    readColor(body, material.specularColor);
    body >> material.vertexAlphaValue >> material.specularExponent >> material.diffuseBlend >> material.reflectionBlend;
    float unused = 0.0f;
    body >> unused;
    readSlot(chunk, [&]() -> MaterialTextureChunk& { return material.accessDiffuseTexture(); });
    readSlot(chunk, [&]() -> MaterialTextureChunk& { return material.accessReflectionTexture(); });
    readSlot(chunk, [&]() -> MaterialTextureChunk& { return material.accessSpecularTexture(); });
    readSlot(chunk, [&]() -> MaterialTextureChunk& { return material.accessOpacityTexture(); });
    if (version >= versionWithGloss)
    {
        readSlot(chunk, [&]() -> MaterialTextureChunk& { return material.accessGlossTexture(); });
        body >> material.glossChannel >> material.shadeReflection;
    }
    if (version >= versionWithAlphaTest)
    {
        body >> material.alphaTest >> material.alphaBlend >> material.alphaReference;
    }
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const TWMaterialChunk& material)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MATERIAL, newestVersion);
    writer << material.name << material.twoSided << material.fog << material.reservedFlag << material.invisibleGeometry
           << material.vertexAlpha;
    writer << material.shading << material.specular << material.reflectionMapping;
    writeColor(writer, material.ambientColor);
    writeColor(writer, material.diffuseColor);
    writeColor(writer, material.specularColor);
    writer << material.vertexAlphaValue << material.specularExponent << material.diffuseBlend
           << material.reflectionBlend;
    writer << 0.0f;  // a value that no reader uses
    writeSlot(writer, material.getDiffuseTexture());
    writeSlot(writer, material.getReflectionTexture());
    writeSlot(writer, material.getSpecularTexture());
    writeSlot(writer, material.getOpacityTexture());
    writeSlot(writer, material.getGlossTexture());
    writer << material.glossChannel << material.shadeReflection;
    writer << material.alphaTest << material.alphaBlend << material.alphaReference;
    return writer;
}
}  // namespace TW2
