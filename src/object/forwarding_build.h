#pragma once

#include "core/memory_scope.h"

#include <tw2/object/forwarding_object.h>

#include <platform/runtime/rollback.h>

namespace TW2
{
template <typename Steps>
void TW_ForwardingObject::build(const Steps& steps)
{
    const MemoryScope scope;
    destruct();
    S_Rollback rollback([this]() noexcept { destruct(); });
    const LoadScope load(*this);
    load.requireObject();
    m_bConstructed = true;
    forgetBoundingVolumes();
    steps();
    load.requireObject();
    complete();
    rollback.keep();
}
}  // namespace TW2
