#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

#include <cstddef>

class P_BaseObject;

/// Contiguous store for the matrices of many scene objects that move together, such as the bones of one character.
///
/// Each object of the block keeps working as every scene object does; only its local matrix, its world matrix and its
/// state byte live here, side by side with those of the others: local[n], world[n] (48 bytes each, on 16-byte
/// boundaries) and state[n]. So a whole pose is written, marked and multiplied out in a few passes over the block
/// without touching the objects.
///
///     block.adopt(meshes.data(), meshes.size());
///     M_Matrix4x3Template<float>* local = block.accessLocalMatrices();
///     ... write local[0 .. n-1] ...
///     block.invalidateAll();
///     block.updateWorldMatrices();
///     ... read block.getWorldMatrices()[0 .. n-1] ...
///
/// The block does not own the objects. An object leaves when it is destroyed, when another block adopts it or when it
/// is released; its place then stays empty and the other objects keep their indices. Destroying the block releases all.
class TW2_PLATFORM_API P_TransformBlock : public S_Allocated
{
public:
    /// Bits of a state byte.
    enum State : unsigned char
    {
        STATE_VALID = 0,
        STATE_WORLD_OUT_OF_DATE = 1,  ///< the world matrix does not follow from the local matrices any more
        STATE_INVERSE_OUT_OF_DATE =
            2,  ///< the inverse world matrix does not belong to the world matrix; set with bit 0
        STATE_OUT_OF_DATE = 3
    };

    /// Parents of a block's objects that are not places in the block.
    enum Parent : int
    {
        PARENT_OUTSIDE = -1,  ///< the object hangs under nothing, or under something that is not in the block
        PARENT_NONE = -2      ///< the place is empty
    };

    /// @name Members
    /// @{
    P_TransformBlock() noexcept = default;
    ~P_TransformBlock();
    P_TransformBlock(const P_TransformBlock&) = delete;
    P_TransformBlock& operator=(const P_TransformBlock&) = delete;

    /// Releases the present members and takes in `count` objects, object i at index i, with the matrices they have.
    /// Playing is fastest when parents come before their children; any order works. A null leaves its place empty. An
    /// object that stands in the list twice throws P_SceneException. After an exception the block and the objects are
    /// as before.
    void adopt(P_BaseObject* const* objects, std::size_t count);
    /// Gives every member its matrices back.
    void release() noexcept;
    /// Gives one member its matrices back and leaves its place empty; an object that is not a member is left alone.
    void release(P_BaseObject& object) noexcept;

    /// Number of places, empty ones included.
    [[nodiscard]] unsigned int getCount() const noexcept { return m_uiCount; }
    /// Number of places that are not empty.
    [[nodiscard]] unsigned int getMemberCount() const noexcept { return m_uiMemberCount; }
    /// The member at an index below the count; null for an empty place.
    [[nodiscard]] P_BaseObject* getObject(unsigned int index) const noexcept { return m_ppObjects[index]; }
    /// Index of each member's parent, or a value of `Parent`.
    [[nodiscard]] const int* getParents() const noexcept { return m_piParents; }
    /// Whether every parent that is in the block stands before its children.
    [[nodiscard]] bool areParentsFirst() const noexcept { return m_uiOutOfOrder == 0; }
    /// @}

    /// @name Local matrices
    /// @{
    [[nodiscard]] const M_Matrix4x3Template<float>* getLocalMatrices() const noexcept { return m_pLocalMatrices; }
    /// For writing; call one of the `invalidate` operations afterwards for what was written.
    [[nodiscard]] M_Matrix4x3Template<float>* accessLocalMatrices() noexcept { return m_pLocalMatrices; }

    /// Fetches what writing a pose begins with into the near cache, without waiting for it. In a crowd, whose matrices
    /// do not fit into the near caches, calling it before finding out what to write saves much of the wait.
    void prefetch() const noexcept;
    /// Marks every member, and everything that hangs below one, as out of date.
    void invalidateAll() noexcept;
    /// Marks the members at `count` indices, and everything that hangs below them, as out of date.
    void invalidate(const unsigned int* indices, std::size_t count) noexcept;
    /// The same for every index i with mask[i] not 0; `mask` has `getCount()` entries.
    void invalidateMasked(const unsigned char* mask) noexcept;
    /// A value that changes whenever a member is marked as out of date or leaves, and never returns to an earlier one.
    /// A caller that remembers it after `updateWorldMatrices` can tell that nothing in the block has moved since.
    [[nodiscard]] unsigned long long getChangeCount() const noexcept { return m_uiChangeCount; }
    /// @}

    /// @name World matrices
    /// @{

    /// Computes the world matrices that are out of date, one product each, in one pass. The bits are those that the
    /// objects would have computed one by one. Does nothing when nothing has changed since the last call.
    void updateWorldMatrices() noexcept;
    /// The world matrices; entry i is valid when its state byte says so, all are after `updateWorldMatrices`.
    [[nodiscard]] const M_Matrix4x3Template<float>* getWorldMatrices() const noexcept { return m_pWorldMatrices; }
    /// The state bytes.
    [[nodiscard]] const unsigned char* getStates() const noexcept { return m_pStates; }
    /// @}

private:
    friend class P_BaseObject;

    struct Storage;

    void takeIn(P_BaseObject* const* objects) noexcept;
    void giveBack(P_BaseObject& object) noexcept;
    void setParent(unsigned int index, int parent) noexcept;
    void countOutsideChild(unsigned int index, bool comes) noexcept;
    void changed() noexcept;
    void invalidateMember(unsigned int index) noexcept;
    void spreadMarks() noexcept;
    [[nodiscard]] bool markBelowTop(unsigned int index, unsigned long long change) noexcept;
    void markChildren(unsigned int first) noexcept;
    void invalidateOutsideChildren() noexcept;
    void updateBelowOutside(unsigned int index) noexcept;
    void updateOutOfOrder() noexcept;
    /// A child was hung under `parent` or leaves it.
    static void childCame(const P_BaseObject& parent, P_BaseObject& child) noexcept;
    static void childLeft(const P_BaseObject& parent, P_BaseObject& child) noexcept;

    M_Matrix4x3Template<float>* m_pLocalMatrices = nullptr;
    M_Matrix4x3Template<float>* m_pWorldMatrices = nullptr;
    int* m_piParents = nullptr;
    unsigned char* m_pStates = nullptr;
    P_BaseObject** m_ppObjects = nullptr;
    /// Per place: how many children of the member are not in the block.
    unsigned int* m_puiOutsideChildren = nullptr;
    void* m_pStorage = nullptr;
    unsigned int m_uiCount = 0;
    unsigned int m_uiMemberCount = 0;
    unsigned int m_uiOutsideChildTotal = 0;
    unsigned long long m_uiChangeCount = 0;
    unsigned long long m_uiUpdatedCount = 0;
    /// Members that stand before their parent.
    unsigned int m_uiOutOfOrder = 0;
    /// Members whose parent is outside.
    unsigned int m_uiTops = 0;
};
