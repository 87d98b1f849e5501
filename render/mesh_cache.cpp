#include "render/mesh_cache.h"

#include <platform/scene/skin_mesh.h>
#include <platform/scene/triangle_mesh.h>

#include <cstddef>
#include <vector>

namespace TW2::render
{
namespace
{
constexpr unsigned int cornersPerTriangle = 3;

void fill(GLBuffer& buffer, GLenum target, std::size_t bytes, const void* data)
{
    if (buffer.get() == 0)
    {
        buffer = GLBuffer::create();
    }
    glBindBuffer(target, buffer.get());
    glBufferData(target, static_cast<GLsizeiptr>(bytes), data, GL_STATIC_DRAW);
}

const void* offset(std::size_t bytes)
{
    return reinterpret_cast<const void*>(bytes);
}

void describe(GLuint attribute, int components, unsigned int stride, unsigned int first)
{
    glEnableVertexAttribArray(attribute);
    glVertexAttribPointer(attribute, components, GL_FLOAT, GL_FALSE, static_cast<GLsizei>(stride * sizeof(float)),
                          offset(first * sizeof(float)));
}
}  // namespace

MeshCache::~MeshCache()
{
    for (auto& [mesh, entry] : m_mapMeshes)
    {
        mesh->releaseReference();
    }
}

void MeshCache::upload(Entry& entry, const P_TriangleMesh& mesh)
{
    const P_VertexFormat& format = mesh.getFormat();
    const unsigned int stride = format.getStride();
    entry.m_array = GLVertexArray::create();
    glBindVertexArray(entry.m_array.get());

    const P_VertexBuffer& vertices = mesh.getVertexBuffer();
    fill(entry.m_vertices, GL_ARRAY_BUFFER, std::size_t{vertices.getCapacity()} * stride * sizeof(float),
         vertices.getData());
    if (format.hasPosition())
    {
        describe(ATTRIBUTE_POSITION, 3, stride, format.getPositionOffset());
    }
    if (format.hasNormal())
    {
        describe(ATTRIBUTE_NORMAL, 3, stride, format.getNormalOffset());
    }
    if (format.hasColor())
    {
        describe(ATTRIBUTE_COLOR, 4, stride, format.getColorOffset());
    }
    for (unsigned int layer = 0; layer < format.getTextureLayerCount(); ++layer)
    {
        describe(ATTRIBUTE_COORDINATES + layer, 2, stride, format.getTextureOffset(layer));
    }
    glEnableVertexAttribArray(ATTRIBUTE_FIRST_MATRIX);
    glVertexAttribDivisor(ATTRIBUTE_FIRST_MATRIX, 1);
    if (const P_SkinMesh* skin = mesh.asSkinMesh(); skin && skin->getSlotCount() > 0)
    {
        uploadBones(entry, *skin);
    }

    const P_IndexBuffer& indices = mesh.getIndexBuffer();
    fill(entry.m_indices, GL_ELEMENT_ARRAY_BUFFER,
         std::size_t{indices.getCapacity()} * cornersPerTriangle * sizeof(unsigned int), indices.getData());
    entry.m_bLinesCurrent = false;
    entry.m_uiRevision = mesh.getRevision();
}

void MeshCache::uploadBones(Entry& entry, const P_SkinMesh& mesh)
{
    const unsigned int slots = mesh.getSlotCount();
    const std::size_t values = std::size_t{mesh.getVertexBuffer().getCapacity()} * slots;
    constexpr GLsizei packed = 0;
    fill(entry.m_bones, GL_ARRAY_BUFFER, values * sizeof(unsigned int), mesh.getBoneIndexData());
    glEnableVertexAttribArray(ATTRIBUTE_BONES);
    glVertexAttribIPointer(ATTRIBUTE_BONES, static_cast<GLint>(slots), GL_UNSIGNED_INT, packed, nullptr);
    fill(entry.m_weights, GL_ARRAY_BUFFER, values * sizeof(float), mesh.getBoneWeightData());
    glEnableVertexAttribArray(ATTRIBUTE_WEIGHTS);
    glVertexAttribPointer(ATTRIBUTE_WEIGHTS, static_cast<GLint>(slots), GL_FLOAT, GL_FALSE, packed, nullptr);
}

void MeshCache::uploadLines(Entry& entry, const P_TriangleMesh& mesh)
{
    const unsigned int* corners = mesh.getIndexBuffer().getData();
    const std::size_t triangles = mesh.getIndexBuffer().getCapacity();
    std::vector<unsigned int> ends;
    ends.reserve(2 * cornersPerTriangle * triangles);
    for (std::size_t triangle = 0; triangle < triangles; ++triangle, corners += cornersPerTriangle)
    {
        ends.insert(ends.end(), {corners[0], corners[1], corners[1], corners[2], corners[2], corners[0]});
    }
    fill(entry.m_lines, GL_ELEMENT_ARRAY_BUFFER, ends.size() * sizeof(unsigned int), ends.data());
    entry.m_bLinesCurrent = true;
}

void MeshCache::draw(const DrawList::Batch& batch, const GLBuffer& firstMatrices, bool lines)
{
    P_TriangleMesh& mesh = *batch.m_pGeometry;
    const auto [item, isNew] = m_mapMeshes.try_emplace(&mesh);
    if (isNew)
    {
        mesh.addReference();
    }
    Entry& entry = item->second;
    if (isNew || entry.m_uiRevision != mesh.getRevision())
    {
        upload(entry, mesh);
    }
    glBindVertexArray(entry.m_array.get());
    glBindBuffer(GL_ARRAY_BUFFER, firstMatrices.get());
    glVertexAttribIPointer(ATTRIBUTE_FIRST_MATRIX, 1, GL_UNSIGNED_INT, 0, offset(batch.m_uiFirst * sizeof(GLuint)));
    // What the mesh does not carry: no normal, opaque white, no coordinates. What has no bones is not asked for them.
    glVertexAttrib3f(ATTRIBUTE_NORMAL, 0.0F, 0.0F, 0.0F);
    glVertexAttrib4f(ATTRIBUTE_COLOR, 255.0F, 255.0F, 255.0F, 255.0F);
    for (unsigned int layer = 0; layer < P_VertexFormat::maximumTextureLayers; ++layer)
    {
        glVertexAttrib2f(ATTRIBUTE_COORDINATES + layer, 0.0F, 0.0F);
    }
    if (lines && !entry.m_bLinesCurrent)
    {
        uploadLines(entry, mesh);
    }
    const unsigned int indices = lines ? 2 * cornersPerTriangle : cornersPerTriangle;
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, lines ? entry.m_lines.get() : entry.m_indices.get());
    glDrawElementsInstanced(lines ? GL_LINES : GL_TRIANGLES, static_cast<GLsizei>(indices * mesh.getDrawnCount()),
                            GL_UNSIGNED_INT, offset(std::size_t{mesh.getFirstDrawn()} * indices * sizeof(unsigned int)),
                            static_cast<GLsizei>(batch.m_uiCount));
}

void MeshCache::sweep()
{
    std::erase_if(m_mapMeshes,
                  [](const auto& item)
                  {
                      const bool last = item.first->getReferenceCount() == 1;
                      if (last)
                      {
                          item.first->releaseReference();
                      }
                      return last;
                  });
}
}  // namespace TW2::render
