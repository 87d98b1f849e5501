#pragma once

#include "convert/track_reduction.h"

#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/runtime/memory_file_writer.h>

#include <vector>

namespace TW2::convert
{
/// The keyframe animation record of each node of a reduced clip; it loops as `seam` says.
[[nodiscard]] std::vector<KeyframeAnimationChunk> makeRecords(const Model& model, const ReducedClip& clip, Seam seam);
/// The records of a pose that stands still: one key each, one frame.
[[nodiscard]] std::vector<KeyframeAnimationChunk> makeStillRecords(const Model& model,
                                                                   const std::vector<Matrixd>& local);

/// The largest difference between the clip and the records as the library evaluates them, at the frames and between
/// them, in world space.
[[nodiscard]] PoseError measurePlayback(const Model& model, const Clip& clip,
                                        const std::vector<KeyframeAnimationChunk>& records, int frameRate);

void write(S_MemoryFileWriter& writer, const std::vector<KeyframeAnimationChunk>& records);
}  // namespace TW2::convert
