#pragma once

#include <platform/compiler.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace TW2
{
/// How a track runs: the members of its container that decide where a frame lies.
struct TrackLoop
{
    bool m_bLooping;
    bool m_bLoopInterpolation;
    unsigned int m_uLoopToFrame;
    unsigned int m_uTotalFrameCount;

    friend bool operator==(const TrackLoop&, const TrackLoop&) = default;
};

/// Where a frame lies in every track that runs the same way.
struct TrackPosition
{
    enum class Place
    {
        Keys,      ///< around `m_fFrame`
        LastKey,   ///< at or past the end of a track that does not loop
        LoopFrame  ///< in the extra frame that leads from the last key to the loop-to key
    };

    Place m_place;
    float m_fFrame;               ///< wrapped into the track; NaN is before every key
    int m_iWhole;                 ///< rounded down, the nearest int where none is right
    float m_fPart;                ///< what the rounding left (0 to 1), for Place::LoopFrame
    unsigned int m_uLoopToFrame;  ///< of the track, for Place::LoopFrame
};

/// Two keys of a track by index, and the position between them as a quotient, which is 0 to 1.
struct KeyPair
{
    int m_iLower;
    int m_iUpper;
    float m_fDistance;
    float m_fSpan;  ///< never 0

    [[nodiscard]] float getFraction() const noexcept { return m_fDistance / m_fSpan; }
};

/// x modulo period in [0, period).
inline float positiveModulo(float x, float period) noexcept
{
    if (x >= 0.0F)
    {
        // Nearly always so, and much cheaper than the library function, which would give the same.
        return x < period ? x : std::fmod(x, period);
    }
    const float result = period - std::fmod(-x, period);
    return result == period ? 0.0F : result;
}

/// The last frame that a track reaches before it wraps.
inline int getEndFrame(const TrackLoop& loop) noexcept
{
    const bool hasLoopFrame = loop.m_bLooping && loop.m_bLoopInterpolation;
    return static_cast<int>(hasLoopFrame ? loop.m_uTotalFrameCount : loop.m_uTotalFrameCount - 1U);
}

inline float wrapFrame(const TrackLoop& loop, float frame) noexcept
{
    const int end = getEndFrame(loop);
    if (!(frame > static_cast<float>(end)))
    {
        return positiveModulo(frame, static_cast<float>(end));
    }
    const auto loopTo = static_cast<float>(loop.m_uLoopToFrame);
    const int span = static_cast<int>(static_cast<unsigned int>(end) - loop.m_uLoopToFrame);
    return span != 0 ? loopTo + positiveModulo(frame - loopTo, static_cast<float>(span)) : loopTo;
}

/// The nearest int to a float without a fraction; the least int for NaN.
inline int toInt(float whole) noexcept
{
    constexpr float limit = 2147483648.0F;
    if (whole >= -limit && whole < limit)
    {
        return static_cast<int>(whole);
    }
    return whole > 0.0F ? std::numeric_limits<int>::max() : std::numeric_limits<int>::min();
}

inline TrackPosition locateFrame(const TrackLoop& loop, float frame) noexcept
{
    TrackPosition position;
    const int lastFrame = static_cast<int>(loop.m_uTotalFrameCount - 1U);
    position.m_fFrame = wrapFrame(loop, frame);
    const float whole = std::floor(position.m_fFrame);
    position.m_iWhole = toInt(whole);
    position.m_fPart = std::isfinite(whole) ? position.m_fFrame - whole : 0.0F;
    position.m_uLoopToFrame = loop.m_uLoopToFrame;
    if (!loop.m_bLooping && frame >= static_cast<float>(lastFrame))
    {
        position.m_place = TrackPosition::Place::LastKey;
    }
    else if (position.m_iWhole >= lastFrame && loop.m_bLoopInterpolation)
    {
        position.m_place = TrackPosition::Place::LoopFrame;
    }
    else
    {
        position.m_place = TrackPosition::Place::Keys;
    }
    return position;
}

/// How many of the first `count` keys have a frame up to `whole`. Without a branch that depends on the frames: which
/// way a search goes cannot be foreseen.
inline int countKeysUpTo(const std::int16_t* frames, int count, int whole) noexcept
{
    const std::int16_t* first = frames;
    while (count > 1)
    {
        const int half = count / 2;
        first += first[half - 1] <= whole ? half : 0;
        count -= half;
    }
    return static_cast<int>(first - frames) + static_cast<int>(count == 1 && *first <= whole);
}

/// The keys around a position of a track with at least one key, by searching all of them. Never reads outside the keys,
/// whatever the frames are.
S_NO_INLINE inline KeyPair searchKeys(const TrackPosition& position, const std::int16_t* frames, int keyCount) noexcept
{
    const int last = keyCount - 1;
    if (position.m_place == TrackPosition::Place::LastKey)
    {
        return {last, last, 0.0F, 1.0F};
    }
    if (position.m_place == TrackPosition::Place::LoopFrame)
    {
        const auto isBefore = [](std::int16_t frame, unsigned int loopTo)
        { return static_cast<unsigned int>(static_cast<int>(frame)) < loopTo; };
        const auto* const loopToKey = std::lower_bound(frames, frames + last, position.m_uLoopToFrame, isBefore);
        return {last, static_cast<int>(loopToKey - frames), position.m_fPart, 1.0F};
    }
    // The first key behind the whole frame, or the last key.
    const int upper = countKeysUpTo(frames, last, position.m_iWhole);
    const int lower = std::max(upper - 1, 0);
    const int lowerFrame = frames[lower];
    const int span = frames[upper] - lowerFrame;
    if (!(position.m_fFrame <= static_cast<float>(frames[upper])))
    {
        return {upper, upper, 0.0F, 1.0F};
    }
    if (span == 0)
    {
        return {lower, upper, 0.0F, 1.0F};
    }
    return {lower, upper, position.m_fFrame - static_cast<float>(lowerFrame), static_cast<float>(span)};
}

/// The same, at once when `hint` (any number) is the upper key or, as in playing forward or backward, a key beside it.
inline KeyPair findKeys(const TrackPosition& position, const std::int16_t* frames, int keyCount, int hint) noexcept
{
    if (position.m_place == TrackPosition::Place::Keys) [[likely]]
    {
        const int last = keyCount - 1;
        int upper = hint >= 0 && hint <= last ? hint : 0;
        // Without branches: when a track moves to its next key cannot be foreseen.
        upper += static_cast<int>(frames[upper] <= position.m_iWhole && upper < last);
        upper -= static_cast<int>(frames[std::max(upper - 1, 0)] > position.m_iWhole && upper > 1);
        const int lower = std::max(upper - 1, 0);
        const int lowerFrame = frames[lower];
        const int upperFrame = frames[upper];
        if (lowerFrame <= position.m_iWhole && position.m_iWhole < upperFrame) [[likely]]
        {
            return {lower, upper, position.m_fFrame - static_cast<float>(lowerFrame),
                    static_cast<float>(upperFrame - lowerFrame)};
        }
    }
    return searchKeys(position, frames, keyCount);
}

/// How a container runs.
template <typename Track>
inline TrackLoop getLoop(const Track& track) noexcept
{
    return {track.m_bLooping, track.m_bLoopInterpolation, track.m_uLoopToFrame, track.m_uTotalFrameCount};
}

/// The keys of a container with at least one key; the container remembers them, those of the last of several threads.
template <typename Track>
inline KeyPair findKeys(const Track& track, const TrackPosition& position, int hint) noexcept
{
    const KeyPair keys = findKeys(position, track.m_vecFrames.data(), static_cast<int>(track.m_vecFrames.size()), hint);
    S_STORE_FROM_ANY_THREAD(track.m_fLastLowerKey, static_cast<float>(keys.m_iLower));
    S_STORE_FROM_ANY_THREAD(track.m_fLastUpperKey, static_cast<float>(keys.m_iUpper));
    return keys;
}
}  // namespace TW2
