// Compiled for AVX2, see CMakeLists.txt; empty where there is no such thing.
#include "keyframe/pose_kernel_avx2.h"

#if defined(TW2_HAS_AVX2_KERNEL)
#include "keyframe/pose_kernel_body.h"

#include <platform/math/float8_avx2.h>

namespace TW2
{
void runPoseKernelAvx2(const PoseBatch& batch) noexcept
{
    PoseKernelBody<M_Float8Avx2>::run(batch);
}
}  // namespace TW2
#endif
