#include "object/primitive_writer.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/material/material.h>

#include <platform/runtime/rollback.h>
#include <platform/scene/primitive_instance.h>
#include <platform/scene/triangle_mesh.h>
#include <platform/scene/vertex_format.h>

#include <algorithm>

namespace TW2
{
namespace
{
constexpr float largestAlpha = 255.0F;

/// The parts of a record have been checked against each other only when all are there.
bool isGeometryComplete(const MeshChunk& record) noexcept
{
    return record.hasVertices && record.hasFaces;
}

/// The slots are used up in order. The solid layer takes none, and neither does a layer whose slot has no coordinates
/// for the group, which stays as it is.
void writeLayers(P_VertexBuffer& vertices, const MeshChunk& record, std::size_t group, const TW_Material& material)
{
    const unsigned int layers =
        std::min(material.getTextureCoordinateLayerCount(), vertices.getFormat().getTextureLayerCount());
    std::size_t slot = 0;
    for (unsigned int layer = 0; layer < layers; ++layer)
    {
        const bool solid = material.hasSolidLayer() && static_cast<int>(layer) == material.getSolidLayerIndex();
        if (!solid && (slot == MeshChunk::channelSlots || record.getCoordinateCount(slot, group) == 0))
        {
            continue;
        }
        for (unsigned int j = 0; j < vertices.getUsedCount(); ++j)
        {
            const M_Vector3Template<float> coordinate =
                solid ? M_Vector3Template<float>() : record.getCoordinate(slot, group, j);
            vertices.setTextureCoordinate(j, layer, coordinate.x, coordinate.y);
        }
        slot += solid ? 0 : 1;
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
    geometry.lock();
    const S_Rollback unlock([&geometry]() noexcept { geometry.unlock(); });
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
