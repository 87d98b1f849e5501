#pragma once

#include <stdexcept>

namespace TW2::viewer
{
/// A failure that a user caused and can mend: a name that does not exist, a value out of range. One line.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};
}  // namespace TW2::viewer
