#include <tw2/object/bone_handle.h>
#include <tw2/object/virtual_object.h>

#include <platform/scene/virtual_object.h>

#include <cassert>

namespace TW2
{
namespace
{
// What a handle without a bone object shows and lets a host write to; made anew at every use, so that nothing written
// into it is ever seen.
M_Matrix4x3Template<float>& noBoneMatrix() noexcept
{
    thread_local M_Matrix4x3Template<float> s_matrix;
    s_matrix = M_Matrix4x3Template<float>::identity();
    return s_matrix;
}
}  // namespace

TW_BoneHandle& TW_BoneHandle::operator=(const TW_BoneHandle& other)
{
    construct(other);
    return *this;
}

void TW_BoneHandle::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_pBoneObject = nullptr;
    m_pParentObject = nullptr;
    m_uiBoneIndex = 0;
    m_strBoneName.clear();
}

void TW_BoneHandle::construct(const S_String& name, int index)
{
    if (&name == &m_strBoneName)
    {
        detach();
    }
    else
    {
        destruct();
        m_strBoneName = name;
    }
    m_uiBoneIndex = static_cast<unsigned int>(index);
    m_bConstructed = true;
}

void TW_BoneHandle::construct(const TW_BoneHandle& other)
{
    if (&other != this)
    {
        construct(other.m_strBoneName, static_cast<int>(other.m_uiBoneIndex));
        m_pBoneObject = other.m_pBoneObject;
        m_pParentObject = other.m_pParentObject;
        m_bConstructed = other.m_bConstructed;
    }
}

void TW_BoneHandle::attach(TW_VirtualObject* object)
{
    m_pParentObject = object;
    m_pBoneObject = object && m_uiBoneIndex < object->getTotalMeshes() ? object->getMesh(m_uiBoneIndex) : nullptr;
}

void TW_BoneHandle::detach() noexcept
{
    m_pParentObject = nullptr;
    m_pBoneObject = nullptr;
}

const M_Matrix4x3Template<float>& TW_BoneHandle::getMatrix() const noexcept
{
    assert(m_pParentObject && "attach the handle first");
    return m_pBoneObject ? m_pBoneObject->getMatrix() : noBoneMatrix();
}

M_Matrix4x3Template<float>& TW_BoneHandle::accessMatrix() noexcept
{
    assert(m_pParentObject && "attach the handle first");
    if (!m_pBoneObject)
    {
        return noBoneMatrix();
    }
    m_pBoneObject->invalidateMatrices();
    return m_pBoneObject->accessMatrix();
}

const M_Matrix4x3Template<float>& TW_BoneHandle::getWorldMatrix() const noexcept
{
    assert(m_pParentObject && "attach the handle first");
    return m_pBoneObject ? m_pBoneObject->getObjectToWorldMatrix() : noBoneMatrix();
}
}  // namespace TW2
