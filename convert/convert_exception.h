#pragma once

#include <platform/runtime/exception.h>

namespace TW2::convert
{
/// A model cannot be converted; the message names the file and the reason, in one line.
class ConvertException : public S_Exception
{
public:
    ConvertException(const char* fileName, const char* reason) { setError("%s: %s", fileName, reason); }
};
}  // namespace TW2::convert
