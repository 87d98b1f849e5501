#include "keyframe/track_value.h"

#include <tw2/keyframe/linearly_optimized_container.h>

#include <platform/runtime/rollback.h>

namespace TW2
{
template <typename T>
void LinearlyOptimizedContainer<T>::construct(unsigned int keyCount)
{
    destruct();
    m_bConstructed = true;
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_vecFrames.resize(keyCount);
    m_vecValues.resize(keyCount);
    rollback.keep();
}

template <typename T>
void LinearlyOptimizedContainer<T>::destruct() noexcept
{
    if (!m_bConstructed)
    {
        return;
    }
    m_bConstructed = m_bLooping = m_bLoopInterpolation = false;
    m_uLoopToFrame = m_uTotalFrameCount = 0;
    m_fLastLowerKey = m_fLastUpperKey = 0.0F;
    S_Vector<std::int16_t>().swap(m_vecFrames);
    Values().swap(m_vecValues);
}

template <typename T>
float LinearlyOptimizedContainer<T>::wrapFrame(float frame) const
{
    return TW2::wrapFrame(getLoop(*this), frame);
}

template <typename T>
int LinearlyOptimizedContainer<T>::getKeys(T& lower, float& fraction, T& upper, float frame, int hint) const
{
    if (m_vecFrames.empty())
    {
        m_fLastLowerKey = 0.0F;
        m_fLastUpperKey = 0.0F;
        lower = T();
        upper = T();
        fraction = 0.0F;
        return 0;
    }
    const KeyPair keys = findKeys(*this, locateFrame(getLoop(*this), frame), hint);
    lower = m_vecValues[static_cast<std::size_t>(keys.m_iLower)];
    upper = m_vecValues[static_cast<std::size_t>(keys.m_iUpper)];
    fraction = keys.getFraction();
    return keys.m_iUpper;
}

template <typename T>
int LinearlyOptimizedContainer<T>::getValue(T& out, float frame, int hint) const
    requires(!std::is_same_v<T, TW_KeyframeMatrix>)
{
    T lower;
    T upper;
    float fraction;
    const int key = getKeys(lower, fraction, upper, frame, hint);
    out = interpolate(lower, upper, fraction);
    return key;
}

template class TW2_TEMPLATE_API LinearlyOptimizedContainer<float>;
template class TW2_TEMPLATE_API LinearlyOptimizedContainer<G_FColor>;
template class TW2_TEMPLATE_API LinearlyOptimizedContainer<M_Matrix4x3Template<float>>;
template class TW2_TEMPLATE_API LinearlyOptimizedContainer<TW_KeyframeMatrix>;
}  // namespace TW2
