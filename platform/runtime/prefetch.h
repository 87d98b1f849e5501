#pragma once

#include <platform/compiler.h>

#include <cstddef>
#include <cstdint>

/// @name Fetching memory ahead
/// Asks the processor for the cache line at `offset` bytes behind `base`, for reading or for writing, without waiting
/// for it. A hint that never fails: the address may lie outside of everything. Other compilers than gcc and clang make
/// nothing of it.
/// @{
inline constexpr std::size_t S_CACHE_LINE = 64;  ///< bytes that are fetched at a time

/// For reading.
inline void S_prefetch(const void* base, std::size_t offset = 0) noexcept
{
    S_PREFETCH(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(base) + offset));
}
/// For writing.
inline void S_prefetchForWriting(const void* base, std::size_t offset = 0) noexcept
{
    S_PREFETCH_FOR_WRITING(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(base) + offset));
}
/// @}
