#include <platform/runtime/allocator.h>
#include <platform/runtime/prefetch.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/transform_storage.h>

#include <algorithm>
#include <new>

namespace
{
using Matrix = P_TransformStorage::Matrix;

// Matrices begin a cache line.
constexpr std::size_t storageAlignment = S_CACHE_LINE;
constexpr std::size_t headerBytes =
    (sizeof(P_TransformStorage) + storageAlignment - 1) / storageAlignment * storageAlignment;
constexpr std::size_t pointerBytes = sizeof(P_BaseObject*);
constexpr std::size_t memberBytes = sizeof(int) + 2;
}  // namespace

P_TransformStorage* P_TransformStorage::create(std::size_t capacity, P_TransformBlock* block, Pointers pointers)
{
    const std::size_t place =
        2 * sizeof(Matrix) + (block ? memberBytes : 0) + (block && pointers == Pointers::Yes ? pointerBytes : 0);
    return new (S_Memory::allocate(headerBytes + capacity * place, storageAlignment))
        P_TransformStorage(capacity, block, pointers);
}

void P_TransformStorage::release(P_TransformStorage* storage) noexcept
{
    if (storage && --storage->m_iHolders == 0)
    {
        storage->~P_TransformStorage();
        S_Memory::release(storage, storageAlignment);
    }
}

/// All arrays behind this header, the widest elements first.
P_TransformStorage::P_TransformStorage(std::size_t capacity, P_TransformBlock* block, Pointers pointers) noexcept
    : m_pBlock(block), m_uiCapacity(static_cast<unsigned int>(capacity))
{
    m_pLocal = new (reinterpret_cast<unsigned char*>(this) + headerBytes) Matrix[2 * capacity];
    m_pWorld = m_pLocal + capacity;
    if (block)
    {
        void* next = m_pLocal + 2 * capacity;
        if (pointers == Pointers::Yes)
        {
            m_ppObjects = new (next) P_BaseObject* [capacity] {};
            next = m_ppObjects + capacity;
        }
        m_piParents = new (next) int[capacity];
        m_pStates = new (m_piParents + capacity) unsigned char[2 * capacity]{};
        std::fill_n(m_piParents, capacity, static_cast<int>(P_TransformBlock::PARENT_NONE));
    }
}
