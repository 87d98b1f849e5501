#include <platform/scene/primitive_instance.h>

#include <algorithm>
#include <utility>

P_PrimitiveInstance::P_PrimitiveInstance(const P_PrimitiveInstance& other)
    : m_pGeometry(other.m_pGeometry),
      m_pMaterial(other.m_pMaterial),
      m_bVisible(other.m_bVisible),
      m_vecTextureMatrices(other.m_vecTextureMatrices)
{
    if (m_pGeometry)
    {
        m_pGeometry->addReference();
    }
}

P_PrimitiveInstance::P_PrimitiveInstance(P_PrimitiveInstance&& other) noexcept
    : m_pGeometry(std::exchange(other.m_pGeometry, nullptr)),
      m_pMaterial(other.m_pMaterial),
      m_bVisible(other.m_bVisible),
      m_vecTextureMatrices(std::move(other.m_vecTextureMatrices))
{
}

P_PrimitiveInstance::~P_PrimitiveInstance()
{
    setGeometry(nullptr);
}

void P_PrimitiveInstance::setTextureMatrix(int layer, const M_Matrix4Template<float>& matrix)
{
    const auto place = std::find_if(m_vecTextureMatrices.begin(), m_vecTextureMatrices.end(),
                                    [layer](const TextureMatrix& entry) { return entry.m_iLayer == layer; });
    if (place != m_vecTextureMatrices.end())
    {
        place->m_matrix = matrix;
        return;
    }
    m_vecTextureMatrices.push_back({layer, matrix});
}

const M_Matrix4Template<float>* P_PrimitiveInstance::getTextureMatrix(int layer) const noexcept
{
    for (const TextureMatrix& entry : m_vecTextureMatrices)
    {
        if (entry.m_iLayer == layer)
        {
            return &entry.m_matrix;
        }
    }
    return nullptr;
}

void P_PrimitiveInstance::setGeometry(P_TriangleMesh* geometry) noexcept
{
    P_TriangleMesh* before = std::exchange(m_pGeometry, geometry);
    if ((!before || before->getVertexBuffer().getCapacity() == 0) && geometry &&
        geometry->getVertexBuffer().getCapacity() > 0)
    {
        P_TriangleMeshBase::countFill();
    }
    if (before)
    {
        before->releaseReference();
    }
}
