#include "core/near_names.h"

#include <platform/runtime/hash_map.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace TW2
{
namespace
{
/// How many letters have to be put in, taken out or exchanged to make one name of the other.
std::size_t countChanges(std::string_view a, std::string_view b)
{
    S_Vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j)
        {
            const std::size_t exchanged = toLowerCase(a[i]) == toLowerCase(b[j]) ? 0 : 1;
            const std::size_t changes = std::min({row[j] + 1, row[j + 1] + 1, diagonal + exchanged});
            diagonal = std::exchange(row[j + 1], changes);
        }
    }
    return row[b.size()];
}
}  // namespace

S_String listNearNames(std::string_view asked, const S_Vector<std::string_view>& names)
{
    constexpr std::size_t limit = 5;
    constexpr std::size_t longest = 100;  // of a name: the time goes with its square
    S_Vector<std::pair<std::size_t, std::string_view>> alike;
    for (const std::string_view name : names)
    {
        const std::size_t length = std::max(name.size(), asked.size());
        const std::size_t changes = length <= longest ? countChanges(asked, name) : length;
        if (2 * changes <= length)
        {
            alike.emplace_back(changes, name);
        }
    }
    std::stable_sort(alike.begin(), alike.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    const bool any = !alike.empty();
    const std::size_t count = any ? alike.size() : names.size();
    S_String text;
    for (std::size_t i = 0; i < std::min(count, limit); ++i)
    {
        text.append(text.empty() ? "\"" : ", \"").append(any ? alike[i].second : names[i]).append("\"");
    }
    return count > limit ? text + ", ..." : text;
}
}  // namespace TW2
