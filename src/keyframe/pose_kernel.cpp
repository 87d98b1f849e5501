#include "keyframe/pose_kernel_avx2.h"
#include "keyframe/pose_kernel_body.h"

#include <platform/math/float4.h>
#include <platform/math/float4_scalar.h>

namespace TW2
{
namespace
{
PoseKernel findKernel(PoseWidth width) noexcept
{
    switch (width)
    {
        case PoseWidth::One:
            return &PoseKernelBody<M_Float4Scalar>::run;
        case PoseWidth::Four:
            return &PoseKernelBody<M_Float4>::run;
        case PoseWidth::Eight:
#if defined(TW2_HAS_AVX2_KERNEL)
            if (S_PROCESSOR_HAS_AVX2())
            {
                return &runPoseKernelAvx2;
            }
#endif
            return nullptr;
    }
    return nullptr;
}

PoseWidth s_width = findKernel(PoseWidth::Eight) ? PoseWidth::Eight : PoseWidth::Four;
}  // namespace

PoseKernel getPoseKernel() noexcept
{
    return findKernel(s_width);
}

bool setPoseWidth(PoseWidth width) noexcept
{
    const bool exists = findKernel(width) != nullptr;
    s_width = exists ? width : s_width;
    return exists;
}

PoseWidth getPoseWidth() noexcept
{
    return s_width;
}
}  // namespace TW2
