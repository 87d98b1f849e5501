#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

#include <cstddef>

class P_BaseObject;
class P_TransformStorage;

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
/// An object that has left keeps its matrices where they are; that memory goes with the last of them.
class TW2_PLATFORM_API P_TransformBlock : public S_Allocated
{
public:
    /// Values of a state byte.
    enum State : unsigned char
    {
        STATE_VALID = 0,
        STATE_OUT_OF_DATE = 1  ///< the world matrix does not follow from the local matrices any more
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
    /// Lets all members go with the matrices that they have.
    ~P_TransformBlock();
    P_TransformBlock(const P_TransformBlock&) = delete;
    P_TransformBlock& operator=(const P_TransformBlock&) = delete;

    /// Releases the present members and takes in `count` objects, object i at index i, with the matrices they have.
    /// Playing is fastest when parents come before their children; any order works. A null leaves its place empty. An
    /// object that stands in the list twice throws P_SceneException. After an exception the block and the objects are
    /// as before.
    void adopt(P_BaseObject* const* objects, std::size_t count);
    /// Takes in one more object, at the next index, with the matrices it has; a member already throws P_SceneException.
    /// Constant time on average: like a vector the block makes room for more than it needs, and its matrices move when
    /// there is none left. After an exception all is as before.
    void append(P_BaseObject& object);
    /// Makes room for `count` places, so that appending up to that many needs no memory and moves nothing.
    void reserve(std::size_t count);
    /// The same, for an empty block and objects that will be made in it side by side: each `distance` bytes behind the
    /// one before, the first at `first`. As long as its objects lie like that, the block needs no pointers to them.
    void reserveRow(void* first, std::size_t distance, std::size_t count);
    /// Gives back room that no place uses. When there is no memory to do that with, nothing has changed.
    void shrinkToFit();
    /// Lets every member go.
    void release() noexcept;
    /// Lets one member go and leaves its place empty; an object that is not a member is left alone.
    void release(P_BaseObject& object) noexcept;

    /// Number of places, empty ones included.
    [[nodiscard]] unsigned int getCount() const noexcept { return m_uiCount; }
    /// Number of places that are not empty.
    [[nodiscard]] unsigned int getMemberCount() const noexcept { return m_uiMemberCount; }
    /// The member at an index below the count; null for an empty place.
    [[nodiscard]] P_BaseObject* getObject(unsigned int index) const noexcept
    {
        return m_piParents[index] == PARENT_NONE ? nullptr : locate(index);
    }
    /// Index of each member's parent, or a value of `Parent`.
    [[nodiscard]] const int* getParents() const noexcept { return m_piParents; }
    /// Whether every parent that is in the block stands before its children.
    [[nodiscard]] bool areParentsFirst() const noexcept { return m_uiOutOfOrder == 0; }
    /// @}

    /// @name Local matrices
    /// @{

    /// `getCount()` matrices, each relative to the member's parent; null for an empty block.
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
    /// The world matrices; all are valid after `updateWorldMatrices`.
    [[nodiscard]] const M_Matrix4x3Template<float>* getWorldMatrices() const noexcept { return m_pWorldMatrices; }
    /// @}

private:
    friend class P_BaseObject;

    /// Where a member is, or, where the place is empty, perhaps was.
    [[nodiscard]] P_BaseObject* locate(unsigned int index) const noexcept
    {
        return m_ppObjects ? m_ppObjects[index] : static_cast<P_BaseObject*>(getRowPlace(index));
    }
    [[nodiscard]] void* getRowPlace(unsigned int index) const noexcept
    {
        return m_pRow + std::size_t(index) * m_uiRowDistance;
    }
    void setObject(unsigned int index, P_BaseObject* object) noexcept;
    void useStorage(P_TransformStorage* storage) noexcept;
    void makeRoom(const P_BaseObject& object);
    void move(std::size_t capacity);
    /// Takes in an object that is being constructed and has no matrices yet; the local matrix is the identity.
    void takeNew(P_BaseObject& object);
    void takeIn(P_BaseObject& object, unsigned int index) noexcept;
    void join(unsigned int index) noexcept;
    void letGo(P_BaseObject& object) noexcept;
    void setParent(unsigned int index, int parent) noexcept;
    void countOutsideChild(unsigned int index, bool comes) noexcept;
    [[nodiscard]] unsigned int countOutsideChildren(const P_BaseObject& object) const noexcept;
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
    /// Null while the members lie in a row.
    P_BaseObject** m_ppObjects = nullptr;
    unsigned char* m_pRow = nullptr;
    std::size_t m_uiRowDistance = 0;
    /// Per place: how many children of the member are not in the block, as far as that can be counted in a byte: at its
    /// limit it stays until the place is empty.
    unsigned char* m_puiOutsideChildren = nullptr;
    P_TransformStorage* m_pStorage = nullptr;
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
