#include <platform/runtime/str.h>
#include <platform/runtime/system.h>
#include <platform/scene/bounds.h>
#include <platform/scene/context.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <utility>

namespace
{
constexpr G_FColor normalColor{0.0F, 255.0F, 255.0F};

std::size_t checkPrimitiveCount(int count)
{
    if (count < 0)
    {
        throw P_SceneException(S_STR("A mesh cannot have %d primitives", count));
    }
    return static_cast<std::size_t>(count);
}

bool areSideBySide(const S_Vector<const M_Matrix4x3Template<float>*>& matrices)
{
    return matrices.front() &&
           std::adjacent_find(matrices.begin(), matrices.end(),
                              [](const M_Matrix4x3Template<float>* a, const M_Matrix4x3Template<float>* b)
                              { return a + 1 != b; }) == matrices.end();
}
}  // namespace

P_VirtualObject::P_VirtualObject() : P_VirtualObject(0) {}

P_VirtualObject::P_VirtualObject(int primitiveCount) : P_BaseObject(Kind::Mesh)
{
    if (const std::size_t count = checkPrimitiveCount(primitiveCount))
    {
        accessShown().m_vecPrimitives.resize(count);
    }
}

P_VirtualObject::P_VirtualObject(const P_VirtualObject& other) : P_BaseObject(other, Kind::Mesh), m_pShown(share(other))
{
}

P_VirtualObject::P_VirtualObject(const P_VirtualObject& other, P_TransformBlock& block)
    : P_BaseObject(other, Kind::Mesh, block), m_pShown(share(other))
{
}

P_VirtualObject::~P_VirtualObject() = default;

P_Context* P_VirtualObject::getContext() const
{
    return getStoredContext();
}

P_BaseObject::ObjectType P_VirtualObject::getType() const
{
    return ObjectType::Mesh;
}

const char* P_VirtualObject::getObjectType() const
{
    return "P_VirtualObject";
}

void P_VirtualObject::duplicate(const P_BaseObject& other)
{
    const P_VirtualObject* mesh = other.asMesh();
    if (mesh == this)
    {
        return;
    }
    if (!mesh)
    {
        P_BaseObject::duplicate(other);
        return;
    }
    S_Handle<Shown> shown;
    if (mesh->getPrimitiveCount() > 0)
    {
        shown = S_Handle<Shown>(new Shown);
        shown->m_vecPrimitives = S_Vector<P_PrimitiveInstance>(mesh->m_pShown->m_vecPrimitives);
        for (P_PrimitiveInstance& primitive : shown->m_vecPrimitives)
        {
            if (primitive.getGeometry())
            {
                primitive.setGeometry(primitive.getGeometry()->clone());
            }
        }
    }
    P_BaseObject::duplicate(other);
    m_pShown.swap(shown);
    updateIdle();
}

void P_VirtualObject::dump(bool details) const
{
    P_BaseObject::dump(details);
    for (int i = 0; i < getPrimitiveCount(); ++i)
    {
        const P_TriangleMesh* mesh = getPrimitive(i);
        Sys.verbose("  primitive %d: %u triangles, %u vertices, format 0x%X\n", i,
                    mesh ? mesh->getIndexBuffer().getUsedCount() : 0U,
                    mesh ? mesh->getVertexBuffer().getUsedCount() : 0U,
                    mesh ? mesh->getFormat().getOldVertexFormat() : 0U);
    }
}

std::size_t P_VirtualObject::checkPrimitive(int primitive) const
{
    if (primitive < 0 || primitive >= getPrimitiveCount())
    {
        throw P_SceneException(
            S_STR("Mesh \"%s\" has no primitive %d among %d", getName().c_str(), primitive, getPrimitiveCount()));
    }
    return static_cast<std::size_t>(primitive);
}

S_Handle<P_VirtualObject::Shown> P_VirtualObject::share(const P_VirtualObject& other)
{
    if (other.getBoneMatrixCount() == 0)
    {
        return other.m_pShown;
    }
    S_Handle<Shown> shown(new Shown);
    shown->m_vecPrimitives = S_Vector<P_PrimitiveInstance>(other.m_pShown->m_vecPrimitives);
    return shown;
}

/// What may be changed, since nobody shares it.
P_VirtualObject::Shown& P_VirtualObject::accessShown()
{
    if (!m_pShown.isOnlyHolder())
    {
        S_Handle<Shown> own(new Shown);
        if (m_pShown)
        {
            own->m_vecPrimitives = S_Vector<P_PrimitiveInstance>(m_pShown->m_vecPrimitives);
        }
        m_pShown.swap(own);
    }
    return *m_pShown;
}

P_TriangleMesh* P_VirtualObject::getPrimitive(int primitive) const noexcept
{
    const P_PrimitiveInstance* instance = getPrimitiveInstance(primitive);
    return instance ? instance->getGeometry() : nullptr;
}

bool P_VirtualObject::isTakenForEmpty() const noexcept
{
    return !m_pShown || std::all_of(m_pShown->m_vecPrimitives.begin(), m_pShown->m_vecPrimitives.end(),
                                    [](const P_PrimitiveInstance& primitive)
                                    { return !primitive.getGeometry() || primitive.getGeometry()->isTakenForEmpty(); });
}

const P_PrimitiveInstance* P_VirtualObject::getPrimitiveInstance(int primitive) const noexcept
{
    return primitive >= 0 && primitive < getPrimitiveCount()
               ? &m_pShown->m_vecPrimitives[static_cast<std::size_t>(primitive)]
               : nullptr;
}

P_PrimitiveInstance* P_VirtualObject::getPrimitiveInstance(int primitive)
{
    return primitive >= 0 && primitive < getPrimitiveCount()
               ? &accessShown().m_vecPrimitives[static_cast<std::size_t>(primitive)]
               : nullptr;
}

P_TriangleMesh* P_VirtualObject::createTriangleMesh(int primitive, P_Material* material, const P_VertexFormat& format)
{
    const std::size_t place = checkPrimitive(primitive);
    P_PrimitiveInstance& instance = accessShown().m_vecPrimitives[place];
    auto* mesh = new P_TriangleMesh(format);
    instance.setGeometry(mesh);
    instance.setMaterial(material);
    updateIdle();
    return mesh;
}

P_SkinMesh* P_VirtualObject::createSkinMesh(int primitive, P_Material* material, const P_VertexFormat& format)
{
    const std::size_t place = checkPrimitive(primitive);
    P_PrimitiveInstance& instance = accessShown().m_vecPrimitives[place];
    auto* mesh = new P_SkinMesh(format);
    instance.setGeometry(mesh);
    instance.setMaterial(material);
    updateIdle();
    return mesh;
}

void P_VirtualObject::setBoneMatrices(const S_Vector<const M_Matrix4x3Template<float>*>& matrices)
{
    if (matrices.empty() && getBoneMatrixCount() == 0)
    {
        return;
    }
    Shown& shown = accessShown();
    if (!matrices.empty() && areSideBySide(matrices))
    {
        shown.m_boneMatrices = P_BoneMatrices(matrices.front(), matrices.size());
        S_Vector<const M_Matrix4x3Template<float>*>().swap(shown.m_vecBonePointers);
        return;
    }
    shown.m_vecBonePointers = matrices;
    shown.m_boneMatrices = P_BoneMatrices(shown.m_vecBonePointers.data(), shown.m_vecBonePointers.size());
}

M_Vector3Template<float> P_VirtualObject::getVertexPosition(int primitive, unsigned int vertex) const noexcept
{
    const P_TriangleMesh* mesh = getPrimitive(primitive);
    const P_SkinMesh* skin = mesh->asSkinMesh();
    return skin ? skin->getSkinnedPosition(vertex, getBoneMatrices()) : mesh->getVertexBuffer().getPosition(vertex);
}

void P_VirtualObject::addToBounds(P_Bounds& bounds, const M_Matrix4x3Template<float>& transform) const noexcept
{
    const P_BoneMatrices bones = getBoneMatrices();
    for (int primitive = 0; primitive < getPrimitiveCount(); ++primitive)
    {
        if (const P_TriangleMesh* mesh = getPrimitive(primitive))
        {
            mesh->addToBounds(bounds, transform, bones);
        }
    }
}

void P_VirtualObject::vertexNormalVisualization()
{
    P_Context* context = getContext();
    if (!context)
    {
        return;
    }
    const M_Matrix4x3Template<float>& world = getObjectToWorldMatrix();
    for (int primitive = 0; primitive < getPrimitiveCount(); ++primitive)
    {
        const P_TriangleMesh* mesh = getPrimitive(primitive);
        if (!mesh || !mesh->getFormat().hasNormal())
        {
            continue;
        }
        const P_SkinMesh* skin = mesh->asSkinMesh();
        for (unsigned int vertex = 0; vertex < mesh->getVertexBuffer().getUsedCount(); ++vertex)
        {
            const M_Vector3Template<float> from = getVertexPosition(primitive, vertex);
            const M_Vector3Template<float> normal =
                skin ? skin->getSkinnedNormal(vertex, getBoneMatrices()) : mesh->getVertexBuffer().getNormal(vertex);
            context->addDebugLine(world.transformPoint(from), world.transformPoint(from + normal), normalColor);
        }
    }
}
