#pragma once

#include "convert/model.h"

#include <vector>

namespace TW2::convert
{
/// Evaluates a clip at any time, exactly as its keys say: positions and scales linear, rotations spherical between two
/// keys, the first and the last key beyond them.
class ClipSampler
{
public:
    /// Both must outlive the sampler.
    ClipSampler(const Model& model, const Clip& clip);

    /// The local matrix of every node at `seconds`; nodes that the clip does not move stay as they are.
    void sampleLocal(double seconds, std::vector<Matrixd>& matrices) const;
    /// Whether the clip moves the node.
    [[nodiscard]] bool isMoved(std::size_t node) const { return m_vecChannels[node] != nullptr; }

    /// World matrices from local ones.
    static void composeWorld(const Model& model, const std::vector<Matrixd>& local, std::vector<Matrixd>& world);

private:
    const Model& m_model;
    std::vector<const Channel*> m_vecChannels;  // per node
};

/// Frames per second at which a clip is sampled: the smallest whole number on whose frames all keys of the clip lie,
/// from 10 to 120; 60 when there is none.
[[nodiscard]] int chooseFrameRate(const Clip& clip);
}  // namespace TW2::convert
