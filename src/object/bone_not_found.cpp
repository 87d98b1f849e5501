#include "object/bone_not_found.h"

#include "core/near_names.h"
#include "core/with_hint.h"

#include <tw2/object/object_animation.h>

#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

namespace TW2
{
TW_Exception_BoneNotFound makeBoneNotFound(const TW_ObjectAnimation& object, const char* name)
{
    S_Vector<std::string_view> names;
    for (unsigned int i = 0; i < object.getTotalMeshes(); ++i)
    {
        names.emplace_back(object.getMesh(i)->getName());
    }
    const S_String alike = listNearNames(name, names);
    return withHint(TW_Exception_BoneNotFound(name, object.getName().c_str()),
                    S_STR("it has %s", alike.empty() ? "none" : alike.c_str()));
}
}  // namespace TW2
