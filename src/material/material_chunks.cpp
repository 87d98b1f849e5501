#include "io/chunk_values.h"

#include <tw2/io/chunk_id.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/material/material_texture_chunk.h>

#include <tuple>

namespace TW2
{
namespace
{
constexpr std::size_t smallestString = 4;  // its length alone

constexpr auto describeTexture = [](auto& chunk, auto& texture)
{
    chunk.values(texture.name, texture.mipLevels, texture.filter);
    chunk.list(texture.frameFiles, smallestString);
    if (texture.frameFiles.size() > 1)
    {
        chunk.values(texture.reservedFlag, texture.randomStart, texture.startFrame, texture.framesPerSecond,
                     texture.playback);
    }
};

constexpr unsigned int versionWithGloss = 1;
constexpr unsigned int versionWithAlphaTest = 2;
constexpr unsigned int newestVersion = 2;

void makeBlack(G_FColor& color) noexcept
{
    color = G_FColor(0.0F, 0.0F, 0.0F, color.alpha);
}

/// How the texture of a slot is written to and read.
struct SlotAccess
{
    MaterialTextureChunk& (TWMaterialChunk::*access)();
    const MaterialTextureChunk* (TWMaterialChunk::*get)() const noexcept;
};

/// A flag and, when it is set, the texture of the slot.
void describeSlot(ChunkReader& chunk, TWMaterialChunk& material, const SlotAccess& slot)
{
    bool present = false;
    chunk.values(present);
    if (present)
    {
        chunk.record((material.*slot.access)());
    }
}

void describeSlot(ChunkWriter& chunk, const TWMaterialChunk& material, const SlotAccess& slot)
{
    const MaterialTextureChunk* const texture = (material.*slot.get)();
    chunk.values(texture != nullptr);
    if (texture)
    {
        chunk.record(*texture);
    }
}

constexpr SlotAccess firstSlots[] = {
    {&TWMaterialChunk::accessDiffuseTexture, &TWMaterialChunk::getDiffuseTexture},
    {&TWMaterialChunk::accessReflectionTexture, &TWMaterialChunk::getReflectionTexture},
    {&TWMaterialChunk::accessSpecularTexture, &TWMaterialChunk::getSpecularTexture},
    {&TWMaterialChunk::accessOpacityTexture, &TWMaterialChunk::getOpacityTexture}};
constexpr SlotAccess glossSlot{&TWMaterialChunk::accessGlossTexture, &TWMaterialChunk::getGlossTexture};

constexpr auto describeMaterial = [](auto& chunk, auto& material)
{
    chunk.values(material.name, material.twoSided, material.fog, material.reservedFlag, material.invisibleGeometry,
                 material.vertexAlpha);
    chunk.values(material.shading, material.specular, material.reflectionMapping);
    chunk.color(material.ambientColor);
    chunk.color(material.diffuseColor);
    chunk.color(material.specularColor);
    chunk.values(material.vertexAlphaValue, material.specularExponent, material.diffuseBlend, material.reflectionBlend);
    chunk.template unused<float>();
    for (const SlotAccess& slot : firstSlots)
    {
        describeSlot(chunk, material, slot);
    }
    if (chunk.has(versionWithGloss))
    {
        describeSlot(chunk, material, glossSlot);
        chunk.values(material.glossChannel, material.shadeReflection);
    }
    if (chunk.has(versionWithAlphaTest))
    {
        chunk.values(material.alphaTest, material.alphaBlend, material.alphaReference);
    }
};

constexpr auto describeList = [](auto& chunk, auto& list)
{
    chunk.values(list.texturePath);
    chunk.records(list.materials);
};
}  // namespace

void MaterialTextureChunk::reset() noexcept
{
    clearAll(name, frameFiles);
    mipLevels = filter = startFrame = framesPerSecond = 0;
    reservedFlag = randomStart = false;
    playback = PLAYBACK_ONCE;
}

S_MemoryFile& operator>>(S_MemoryFile& file, MaterialTextureChunk& texture)
{
    return readRecord(file, CHUNK_MATERIAL_TEXTURE, texture, describeTexture);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MaterialTextureChunk& texture)
{
    return writeRecord(writer, CHUNK_MATERIAL_TEXTURE, 0, texture, describeTexture);
}

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
    vertexAlphaValue = specularExponent = 0.0F;
    for (Slot TWMaterialChunk::*member : slots)
    {
        Slot& slot = this->*member;
        if (slot.m_bPresent)
        {
            slot.m_pTexture->reset();
            slot.m_bPresent = false;
        }
    }
}

MaterialTextureChunk& TWMaterialChunk::accessSlot(Slot& slot)
{
    if (!slot.m_pTexture)
    {
        slot.m_pTexture = std::make_unique<SlotRecord>();
    }
    slot.m_bPresent = true;
    return *slot.m_pTexture;
}

bool operator==(const TWMaterialChunk& a, const TWMaterialChunk& b) noexcept
{
    const auto valuesOf = [](const TWMaterialChunk& m)
    {
        return std::tie(m.twoSided, m.fog, m.reservedFlag, m.invisibleGeometry, m.vertexAlpha, m.shadeReflection,
                        m.alphaTest, m.alphaBlend, m.alphaReference, m.shading, m.specular, m.reflectionMapping,
                        m.glossChannel, m.diffuseBlend, m.reflectionBlend);
    };
    if (valuesOf(a) != valuesOf(b))
    {
        return false;
    }
    for (const auto member : TWMaterialChunk::slots)
    {
        const MaterialTextureChunk* textureA = TWMaterialChunk::getSlot(a.*member);
        const MaterialTextureChunk* textureB = TWMaterialChunk::getSlot(b.*member);
        if (!textureA != !textureB ||
            (textureA && (textureA->filter != textureB->filter || textureA->mipLevels != textureB->mipLevels)))
        {
            return false;
        }
    }
    return true;
}

S_MemoryFile& operator>>(S_MemoryFile& file, TWMaterialChunk& material)
{
    return readRecord(file, CHUNK_MATERIAL, material, describeMaterial);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const TWMaterialChunk& material)
{
    return writeRecord(writer, CHUNK_MATERIAL, newestVersion, material, describeMaterial);
}

void MaterialListChunk::reset() noexcept
{
    clearAll(texturePath, materials);
}

S_MemoryFile& operator>>(S_MemoryFile& file, MaterialListChunk& list)
{
    return readRecord(file, CHUNK_MATERIAL_LIST, list, describeList);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MaterialListChunk& list)
{
    return writeRecord(writer, CHUNK_MATERIAL_LIST, 0, list, describeList);
}
}  // namespace TW2
