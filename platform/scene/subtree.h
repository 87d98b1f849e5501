#pragma once

#include <platform/scene/base_object.h>

/// The object after `object` in the subtree of `root`, parents before children; null after the last. `descend` false
/// leaves out what hangs below `object`. Needs no stack, so trees may be as deep as they like.
inline P_BaseObject* nextInSubtree(const P_BaseObject& root, const P_BaseObject* object, bool descend = true) noexcept
{
    if (descend && object->getFirstChild())
    {
        return object->getFirstChild();
    }
    while (object != &root)
    {
        if (object->getNextSibling())
        {
            return object->getNextSibling();
        }
        object = object->getParent();
    }
    return nullptr;
}
