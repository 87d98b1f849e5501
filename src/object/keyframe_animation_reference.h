#pragma once

#include <tw2/keyframe/keyframe_animation.h>

namespace TW2
{
/// Lets go of one hold on a keyframe animation; the last holder deletes it. Null is ignored.
inline void dropReference(TW_KeyframeAnimation* animation) noexcept
{
    if (!animation)
    {
        return;
    }
    if (animation->getObjectReferenceCount() == 1)
    {
        delete animation;
    }
    else
    {
        animation->decreaseObjectReferenceCount();
    }
}

/// A hold on a keyframe animation that ends with the scope.
class KeyframeAnimationReference
{
public:
    /// Takes over the caller's hold.
    explicit KeyframeAnimationReference(TW_KeyframeAnimation* animation) noexcept : m_pAnimation(animation) {}
    ~KeyframeAnimationReference() { dropReference(m_pAnimation); }
    KeyframeAnimationReference(const KeyframeAnimationReference&) = delete;
    KeyframeAnimationReference& operator=(const KeyframeAnimationReference&) = delete;

    [[nodiscard]] TW_KeyframeAnimation* get() const noexcept { return m_pAnimation; }

private:
    TW_KeyframeAnimation* m_pAnimation;
};
}  // namespace TW2
