#pragma once

#include <tw2/motion/reaching.h>
#include <tw2/motion/rotation.h>

#include <array>
#include <cstddef>

namespace TW2
{
/// Most bones of a chain.
constexpr std::size_t chainLimit = 64;

/// A chain of bones in one space, and what is done to it: each bone's turn, in that space, that of the bones above it
/// included. Positions are those before the turns.
struct ReachJoints
{
    using Vector = M_Vector3Template<double>;

    std::size_t m_uiCount = 0;
    std::array<Vector, chainLimit> m_positions;
    std::array<TW_Rotation, chainLimit> m_turns;
    /// Of the first bone: directions that turn with it, to tell where a straight chain bends.
    Vector m_side[3];

    /// Where a joint is after the turns.
    [[nodiscard]] Vector getTurned(std::size_t joint) const noexcept;
};

/// The solvers behind the functions of reaching.h: they set the turns. `axes` is the last bone's rotation.
/// @{
float solveTwoBones(ReachJoints& joints, const TW_TwoBoneReach& reach, const M_Vector3Template<double>& target,
                    const M_Vector3Template<double>& pole) noexcept;
float solveAim(ReachJoints& joints, const TW_Aim& aim, const M_Vector3Template<double>& target,
               const M_Vector3Template<double>& forward, const M_Vector3Template<double>& eye) noexcept;
float solveChain(ReachJoints& joints, const TW_ChainReach& reach, const M_Vector3Template<double>& target) noexcept;
/// @}
}  // namespace TW2
