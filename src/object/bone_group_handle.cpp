#include <tw2/object/bone_group_handle.h>
#include <tw2/object/mesh_list.h>
#include <tw2/object/virtual_object.h>

#include <platform/runtime/rollback.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>

namespace TW2
{
TW_BoneGroupHandle& TW_BoneGroupHandle::operator=(const TW_BoneGroupHandle& other)
{
    construct(other);
    return *this;
}

TW_BoneGroupHandle TW_BoneGroupHandle::below(TW_VirtualObject& object, const char* bone)
{
    const P_VirtualObject* const top = object.getMesh(object.getBoneHandle(bone).getBoneIndex());
    S_Vector<TW_BoneHandle> handles;
    for (unsigned int i = 0; i < object.getTotalMeshes(); ++i)
    {
        const P_BaseObject* above = object.getMesh(i);
        while (above && above != top)
        {
            above = above->getParent();
        }
        if (above)
        {
            handles.emplace_back(object.getMesh(i)->getName(), static_cast<int>(i));
        }
    }
    TW_BoneGroupHandle group(static_cast<int>(handles.size()), handles.data());
    group.attach(&object);
    return group;
}

void TW_BoneGroupHandle::construct(int count, const TW_BoneHandle* handles)
{
    S_Vector<TW_BoneHandle> previous;  // `handles` may be this group's own: they live until they are copied
    previous.swap(m_vecHandles);
    destruct();
    if (handles && count > 0)
    {
        m_vecHandles.assign(handles, handles + count);
    }
    m_bConstructed = true;
}

void TW_BoneGroupHandle::construct(const TW_BoneGroupHandle& other)
{
    if (&other == this)
    {
        return;
    }
    destruct();
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_vecHandles = other.m_vecHandles;
    m_setMeshes = other.m_setMeshes;
    m_vecObjectMeshes = other.m_vecObjectMeshes;
    m_vecMeshMask = other.m_vecMeshMask;
    m_bConstructed = other.m_bConstructed;
    rollback.keep();
}

void TW_BoneGroupHandle::destruct() noexcept
{
    m_bConstructed = false;
    m_vecHandles.clear();
    m_setMeshes.clear();
    m_vecObjectMeshes.clear();
    m_vecMeshMask.clear();
}

void TW_BoneGroupHandle::attach(TW_VirtualObject* object)
{
    m_vecObjectMeshes.clear();
    for (TW_BoneHandle& handle : m_vecHandles)
    {
        handle.attach(object);
        if (P_VirtualObject* mesh = handle.getBoneObject())
        {
            m_setMeshes.insert(mesh);
        }
    }
    const unsigned int count = object ? object->getTotalMeshes() : 0;
    m_vecMeshMask.resize(count);
    m_vecObjectMeshes.reserve(count);
    for (unsigned int i = 0; i < count; ++i)
    {
        P_VirtualObject* const mesh = object->getMesh(i);
        m_vecMeshMask[i] = static_cast<unsigned char>(hasMesh(mesh));
        m_vecObjectMeshes.push_back(mesh);
    }
}

void TW_BoneGroupHandle::detach() noexcept
{
    for (TW_BoneHandle& handle : m_vecHandles)
    {
        handle.detach();
    }
    m_setMeshes.clear();
    m_vecObjectMeshes.clear();
}

const unsigned char* TW_BoneGroupHandle::getMeshMask(const TW_MeshList& meshes) const noexcept
{
    const bool isSame = std::equal(meshes.begin(), meshes.end(), m_vecObjectMeshes.begin(), m_vecObjectMeshes.end());
    return isSame ? m_vecMeshMask.data() : nullptr;
}
}  // namespace TW2
