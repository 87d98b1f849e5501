#include "skin/skeleton_bone.h"

#include <tw2/core/exceptions.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/hash_map.h>
#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

namespace TW2
{
int findSkeletonBone(const TW_ObjectAnimation& skeleton, const S_String& name, unsigned int expected)
{
    const unsigned int count = skeleton.getTotalMeshes();
    for (unsigned int j = 0; j < count; ++j)
    {
        const unsigned int mesh = (expected % count + j) % count;
        if (S_CaselessNameEqual()(skeleton.getMesh(mesh)->getName(), name))
        {
            return static_cast<int>(mesh);
        }
    }
    return -1;
}

void throwUndefinedBone(const TW_ObjectAnimation& skeleton, const S_String& name)
{
    throw TW_Exception_InvalidGeometry(S_STR("SKD refers to undefined skeleton bone (skeleton %s, bone %s)",
                                             skeleton.getName().c_str(), name.c_str()));
}
}  // namespace TW2
