#pragma once

#include <platform/runtime/allocator.h>

#include <cstddef>

namespace TW2
{
/// Makes the offsets of groups from their counts: each is the sum of the counts before it, `step` for each element.
template <typename T>
void makeOffsets(S_Vector<T>& offsets, const S_Vector<T>& counts, unsigned int step)
{
    offsets.clear();
    offsets.reserve(counts.size());
    unsigned int offset = 0;
    for (const T count : counts)
    {
        offsets.push_back(static_cast<T>(offset));
        offset += step * static_cast<unsigned int>(count);
    }
}

/// Sorts numbers from 0 to before `count` into buckets, whose bucket `getBucket` tells: those of bucket b are `list`
/// from `starts[b]` to before `starts[b + 1]`, in their order. `perEntry` successive numbers are the same entry of the
/// list.
template <typename GetBucket>
void listByBucket(S_Vector<unsigned int>& starts, S_Vector<unsigned int>& list, std::size_t buckets, std::size_t count,
                  std::size_t perEntry, const GetBucket& getBucket)
{
    // Counted one place late: filling the list moves each start to where it belongs.
    starts.assign(buckets + 2, 0);
    for (std::size_t number = 0; number < count; ++number)
    {
        ++starts[getBucket(number) + 2];
    }
    for (std::size_t i = 2; i < starts.size(); ++i)
    {
        starts[i] += starts[i - 1];
    }
    list.resize(count);
    for (std::size_t number = 0; number < count; ++number)
    {
        list[starts[getBucket(number) + 1]++] = static_cast<unsigned int>(number / perEntry);
    }
}
}  // namespace TW2
