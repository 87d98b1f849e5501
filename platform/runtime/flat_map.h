#pragma once

#include <platform/runtime/allocator.h>

#include <algorithm>
#include <cstddef>
#include <utility>

/// Small map kept as one sorted list: a look-up stays within a cache line or two, where a tree would walk through
/// memory. Inserting and erasing move what lies behind, so it suits maps that are filled once and asked often. Keys and
/// values are plain data.
template <typename Key, typename Value>
class S_FlatMap
{
public:
    /// What an iterator stands on.
    using Entry = std::pair<Key, Value>;

    /// The value of a key; null when there is none. Valid until the map changes.
    [[nodiscard]] const Value* find(const Key& key) const noexcept
    {
        const auto place = lowerBound(key);
        return place != m_vecEntries.end() && place->first == key ? &place->second : nullptr;
    }
    /// Whether there is an entry with that key.
    [[nodiscard]] bool contains(const Key& key) const noexcept { return find(key) != nullptr; }
    /// Number of entries.
    [[nodiscard]] std::size_t size() const noexcept { return m_vecEntries.size(); }
    /// The entries from the smallest key to the largest.
    [[nodiscard]] auto begin() const noexcept { return m_vecEntries.begin(); }
    /// Behind the largest key.
    [[nodiscard]] auto end() const noexcept { return m_vecEntries.end(); }

    /// Adds a key that is not there yet; false, and nothing changes, when it is. When memory runs out nothing has
    /// changed.
    bool emplace(const Key& key, const Value& value)
    {
        const auto place = lowerBound(key);
        if (place != m_vecEntries.end() && place->first == key)
        {
            return false;
        }
        m_vecEntries.insert(place, Entry(key, value));
        return true;
    }
    /// Nothing happens when the key is not there.
    void erase(const Key& key) noexcept
    {
        const auto place = lowerBound(key);
        if (place != m_vecEntries.end() && place->first == key)
        {
            m_vecEntries.erase(place);
        }
    }
    /// Drops all entries.
    void clear() noexcept { m_vecEntries.clear(); }
    /// Exchanges the entries of two maps.
    void swap(S_FlatMap& other) noexcept { m_vecEntries.swap(other.m_vecEntries); }

private:
    [[nodiscard]] typename S_Vector<Entry>::const_iterator lowerBound(const Key& key) const noexcept
    {
        return std::lower_bound(m_vecEntries.begin(), m_vecEntries.end(), key,
                                [](const Entry& entry, const Key& wanted) { return entry.first < wanted; });
    }

    S_Vector<Entry> m_vecEntries;
};
