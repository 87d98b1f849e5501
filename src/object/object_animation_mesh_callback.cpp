#include "io/mesh_faults.h"
#include "object/primitive_writer.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/mesh_chunk.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>
#include <tw2/object/object_animation_mesh_callback.h>

#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cstddef>
#include <memory>

namespace TW2
{
namespace
{
/// Whether every group, and all of them together, lie in a list of `size` elements; each counted one takes `step`.
template <typename T>
bool areGroupsInside(const S_Vector<T>& offsets, const S_Vector<T>& counts, std::size_t step, std::size_t size)
{
    if (offsets.size() < counts.size())
    {
        return false;
    }
    std::size_t left = size / step;
    for (std::size_t group = 0; group < counts.size(); ++group)
    {
        const std::size_t offset = static_cast<unsigned int>(offsets[group]);
        const std::size_t count = static_cast<unsigned int>(counts[group]);
        if (count > left || offset > size || count > (size - offset) / step)
        {
            return false;
        }
        left -= count;
    }
    return true;
}

/// What is so in every record that was read, but has to be kept up by who changes one.
S_String findListFault(const MeshChunk& record)
{
    const MeshVertexChunk& vertices = record.vertices;
    const std::size_t count = vertices.positions.size();
    if (record.channels.size() != MeshChunk::channelSlots || record.channelUsed.size() != MeshChunk::channelSlots)
    {
        return S_STR("%zu texture channel slots, found %zu", MeshChunk::channelSlots,
                     std::min(record.channels.size(), record.channelUsed.size()))
            .str();
    }
    if (vertices.normals.size() != count || (record.hasVertexMap() && vertices.vertexMap.size() != count))
    {
        return S_STR("a normal and a vertex map entry or no map for each of the %zu positions", count).str();
    }
    if (!areGroupsInside(vertices.groupOffsets, vertices.groupCounts, 1, count))
    {
        return S_STR("groups of vertices among the %zu positions", count).str();
    }
    if (!areGroupsInside(record.faces.groupOffsets, record.faces.groupCounts, 3, record.faces.indices.size()))
    {
        return S_STR("groups of triangles among the %zu indices", record.faces.indices.size()).str();
    }
    for (std::size_t slot = 0; slot < record.channels.size(); ++slot)
    {
        const TextureChannelChunk& channel = record.channels[slot];
        if (!areGroupsInside(channel.groupOffsets, channel.groupCounts, 1, channel.coordinates.size()))
        {
            return S_STR("groups of texture channel %zu among its %zu coordinates", slot, channel.coordinates.size())
                .str();
        }
    }
    return {};
}

/// A record that a host had in hand may not fit in itself any more. Parts that nothing is built from may be anything.
void requireSound(const MeshChunk& record)
{
    if (!record.hasInstance && record.hasVertices && record.hasFaces)
    {
        requireSound(record, "built", findListFault(record));
        requireSound(record, "built", findFault(record));
    }
}

std::size_t getPrimitiveCount(const MeshChunk& record) noexcept
{
    return record.hasMaterials && record.materials.names.size() > 1 ? record.materials.names.size() : 1;
}

/// The mesh without its geometry: that comes with an instance, and is built afterwards otherwise.
std::unique_ptr<P_VirtualObject> createMesh(const MeshChunk& record, const TW_ObjectAnimation& object)
{
    if (!record.hasInstance)
    {
        return std::make_unique<P_VirtualObject>(static_cast<int>(getPrimitiveCount(record)));
    }
    const P_VirtualObject* const source = object.getMeshByNameCaseSensitive(record.instanceOf);
    if (!source)
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("Mesh \"%s\" is an instance of unknown mesh \"%s\"", record.name.c_str(), record.instanceOf.c_str()));
    }
    return std::make_unique<P_VirtualObject>(*source);
}

void hangUnderParent(P_VirtualObject& mesh, const MeshChunk& record, TW_ObjectAnimation& object)
{
    if (!record.hasParent)
    {
        mesh.addTo(&object);
        return;
    }
    if (P_VirtualObject* const parent = object.getMeshByNameCaseSensitive(record.parentName))
    {
        mesh.addTo(parent);
    }
    else if (TW_MeshParentNotFoundCallback* const callback = TW_ObjectAnimation::getMeshParentNotFoundCallback())
    {
        (*callback)(&mesh, record.parentName);
    }
}

/// Entries of a group of the vertex map; empty when the record has no map.
void getVertexMap(S_Vector<int>& map, const MeshChunk& record, std::size_t group)
{
    map.clear();
    if (record.hasVertexMap())
    {
        const unsigned int count = getGroupVertexCount(record, group);
        for (unsigned int j = 0; j < count; ++j)
        {
            map.push_back(record.getVertexMapEntry(group, j));
        }
    }
}

/// The material of a group; null when the object has none of that name.
const TW_Material* findMaterial(const TW_ObjectAnimation& object, const MeshChunk& record, std::size_t group)
{
    const TW_MaterialManager* const materials = record.hasMaterials ? object.getMaterialManager() : nullptr;
    return materials ? materials->findMaterial(record.materials.names[group]) : nullptr;
}

/// One primitive per material name, or a single one without names.
void buildPrimitives(P_VirtualObject& mesh, const MeshChunk& record, const TW_ObjectAnimation& object,
                     TW_MeshCallback& factory)
{
    const std::size_t count = record.hasMaterials ? record.materials.names.size() : 1;
    S_Vector<int> vertexMap;
    for (std::size_t g = 0; g < count; ++g)
    {
        const int primitive = static_cast<int>(g);
        const int flags = getVertexFormatFlags(findMaterial(object, record, g));
        getVertexMap(vertexMap, record, g);
        P_TriangleMesh* const geometry =
            factory.createTriangleMesh(&mesh, primitive, flags, static_cast<int>(getGroupTriangleCount(record, g)),
                                       static_cast<int>(getGroupVertexCount(record, g)), vertexMap);
        const TW_Material* const material = findMaterial(object, record, g);  // a host's factory may have exchanged it
        if (material)
        {
            applyMaterial(*mesh.getPrimitiveInstance(primitive), *material);
        }
        if (geometry)
        {
            writeGroup(*geometry, record, g, material);
        }
    }
}
}  // namespace

void TW_ObjectAnimationMeshCallback::operator()(MeshChunk& record)
{
    TW_LoadMeshCallback* const loadMesh = TW_ObjectAnimation::getLoadMeshCallback();
    if (loadMesh && !(*loadMesh)(record))
    {
        return;
    }
    if (!m_pObject)
    {
        throw TW_Exception_InvalidGeometry(S_STR("Mesh \"%s\" has no object to be added to", record.name.c_str()));
    }
    requireSound(record);
    std::unique_ptr<P_VirtualObject> mesh = createMesh(record, *m_pObject);
    hangUnderParent(*mesh, record, *m_pObject);
    mesh->setName(record.name);
    mesh->setMatrix(record.transform);
    if (!record.hasInstance)
    {
        buildPrimitives(*mesh, record, *m_pObject, *this);
    }
    // Meshes have volumes of their own, which follow their vertices.
    mesh->setEngineFlag(P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME, false);
    mesh->setEngineFlag(P_BaseObject::FLAG_AUTOMATIC_BOUNDING_VOLUME, true);
    m_pObject->addMesh(mesh.get());
    P_VirtualObject* const added = mesh.release();
    if (TW_MeshLoadedCallback* const meshLoaded = TW_ObjectAnimation::getMeshLoadedCallback())
    {
        (*meshLoaded)(m_pObject, added);
    }
}

P_TriangleMesh* TW_ObjectAnimationMeshCallback::createTriangleMesh(P_VirtualObject* mesh, int primitive,
                                                                   int vertexFormatFlags, int triangleCount,
                                                                   int vertexCount, const S_Vector<int>&)
{
    P_VertexFormat format;
    format.constructFromOldVertexFormat(static_cast<unsigned int>(vertexFormatFlags));
    P_TriangleMesh* const geometry = mesh->createTriangleMesh(primitive, nullptr, format);
    geometry->allocate(static_cast<unsigned int>(triangleCount), static_cast<unsigned int>(vertexCount), false);
    return geometry;
}
}  // namespace TW2
