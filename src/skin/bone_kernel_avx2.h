#pragma once

#include "keyframe/pose_kernel_avx2.h"

#if defined(TW2_HAS_AVX2_KERNEL)
#include "skin/bone_kernel.h"

namespace TW2
{
/// multiplyBones for processors that have AVX2.
void multiplyBonesAvx2(const BoneBatch& batch) noexcept;
}  // namespace TW2
#endif
