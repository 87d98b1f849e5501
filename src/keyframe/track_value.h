#pragma once

#include "keyframe/key_search.h"

#include <tw2/keyframe/linearly_optimized_container.h>

#include <cstddef>
#include <cstdint>

namespace TW2
{
/// (b - a) * fraction + a, and `a` itself for a fraction of 0.
template <typename T>
T interpolate(const T& a, const T& b, float fraction)
{
    if (fraction == 0.0F)
    {
        return a;
    }
    T result = b;
    result -= a;
    result *= fraction;
    result += a;
    return result;
}

/// Makes `track` that of some keys of a record; `getValue` takes their values out of them. A track that does not loop
/// goes back to `endFrame`, one past which its kind has no frame.
template <typename T, typename Record, typename Key, typename GetValue>
void fillTrack(LinearlyOptimizedContainer<T>& track, const Record& record, unsigned int endFrame,
               const S_Vector<Key>& keys, const GetValue& getValue)
{
    track.construct(static_cast<unsigned int>(keys.size()));
    track.m_bLooping = record.header.looping;
    track.m_bLoopInterpolation = record.loopInterpolation;
    track.m_uTotalFrameCount = static_cast<unsigned int>(record.totalFrameCount);
    track.m_uLoopToFrame = record.header.looping || record.totalFrameCount == 0 ? record.loopToFrame : endFrame;
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        track.m_vecFrames[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(keys[i].frame));  // the low 16 bits
        track.m_vecValues[i] = getValue(keys[i]);
    }
}
}  // namespace TW2
