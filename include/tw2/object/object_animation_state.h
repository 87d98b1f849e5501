#pragma once

#include <tw2/export.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

namespace TW2
{
class PosePlayer;
class PoseSource;
class TW_BoneGroupHandle;
class TW_ObjectAnimation;
class TW_ObjectAnimationLODs;
class TW_VertexAnimation;
class TW_VertexAnimationLODs;

/// A frozen pose: a local matrix per mesh of an animated object, and whether that matrix was frozen.
///
///     TW_ObjectAnimationState pose(soldier);
///     soldier.freezeAnimationState(&pose, nullptr);             // the pose at the moment of a change
///     soldier.crossAnimateObject(&pose, 0.7F, RUN, time, nullptr);  // 70 % of it, 30 % of the new animation
///
/// A state belongs to the host and fits every object with the same number of meshes. With objects of fewer meshes it
/// works on those that there are; the rest of the state stays as it was.
class TW2_API TW_ObjectAnimationState : public S_Allocated
{
public:
    /// @name Life
    /// @{

    /// Not constructed: no meshes.
    TW_ObjectAnimationState() noexcept { initializeMembers(); }
    /// Identity matrices, nothing frozen.
    explicit TW_ObjectAnimationState(unsigned int meshCount) : TW_ObjectAnimationState() { construct(meshCount); }
    /// The same, for as many meshes as the object has.
    explicit TW_ObjectAnimationState(const TW_ObjectAnimation& object) : TW_ObjectAnimationState()
    {
        construct(object);
    }
    /// For the bones of a skinned character.
    explicit TW_ObjectAnimationState(const TW_VertexAnimation& object) : TW_ObjectAnimationState()
    {
        construct(object);
    }
    /// For the level in use, or the last one when none is.
    explicit TW_ObjectAnimationState(const TW_ObjectAnimationLODs& object) : TW_ObjectAnimationState()
    {
        construct(object);
    }
    /// For the bones of all levels.
    explicit TW_ObjectAnimationState(const TW_VertexAnimationLODs& object) : TW_ObjectAnimationState()
    {
        construct(object);
    }
    TW_ObjectAnimationState(const TW_ObjectAnimationState& other) : TW_ObjectAnimationState() { construct(other); }
    /// A copy of both lists; a state assigned to itself stays as it is.
    TW_ObjectAnimationState& operator=(const TW_ObjectAnimationState& other);

    /// As the constructors; what the state was before is dropped. A failed one leaves the state not constructed.
    void construct(unsigned int meshCount);
    void construct(const TW_ObjectAnimation& object);
    void construct(const TW_ObjectAnimation* object);
    void construct(const TW_VertexAnimation& object);
    void construct(const TW_ObjectAnimationLODs& object);
    void construct(const TW_VertexAnimationLODs& object);
    void construct(const TW_ObjectAnimationState& other);
    /// Empties both lists.
    void destruct() noexcept { initializeMembers(); }
    /// False before the first `construct` and after `destruct`.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Content, by mesh index
    /// For reading and writing; keep both of one length.
    /// @{

    /// One local matrix per mesh index.
    [[nodiscard]] S_Vector<M_Matrix4x3Template<float>>& accessMatrixVector() noexcept { return m_vecMatrices; }
    /// One per mesh index: whether the matrix was frozen.
    [[nodiscard]] S_Vector<bool>& accessStateFrozenVector() noexcept { return m_vecStateFrozen; }
    /// @}

protected:
    friend class PosePlayer;
    friend class PoseSource;
    friend class TW_ObjectAnimation;
    friend class TW_ObjectAnimationLODs;
    friend class TW_VertexAnimation;
    friend class TW_VertexAnimationLODs;

    /// The stored matrix of a mesh, frozen or not; the identity for an index outside the state.
    [[nodiscard]] const M_Matrix4x3Template<float>& getMatrix(int meshIndex) const noexcept;
    /// Stores the local matrices of the object's meshes and marks them as frozen. With a group: only those of the
    /// group; all others keep their matrix and are marked as not frozen.
    void freeze(TW_ObjectAnimation* object, TW_BoneGroupHandle* group);
    /// Writes the frozen matrices of the group's meshes (null: of all) times `weight` into the meshes; with `add` on
    /// top of the matrices that the meshes have.
    void restore(TW_ObjectAnimation* object, TW_BoneGroupHandle* group, float weight, bool add) const;
    void restore(TW_ObjectAnimation* object, float weight, bool add) const { restore(object, nullptr, weight, add); }

private:
    void initializeMembers() noexcept;

    bool m_bConstructed;
    S_Vector<M_Matrix4x3Template<float>> m_vecMatrices;
    S_Vector<bool> m_vecStateFrozen;
};
}  // namespace TW2
