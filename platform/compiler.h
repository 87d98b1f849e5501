#pragma once

/// What differs between compilers and processors. No other file asks which one it is compiled by, or uses what only one
/// of them understands.

/// @name What is refused
/// Better a sentence now than other poses later.
/// @{
#if defined(__i386__) || defined(_M_IX86)
#error \
    "TW2 does not support 32-bit x86: its x87 unit rounds floats otherwise than every other machine does. Build for x86-64."
#endif
#if defined(__BYTE_ORDER__) && defined(__ORDER_LITTLE_ENDIAN__)
#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error \
    "TW2 does not support big-endian processors: its files are read as they lie in memory, least significant byte first."
#endif
#endif
#if defined(__FAST_MATH__)
#error \
    "TW2 cannot be compiled with -ffast-math: poses would have other bits, and not-a-number could not be told from a number."
#endif
/// @}

/// @name Vector registers
/// S_HAS_SSE2 and S_HAS_NEON say what every processor has that this is compiled for. S_HAS_AVX2 says that single
/// sources can be compiled for AVX2, to be called where S_PROCESSOR_HAS_AVX2 holds. g++ for Windows cannot: it does not
/// keep what such code has on the stack at the addresses that it needs.
/// @{
#if defined(__SSE2__) || defined(_M_X64)
#define S_HAS_SSE2 1
#elif (defined(__aarch64__) && defined(__ARM_NEON)) || defined(_M_ARM64)
#define S_HAS_NEON 1
#endif
#if defined(__x86_64__) && defined(__GNUC__) && (defined(__clang__) || !defined(_WIN32))
#define S_HAS_AVX2 1
#define S_PROCESSOR_HAS_AVX2() (__builtin_cpu_supports("avx2") != 0)
#endif
/// @}

/// @name Hints
/// S_FORMAT_LIKE_PRINTF(text, first): parameter `text` of a member is a format, whose arguments begin at parameter
/// `first`, both counted from 2.
/// @{
#if defined(__GNUC__)
#define S_ALWAYS_INLINE [[gnu::always_inline]]
#define S_NO_INLINE [[gnu::noinline]]
#define S_PREFETCH(address) __builtin_prefetch(address, 0)
#define S_PREFETCH_FOR_WRITING(address) __builtin_prefetch(address, 1)
#if defined(_WIN32) && !defined(__clang__)
#define S_FORMAT_LIKE_PRINTF(text, first) [[gnu::format(gnu_printf, text, first)]]
#else
#define S_FORMAT_LIKE_PRINTF(text, first) [[gnu::format(printf, text, first)]]
#endif
#else
#define S_ALWAYS_INLINE
#define S_NO_INLINE
#define S_PREFETCH(address) static_cast<void>(address)
#define S_PREFETCH_FOR_WRITING(address) static_cast<void>(address)
#define S_FORMAT_LIKE_PRINTF(text, first)
#endif
/// @}

/// Sets `place`, a float, where other threads may do so at the same time: the last of them counts.
#if defined(__GNUC__)
#define S_STORE_FROM_ANY_THREAD(place, value)                \
    {                                                        \
        float stored = value;                                \
        __atomic_store(&(place), &stored, __ATOMIC_RELAXED); \
    }
#else
#define S_STORE_FROM_ANY_THREAD(place, value) (place) = (value)
#endif

/// The bits of `from` as a T; all compilers that are supported have it.
#define S_BIT_CAST(T, from) __builtin_bit_cast(T, from)
