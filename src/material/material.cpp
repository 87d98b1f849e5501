#include "material/material_builder.h"

#include <tw2/material/material.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/texture.h>
#include <tw2/material/texture_animation.h>

#include <platform/scene/map.h>
#include <platform/scene/material.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace TW2
{
namespace
{
/// The frame that a position shows: not-a-number and what is negative 0, what is past the countable the last of those.
unsigned int toFrame(float position) noexcept
{
    constexpr unsigned int lastFrame = std::numeric_limits<int>::max();
    if (!(position > 0.0f))
    {
        return 0;
    }
    return position < static_cast<float>(lastFrame) ? static_cast<unsigned int>(position) : lastFrame;
}

TextureAnimation* copyAnimation(const TextureAnimation* animation)
{
    return animation ? new TextureAnimation(*animation) : nullptr;
}
}  // namespace

TW_Material::TW_Material(const TWMaterialChunk& chunk)
{
    initializeMembers();
    construct(chunk);
}

TW_Material::TW_Material(const TW_Material& other) : S_Allocated(other)
{
    initializeMembers();
    construct(other);
}

TW_Material& TW_Material::operator=(const TW_Material& other)
{
    if (this != &other)
    {
        construct(other);
    }
    return *this;
}

TW_Material::~TW_Material()
{
    destruct();
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
    m_diffuse = m_reflection = m_gloss = m_specular = TextureSlot();
    m_iSolidLayer = -1;
    m_bSolidLayer = false;
    m_solidColor = G_FColor();
    m_bVertexAlpha = false;
    m_fVertexAlpha = 0.0f;
    m_uTextureCoordinateLayerCount = 0;
}

void TW_Material::construct(const TWMaterialChunk& chunk)
{
    destruct();
    m_bConstructed = true;
    ++sm_iTemplateMaterial;
    try
    {
        m_piReferenceCount = new (S_Memory::allocate(sizeof(int))) int(1);
        m_strName = chunk.name;
        m_bInvisibleGeometry = chunk.invisibleGeometry;
        Builder(*this, chunk).build();
    }
    catch (...)
    {
        destruct();
        throw;
    }
}

void TW_Material::construct(const TW_Material& other)
{
    if (this == &other)
    {
        return;
    }
    destruct();
    m_bConstructed = true;
    ++sm_iTemplateMaterial;
    try
    {
        copyValues(other);
        if (other.canBeShared())
        {
            shareEngineMaterial(other);
        }
        else
        {
            copyEngineMaterial(other);
        }
    }
    catch (...)
    {
        destruct();
        throw;
    }
}

void TW_Material::copyValues(const TW_Material& other)
{
    m_strName = other.m_strName;
    m_bInvisibleGeometry = other.m_bInvisibleGeometry;
    m_bSpecularEnabled = other.m_bSpecularEnabled;
    m_mapTextureMatrices = other.m_mapTextureMatrices;
    m_vecTextureMatrixLayers = other.m_vecTextureMatrixLayers;
    m_vecTextureMatrices = other.m_vecTextureMatrices;
    m_diffuse.m_iLayer = other.m_diffuse.m_iLayer;
    m_reflection.m_iLayer = other.m_reflection.m_iLayer;
    m_gloss.m_iLayer = other.m_gloss.m_iLayer;
    m_specular.m_iLayer = other.m_specular.m_iLayer;
    m_iSolidLayer = other.m_iSolidLayer;
    m_bSolidLayer = other.m_bSolidLayer;
    m_solidColor = other.m_solidColor;
    m_bVertexAlpha = other.m_bVertexAlpha;
    m_fVertexAlpha = other.m_fVertexAlpha;
    m_uTextureCoordinateLayerCount = other.m_uTextureCoordinateLayerCount;
    if (m_bSolidLayer)
    {
        ++sm_iSolidMapReferenceCnt;
    }
}

/// Whether no texture is animated: then every copy may bind the same maps.
bool TW_Material::canBeShared() const noexcept
{
    const auto isStill = [](const TextureSlot& slot)
    { return !slot.m_pAnimation || slot.m_pAnimation->getFrameCount() == 1; };
    return m_pMaterial && m_piReferenceCount && isStill(m_diffuse) && isStill(m_reflection) && isStill(m_gloss) &&
           isStill(m_specular);
}

void TW_Material::shareEngineMaterial(const TW_Material& other) noexcept
{
    m_pMaterial = other.m_pMaterial;
    m_diffuse.m_pAnimation = other.m_diffuse.m_pAnimation;
    m_reflection.m_pAnimation = other.m_reflection.m_pAnimation;
    m_gloss.m_pAnimation = other.m_gloss.m_pAnimation;
    m_specular.m_pAnimation = other.m_specular.m_pAnimation;
    m_piReferenceCount = other.m_piReferenceCount;
    ++*m_piReferenceCount;
}

void TW_Material::copyEngineMaterial(const TW_Material& other)
{
    m_diffuse.m_pAnimation = copyAnimation(other.m_diffuse.m_pAnimation);
    m_reflection.m_pAnimation = copyAnimation(other.m_reflection.m_pAnimation);
    m_gloss.m_pAnimation = copyAnimation(other.m_gloss.m_pAnimation);
    m_specular.m_pAnimation = copyAnimation(other.m_specular.m_pAnimation);
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
        S_Memory::release(m_piReferenceCount);
        delete m_diffuse.m_pAnimation;
        delete m_reflection.m_pAnimation;
        delete m_gloss.m_pAnimation;
        delete m_specular.m_pAnimation;
    }
    if (m_bSolidLayer)
    {
        releaseSolidMap();
    }
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

/// The white map of solid layers; it is made for the first one.
P_Map* TW_Material::acquireSolidMap()
{
    if (sm_iSolidMapReferenceCnt == 0)
    {
        std::unique_ptr<G_Image> image = Builder::createWhiteImage();
        auto map = std::make_unique<P_Map>(image.get(), nullptr);
        map->setMipLevelCount(1);
        map->validate();
        sm_pSolidImage = image.release();
        sm_pSolidMap = map.release();
    }
    ++sm_iSolidMapReferenceCnt;
    return sm_pSolidMap;
}

void TW_Material::releaseSolidMap() noexcept
{
    if (--sm_iSolidMapReferenceCnt == 0)
    {
        delete std::exchange(sm_pSolidMap, nullptr);
        delete std::exchange(sm_pSolidImage, nullptr);
    }
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

bool TW_Material::hasTextureMatrix(int layer) const noexcept
{
    return m_mapTextureMatrices.find(layer) != m_mapTextureMatrices.end();
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
    const TextureSlot* slot = nullptr;
    switch (type)
    {
        case TEXTURE_DIFFUSE:
            slot = &m_diffuse;
            break;
        case TEXTURE_REFLECTION:
            slot = &m_reflection;
            break;
        case TEXTURE_GLOSS:
            slot = &m_gloss;
            break;
        case TEXTURE_SPECULAR:
            slot = &m_specular;
            break;
    }
    return slot && slot->m_pAnimation ? slot : nullptr;
}

/// A slot without a layer has nothing to be bound to.
void TW_Material::bindFrame(const TextureSlot& slot, unsigned int frame) noexcept
{
    if (slot.m_iLayer >= 0)
    {
        m_pMaterial->setTexture(static_cast<unsigned int>(slot.m_iLayer), slot.m_pAnimation->getFrame(frame)->getMap());
    }
}

bool TW_Material::animateTexture(TextureType type, float seconds)
{
    const TextureSlot* slot = selectSlot(type);
    if (!slot)
    {
        return false;
    }
    bindFrame(*slot, toFrame(static_cast<float>(slot->m_pAnimation->getFramesPerSecond()) * seconds));
    return true;
}

bool TW_Material::animateTextureFrame(TextureType type, float frame)
{
    const TextureSlot* slot = selectSlot(type);
    if (!slot)
    {
        return false;
    }
    bindFrame(*slot, toFrame(std::nearbyint(frame)));
    return true;
}

unsigned int TW_Material::getTextureAnimationFrames(TextureType type) const noexcept
{
    const TextureSlot* slot = selectSlot(type);
    return slot ? slot->m_pAnimation->getFrameCount() : 0;
}

float TW_Material::getTextureAnimationFPS(TextureType type) const noexcept
{
    const TextureSlot* slot = selectSlot(type);
    return slot ? static_cast<float>(slot->m_pAnimation->getFramesPerSecond()) : 0.0f;
}

void TW_Material::setTextureAnimationFPS(TextureType type, float rate) noexcept
{
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    const TextureSlot* slot = selectSlot(type);
    if (slot && !std::isnan(rate))
    {
        const double rounded = std::clamp(std::nearbyint(static_cast<double>(rate)), lowest, highest);
        slot->m_pAnimation->setFramesPerSecond(static_cast<int>(rounded));
    }
}

float TW_Material::getTextureAnimationLength(TextureType type) const noexcept
{
    const TextureSlot* slot = selectSlot(type);
    return slot ? static_cast<float>(slot->m_pAnimation->getFrameCount()) /
                      static_cast<float>(slot->m_pAnimation->getFramesPerSecond())
                : 0.0f;
}

S_String TW_Material::getTextureName(TextureType type, int frame) const
{
    const TextureSlot* slot = selectSlot(type);
    return slot ? slot->m_pAnimation->getFrame(static_cast<unsigned int>(frame))->getName() : S_String();
}

void TW_Material::addToTextureMemory()
{
    for (const TextureSlot* slot : {&m_diffuse, &m_reflection, &m_gloss, &m_specular})
    {
        if (slot->m_pAnimation)
        {
            slot->m_pAnimation->addToTextureMemory();
        }
    }
}

void TW_Material::removeFromTextureMemory() noexcept
{
    for (const TextureSlot* slot : {&m_diffuse, &m_reflection, &m_gloss, &m_specular})
    {
        if (slot->m_pAnimation)
        {
            slot->m_pAnimation->removeFromTextureMemory();
        }
    }
}
}  // namespace TW2
