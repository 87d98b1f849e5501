#include "object/object_animation_script.h"
#include "skin/skeleton_bone.h"

#include <tw2/core/exceptions.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/hash_map.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace TW2
{
/// A record and the number of objects that hold it. Never changed once it is shared.
struct TW_VertexAnimation::Skin::SharedChunk : S_Allocated
{
    SkinChunk m_chunk;
    S_Counter<int> m_iReferenceCount{1};
};

namespace
{
/// What an object without a record answers from.
const SkinChunk& getEmptyChunk() noexcept
{
    static const SkinChunk s_emptyChunk;
    return s_emptyChunk;
}
}  // namespace

TW_VertexAnimation::Skin::Skin() noexcept
{
    initializeMembers();
}

TW_VertexAnimation::Skin& TW_VertexAnimation::Skin::operator=(const Skin& other)
{
    construct(other);
    return *this;
}

TW_VertexAnimation::Skin::~Skin() = default;

void TW_VertexAnimation::Skin::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_pShared = nullptr;
    m_pChunk = &getEmptyChunk();
}

void TW_VertexAnimation::Skin::construct(const SkinChunk& chunk)
{
    destruct();
    take(SkinChunk(chunk));
}

void TW_VertexAnimation::Skin::construct(const S_String& fileName)
{
    destruct();
    S_MemoryFile file(fileName, S_MemoryFile::accessRead);
    SkinChunk chunk;
    file >> chunk;
    take(std::move(chunk));
}

void TW_VertexAnimation::Skin::construct(const Skin& other)
{
    m_pShared = other.m_pShared;
    m_pChunk = other.m_pChunk;
    m_bConstructed = other.m_bConstructed;
}

/// Makes a record the object's own.
void TW_VertexAnimation::Skin::take(SkinChunk&& chunk)
{
    S_Handle shared(new SharedChunk);
    shared->m_chunk = std::move(chunk);
    m_pShared.swap(shared);
    m_pChunk = &m_pShared->m_chunk;
    m_bConstructed = true;
}

bool TW_VertexAnimation::Skin::boneHasVerticesWeighted(const char* boneName) const
{
    const auto& names = m_pChunk->boneNames;
    const auto& bones = m_pChunk->influenceBones;
    const auto found =
        std::find_if(names.begin(), names.end(),
                     [name = orEmpty(boneName)](const S_String& bone) { return S_CaselessNameEqual()(bone, name); });
    return found != names.end() &&
           std::find(bones.begin(), bones.end(), static_cast<int>(found - names.begin())) != bones.end();
}

void TW_VertexAnimation::Skin::checkDataValidity(TW_VertexAnimation* vertexAnimation) const
{
    if (!vertexAnimation || !vertexAnimation->getSkin() || !vertexAnimation->getSkeleton())
    {
        throw TW_Exception_InvalidGeometry("SKD is checked against a character, and none is given that is constructed");
    }
    const TW_ObjectAnimation& skin = *vertexAnimation->getSkin();
    const TW_ObjectAnimation& skeleton = *vertexAnimation->getSkeleton();
    const auto& objects = m_pChunk->objectNames;
    const auto& bones = m_pChunk->boneNames;
    if (skin.getTotalMeshes() != objects.size())
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("Skin mesh \"%s\" and SKD number of skin objects don't match(skin %d, skd %d)",
                  skin.getName().c_str(), static_cast<int>(skin.getTotalMeshes()), static_cast<int>(objects.size())));
    }
    for (std::size_t i = 0; i < objects.size(); ++i)
    {
        const S_String& name = skin.getMesh(static_cast<unsigned int>(i))->getName();
        if (name != objects[i])
        {
            throw TW_Exception_InvalidGeometry(
                S_STR("Skin mesh \"%s\" objects' names and .SKD object names don't match(skin \"%s\", skd \"%s\")",
                      skin.getName().c_str(), name.c_str(), objects[i].c_str()));
        }
    }
    for (std::size_t b = 0; b < bones.size(); ++b)
    {
        if (findSkeletonBone(skeleton, bones[b], static_cast<unsigned int>(b)) < 0)
        {
            throwUndefinedBone(skeleton, bones[b]);
        }
    }
}
}  // namespace TW2
