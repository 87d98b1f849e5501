#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <algorithm>

namespace TW2
{
bool TW_ObjectAnimation::updateVisibility(int index, float time)
{
    return updateVisibilityFrame(index, getAnimationFPS(index) * time);
}

bool TW_ObjectAnimation::updateVisibilityFrame(int index, float frame)
{
    const ObjectAnimation* const record = getAnimation(index);
    if (!record)
    {
        return false;
    }
    const std::size_t count = std::min(record->m_vecKeyframeAnimations.size(), m_vecMeshes.size());
    for (std::size_t mesh = 0; mesh < count; ++mesh)
    {
        const TW_KeyframeAnimation* const track = record->m_vecKeyframeAnimations[mesh];
        if (!track)
        {
            continue;
        }
        const bool visible = track->getVisibilityFrame(frame) > 0.0F;
        if (visible != m_vecMeshes[mesh]->isEnabled())
        {
            m_vecMeshes[mesh]->enable(visible);
        }
    }
    return true;
}
}  // namespace TW2
