#include "core/memory_scope.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/material_manager.h>

#include <platform/runtime/rollback.h>
#include <platform/scene/material.h>
#include <platform/scene/primitive_instance.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

namespace TW2
{
namespace
{
constexpr int noSet = -1;
}  // namespace

void TW_MaterialManager::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_mapMaterials.clear();
    S_Vector<TW_Material*>().swap(m_vecMaterials);
    m_mapTextureAnimationSets.clear();
    S_Vector<TextureAnimationSet>().swap(m_vecTextureAnimationSets);
}

void TW_MaterialManager::construct() noexcept
{
    destruct();
    m_bConstructed = true;
}

void TW_MaterialManager::construct(const TW_MaterialManager& other)
{
    if (this == &other)
    {
        return;
    }
    const MemoryScope scope;
    destruct();
    m_bConstructed = other.m_bConstructed;
    S_Rollback rollback([this]() noexcept { destruct(); });
    for (const TW_Material* material : other.m_vecMaterials)
    {
        add(std::make_unique<TW_Material>(*material));
    }
    rollback.keep();
}

void TW_MaterialManager::destruct() noexcept
{
    if (!m_bConstructed)
    {
        return;
    }
    for (const TextureAnimationSet& set : m_vecTextureAnimationSets)
    {
        for (const TextureAnimationEntry* entry : set)
        {
            delete entry;
        }
    }
    for (const TW_Material* material : m_vecMaterials)
    {
        delete material;
    }
    initializeMembers();
}

void TW_MaterialManager::addMaterial(const TWMaterialChunk& chunk)
{
    const MemoryScope scope;
    add(std::make_unique<TW_Material>(chunk));
}

/// Takes a material over; when memory runs out the manager is as before.
void TW_MaterialManager::add(std::unique_ptr<TW_Material> added)
{
    m_vecMaterials.push_back(added.get());
    TW_Material* material = added.release();
    S_Rollback rollback([this]() noexcept { removeLast(); });
    m_mapMaterials.try_emplace(material->getName(), material);
    for (const auto type : {TW_Material::TEXTURE_DIFFUSE, TW_Material::TEXTURE_REFLECTION, TW_Material::TEXTURE_GLOSS,
                            TW_Material::TEXTURE_SPECULAR})
    {
        if (material->getTextureAnimationFrames(type) > 1)
        {
            addTextureAnimation(material, type);
        }
    }
    rollback.keep();
    m_bConstructed = true;  // what it holds is freed with it
}

void TW_MaterialManager::addTextureAnimation(TW_Material* material, TW_Material::TextureType type)
{
    const S_String name = material->getTextureName(type, 0);
    auto entry = std::make_unique<TextureAnimationEntry>(material, type);
    int index = findSet(name);
    if (index == noSet)
    {
        index = static_cast<int>(m_vecTextureAnimationSets.size());
        m_vecTextureAnimationSets.emplace_back();
        m_mapTextureAnimationSets.try_emplace(name, index);
    }
    m_vecTextureAnimationSets[static_cast<std::size_t>(index)].push_back(entry.get());
    static_cast<void>(entry.release());
}

/// Takes the material added last out again, with its entries and the sets that only it is in.
void TW_MaterialManager::removeLast() noexcept
{
    const std::unique_ptr<TW_Material> material(m_vecMaterials.back());
    m_vecMaterials.pop_back();
    std::erase_if(m_mapMaterials, [&](const auto& entry) { return entry.second == material.get(); });
    for (TextureAnimationSet& set : m_vecTextureAnimationSets)
    {
        while (!set.empty() && set.back()->material == material.get())
        {
            delete set.back();
            set.pop_back();
        }
    }
    while (!m_vecTextureAnimationSets.empty() && m_vecTextureAnimationSets.back().empty())
    {
        m_vecTextureAnimationSets.pop_back();
    }
    std::erase_if(m_mapTextureAnimationSets, [&](const auto& entry) { return !isValidAnimationSet(entry.second); });
}

TW_Material* TW_MaterialManager::find(std::string_view name) const
{
    const MemoryScope scope;
    const auto found = m_mapMaterials.find(name);
    return found != m_mapMaterials.end() ? found->second : nullptr;
}

TW_Material* TW_MaterialManager::getMaterial(int index) const noexcept
{
    return m_vecMaterials[static_cast<std::size_t>(index)];
}

void TW_MaterialManager::remapMaterials(P_VirtualObject* object, TW_MaterialManager* source)
{
    if (!object || !source)
    {
        return;
    }
    const MemoryScope scope;
    S_Map<const P_Material*, const S_String*> names;
    for (const TW_Material* material : source->m_vecMaterials)
    {
        names.try_emplace(material->getMaterial(), &material->getName());
    }
    if (names.empty())
    {
        return;
    }
    for (int i = 0; i < object->getPrimitiveCount(); ++i)
    {
        const auto name = names.find(std::as_const(*object).getPrimitiveInstance(i)->getMaterial());
        const TW_Material* material = name != names.end() ? findMaterial(*name->second) : nullptr;
        if (material)
        {
            object->getPrimitiveInstance(i)->setMaterial(material->getMaterial());
        }
    }
}

void TW_MaterialManager::addToTextureMemory()
{
    for (TW_Material* material : m_vecMaterials)
    {
        material->addToTextureMemory();
    }
}

void TW_MaterialManager::removeFromTextureMemory() noexcept
{
    for (TW_Material* material : m_vecMaterials)
    {
        material->removeFromTextureMemory();
    }
}

/// The index of a set, or `noSet`, which no operation takes for a set.
int TW_MaterialManager::findSet(std::string_view set) const noexcept
{
    const auto found = m_mapTextureAnimationSets.find(set);
    return found != m_mapTextureAnimationSets.end() ? found->second : noSet;
}

/// Null when set or animation is invalid.
const TW_MaterialManager::TextureAnimationEntry* TW_MaterialManager::findEntry(int set, int animation) const noexcept
{
    return isValidAnimation(set, animation)
               ? m_vecTextureAnimationSets[static_cast<std::size_t>(set)][static_cast<std::size_t>(animation)]
               : nullptr;
}

const S_String& TW_MaterialManager::getTextureAnimationSetName(int set) const noexcept
{
    static const S_String none;
    const auto found = std::find_if(m_mapTextureAnimationSets.begin(), m_mapTextureAnimationSets.end(),
                                    [set](const auto& entry) { return entry.second == set; });
    return found == m_mapTextureAnimationSets.end() ? none : found->first;
}

int TW_MaterialManager::requireSet(std::string_view set) const
{
    const int index = findSet(set);
    if (index == noSet)
    {
        throw TW_Exception_TextureNotFound(S_String(set).c_str());
    }
    return index;
}

bool TW_MaterialManager::isValidAnimationSet(int set) const noexcept
{
    return set >= 0 && static_cast<std::size_t>(set) < m_vecTextureAnimationSets.size();
}

bool TW_MaterialManager::isValidAnimation(int set, int animation) const noexcept
{
    return isValidAnimationSet(set) && animation >= 0 &&
           static_cast<unsigned int>(animation) < getTotalTextureAnimations(set);
}

unsigned int TW_MaterialManager::getTotalTextureAnimations(int set) const noexcept
{
    return static_cast<unsigned int>(m_vecTextureAnimationSets[static_cast<std::size_t>(set)].size());
}

unsigned int TW_MaterialManager::countAnimations(std::string_view set) const noexcept
{
    const int index = findSet(set);
    return index != noSet ? getTotalTextureAnimations(index) : 0;
}

unsigned int TW_MaterialManager::getTextureAnimationFrames(int set, int animation) const noexcept
{
    const TextureAnimationEntry* entry = findEntry(set, animation);
    return entry ? entry->material->getTextureAnimationFrames(entry->type) : 0;
}

float TW_MaterialManager::getTextureAnimationLength(int set, int animation) const noexcept
{
    const TextureAnimationEntry* entry = findEntry(set, animation);
    return entry ? entry->material->getTextureAnimationLength(entry->type) : 0.0F;
}

float TW_MaterialManager::getTextureAnimationFPS(int set, int animation) const noexcept
{
    const TextureAnimationEntry* entry = findEntry(set, animation);
    return entry ? entry->material->getTextureAnimationFPS(entry->type) : 0.0F;
}

void TW_MaterialManager::setTextureAnimationFPS(int set, int animation, float rate) noexcept
{
    if (const TextureAnimationEntry* entry = findEntry(set, animation))
    {
        entry->material->setTextureAnimationFPS(entry->type, rate);
    }
}

bool TW_MaterialManager::animateTexture(int set, float seconds)
{
    return animateSet(set, [seconds](TW_Material& material, TW_Material::TextureType type)
                      { return material.animateTexture(type, seconds); });
}

bool TW_MaterialManager::animateTextureFrame(int set, float frame)
{
    return animateSet(set, [frame](TW_Material& material, TW_Material::TextureType type)
                      { return material.animateTextureFrame(type, frame); });
}

/// Animates every entry of a set; whether any was animated.
template <typename Animate>
bool TW_MaterialManager::animateSet(int set, Animate animate)
{
    if (!isValidAnimationSet(set))
    {
        return false;
    }
    bool animated = false;
    for (const TextureAnimationEntry* entry : m_vecTextureAnimationSets[static_cast<std::size_t>(set)])
    {
        animated = animate(*entry->material, entry->type) || animated;
    }
    return animated;
}
}  // namespace TW2
