#include "viewer/visibility.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

namespace TW2::viewer
{
void followVisibility(TW_VirtualObject& object, int animation, float time)
{
    const auto follow = [=](auto& part)
    {
        if (animation >= 0)
        {
            part.updateVisibility(animation, time);
        }
    };
    const auto showAll = [](TW_ObjectAnimation& part)
    {
        for (unsigned int i = 0; i < part.getTotalMeshes(); ++i)
        {
            part.getMesh(i)->enable(true);
        }
    };
    if (auto* const levels = dynamic_cast<TW_ObjectAnimationLODs*>(&object))
    {
        for (int i = 0; animation < 0 && i < levels->getLevelCount(); ++i)
        {
            showAll(*levels->getLODObject(i));
        }
        follow(*levels);
    }
    else if (auto* const single = dynamic_cast<TW_ObjectAnimation*>(&object))
    {
        animation < 0 ? showAll(*single) : follow(*single);
    }
}
}  // namespace TW2::viewer
