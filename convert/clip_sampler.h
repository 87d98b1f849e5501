#pragma once

#include "convert/model.h"

#include <cstddef>
#include <vector>

namespace TW2::convert
{
/// Evaluates a clip at any time, exactly as its keys say. What a channel has no keys for is as in the node's rest pose.
class ClipSampler
{
public:
    static constexpr double jumpTime = 1e-5;  ///< seconds within which a jump is over

    /// Both must outlive the sampler.
    ClipSampler(const Model& model, const Clip& clip);

    /// The local matrix of one node at `seconds` of the clip. A node that the clip does not move, or that is not the
    /// model's, stays as it is: the latter at its parent.
    [[nodiscard]] Matrixd sample(std::size_t node, double seconds) const;
    /// Whether the clip moves the node.
    [[nodiscard]] bool isMoved(std::size_t node) const
    {
        return node < m_vecChannels.size() && m_vecChannels[node] != nullptr;
    }
    /// The times at which the node jumps, ascending: at such a time `sample` gives what follows, `jumpTime` earlier
    /// what was before.
    [[nodiscard]] std::vector<double> findJumps(std::size_t node) const;

private:
    const Model& m_model;
    Matrixd m_root;
    double m_dStart;
    std::vector<const Channel*> m_vecChannels;  // per node
};

/// A channel's matrix in its file's own space, at a time of its curves; `rest` is the node's where it says nothing.
[[nodiscard]] Matrixd evaluate(const Channel& channel, const Matrixd& rest, double seconds);
/// Adds the times of a channel's keys, in seconds as its curves count them.
void addKeyTimes(const Channel& channel, std::vector<double>& times);
/// Adds the times at which it jumps, likewise.
void addJumps(const Channel& channel, std::vector<double>& jumps);

/// Frames per second at which a clip is sampled: the smallest whole number on whose frames all keys of the clip lie,
/// from 10 to 120; 60 when there is none.
[[nodiscard]] int chooseFrameRate(const Clip& clip);
/// How far from a whole one the frame of a key may be that is meant to lie on it: files round their times.
[[nodiscard]] double getFrameTolerance(double frame) noexcept;
}  // namespace TW2::convert
