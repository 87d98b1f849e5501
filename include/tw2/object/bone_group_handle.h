#pragma once

#include <tw2/export.h>
#include <tw2/object/bone_handle.h>

#include <platform/runtime/allocator.h>

#include <cstddef>

class P_VirtualObject;

namespace TW2
{
class PosePlayer;
class TW_VirtualObject;

/// Some bones of an animated object. Every operation that takes a group (animating, cross-animating, freezing) touches
/// the meshes of the group only.
///
///     const TW_BoneHandle handles[] = {soldier.getBoneHandle("arm"), soldier.getBoneHandle("hand")};
///     TW_BoneGroupHandle arm(2, handles);
///     arm.attach(&soldier);
///     soldier.animateObject(WALK, time, nullptr);
///     soldier.animateObject(WAVE, time, &arm);
///
/// A group that is not attached contains no mesh, so operations given it change nothing. The group owns neither object
/// nor meshes: detach it before the object goes away.
class TW2_API TW_BoneGroupHandle : public S_Allocated
{
public:
    /// @name Life
    /// @{

    /// Not constructed: no handles.
    TW_BoneGroupHandle() noexcept;
    /// Copies `count` handles in order; contains no mesh before `attach`, whatever the handles are attached to. A count
    /// below 1 gives an empty group.
    TW_BoneGroupHandle(int count, const TW_BoneHandle* handles);
    /// Copies attachment included.
    TW_BoneGroupHandle(const TW_BoneGroupHandle& other);
    TW_BoneGroupHandle& operator=(const TW_BoneGroupHandle& other);
    ~TW_BoneGroupHandle();

    /// As the constructors; what the group was before is dropped. A failed one leaves the group not constructed.
    void construct(int count, const TW_BoneHandle* handles);
    void construct(const TW_BoneGroupHandle& other);
    void destruct() noexcept;
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Attachment
    /// @{

    /// Attaches every handle and adds its mesh to the group. Meshes of an object that the group was attached to before
    /// stay in it until `detach`.
    void attach(TW_VirtualObject* object);
    /// Detaches every handle; the group contains no mesh any more.
    void detach() noexcept;
    /// Whether the mesh belongs to the group.
    [[nodiscard]] bool hasMesh(P_VirtualObject* mesh) const { return m_setMeshes.find(mesh) != m_setMeshes.end(); }
    /// @}

    /// @name Handles, in the order given
    /// @{
    [[nodiscard]] int getTotalHandles() const noexcept { return static_cast<int>(m_vecHandles.size()); }
    /// Handle `i`, from 0 to `getTotalHandles()` - 1.
    [[nodiscard]] const TW_BoneHandle& getHandle(int i) const noexcept
    {
        return m_vecHandles[static_cast<std::size_t>(i)];
    }
    /// @}

private:
    friend class PosePlayer;

    /// A byte per mesh of a list, not 0 where the group has the mesh; made once per list and group, then handed out
    /// again. `listNumber` identifies the list: equal numbers, equal lists, in the whole process. Null when `count` is
    /// above the mesh count of every object that the group was attached to; then `hasMesh` answers.
    [[nodiscard]] const unsigned char* getMeshMask(unsigned long long listNumber, P_VirtualObject* const* meshes,
                                                   std::size_t count) const noexcept;

    bool m_bConstructed;
    S_Vector<TW_BoneHandle> m_vecHandles;
    S_Set<P_VirtualObject*> m_setMeshes;
    /// What `getMeshMask` hands out, for list number `m_uiMaskListNumber` (0: for none yet).
    mutable S_Vector<unsigned char> m_vecMeshMask;
    mutable unsigned long long m_uiMaskListNumber;
};
}  // namespace TW2
