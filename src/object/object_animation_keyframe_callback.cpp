#include "object/object_animation_keyframe_callback.h"

#include "object/keyframe_animation_reference.h"

#include <tw2/core/exceptions.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>

#include <platform/runtime/script.h>
#include <platform/runtime/str.h>

namespace TW2
{
void TW_ObjectAnimationKeyframeCallback::operator()(KeyframeAnimationChunk& record)
{
    const KeyframeAnimationReference animation(new TW_KeyframeAnimation(record, m_bWithVisibility));
    const char* target = record.header.targetName.c_str();
    if (m_pObject->insertAnimation(target, m_iIndex, animation.get()))
    {
        return;
    }
    TW_ObjectKeyframeAnimationCallback* callback = TW_ObjectAnimation::getKeyframeAnimationCallback();
    if (!callback)
    {
        throw TW_Exception_AnimationTargetNotFound(m_pScript ? m_pScript->staticNesting() : "<script not available>",
                                                   S_STR("Target name \"%s\"", target));
    }
    (*callback)(m_iIndex, animation.get());
}
}  // namespace TW2
