#include "object/primitive_writer.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/material/material.h>

#include <platform/scene/primitive_instance.h>
#include <platform/scene/triangle_mesh.h>
#include <platform/scene/vertex_format.h>

#include <algorithm>

namespace TW2
{
namespace
{
constexpr float largestAlpha = 255.0f;

/// What a texture coordinate layer is filled from.
struct LayerSource
{
    static constexpr int solid = -1;  ///< (0, 0) everywhere
    static constexpr int unwritten = -2;

    int m_iSlot = unwritten;  ///< channel slot of the record, or one of the above
};
using LayerSources = LayerSource[P_VertexFormat::maximumTextureLayers];

/// A geometry that is open for writing as long as the scope lasts.
class GeometryLock
{
public:
    explicit GeometryLock(P_TriangleMesh& geometry) noexcept : m_geometry(geometry) { geometry.lock(); }
    ~GeometryLock() { m_geometry.unlock(); }
    GeometryLock(const GeometryLock&) = delete;
    GeometryLock& operator=(const GeometryLock&) = delete;

private:
    P_TriangleMesh& m_geometry;
};

/// The parts of a record have been checked against each other only when all are there.
bool isGeometryComplete(const MeshChunk& record) noexcept
{
    return record.hasVertices && record.hasFaces;
}

/// The slots are used up in order; the solid layer takes none, and neither does a layer whose slot has no coordinates
/// for the group.
unsigned int chooseSources(LayerSources& sources, const P_VertexFormat& format, const MeshChunk& record,
                           std::size_t group, const TW_Material& material)
{
    const unsigned int count = std::min(material.getTextureCoordinateLayerCount(), format.getTextureLayerCount());
    std::size_t slot = 0;
    for (unsigned int layer = 0; layer < count; ++layer)
    {
        if (material.hasSolidLayer() && static_cast<int>(layer) == material.getSolidLayerIndex())
        {
            sources[layer].m_iSlot = LayerSource::solid;
        }
        else if (slot < MeshChunk::sm_channelSlots && record.getCoordinateCount(slot, group) != 0)
        {
            sources[layer].m_iSlot = static_cast<int>(slot++);
        }
    }
    return count;
}

void writeLayers(P_VertexBuffer& vertices, const MeshChunk& record, std::size_t group, const TW_Material& material)
{
    LayerSources sources;
    const unsigned int layers = chooseSources(sources, vertices.getFormat(), record, group, material);
    for (unsigned int layer = 0; layer < layers; ++layer)
    {
        const int slot = sources[layer].m_iSlot;
        if (slot == LayerSource::unwritten)
        {
            continue;
        }
        for (unsigned int j = 0; j < vertices.getUsedCount(); ++j)
        {
            const M_Vector3Template<float> coordinate =
                slot == LayerSource::solid ? M_Vector3Template<float>()
                                           : record.getCoordinate(static_cast<std::size_t>(slot), group, j);
            vertices.setTextureCoordinate(j, layer, coordinate.x, coordinate.y);
        }
    }
}

void writeVertices(P_VertexBuffer& vertices, const MeshChunk& record, std::size_t group, const TW_Material* material)
{
    for (unsigned int j = 0; j < vertices.getUsedCount(); ++j)
    {
        vertices.setPosition(j, record.getPosition(group, j));
        vertices.setNormal(j, record.getNormal(group, j));
    }
    if (!material)
    {
        return;
    }
    writeLayers(vertices, record, group, *material);
    if (material->hasVertexAlpha() && vertices.getFormat().hasColor())
    {
        for (unsigned int j = 0; j < vertices.getUsedCount(); ++j)
        {
            vertices.setColorAlpha(j, material->getVertexAlpha() * largestAlpha);
        }
    }
}

void writeTriangles(P_IndexBuffer& triangles, const MeshChunk& record, std::size_t group)
{
    for (unsigned int t = 0; t < triangles.getUsedCount(); ++t)
    {
        triangles.setTriangle(t, record.getIndex(group, t, 0), record.getIndex(group, t, 1),
                              record.getIndex(group, t, 2));
    }
}
}  // namespace

int getVertexFormatFlags(const TW_Material* material) noexcept
{
    unsigned int flags = P_VertexFormat::POSITION | P_VertexFormat::NORMAL;
    if (!material)
    {
        return static_cast<int>(flags);
    }
    if (material->hasSolidLayer() || material->hasVertexAlpha())
    {
        flags |= P_VertexFormat::DIFFUSE_COLOR;
    }
    const unsigned int layers = material->getTextureCoordinateLayerCount();
    if (layers <= P_VertexFormat::maximumTextureLayers)
    {
        flags |= layers;
    }
    return static_cast<int>(flags);
}

void applyMaterial(P_PrimitiveInstance& primitive, const TW_Material& material)
{
    primitive.setMaterial(material.getMaterial());
    for (int k = 0; k < material.getTextureMatrixCount(); ++k)
    {
        primitive.setTextureMatrix(material.getTextureMatrixTextureLayer(k), material.getTextureMatrix(k));
    }
    if (material.hasInvisibleGeometry())
    {
        primitive.setVisible(false);
    }
}

void writeGroup(P_TriangleMesh& geometry, const MeshChunk& record, std::size_t group, const TW_Material* material)
{
    geometry.getIndexBuffer().setUsedCount(getGroupTriangleCount(record, group));
    geometry.setDrawnRange(0, 0);
    geometry.getVertexBuffer().setUsedCount(getGroupVertexCount(record, group));
    geometry.setDrawnRange(0, 0);
    const GeometryLock lock(geometry);
    writeVertices(geometry.getVertexBuffer(), record, group, material);
    writeTriangles(geometry.getIndexBuffer(), record, group);
}

unsigned int getGroupVertexCount(const MeshChunk& record, std::size_t group) noexcept
{
    return isGeometryComplete(record) && group < record.vertices.groupCounts.size() ? record.getVertexCount(group) : 0;
}

unsigned int getGroupTriangleCount(const MeshChunk& record, std::size_t group) noexcept
{
    return isGeometryComplete(record) && group < record.faces.groupCounts.size() ? record.getTriangleCount(group) : 0;
}
}  // namespace TW2
