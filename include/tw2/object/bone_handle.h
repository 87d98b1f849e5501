#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

class P_VirtualObject;

namespace TW2
{
class TW_VirtualObject;

/// One mesh (a bone) of an animated object, by name and mesh index; attached to an object it gives direct access to
/// that mesh's matrices, for example to place a weapon in a hand or to turn a head after the animation.
///
///     TW_BoneHandle hand = soldier.getBoneHandle("hand");
///     hand.attach(&soldier);
///     ... soldier.animateObject(...) ...
///     weapon.setMatrix(hand.getWorldMatrix());
///
/// The handle owns nothing: detach it before the object goes away. It can be attached to another object of the same
/// skeleton at any time.
class TW2_API TW_BoneHandle : public S_Allocated
{
public:
    /// @name Life
    /// @{

    /// Not constructed: empty name, index 0, not attached.
    TW_BoneHandle() noexcept { initializeMembers(); }
    /// Names the mesh at a mesh index (0 and up); not attached. A negative index names no mesh.
    TW_BoneHandle(const S_String& name, int index) : TW_BoneHandle() { construct(name, index); }
    /// The same with a string of the host's.
    template <TW_ForeignString Name>
    TW_BoneHandle(const Name& name, int index) : TW_BoneHandle(asString(name), index)
    {
    }
    /// Copies attachment included.
    TW_BoneHandle(const TW_BoneHandle& other) : TW_BoneHandle() { construct(other); }
    /// Copies attachment included; a handle assigned to itself stays as it is.
    TW_BoneHandle& operator=(const TW_BoneHandle& other);

    /// As the constructors; what the handle was before is dropped. A failed one leaves the handle not constructed.
    void construct(const S_String& name, int index);
    /// The same with a string of the host's.
    template <TW_ForeignString Name>
    void construct(const Name& name, int index)
    {
        construct(asString(name), index);
    }
    /// A copy, attachment included.
    void construct(const TW_BoneHandle& other);
    /// Lets the object go and forgets the bone.
    void destruct() noexcept { initializeMembers(); }
    /// False before the first `construct` and after `destruct`.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Attachment
    /// @{

    /// Binds the handle to the object's mesh at the bone index; an object that has no such mesh gives no bone object.
    /// Null detaches.
    void attach(TW_VirtualObject* object);
    /// Lets the object go; nothing happens to a handle that is not attached.
    void detach() noexcept;
    /// What the handle is attached to; null when it is not.
    [[nodiscard]] TW_VirtualObject* getTWParentObject() const noexcept { return m_pParentObject; }
    /// The mesh; null when the handle is not attached or the object has no such mesh.
    [[nodiscard]] P_VirtualObject* getBoneObject() const noexcept { return m_pBoneObject; }
    /// Mesh index of the bone.
    [[nodiscard]] unsigned int getBoneIndex() const noexcept { return m_uiBoneIndex; }
    /// As it was given when the handle was made.
    [[nodiscard]] const S_String& getBoneName() const noexcept { return m_strBoneName; }
    /// @}

    /// @name Matrices of the bone
    /// The handle is attached, which debug builds assert. Without a bone object they are identities; what is written
    /// into one goes nowhere.
    /// @{

    /// The local matrix.
    [[nodiscard]] const M_Matrix4x3Template<float>& getMatrix() const noexcept;
    /// The local matrix for writing; the world matrices of the bone and of everything below it are marked as out of
    /// date before it is returned.
    [[nodiscard]] M_Matrix4x3Template<float>& accessMatrix() noexcept;
    /// The world matrix, computed first when it is out of date.
    [[nodiscard]] const M_Matrix4x3Template<float>& getWorldMatrix() const noexcept;
    /// @}

private:
    void initializeMembers() noexcept;

    bool m_bConstructed;
    P_VirtualObject* m_pBoneObject;
    TW_VirtualObject* m_pParentObject;
    unsigned int m_uiBoneIndex;
    S_String m_strBoneName;
};
}  // namespace TW2
