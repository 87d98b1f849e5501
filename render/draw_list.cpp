#include "render/draw_list.h"

#include "render/surface_kind.h"

#include <platform/scene/camera.h>
#include <platform/scene/material.h>
#include <platform/scene/primitive_instance.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <map>
#include <tuple>

namespace TW2::render
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

/// Whether two primitives bring their texture coordinates to the same places.
bool haveSameTextureMatrices(const P_PrimitiveInstance& a, const P_PrimitiveInstance& b)
{
    for (int set = 0; set < static_cast<int>(SurfaceKind::mostSets); ++set)
    {
        const M_Matrix4Template<float>* first = a.getTextureMatrix(set);
        const M_Matrix4Template<float>* second = b.getTextureMatrix(set);
        if (first != second && !(first && second && *first == *second))
        {
            return false;
        }
    }
    return true;
}
}  // namespace

DrawList::DrawList() : m_firstMatrices(GLBuffer::create()) {}

void DrawList::collect(const P_Scene& scene, const P_Camera& camera, const View& view)
{
    m_vecItems.clear();
    m_matrices.clear();
    for (P_VirtualObject* mesh : scene.getVisibleMeshes())
    {
        addMesh(*mesh, camera, view);
    }
    sort();
    makeBatches();
}

void DrawList::addMesh(P_VirtualObject& mesh, const P_Camera& camera, const View& view)
{
    const std::size_t before = m_vecItems.size();
    const Matrix& world = mesh.getObjectToWorldMatrix();
    const float depth = camera.getViewMatrix().transformPoint(world.getTranslation()).z;
    const bool mirrored = world.determinant() < 0.0F;
    for (int i = 0; i < mesh.getPrimitiveCount(); ++i)
    {
        const P_PrimitiveInstance& instance = *mesh.getPrimitiveInstance(i);
        P_TriangleMesh* geometry = instance.getGeometry();
        if (instance.isVisible() && geometry && geometry->getDrawnCount() > 0)
        {
            const P_Material* material = instance.getMaterial();
            m_vecItems.push_back({&instance, geometry, material,
                                  material ? material->getSortPriority() : P_Material::defaultSortPriority, 0, 0, depth,
                                  material && material->isBlended(), mirrored, &mesh == view.m_pPickedMesh});
        }
    }
    if (m_vecItems.size() > before)
    {
        const unsigned int first = addMatrices(mesh);
        for (std::size_t i = before; i < m_vecItems.size(); ++i)
        {
            m_vecItems[i].m_uiFirstMatrix = first;
        }
    }
}

unsigned int DrawList::addMatrices(const P_VirtualObject& mesh)
{
    const Matrix& world = mesh.getObjectToWorldMatrix();
    const unsigned int first = m_matrices.add(world);
    std::size_t bones = 0;
    for (int i = 0; i < mesh.getPrimitiveCount(); ++i)
    {
        const P_TriangleMesh* geometry = mesh.getPrimitive(i);
        const P_SkinMesh* skin = geometry ? geometry->asSkinMesh() : nullptr;
        bones = skin ? std::max<std::size_t>(bones, skin->getBoneLimit()) : bones;
    }
    // A bone without a matrix does not move.
    for (std::size_t bone = 0; bone < bones; ++bone)
    {
        m_matrices.add(bone < mesh.getBoneMatrixCount() ? mesh.getBoneMatrix(bone) * world : world);
    }
    return first;
}

void DrawList::sort()
{
    using Look = std::tuple<const P_Material*, const P_TriangleMesh*, bool, bool>;
    std::map<Look, std::size_t> groups;
    for (Item& item : m_vecItems)
    {
        const Look look(item.m_pMaterial, item.m_pGeometry, item.m_bMirrored, item.m_bPicked);
        item.m_uiGroup = groups.try_emplace(look, groups.size()).first->second;
    }
    // Blended ones from far to near, over one another; opaque ones by look and from near to far: what is behind is
    // hidden before it costs anything.
    const auto place = [](const Item& item)
    {
        return std::tuple(item.m_uiPriority, item.m_bBlended, item.m_bBlended ? 0 : item.m_uiGroup,
                          item.m_bBlended ? -item.m_fDepth : item.m_fDepth);
    };
    std::stable_sort(m_vecItems.begin(), m_vecItems.end(),
                     [place](const Item& a, const Item& b) { return place(a) < place(b); });
}

void DrawList::makeBatches()
{
    m_vecBatches.clear();
    m_vecFirstMatrices.clear();
    const Item* before = nullptr;
    for (const Item& item : m_vecItems)
    {
        const bool joins = before && before->m_uiGroup == item.m_uiGroup && before->m_bBlended == item.m_bBlended &&
                           haveSameTextureMatrices(*before->m_pInstance, *item.m_pInstance);
        if (!joins)
        {
            const P_SkinMesh* skin = item.m_pGeometry->asSkinMesh();
            m_vecBatches.push_back({item.m_pInstance, item.m_pGeometry, skin ? skin->getSlotCount() : 0,
                                    item.m_bBlended, item.m_bMirrored, item.m_bPicked, m_vecFirstMatrices.size(), 0});
        }
        ++m_vecBatches.back().m_uiCount;
        m_vecFirstMatrices.push_back(item.m_uiFirstMatrix);
        before = &item;
    }
}

void DrawList::upload()
{
    m_matrices.upload();
    glBindBuffer(GL_ARRAY_BUFFER, m_firstMatrices.get());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(m_vecFirstMatrices.size() * sizeof(GLuint)),
                 m_vecFirstMatrices.data(), GL_STREAM_DRAW);
}
}  // namespace TW2::render
