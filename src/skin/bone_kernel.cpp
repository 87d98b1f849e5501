#include "skin/bone_kernel.h"

#include "keyframe/pose_batch.h"
#include "skin/bone_kernel_avx2.h"
#include "skin/transform_rows.h"

#include <platform/runtime/prefetch.h>

namespace TW2
{
static_assert(BoneBatch::boneFloats == TransformRows::floatCount);

void multiplyBones(const BoneBatch& batch) noexcept
{
#if defined(TW2_HAS_AVX2_KERNEL)
    if (getPoseWidth() == PoseWidth::Eight)
    {
        multiplyBonesAvx2(batch);
        return;
    }
#endif
    for (std::size_t i = 0; i < batch.m_uiCount; ++i)
    {
        float* const place = batch.m_pBones + i * BoneBatch::boneFloats;
        const int parent = batch.m_piParents[i];
        S_prefetchForWriting(batch.m_pResults + i, BoneBatch::bytesAhead);
        if (parent >= 0)
        {
            const float* const above = batch.m_pBones + static_cast<std::size_t>(parent) * BoneBatch::boneFloats;
            const TransformRows bone = batch.m_pLocal[i] * TransformRows::load(above);
            bone.store(place);
            (batch.m_pReferences[i] * bone).write(batch.m_pResults[i]);
        }
        else
        {
            (batch.m_pReferences[i] * TransformRows::load(place)).write(batch.m_pResults[i]);
        }
    }
}
}  // namespace TW2
