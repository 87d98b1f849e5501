#pragma once

#include <platform/export.h>

#include <cstddef>
#include <functional>

/// A host's way to share out work: calls `body(i)` for every i below `count`, on as many threads as it likes and in any
/// order, and returns when all of these calls have returned. `body` does not throw.
using P_ParallelFor = std::function<void(std::size_t count, const std::function<void(std::size_t)>& body)>;

/// Work of an object's frame that may be done ahead and beside that of others. An object that has such work derives
/// from this too and says so with `P_BaseObject::setFramePreparation`.
class TW2_PLATFORM_API P_FramePreparation
{
public:
    /// Computes what `executeAlways` would compute if it were called now, so that it finds that up to date. Touches
    /// nothing but the object, what hangs below it, and what no other object has taken in this frame; called on any
    /// thread, at most once in a frame. `frame` is different for every frame of the process and never 0.
    virtual void prepareFrame(unsigned long long frame) noexcept = 0;

protected:
    P_FramePreparation() noexcept = default;
    ~P_FramePreparation() = default;
};
