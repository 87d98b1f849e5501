#pragma once

#include "convert/drawn_sample.h"
#include "convert/track_reduction.h"
#include "convert/travel.h"

#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/runtime/memory_file_writer.h>

#include <vector>

namespace TW2::convert
{
/// The keyframe animation record of each joint of a reduced clip; it loops as `seam` says.
[[nodiscard]] std::vector<KeyframeAnimationChunk> makeRecords(const Skeleton& skeleton, const ReducedClip& clip,
                                                              Seam seam);
/// The records of the pose at rest, standing still: one key each, one frame.
[[nodiscard]] std::vector<KeyframeAnimationChunk> makeRestRecords(const Skeleton& skeleton);

/// The record of a clip's travel, for records that `makeRecords` has made of the clip without it: within `tolerance` of
/// where the object stands, everywhere up to `reach` from its origin.
[[nodiscard]] KeyframeAnimationChunk makeTravelRecord(const Travel& travel, const ReducedClip& clip, Seam seam,
                                                      const Tolerance& tolerance, double reach, SpareThreads& threads);

/// Looks at clips as the library plays their records. May be asked on several threads at once.
class PlaybackMeter
{
public:
    /// All must outlive the meter.
    PlaybackMeter(const Model& model, const Skeleton& skeleton);

    /// The largest difference between a clip's own curves and its records in world space: at `times` (frames,
    /// ascending) of every joint, its axes and its surroundings, at whole frames also of the drawn vertices.
    [[nodiscard]] PoseError measure(const Clip& clip, const std::vector<KeyframeAnimationChunk>& records, int frameRate,
                                    const std::vector<double>& times, SpareThreads& threads) const;
    /// The same of a clip whose records were made without its travel, which `record` puts back. The nodes above the one
    /// that travels are not looked at: they stand still in the clip and are carried with the object.
    [[nodiscard]] PoseError measure(const Clip& clip, const std::vector<KeyframeAnimationChunk>& records,
                                    const Travel& travel, const KeyframeAnimationChunk& record, int frameRate,
                                    const std::vector<double>& times, SpareThreads& threads) const;
    /// Makes `bounds` contain what is drawn while the records play.
    void addBounds(const std::vector<KeyframeAnimationChunk>& records, DrawnBounds& bounds) const;

private:
    class Player;
    class Comparison;
    [[nodiscard]] PoseError measure(const Clip& clip, const Player& player, const std::vector<bool>& measured,
                                    int frameRate, const std::vector<double>& times, SpareThreads& threads) const;

    const Model& m_model;
    const Skeleton& m_skeleton;
    DrawnSample m_drawn;
    std::vector<double> m_reach;
};

void write(S_MemoryFileWriter& writer, const std::vector<KeyframeAnimationChunk>& records);
}  // namespace TW2::convert
