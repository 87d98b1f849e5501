#pragma once

#include <platform/compiler.h>

/// The bits of `from` as another type of the same size: std::bit_cast, which some standard libraries of this language
/// version do not have yet.
template <typename To, typename From>
[[nodiscard]] constexpr To S_bitCast(const From& from) noexcept
{
    static_assert(sizeof(To) == sizeof(From));
    return S_BIT_CAST(To, from);
}
