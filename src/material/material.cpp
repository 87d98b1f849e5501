#include "core/nearest_int.h"
#include "material/material_builder.h"

#include <tw2/material/material.h>
#include <tw2/material/material_callback.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/texture.h>
#include <tw2/material/texture_animation.h>

#include <platform/runtime/rollback.h>
#include <platform/scene/material.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace TW2
{
namespace
{
/// The frame that a position shows: not-a-number and what is negative 0, what is past the countable the last of those.
unsigned int toFrame(float position) noexcept
{
    constexpr unsigned int lastFrame = std::numeric_limits<int>::max();
    if (!(position > 0.0F))
    {
        return 0;
    }
    return position < static_cast<float>(lastFrame) ? static_cast<unsigned int>(position) : lastFrame;
}
}  // namespace

const TW_Material::TextureSlot TW_Material::sm_aTextureSlots[] = {
    {&TW_Material::m_iDiffuseLayer, &TW_Material::m_pDiffuseAnimation},
    {&TW_Material::m_iReflectionLayer, &TW_Material::m_pReflectionAnimation},
    {&TW_Material::m_iGlossLayer, &TW_Material::m_pGlossAnimation},
    {&TW_Material::m_iSpecularLayer, &TW_Material::m_pSpecularAnimation}};

/// What a DLL exports has to be defined in it (see platform/exported_constants.cpp).
constexpr int TW_Material::textureTypeCount;  // NOLINT(readability-redundant-declaration)

TW_Material& TW_Material::operator=(const TW_Material& other)
{
    construct(other);
    return *this;
}

void TW_Material::initializeMembers() noexcept
{
    m_bConstructed = false;
    S_String().swap(m_strName);
    m_pMaterial = nullptr;
    m_piReferenceCount = nullptr;
    m_bInvisibleGeometry = m_bSpecularEnabled = false;
    m_mapTextureMatrices.clear();
    S_Vector<int>().swap(m_vecTextureMatrixLayers);
    S_Vector<M_Matrix4Template<float>>().swap(m_vecTextureMatrices);
    for (const TextureSlot& slot : sm_aTextureSlots)
    {
        this->*slot.m_pLayer = -1;
        this->*slot.m_pAnimation = nullptr;
    }
    m_iSolidLayer = -1;
    m_bSolidLayer = false;
    m_solidColor = G_FColor();
    m_bVertexAlpha = false;
    m_fVertexAlpha = 0.0F;
    m_uTextureCoordinateLayerCount = 0;
}

void TW_Material::construct(const TWMaterialChunk& chunk)
{
    destruct();
    TW_Material built;  // the callbacks of textures and materials may do with this one what they like
    built.build(chunk);
    destruct();
    copy(built, true);
}

/// Builds an unconstructed material that no callback knows of.
void TW_Material::build(const TWMaterialChunk& chunk)
{
    m_bConstructed = true;
    ++sm_iTemplateMaterial;
    m_piReferenceCount = new S_OwnCounter(1);
    m_strName = chunk.name;
    m_bInvisibleGeometry = chunk.invisibleGeometry;
    Builder(*this, chunk).build();
}

void TW_Material::construct(const TW_Material& other)
{
    if (this == &other)
    {
        return;
    }
    destruct();
    if (other.m_bConstructed)
    {
        copy(other, other.canBeShared());
    }
}

/// Makes an unconstructed material a copy of a constructed one.
void TW_Material::copy(const TW_Material& other, bool shareTextures)
{
    m_bConstructed = true;
    ++sm_iTemplateMaterial;
    S_Rollback rollback([this]() noexcept { destruct(); });
    copyValues(other);
    if (shareTextures)
    {
        shareEngineMaterial(other);
    }
    else
    {
        copyEngineMaterial(other);
    }
    rollback.keep();
}

void TW_Material::copyValues(const TW_Material& other)
{
    m_strName = other.m_strName;
    m_mapTextureMatrices = other.m_mapTextureMatrices;
    m_vecTextureMatrixLayers = other.m_vecTextureMatrixLayers;
    m_vecTextureMatrices = other.m_vecTextureMatrices;
    m_bInvisibleGeometry = other.m_bInvisibleGeometry;
    m_bSpecularEnabled = other.m_bSpecularEnabled;
    for (const TextureSlot& slot : sm_aTextureSlots)
    {
        this->*slot.m_pLayer = other.*slot.m_pLayer;
    }
    m_iSolidLayer = other.m_iSolidLayer;
    m_solidColor = other.m_solidColor;
    m_bVertexAlpha = other.m_bVertexAlpha;
    m_fVertexAlpha = other.m_fVertexAlpha;
    m_uTextureCoordinateLayerCount = other.m_uTextureCoordinateLayerCount;
    if (other.m_bSolidLayer)
    {
        acquireSolidMap();
    }
}

/// Whether no texture is animated: then every copy may bind the same maps.
bool TW_Material::canBeShared() const noexcept
{
    const auto isStill = [this](const TextureSlot& slot)
    { return !(this->*slot.m_pAnimation) || (this->*slot.m_pAnimation)->getFrameCount() == 1; };
    return m_pMaterial && m_piReferenceCount &&
           std::all_of(std::begin(sm_aTextureSlots), std::end(sm_aTextureSlots), isStill);
}

void TW_Material::shareEngineMaterial(const TW_Material& other) noexcept
{
    m_pMaterial = other.m_pMaterial;
    for (const TextureSlot& slot : sm_aTextureSlots)
    {
        this->*slot.m_pAnimation = other.*slot.m_pAnimation;
    }
    m_piReferenceCount = other.m_piReferenceCount;
    ++*m_piReferenceCount;
}

void TW_Material::copyEngineMaterial(const TW_Material& other)
{
    for (const TextureSlot& slot : sm_aTextureSlots)
    {
        const TextureAnimation* const animation = other.*slot.m_pAnimation;
        this->*slot.m_pAnimation = animation ? new TextureAnimation(*animation) : nullptr;
    }
    m_pMaterial = other.m_pMaterial ? new P_Material(*other.m_pMaterial) : nullptr;
}

void TW_Material::destruct() noexcept
{
    if (!m_bConstructed)
    {
        return;
    }
    if (!m_piReferenceCount || --*m_piReferenceCount == 0)
    {
        delete m_pMaterial;
        delete m_piReferenceCount;
        for (const TextureSlot& slot : sm_aTextureSlots)
        {
            delete (this->*slot.m_pAnimation);
        }
    }
    releaseSolidMap();
    if (--sm_iTemplateMaterial == 0)
    {
        freeStaticData();
    }
    initializeMembers();
}

void TW_Material::freeStaticData() noexcept
{
    for (P_Material* material : sm_vecTemplateMaterials)
    {
        delete material;
    }
    S_Vector<P_Material*>().swap(sm_vecTemplateMaterials);
    S_Vector<TWMaterialChunk>().swap(sm_vecCreatedMaterials);
    sm_iTemplateMaterial = 0;
}

void TW_Material::setTextureMatrix(int layer, const M_Matrix4Template<float>& matrix)
{
    const M_Matrix4Template<float> copy = matrix;  // it may be an entry of the list, which moves
    m_vecTextureMatrixLayers.reserve(m_vecTextureMatrixLayers.size() + 1);
    m_vecTextureMatrices.reserve(m_vecTextureMatrices.size() + 1);
    m_mapTextureMatrices.try_emplace(layer, copy);
    m_vecTextureMatrixLayers.push_back(layer);
    m_vecTextureMatrices.push_back(copy);
}

int TW_Material::getTextureMatrixTextureLayer(int index) const noexcept
{
    return m_vecTextureMatrixLayers[static_cast<std::size_t>(index)];
}

const M_Matrix4Template<float>& TW_Material::getTextureMatrix(int index) const noexcept
{
    return m_vecTextureMatrices[static_cast<std::size_t>(index)];
}

/// The slot of a type; null for one without animation and for no type.
const TW_Material::TextureSlot* TW_Material::selectSlot(TextureType type) const noexcept
{
    const auto index = static_cast<unsigned int>(type);
    const bool exists = index < std::size(sm_aTextureSlots) && this->*sm_aTextureSlots[index].m_pAnimation;
    return exists ? &sm_aTextureSlots[index] : nullptr;
}

/// Binds the frame at a position where the slot has a layer; false when it has no animation.
bool TW_Material::bindFrame(TextureType type, float position) noexcept
{
    const TextureSlot* slot = selectSlot(type);
    if (slot && this->*slot->m_pLayer >= 0)
    {
        m_pMaterial->setTexture(static_cast<unsigned int>(this->*slot->m_pLayer),
                                (this->*slot->m_pAnimation)->getFrame(toFrame(position))->getMap());
    }
    return slot != nullptr;
}

bool TW_Material::animateTexture(TextureType type, float seconds)
{
    return bindFrame(type, getTextureAnimationFPS(type) * seconds);
}

bool TW_Material::animateTextureFrame(TextureType type, float frame)
{
    return bindFrame(type, std::nearbyint(frame));
}

unsigned int TW_Material::getTextureAnimationFrames(TextureType type) const noexcept
{
    const TextureSlot* slot = selectSlot(type);
    return slot ? (this->*slot->m_pAnimation)->getFrameCount() : 0;
}

float TW_Material::getTextureAnimationFPS(TextureType type) const noexcept
{
    const TextureSlot* slot = selectSlot(type);
    return slot ? static_cast<float>((this->*slot->m_pAnimation)->getFramesPerSecond()) : 0.0F;
}

void TW_Material::setTextureAnimationFPS(TextureType type, float rate) noexcept
{
    const TextureSlot* slot = selectSlot(type);
    if (slot && !std::isnan(rate))
    {
        (this->*slot->m_pAnimation)->setFramesPerSecond(toNearestInt(rate));
    }
}

float TW_Material::getTextureAnimationLength(TextureType type) const noexcept
{
    const TextureSlot* slot = selectSlot(type);
    return slot ? static_cast<float>((this->*slot->m_pAnimation)->getFrameCount()) /
                      static_cast<float>((this->*slot->m_pAnimation)->getFramesPerSecond())
                : 0.0F;
}

S_String TW_Material::getTextureName(TextureType type, int frame) const
{
    const TextureSlot* slot = selectSlot(type);
    return slot ? (this->*slot->m_pAnimation)->getFrame(static_cast<unsigned int>(frame))->getName() : S_String();
}

void TW_Material::addToTextureMemory()
{
    for (const TextureSlot& slot : sm_aTextureSlots)
    {
        if (TextureAnimation* animation = this->*slot.m_pAnimation)
        {
            animation->addToTextureMemory();
        }
    }
}

void TW_Material::removeFromTextureMemory() noexcept
{
    for (const TextureSlot& slot : sm_aTextureSlots)
    {
        if (TextureAnimation* animation = this->*slot.m_pAnimation)
        {
            animation->removeFromTextureMemory();
        }
    }
}
}  // namespace TW2
