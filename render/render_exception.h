#pragma once

#include <platform/runtime/exception.h>

namespace TW2::render
{
/// A picture cannot be drawn or written; the message says what failed.
class RenderException : public S_Exception
{
public:
    /// `message`: what was tried and what the driver says.
    explicit RenderException(const char* message) { setError("%s", message); }
};
}  // namespace TW2::render
