#pragma once

#include "convert/clip_sampler.h"
#include "convert/timeline.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace TW2::convert
{
/// One matrix per sample; of what stands still, one for all.
class Matrices
{
public:
    /// Nothing yet.
    Matrices() = default;
    explicit Matrices(const Matrixd& still) : m_vecMatrices(1, still), m_uiStep(0) {}
    explicit Matrices(std::vector<Matrixd> matrices) : m_vecMatrices(std::move(matrices)) {}

    [[nodiscard]] bool isStill() const noexcept { return m_uiStep == 0; }
    [[nodiscard]] const Matrixd& operator[](std::size_t sample) const { return m_vecMatrices[sample * m_uiStep]; }
    /// All of them, or the only one.
    [[nodiscard]] const std::vector<Matrixd>& get() const noexcept { return m_vecMatrices; }

private:
    std::vector<Matrixd> m_vecMatrices;
    std::size_t m_uiStep = 1;
};

/// A frame at which a joint is at once somewhere else.
struct Jump
{
    std::size_t m_uiFrame;  ///< index of the timeline's
    Matrixd m_before;       ///< local
};

/// One joint's own motion, per sample.
struct Course
{
    bool m_bMoved = false;
    struct Jumps
    {
        bool m_bOnFrames = false;  ///< on the first one or later
        bool m_bBetween = false;   ///< between two of them, which no keys can say
    } m_jumps;
    Matrices m_local;
    Matrices m_world;
    std::vector<Jump> m_vecJumps;
};

/// `jumps`: when the joint jumps. `parentWorld`: of the parent's course; null for a joint without parent.
[[nodiscard]] Course sampleCourse(const ClipSampler& sampler, const Timeline& timeline, std::size_t joint,
                                  const std::vector<double>& jumps, const Matrices* parentWorld);
}  // namespace TW2::convert
