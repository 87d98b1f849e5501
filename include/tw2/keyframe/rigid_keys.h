#pragma once

#include <tw2/export.h>
#include <tw2/keyframe/index_iterator.h>
#include <tw2/keyframe/keyframe_matrix.h>

#include <platform/runtime/allocator.h>

#include <cstddef>
#include <initializer_list>

namespace TW2
{
class PackedKeys;

/// The values of a compact track: reads and is filled like a vector of TW_KeyframeMatrix.
///
/// The library may pack the keys of an animation's tracks together once they are filled; values that are read then come
/// from there, bit by bit the same. Changing a list of packed keys gives it keys of its own first.
class TW2_API TW_RigidKeys
{
public:
    /// Walks the keys in their order, by value.
    using Iterator = TW_IndexIterator<TW_RigidKeys, TW_KeyframeMatrix>;

    TW_RigidKeys() noexcept = default;
    /// These keys, in this order.
    TW_RigidKeys(std::initializer_list<TW_KeyframeMatrix> keys) : m_vecOwn(keys) {}
    /// Keys of its own, equal to the other's.
    TW_RigidKeys(const TW_RigidKeys& other) : m_vecOwn(other.toVector()) {}
    /// Takes over the other's keys.
    TW_RigidKeys& operator=(TW_RigidKeys other) noexcept
    {
        swap(other);
        return *this;
    }
    ~TW_RigidKeys() { clear(); }

    /// @name Reading
    /// @{

    /// Number of keys.
    [[nodiscard]] std::size_t size() const noexcept { return m_pPacked ? m_uiPackedCount : m_vecOwn.size(); }
    /// Whether there is no key.
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    /// Key 0 to `size()` - 1, by value.
    [[nodiscard]] TW_KeyframeMatrix operator[](std::size_t i) const noexcept;
    /// The same; throws std::out_of_range for a key that there is not.
    [[nodiscard]] TW_KeyframeMatrix at(std::size_t i) const;
    /// The first key.
    [[nodiscard]] Iterator begin() const noexcept { return {*this, 0}; }
    /// Behind the last key.
    [[nodiscard]] Iterator end() const noexcept { return {*this, size()}; }
    /// The first key; there must be one.
    [[nodiscard]] TW_KeyframeMatrix front() const noexcept { return (*this)[0]; }
    /// The last key; there must be one.
    [[nodiscard]] TW_KeyframeMatrix back() const noexcept { return (*this)[size() - 1]; }
    /// @}

    /// @name Changing
    /// Each throws when memory runs out; nothing has changed then.
    /// @{

    /// Key 0 to `size()` - 1, for writing.
    [[nodiscard]] TW_KeyframeMatrix& operator[](std::size_t i) { return accessOwn()[i]; }
    /// The same; throws std::out_of_range for a key that there is not.
    [[nodiscard]] TW_KeyframeMatrix& at(std::size_t i) { return accessOwn().at(i); }
    /// The first key, for writing.
    [[nodiscard]] TW_KeyframeMatrix* begin() { return accessOwn().data(); }
    /// Behind the last key.
    [[nodiscard]] TW_KeyframeMatrix* end() { return begin() + size(); }
    /// Drops keys at the end, or adds default keys there.
    void resize(std::size_t count) { accessOwn().resize(count); }
    /// Adds a key at the end.
    void push_back(const TW_KeyframeMatrix& key) { accessOwn().push_back(key); }
    /// Drops all keys; never throws.
    void clear() noexcept;
    /// Exchanges the keys of two tracks; never throws.
    void swap(TW_RigidKeys& other) noexcept;
    /// @}

private:
    friend class PackedKeys;
    friend struct TrackAccess;

    [[nodiscard]] S_Vector<TW_KeyframeMatrix> toVector() const;
    S_Vector<TW_KeyframeMatrix>& accessOwn();

    S_Vector<TW_KeyframeMatrix> m_vecOwn;
    const PackedKeys* m_pPacked = nullptr;  ///< held; null: `m_vecOwn` has the keys
    unsigned int m_uiPackedCount = 0;
    unsigned int m_uiLane = 0;  ///< which of the packed tracks
};
}  // namespace TW2
