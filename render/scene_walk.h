#pragma once

#include <platform/scene/lod_object.h>
#include <platform/scene/virtual_object.h>

#include <vector>

namespace TW2::render
{
/// Calls `visit` with every mesh in the subtree of `root`, parents first; of a level-of-detail object with those of the
/// level in use.
template <typename Visit>
void forEachShownMesh(const P_BaseObject& root, Visit visit)
{
    std::vector<const P_BaseObject*> pending{&root};
    while (!pending.empty())
    {
        const P_BaseObject* object = pending.back();
        pending.pop_back();
        if (const P_VirtualObject* mesh = object->asMesh())
        {
            visit(*mesh);
        }
        if (const P_LODObject* levels = object->asLODObject())
        {
            if (const P_BaseObject* used = levels->getUsedLODObject())
            {
                pending.push_back(used);
            }
            continue;
        }
        for (const P_BaseObject* child : object->getChildren())
        {
            pending.push_back(child);
        }
    }
}
}  // namespace TW2::render
