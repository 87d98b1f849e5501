#pragma once

#include "convert/model.h"

#include <vector>

namespace TW2::convert
{
/// Motion of a node that its file says in other parts than places, rotations and scales. Immutable, so that copies of a
/// channel share it.
class NodeMotion
{
public:
    NodeMotion() = default;
    NodeMotion(const NodeMotion&) = delete;
    NodeMotion& operator=(const NodeMotion&) = delete;
    virtual ~NodeMotion() = default;

    /// The node's local matrix at `seconds` of the clip, without the model's `m_root`.
    [[nodiscard]] virtual Matrixd at(double seconds) const = 0;
    /// Adds the times of the keys, in seconds of the clip.
    virtual void addTimes(std::vector<double>& times) const = 0;
    /// Adds the times at which the node jumps: `at` such a time gives what follows.
    virtual void addJumps(std::vector<double>& jumps) const = 0;
};
}  // namespace TW2::convert
