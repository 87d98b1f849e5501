#include "motion/bone_tree.h"

#include "object/bone_not_found.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

namespace TW2
{
unsigned int findBone(const TW_ObjectAnimation& object, const char* name)
{
    if (const P_VirtualObject* const mesh = object.getMeshByName(name))
    {
        return static_cast<unsigned int>(object.getMeshIndex(mesh));
    }
    throw makeBoneNotFound(object, name);
}

bool hasBone(const TW_ObjectAnimation& object, const char* name)
{
    return object.getMeshByName(name) != nullptr;
}

int findParent(const TW_ObjectAnimation& object, unsigned int bone) noexcept
{
    const P_BaseObject* const parent = object.getMesh(bone)->getParent();
    if (parent && parent->getTransformBlock() == &object.getMeshTransforms())
    {
        return static_cast<int>(parent->getTransformBlockIndex());
    }
    if (object.getMeshTransforms().getMemberCount() == object.getTotalMeshes())
    {
        return -1;
    }
    // One that a host has taken into a block of its own may be meant.
    for (unsigned int i = 0; parent && i < object.getTotalMeshes(); ++i)
    {
        if (object.getMesh(i) == parent)
        {
            return static_cast<int>(i);
        }
    }
    return -1;
}

int getDepthBelow(const TW_ObjectAnimation& object, unsigned int bone, unsigned int top) noexcept
{
    int depth = 0;
    for (int above = static_cast<int>(bone); above >= 0; above = findParent(object, static_cast<unsigned int>(above)))
    {
        if (above == static_cast<int>(top))
        {
            return depth;
        }
        ++depth;
    }
    return -1;
}
}  // namespace TW2
