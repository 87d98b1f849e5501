#pragma once

namespace TW2
{
/// An exception to be thrown, with `hint` beside its message.
template <typename Exception>
[[nodiscard]] Exception withHint(Exception exception, const char* hint)
{
    exception.addHint("%s", hint);
    return exception;
}
}  // namespace TW2
