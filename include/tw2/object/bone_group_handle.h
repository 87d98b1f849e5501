#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/object/bone_handle.h>

#include <platform/runtime/allocator.h>

#include <cstddef>

class P_VirtualObject;

namespace TW2
{
class PosePlayer;
class TW_MeshList;
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
/// A group that is not attached contains no mesh, so operations given it change nothing; debug builds say so once on
/// the verbose log. The group owns neither object nor meshes: detach it before the object goes away.
class TW2_API TW_BoneGroupHandle : public S_Allocated
{
public:
    /// @name Life
    /// @{

    /// Not constructed: no handles.
    TW_BoneGroupHandle() noexcept = default;
    /// Copies `count` handles in order; contains no mesh before `attach`, whatever the handles are attached to. A count
    /// below 1, or null, gives an empty group.
    TW_BoneGroupHandle(int count, const TW_BoneHandle* handles) : TW_BoneGroupHandle() { construct(count, handles); }
    /// Copies attachment included.
    TW_BoneGroupHandle(const TW_BoneGroupHandle& other) : TW_BoneGroupHandle() { construct(other); }
    /// Copies attachment included; a group assigned to itself stays as it is.
    TW_BoneGroupHandle& operator=(const TW_BoneGroupHandle& other);

    /// A bone (any letter case) and everything below it, attached to the object. Of levels of detail it holds the bones
    /// of the level that `getMesh` answers for. Throws TW_Exception_BoneNotFound.
    [[nodiscard]] static TW_BoneGroupHandle below(TW_VirtualObject& object, const char* bone);
    /// The same with a string of the host's.
    template <TW_String Bone>
    [[nodiscard]] static TW_BoneGroupHandle below(TW_VirtualObject& object, const Bone& bone)
    {
        return below(object, bone.c_str());
    }

    /// As the constructors; what the group was before is dropped. A failed one leaves the group not constructed.
    void construct(int count, const TW_BoneHandle* handles);
    void construct(const TW_BoneGroupHandle& other);
    /// Lets the object and the handles go.
    void destruct() noexcept;
    /// False before the first `construct` and after `destruct`.
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

    /// Handles of the group, whether or not the object has such bones.
    [[nodiscard]] int getTotalHandles() const noexcept { return static_cast<int>(m_vecHandles.size()); }
    /// Handle `i`, from 0 to `getTotalHandles()` - 1.
    [[nodiscard]] const TW_BoneHandle& getHandle(int i) const noexcept
    {
        return m_vecHandles[static_cast<std::size_t>(i)];
    }
    /// @}

private:
    friend class PosePlayer;

    /// A byte per mesh, not 0 where the group has the mesh. Null unless the meshes are those of the object that the
    /// group was attached to last; then `hasMesh` answers.
    [[nodiscard]] const unsigned char* getMeshMask(const TW_MeshList& meshes) const noexcept;

    bool m_bConstructed = false;
    S_Vector<TW_BoneHandle> m_vecHandles;
    S_Set<P_VirtualObject*> m_setMeshes;
    /// All meshes of the object that the group was attached to last, and which of them are in the set.
    S_Vector<P_VirtualObject*> m_vecObjectMeshes;
    S_Vector<unsigned char> m_vecMeshMask;
};
}  // namespace TW2
