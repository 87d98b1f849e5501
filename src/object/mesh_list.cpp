#include <tw2/object/mesh_list.h>

#include <platform/scene/transform_block.h>

namespace TW2
{
void TW_MeshList::reserveRow(std::size_t count, P_TransformBlock& block)
{
    m_pRow =
        static_cast<P_VirtualObject*>(S_Memory::allocate(count * sizeof(P_VirtualObject), alignof(P_VirtualObject)));
    block.reserveRow(m_pRow, sizeof(P_VirtualObject), count);
}

void TW_MeshList::destroy() noexcept
{
    for (; !m_vecOthers.empty(); m_vecOthers.pop_back())
    {
        m_vecOthers.back()->remove();
        delete m_vecOthers.back();
    }
    for (; m_uiRowCount > 0; --m_uiRowCount)
    {
        P_VirtualObject& mesh = m_pRow[m_uiRowCount - 1];
        mesh.remove();
        mesh.~P_VirtualObject();
    }
    S_Memory::release(m_pRow, alignof(P_VirtualObject));
    m_pRow = nullptr;
}
}  // namespace TW2
