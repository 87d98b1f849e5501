#pragma once

#include "convert/clip_writer.h"
#include "convert/converter.h"
#include "convert/travel.h"

#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <cstddef>
#include <deque>
#include <future>
#include <optional>
#include <vector>

namespace TW2::convert
{
/// A clip as it is written.
struct WrittenClip
{
    ReducedClip m_reduced;
    Seam m_eSeam = Seam::Open;
    std::vector<KeyframeAnimationChunk> m_vecRecords;
    std::optional<KeyframeAnimationChunk> m_travel;
    PoseError m_error;
};

/// Makes records of clips that play within a tolerance of them. May be asked on several threads at once.
class ClipReducer
{
public:
    /// All must outlive the reducer. `travel`: what is taken out of all clips, if anything.
    ClipReducer(const Model& model, const Skeleton& skeleton, const Options& options, const Tolerance& tolerance,
                const std::optional<TravelChoice>& travel);

    /// `Options::m_uiThreads` threads are at work in all calls together, where there are no more calls than that.
    [[nodiscard]] WrittenClip reduce(const Clip& clip) const;
    [[nodiscard]] const PlaybackMeter& getMeter() const noexcept { return m_meter; }

private:
    [[nodiscard]] Seam chooseSeam(const ReducedClip& clip) const;

    const Model& m_model;
    const Skeleton& m_skeleton;
    const Options& m_options;
    Tolerance m_tolerance;
    std::optional<TravelChoice> m_travel;
    double m_dReach = 0.0;
    PlaybackMeter m_meter;
    mutable SpareThreads m_threads;
};

/// Reduces clips in their order on threads of its own, some ahead of what is asked for. With one thread, or where no
/// thread can be had, each when it is asked for.
class ClipsAhead
{
public:
    /// Begins at once. Both must outlive this object.
    ClipsAhead(const ClipReducer& reducer, const std::vector<Clip>& clips, unsigned int threads);
    /// Waits for the clips that have been begun.
    ~ClipsAhead() = default;
    ClipsAhead(const ClipsAhead&) = delete;
    ClipsAhead& operator=(const ClipsAhead&) = delete;

    /// The next clip. Throws what reducing it has thrown.
    [[nodiscard]] WrittenClip takeNext();

private:
    void begin();

    const ClipReducer& m_reducer;
    const std::vector<Clip>& m_clips;
    unsigned int m_uiThreads;
    std::size_t m_uiBegun = 0;
    std::deque<std::future<WrittenClip>> m_begun;
};
}  // namespace TW2::convert
