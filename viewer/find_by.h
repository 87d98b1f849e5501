#pragma once

#include <algorithm>
#include <iterator>

namespace TW2::viewer
{
/// The first element of `list` whose `member` equals `value`, or the end: std::ranges::find with a projection, which
/// the standard library of WebAssembly builds does not have yet.
template <typename List, typename Value, typename Element, typename Member>
[[nodiscard]] auto findBy(const List& list, const Value& value, Member Element::*member)
{
    return std::find_if(std::begin(list), std::end(list),
                        [&](const Element& element) { return element.*member == value; });
}
}  // namespace TW2::viewer
