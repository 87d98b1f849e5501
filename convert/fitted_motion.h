#pragma once

#include "convert/model.h"
#include "convert/node_match.h"
#include "convert/skeleton.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace TW2::convert
{
/// How the motion of one skeleton becomes another one's: what both poses at rest say, once for all clips. Immutable.
class Fitting
{
public:
    /// What is to be known of one node of the body.
    struct Place
    {
        int m_iFrom = -1;   ///< the other model's node; -1: it stays as it is in its parent
        int m_iAbove = -1;  ///< the next node above it that has a counterpart
        Matrixd m_rest;     ///< turn in the scene, at rest; without a counterpart: in its parent
        /// Turn in the scene that brings the limb from its pose at rest to the other model's.
        Matrixd m_alignment;
    };

    /// Both models must outlive the fitting.
    Fitting(const Model& body, const Model& other, const NodeMatch& match);

    [[nodiscard]] const Model& getBody() const noexcept { return m_body; }
    [[nodiscard]] const Model& getOther() const noexcept { return m_other; }
    [[nodiscard]] const Skeleton& getBodyAtRest() const noexcept { return m_bodyAtRest; }
    [[nodiscard]] const Skeleton& getOtherAtRest() const noexcept { return m_otherAtRest; }
    [[nodiscard]] const Place& getPlace(std::size_t node) const { return m_vecPlaces[node]; }
    /// Size of the body by the other model's.
    [[nodiscard]] double getRatio() const noexcept { return m_dRatio; }
    /// Heights of the hips above what stands lowest, at rest; 0 where that says nothing.
    [[nodiscard]] double getBodyHeight() const noexcept { return m_dBodyHeight; }
    [[nodiscard]] double getOtherHeight() const noexcept { return m_dOtherHeight; }
    /// The turn from the way in which the other model looks to that of the body.
    [[nodiscard]] const Matrixd& getHeading() const noexcept { return m_heading; }
    /// Whether a node of the body stands close to the ground at rest, and its counterpart too.
    [[nodiscard]] bool isFoot(std::size_t node) const;

private:
    void findPlaces(const NodeMatch& match);
    void measureHeights();
    void findHeading();
    void align();
    [[nodiscard]] Vector3d getBodyPoint(std::size_t node) const;
    [[nodiscard]] Vector3d getOtherPoint(std::size_t node) const;  // of the counterpart
    [[nodiscard]] bool isBelow(std::size_t node, std::size_t above) const;
    [[nodiscard]] std::vector<std::size_t> findBelow(std::size_t node) const;

    const Model& m_body;
    const Model& m_other;
    Skeleton m_bodyAtRest;
    Skeleton m_otherAtRest;
    std::vector<Place> m_vecPlaces;
    Matrixd m_heading;
    double m_dRatio = 1.0;
    double m_dBodyHeight = 0.0;
    double m_dOtherHeight = 0.0;
    double m_dBodyGround = 0.0;
    double m_dOtherGround = 0.0;
};

/// A clip of the other model for the body. Keeps the fitting alive.
[[nodiscard]] Clip makeFittedClip(const std::shared_ptr<const Fitting>& fitting, const Clip& clip);

/// The turn in a matrix: its rows at right angles and of unit length; of a mirrored one with its first row turned
/// around.
[[nodiscard]] Matrixd findTurn(const Matrixd& matrix);
}  // namespace TW2::convert
