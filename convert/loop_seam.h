#pragma once

#include "convert/model.h"
#include "convert/skeleton.h"

namespace TW2::convert
{
/// How a clip's end joins its beginning.
enum class Seam
{
    Open,       ///< it does not
    SameFrame,  ///< the last frame is the first one again
    NextFrame   ///< the first frame follows on the last one as any frame follows on another
};

/// Looks at a clip's own poses: it runs in a circle when its last frame is its first one again, or when the step from
/// its last frame to its first one is no larger than the steps beside it. `frames` are there at `frameRate` per second;
/// models smaller than `smallest` (scene units) count as that large.
[[nodiscard]] Seam findSeam(const Model& model, const Skeleton& skeleton, const Clip& clip, unsigned int frames,
                            int frameRate, double smallest);
}  // namespace TW2::convert
