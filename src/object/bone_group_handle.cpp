#include <tw2/object/bone_group_handle.h>
#include <tw2/object/virtual_object.h>

#include <platform/scene/virtual_object.h>

#include <algorithm>

namespace TW2
{
TW_BoneGroupHandle::TW_BoneGroupHandle() noexcept : m_bConstructed(false), m_uiMaskListNumber(0) {}

TW_BoneGroupHandle::TW_BoneGroupHandle(int count, const TW_BoneHandle* handles) : TW_BoneGroupHandle()
{
    construct(count, handles);
}

TW_BoneGroupHandle::TW_BoneGroupHandle(const TW_BoneGroupHandle& other) : TW_BoneGroupHandle()
{
    construct(other);
}

TW_BoneGroupHandle& TW_BoneGroupHandle::operator=(const TW_BoneGroupHandle& other)
{
    construct(other);
    return *this;
}

TW_BoneGroupHandle::~TW_BoneGroupHandle() = default;

void TW_BoneGroupHandle::construct(int count, const TW_BoneHandle* handles)
{
    S_Vector<TW_BoneHandle> previous;  // `handles` may be this group's own: they live until they are copied
    previous.swap(m_vecHandles);
    destruct();
    m_vecHandles.assign(handles, handles + std::max(count, 0));
    m_bConstructed = true;
}

void TW_BoneGroupHandle::construct(const TW_BoneGroupHandle& other)
{
    if (&other == this)
    {
        return;
    }
    destruct();
    try
    {
        m_vecHandles = other.m_vecHandles;
        m_setMeshes = other.m_setMeshes;
        m_vecMeshMask = other.m_vecMeshMask;
    }
    catch (...)
    {
        destruct();
        throw;
    }
    m_uiMaskListNumber = other.m_uiMaskListNumber;
    m_bConstructed = true;
}

void TW_BoneGroupHandle::destruct() noexcept
{
    m_bConstructed = false;
    m_vecHandles.clear();
    m_setMeshes.clear();
    m_vecMeshMask.clear();
    m_uiMaskListNumber = 0;
}

void TW_BoneGroupHandle::attach(TW_VirtualObject* object)
{
    m_uiMaskListNumber = 0;
    if (object && m_vecMeshMask.size() < object->getTotalMeshes())
    {
        m_vecMeshMask.resize(object->getTotalMeshes());
    }
    for (TW_BoneHandle& handle : m_vecHandles)
    {
        handle.attach(object);
        if (P_VirtualObject* mesh = handle.getBoneObject())
        {
            m_setMeshes.insert(mesh);
        }
    }
}

void TW_BoneGroupHandle::detach() noexcept
{
    for (TW_BoneHandle& handle : m_vecHandles)
    {
        handle.detach();
    }
    m_setMeshes.clear();
    m_uiMaskListNumber = 0;
}

const unsigned char* TW_BoneGroupHandle::getMeshMask(unsigned long long listNumber, P_VirtualObject* const* meshes,
                                                     std::size_t count) const noexcept
{
    if (count > m_vecMeshMask.size())
    {
        return nullptr;
    }
    if (m_uiMaskListNumber != listNumber)
    {
        std::transform(meshes, meshes + count, m_vecMeshMask.begin(),
                       [this](P_VirtualObject* mesh) { return static_cast<unsigned char>(hasMesh(mesh)); });
        m_uiMaskListNumber = listNumber;
    }
    return m_vecMeshMask.data();
}
}  // namespace TW2
