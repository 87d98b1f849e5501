#pragma once

#include <tw2/io/loader_callbacks.h>

class S_Script;

namespace TW2
{
class TW_ObjectAnimation;

/// Files the keyframe animations of an animation file under the current index of an object.
class TW_ObjectAnimationKeyframeCallback : public TW_KeyframeAnimationCallback
{
public:
    /// `script` is named in complaints; null when there is none.
    TW_ObjectAnimationKeyframeCallback(const S_Script* script, TW_ObjectAnimation* object, bool withVisibility) noexcept
        : m_pScript(script), m_pObject(object), m_bWithVisibility(withVisibility)
    {
    }

    void setIndex(int index) noexcept { m_iIndex = index; }

    /// Throws TW_Exception_AnimationTargetNotFound when the target is no mesh of the object and no host callback takes
    /// such animations.
    void operator()(KeyframeAnimationChunk& record) override;

private:
    const S_Script* m_pScript;
    TW_ObjectAnimation* m_pObject;
    int m_iIndex = 0;
    bool m_bWithVisibility;
};
}  // namespace TW2
