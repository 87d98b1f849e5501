#include <platform/runtime/str.h>
#include <platform/runtime/system.h>
#include <platform/scene/bounds.h>
#include <platform/scene/context.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/virtual_object.h>

#include <utility>

namespace
{
constexpr G_FColor s_normalColor{0.0f, 255.0f, 255.0f};

std::size_t checkPrimitiveCount(int count)
{
    if (count < 0)
    {
        throw P_SceneException(S_STR("A mesh cannot have %d primitives", count));
    }
    return static_cast<std::size_t>(count);
}
}  // namespace

P_VirtualObject::P_VirtualObject() : P_VirtualObject(0) {}

P_VirtualObject::P_VirtualObject(int primitiveCount)
    : P_BaseObject(Kind::Mesh), m_vecPrimitives(checkPrimitiveCount(primitiveCount))
{
}

P_VirtualObject::P_VirtualObject(const P_VirtualObject& other)
    : P_BaseObject(other, Kind::Mesh), m_vecPrimitives(other.m_vecPrimitives)
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
    const auto* mesh = dynamic_cast<const P_VirtualObject*>(&other);
    if (mesh == this)
    {
        return;
    }
    if (!mesh)
    {
        P_BaseObject::duplicate(other);
        return;
    }
    S_Vector<P_PrimitiveInstance> primitives(mesh->m_vecPrimitives);
    for (P_PrimitiveInstance& primitive : primitives)
    {
        if (primitive.getGeometry())
        {
            primitive.setGeometry(primitive.getGeometry()->clone());
        }
    }
    P_BaseObject::duplicate(other);
    m_vecPrimitives = std::move(primitives);
    m_vecBoneMatrices.clear();
}

void P_VirtualObject::dump(bool details) const
{
    P_BaseObject::dump(details);
    for (int i = 0; i < getPrimitiveCount(); ++i)
    {
        const P_TriangleMesh* mesh = getPrimitive(i);
        Sys.verbose("  primitive %d: %u triangles, %u vertices, format 0x%X\n", i,
                    mesh ? mesh->getIndexBuffer().getUsedCount() : 0u,
                    mesh ? mesh->getVertexBuffer().getUsedCount() : 0u,
                    mesh ? mesh->getFormat().getOldVertexFormat() : 0u);
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

P_TriangleMesh* P_VirtualObject::getPrimitive(int primitive) const noexcept
{
    const P_PrimitiveInstance* instance = getPrimitiveInstance(primitive);
    return instance ? instance->getGeometry() : nullptr;
}

const P_PrimitiveInstance* P_VirtualObject::getPrimitiveInstance(int primitive) const noexcept
{
    return primitive >= 0 && primitive < getPrimitiveCount() ? &m_vecPrimitives[static_cast<std::size_t>(primitive)]
                                                             : nullptr;
}

P_PrimitiveInstance* P_VirtualObject::getPrimitiveInstance(int primitive) noexcept
{
    return const_cast<P_PrimitiveInstance*>(static_cast<const P_VirtualObject*>(this)->getPrimitiveInstance(primitive));
}

P_TriangleMesh* P_VirtualObject::createTriangleMesh(int primitive, P_Material* material, const P_VertexFormat& format)
{
    P_PrimitiveInstance& instance = m_vecPrimitives[checkPrimitive(primitive)];
    auto* mesh = new P_TriangleMesh(format);
    instance.setGeometry(mesh);
    instance.setMaterial(material);
    return mesh;
}

P_SkinMesh* P_VirtualObject::createSkinMesh(int primitive, P_Material* material, const P_VertexFormat& format)
{
    P_PrimitiveInstance& instance = m_vecPrimitives[checkPrimitive(primitive)];
    auto* mesh = new P_SkinMesh(format);
    instance.setGeometry(mesh);
    instance.setMaterial(material);
    return mesh;
}

void P_VirtualObject::setBoneMatrices(const S_Vector<const M_Matrix4x3Template<float>*>& matrices)
{
    m_vecBoneMatrices = matrices;
}

M_Vector3Template<float> P_VirtualObject::getVertexPosition(int primitive, unsigned int vertex) const noexcept
{
    const P_TriangleMesh* mesh = getPrimitive(primitive);
    const P_SkinMesh* skin = mesh->asSkinMesh();
    return skin ? skin->getSkinnedPosition(vertex, m_vecBoneMatrices.data(), m_vecBoneMatrices.size())
                : mesh->getVertexBuffer().getPosition(vertex);
}

void P_VirtualObject::addToBounds(P_Bounds& bounds, const M_Matrix4x3Template<float>& transform) const noexcept
{
    for (int primitive = 0; primitive < getPrimitiveCount(); ++primitive)
    {
        const P_TriangleMesh* mesh = getPrimitive(primitive);
        const unsigned int vertices = mesh ? mesh->getVertexBuffer().getUsedCount() : 0;
        for (unsigned int vertex = 0; vertex < vertices; ++vertex)
        {
            bounds.add(transform.transformPoint(getVertexPosition(primitive, vertex)));
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
                skin ? skin->getSkinnedNormal(vertex, m_vecBoneMatrices.data(), m_vecBoneMatrices.size())
                     : mesh->getVertexBuffer().getNormal(vertex);
            context->addDebugLine(world.transformPoint(from), world.transformPoint(from + normal), s_normalColor);
        }
    }
}
