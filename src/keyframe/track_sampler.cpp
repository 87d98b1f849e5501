#include "keyframe/track_sampler.h"

#include "keyframe/key_search.h"
#include "keyframe/rigid_key.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <platform/math/float4.h>
#include <platform/runtime/prefetch.h>

namespace TW2
{
/// What the sampler reads of an animation.
struct TrackAccess
{
    using CompactTrack = LinearlyOptimizedContainer<TW_KeyframeMatrix>;
    using FullTrack = LinearlyOptimizedContainer<M_Matrix4x3Template<float>>;

    /// The compact track; null when the animation has another one or no keys. A track in use is the only one, so that
    /// the first cache line of the shared data tells all.
    static const CompactTrack* getCompactTrack(const TW_KeyframeAnimation& animation) noexcept
    {
        const auto* const data = animation.m_pSharedData;
        return data && !data->m_keyframes.m_vecFrames.empty() ? &data->m_keyframes : nullptr;
    }
    /// The full track of an animation that only blends its keys; null when it has no such track or no keys.
    static const FullTrack* getBlendedTrack(const TW_KeyframeAnimation& animation) noexcept
    {
        const auto* const data = animation.m_pSharedData;
        const bool isBlended =
            data && animation.m_eInterpolationMode == InterpolationMode::Linear && !animation.m_bKeepScale;
        return isBlended && data->m_pMatrices && !data->m_pMatrices->m_vecFrames.empty() ? data->m_pMatrices : nullptr;
    }
    static void prefetchTrack(const TW_KeyframeAnimation& animation) noexcept { S_prefetch(animation.m_pSharedData); }
    static InterpolationMode getMode(const TW_KeyframeAnimation& animation) noexcept
    {
        return animation.m_eInterpolationMode;
    }
};

namespace
{
constexpr std::size_t MODES = 3;

// How four floats of a sampled matrix reach their place.
template <TrackWrite write>
struct Writer
{
    M_Float4 m_weight;

    void operator()(float* place, const M_Float4& value) const noexcept
    {
        if constexpr (write == TrackWrite::Replace)
        {
            value.store(place);
        }
        else if constexpr (write == TrackWrite::Scale)
        {
            (value * m_weight).store(place);
        }
        else if constexpr (write == TrackWrite::Add)
        {
            (value * m_weight + M_Float4::load(place)).store(place);
        }
        else
        {
            const M_Float4 current = M_Float4::load(place);
            (current + (value - current) * m_weight).store(place);
        }
    }
};

// Up to four compact tracks of one mode whose keys are found.
struct Group
{
    const TW_KeyframeMatrix* m_lower[LANES];
    const TW_KeyframeMatrix* m_upper[LANES];
    float m_distance[LANES];
    float m_span[LANES];
    float* m_place[LANES];
    std::size_t m_uiCount = 0;
};

template <typename Write>
void sampleGroup(Group& group, InterpolationMode mode, const Write& write) noexcept
{
    // Lanes to spare repeat the first track; their results are not stored.
    for (std::size_t i = group.m_uiCount; i < LANES; ++i)
    {
        group.m_lower[i] = group.m_lower[0];
        group.m_upper[i] = group.m_upper[0];
        group.m_distance[i] = group.m_distance[0];
        group.m_span[i] = group.m_span[0];
    }
    const float* const d = group.m_distance;
    const float* const s = group.m_span;
    const M_Float4 fraction = M_Float4(d[0], d[1], d[2], d[3]) / M_Float4(s[0], s[1], s[2], s[3]);
    RigidBlend blend(loadKeys(group.m_lower), loadKeys(group.m_upper), fraction);
    blend.apply(mode);
    const M_FourMatrices matrices = toMatrices(blend.m_rows, blend.m_translation);
    matrices.store(group.m_place, group.m_uiCount, write);
    group.m_uiCount = 0;
}

template <TrackWrite write>
class Sampler
{
public:
    Sampler(float frame, float weight) noexcept
        : m_writer{M_Float4(weight)}, m_fFrame(frame), m_position(locateFrame(m_loop, frame))
    {
    }

    [[gnu::always_inline]] void add(const TW_KeyframeAnimation& animation, int& hint, float* place) noexcept
    {
        const auto* const track = TrackAccess::getCompactTrack(animation);
        if (!track)
        {
            addOther(animation, hint, place);
            return;
        }
        const KeyPair keys = find(*track, hint);
        const InterpolationMode mode = TrackAccess::getMode(animation);
        Group& group = m_groups[static_cast<std::size_t>(mode)];
        const std::size_t lane = group.m_uiCount++;
        group.m_lower[lane] = &track->m_vecValues[static_cast<std::size_t>(keys.m_iLower)];
        group.m_upper[lane] = &track->m_vecValues[static_cast<std::size_t>(keys.m_iUpper)];
        group.m_distance[lane] = keys.m_fDistance;
        group.m_span[lane] = keys.m_fSpan;
        group.m_place[lane] = place;
        if (group.m_uiCount == LANES)
        {
            sampleGroup(group, mode, m_writer);
        }
    }

    void finish() noexcept
    {
        for (std::size_t mode = 0; mode < MODES; ++mode)
        {
            if (m_groups[mode].m_uiCount != 0)
            {
                sampleGroup(m_groups[mode], static_cast<InterpolationMode>(mode), m_writer);
            }
        }
    }

private:
    // A track of full matrices, or none.
    [[gnu::noinline]] void addOther(const TW_KeyframeAnimation& animation, int& hint, float* place) noexcept
    {
        if (const auto* const track = TrackAccess::getBlendedTrack(animation))
        {
            const KeyPair keys = find(*track, hint);
            const float* const lower = track->m_vecValues[static_cast<std::size_t>(keys.m_iLower)].data();
            const float* const upper = track->m_vecValues[static_cast<std::size_t>(keys.m_iUpper)].data();
            const M_Float4 fraction(keys.getFraction());
            for (std::size_t e = 0; e < 12; e += LANES)
            {
                m_writer(place + e, between(M_Float4::load(lower + e), M_Float4::load(upper + e), fraction));
            }
            return;
        }
        M_Matrix4x3Template<float> matrix;
        hint = animation.animateFrameWithLastFrame(matrix, m_fFrame, hint);
        for (std::size_t e = 0; e < 12; e += LANES)
        {
            m_writer(place + e, M_Float4::load(matrix.data() + e));
        }
    }

    // The keys of a track at the frame; leaves the hint and the track as a lookup does.
    template <typename Track>
    KeyPair find(const Track& track, int& hint) noexcept
    {
        const KeyPair keys = findKeys(track, locate(track), hint);
        hint = keys.m_iUpper;
        return keys;
    }

    // Tracks of one animation nearly always run alike, and wrapping a frame is the dearest part of a lookup.
    template <typename Track>
    const TrackPosition& locate(const Track& track) noexcept
    {
        const bool isSame = track.m_uTotalFrameCount == m_loop.m_uTotalFrameCount &&
                            track.m_uLoopToFrame == m_loop.m_uLoopToFrame && track.m_bLooping == m_loop.m_bLooping &&
                            track.m_bLoopInterpolation == m_loop.m_bLoopInterpolation;
        if (!isSame) [[unlikely]]
        {
            locateAnew(getLoop(track));
        }
        return m_position;
    }
    [[gnu::noinline]] void locateAnew(const TrackLoop& loop) noexcept
    {
        m_loop = loop;
        m_position = locateFrame(m_loop, m_fFrame);
    }

    Writer<write> m_writer;
    float m_fFrame;
    TrackLoop m_loop{};
    TrackPosition m_position;  // of m_fFrame in tracks that run as m_loop says
    Group m_groups[MODES];
};

// Where many objects play, neither tracks nor matrices are in the nearest cache. Far ahead the animations are fetched,
// nearer what they point to.
void fetchAhead(const TrackBatch& batch, std::size_t i) noexcept
{
    constexpr std::size_t FAR = 8;
    constexpr std::size_t NEAR = 4;
    if (batch.m_puiPlaces || i + FAR >= batch.m_uiCount)
    {
        return;
    }
    S_prefetchForWriting(batch.m_pMatrices + i + FAR);
    S_prefetch(batch.m_ppTracks[i + FAR]);
    S_prefetch(batch.m_ppTracks[i + FAR], S_CACHE_LINE);
    if (const auto* const animation = batch.m_ppTracks[i + NEAR])
    {
        TrackAccess::prefetchTrack(*animation);
    }
}

template <TrackWrite write>
void sample(const TrackBatch& batch, float frame, float weight) noexcept
{
    Sampler<write> sampler(frame, weight);
    for (std::size_t i = 0; i < batch.m_uiCount; ++i)
    {
        const std::size_t place = batch.m_puiPlaces ? batch.m_puiPlaces[i] : i;
        fetchAhead(batch, i);
        if (const auto* const animation = batch.m_ppTracks[place])
        {
            sampler.add(*animation, batch.m_piHints[place], batch.m_pMatrices[place].data());
        }
    }
    sampler.finish();
}
}  // namespace

void sampleTracks(const TrackBatch& batch, float frame, TrackWrite write, float weight) noexcept
{
    switch (write)
    {
        case TrackWrite::Replace:
            sample<TrackWrite::Replace>(batch, frame, weight);
            return;
        case TrackWrite::Scale:
            sample<TrackWrite::Scale>(batch, frame, weight);
            return;
        case TrackWrite::Add:
            sample<TrackWrite::Add>(batch, frame, weight);
            return;
        case TrackWrite::Blend:
            sample<TrackWrite::Blend>(batch, frame, weight);
            return;
    }
}
}  // namespace TW2
