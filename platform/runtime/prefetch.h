#pragma once

#include <cstddef>
#include <cstdint>

/// @name Fetching memory ahead
/// Asks the processor for the cache line at `offset` bytes behind `base`, for reading or for writing, without waiting
/// for it. A hint that never fails: the address may lie outside of everything. Other compilers than gcc and clang make
/// nothing of it.
/// @{
inline constexpr std::size_t S_CACHE_LINE = 64;

inline void S_prefetch([[maybe_unused]] const void* base, [[maybe_unused]] std::size_t offset = 0) noexcept
{
#if defined(__GNUC__)
    __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(base) + offset), 0);
#endif
}
inline void S_prefetchForWriting([[maybe_unused]] const void* base, [[maybe_unused]] std::size_t offset = 0) noexcept
{
#if defined(__GNUC__)
    __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(base) + offset), 1);
#endif
}
/// @}
