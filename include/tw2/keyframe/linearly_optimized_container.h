#pragma once

#include <tw2/export.h>
#include <tw2/keyframe/keyframe_matrix.h>
#include <tw2/keyframe/rigid_keys.h>

#include <platform/image/fcolor.h>
#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

#include <cstdint>
#include <type_traits>

namespace TW2
{
/// Track of one animated quantity: keys at whole frames, and every frame between two keys by linear interpolation.
///
/// Instantiated for float, G_FColor, M_Matrix4x3Template<float> and TW_KeyframeMatrix. The owner calls `construct`,
/// sets the four loop members and writes frame and value of each key by index; frames ascend. From then on the track
/// is only read. Lookups take any frame (negative, past the end, not a number) and any hint, allocate nothing and never
/// read outside the keys; a track without keys yields the default value. They write the two last-key members, so one
/// thread at a time, even through a const reference.
template <typename T>
class LinearlyOptimizedContainer : public S_Allocated
{
public:
    /// A vector, or what reads like one.
    using Values = std::conditional_t<std::is_same_v<T, TW_KeyframeMatrix>, TW_RigidKeys, S_Vector<T>>;

    bool m_bConstructed = false;  ///< built from keys, and not destructed since
    bool m_bLooping = false;      ///< goes on at the loop-to frame after its end
    /// A looping track has one more frame at its end, in which the value moves from the last key to the key at the
    /// loop-to frame.
    bool m_bLoopInterpolation = false;
    unsigned int m_uLoopToFrame = 0;       ///< where a looping track continues after its end
    mutable float m_fLastLowerKey = 0.0F;  ///< index of the lower key of the last lookup
    mutable float m_fLastUpperKey = 0.0F;  ///< index of the upper key of the last lookup
    unsigned int m_uTotalFrameCount = 0;   ///< the track has the frames 0 to m_uTotalFrameCount - 1
    S_Vector<std::int16_t> m_vecFrames;    ///< frame of each key, ascending
    Values m_vecValues;                    ///< value of each key

    LinearlyOptimizedContainer() = default;
    ~LinearlyOptimizedContainer() = default;
    LinearlyOptimizedContainer(const LinearlyOptimizedContainer&) = delete;
    LinearlyOptimizedContainer& operator=(const LinearlyOptimizedContainer&) = delete;

    /// @name Filling
    /// @{

    /// Makes room for `keyCount` keys at frame 0 with default values (zeros, identity, black of alpha 255); a track
    /// that is constructed is emptied first, its loop members included. When an allocation fails the track is empty and
    /// the exception passes on.
    void construct(unsigned int keyCount);
    /// Back to the empty state; nothing happens to a track that is not constructed.
    void destruct() noexcept;
    /// False before the first `construct` and after `destruct`.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Lookup
    /// @{

    /// Where `frame` (any value) lies in the track: negative frames count from its end, frames past the end cycle
    /// through the frames from the loop-to frame on. Without an extent (no frames, or none from the loop-to frame on)
    /// nothing is promised but that the lookups below stay among the keys.
    [[nodiscard]] float wrapFrame(float frame) const;
    /// Copies the keys around `frame` to `lower` and `upper` and the position between them (0 to 1) to `fraction`.
    /// Returns the index of the upper key, which makes the next lookup start there when it is passed as `hint`.
    int getKeys(T& lower, float& fraction, T& upper, float frame, int hint) const;
    /// The value at `frame`; returns what `getKeys` does. Not for TW_KeyframeMatrix, whose keys are blended as
    /// matrices.
    int getValue(T& out, float frame, int hint) const requires(!std::is_same_v<T, TW_KeyframeMatrix>);
    /// @}
};

extern template class TW2_EXTERN_TEMPLATE_API LinearlyOptimizedContainer<float>;
extern template class TW2_EXTERN_TEMPLATE_API LinearlyOptimizedContainer<G_FColor>;
extern template class TW2_EXTERN_TEMPLATE_API LinearlyOptimizedContainer<M_Matrix4x3Template<float>>;
extern template class TW2_EXTERN_TEMPLATE_API LinearlyOptimizedContainer<TW_KeyframeMatrix>;
}  // namespace TW2
