#pragma once

// Whether the library has a kernel for AVX2: on x86-64, with compilers that can compile one source for it.
#include <platform/compiler.h>

#if defined(S_HAS_AVX2)
#define TW2_HAS_AVX2_KERNEL 1

#include "keyframe/pose_batch.h"

namespace TW2
{
/// Eight matrices at a time. Only for processors that have AVX2.
void runPoseKernelAvx2(const PoseBatch& batch) noexcept;
}  // namespace TW2
#endif
