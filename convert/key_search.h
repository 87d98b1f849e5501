#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace TW2::convert
{
/// The index of the first key that lies behind a time; the number of keys when none does. `getTime` tells a key's time;
/// the keys are in their order. Where they lie evenly, as those of sampled motion do, this costs one look.
template <typename Key, typename GetTime>
[[nodiscard]] std::size_t findKeyBehind(const std::vector<Key>& keys, double seconds, const GetTime& getTime)
{
    if (keys.empty() || seconds < getTime(keys.front()))
    {
        return 0;
    }
    if (seconds >= getTime(keys.back()))
    {
        return keys.size();
    }
    const double first = getTime(keys.front());
    const double part = (seconds - first) / (getTime(keys.back()) - first);
    const double hint = part > 0.0 && part < 1.0 ? part * static_cast<double>(keys.size() - 1) : 0.0;
    const std::size_t likely = std::min(static_cast<std::size_t>(hint) + 1, keys.size() - 1);
    if (getTime(keys[likely - 1]) <= seconds && seconds < getTime(keys[likely]))
    {
        return likely;
    }
    const auto found = std::upper_bound(keys.begin(), keys.end(), seconds,
                                        [&getTime](double time, const Key& key) { return time < getTime(key); });
    return static_cast<std::size_t>(found - keys.begin());
}

[[nodiscard]] inline std::size_t findKeyBehind(const std::vector<double>& times, double seconds)
{
    return findKeyBehind(times, seconds, [](double time) { return time; });
}
}  // namespace TW2::convert
