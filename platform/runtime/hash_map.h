#pragma once

#include <platform/runtime/allocator.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>

/// Hash of a name, letter by letter. Takes strings and C strings alike, so that a look-up makes no copy.
struct S_NameHash
{
    /// Containers look names up by a view, without a copy.
    using is_transparent = void;
    /// Upper and lower case differ.
    [[nodiscard]] std::size_t operator()(std::string_view name) const noexcept
    {
        return std::hash<std::string_view>()(name);
    }
};

/// Equality that goes with S_NameHash.
struct S_NameEqual
{
    /// Containers look names up by a view, without a copy.
    using is_transparent = void;
    /// Upper and lower case differ.
    [[nodiscard]] bool operator()(std::string_view a, std::string_view b) const noexcept { return a == b; }
};

/// A letter of 'A' to 'Z' as its small one, everything else as it is.
[[nodiscard]] constexpr char toLowerCase(char letter) noexcept
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Hash of a name without regard to the case of its letters.
struct S_CaselessNameHash
{
    /// Containers look names up by a view, without a copy.
    using is_transparent = void;
    /// A to Z count as a to z, whatever the locale.
    [[nodiscard]] std::size_t operator()(std::string_view name) const noexcept
    {
        std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a
        for (const char letter : name)
        {
            hash = (hash ^ static_cast<unsigned char>(toLowerCase(letter))) * 0x100000001B3U;
        }
        return static_cast<std::size_t>(hash);
    }
};

/// Equality that goes with S_CaselessNameHash.
struct S_CaselessNameEqual
{
    /// Containers look names up by a view, without a copy.
    using is_transparent = void;
    /// A to Z count as a to z, whatever the locale.
    [[nodiscard]] bool operator()(std::string_view a, std::string_view b) const noexcept
    {
        if (a.size() != b.size())
        {
            return false;
        }
        for (std::size_t i = 0; i < a.size(); ++i)
        {
            if (toLowerCase(a[i]) != toLowerCase(b[i]))
            {
                return false;
            }
        }
        return true;
    }
};

/// @name Hash maps
/// @{

/// Values by key, in no order.
template <typename K, typename V, typename Hash = std::hash<K>, typename Equal = std::equal_to<K>>
using S_HashMap = std::unordered_map<K, V, Hash, Equal, S_Allocator<std::pair<const K, V>>>;
/// From a name as it is.
template <typename V>
using S_NameMap = S_HashMap<S_String, V, S_NameHash, S_NameEqual>;
/// From a name without regard to the case of its letters.
template <typename V>
using S_CaselessNameMap = S_HashMap<S_String, V, S_CaselessNameHash, S_CaselessNameEqual>;
/// @}
