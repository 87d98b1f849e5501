#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/runtime/counter.h>

#include <cstddef>

class P_BaseObject;
class P_TransformBlock;

/// Where matrices of scene objects lie, side by side: those of one object, or of the members of a P_TransformBlock.
///
/// An object that leaves its block keeps its matrices here, so that leaving needs no memory. So the storage of a block
/// lives until the block and every object that has left it let go.
class TW2_PLATFORM_API P_TransformStorage
{
public:
    using Matrix = M_Matrix4x3Template<float>;

    /// Whether a block's storage has room for pointers to the members.
    enum class Pointers
    {
        Yes,
        No
    };

    /// Room for `capacity` objects, held once, by the caller; a block's also for what a block knows of its members.
    static P_TransformStorage* create(std::size_t capacity, P_TransformBlock* block, Pointers pointers = Pointers::Yes);
    /// Takes one holder away; the last one frees the storage.
    static void release(P_TransformStorage* storage) noexcept;

    P_TransformStorage(const P_TransformStorage&) = delete;
    P_TransformStorage& operator=(const P_TransformStorage&) = delete;

    Matrix* m_pLocal = nullptr;
    Matrix* m_pWorld = nullptr;
    /// @name Of a block
    /// @{
    P_TransformBlock* m_pBlock;
    P_BaseObject** m_ppObjects = nullptr;  ///< null where there is no room for them
    int* m_piParents = nullptr;
    unsigned char* m_pStates = nullptr;
    /// @}
    /// The change count of objects here that are in no block.
    unsigned long long m_uiChangeCount = 0;
    S_Counter<int> m_iHolders{1};
    unsigned int m_uiCapacity;

    /// Of a block, the last of its arrays: a byte per member.
    [[nodiscard]] unsigned char* getOutsideChildren() const noexcept { return m_pStates + m_uiCapacity; }

private:
    P_TransformStorage(std::size_t capacity, P_TransformBlock* block, Pointers pointers) noexcept;
    ~P_TransformStorage() = default;
};
