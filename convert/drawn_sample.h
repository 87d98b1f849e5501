#pragma once

#include "convert/box.h"
#include "convert/geometry_builder.h"
#include "convert/model.h"
#include "convert/skeleton.h"

#include <cstddef>
#include <vector>

namespace TW2::convert
{
/// Vertices of a model that stand for all that is drawn: some hundred, evenly out of every mesh, each reached in two
/// ways: as the file says it, and as the library draws what is written.
class DrawnSample
{
public:
    DrawnSample(const Model& model, const Skeleton& skeleton);

    /// The largest distance between the vertices as the library draws them with the world matrices `played` and as the
    /// file has them with `shouldBe`; both one per joint. `moving`: the joints whose vertices count; null for all.
    [[nodiscard]] double measureDistance(const std::vector<Matrixd>& played, const std::vector<Matrixd>& shouldBe,
                                         const std::vector<bool>* moving = nullptr) const;

private:
    struct Pull
    {
        std::size_t m_uiJoint;
        double m_dWeight;
        Vector3d m_vInFile;   ///< in the joint's space, by the file's inverse bind matrix
        Vector3d m_vWritten;  ///< in the joint's space, by the pose at rest that is written
    };
    std::vector<std::vector<Pull>> m_vecVertices;
};

/// Diagonal of the box around what is drawn in the pose at rest; around the joints when nothing is drawn.
[[nodiscard]] double measureSize(const Model& model, const Skeleton& skeleton);

/// The space that is taken up by what is drawn. Each joint carries a box around all vertices that it pulls at: a
/// skinned vertex lies between the places where its joints want it, so it lies within these boxes' corners.
class DrawnBounds
{
public:
    DrawnBounds(const Model& model, const Skeleton& skeleton);

    /// Makes room for what is drawn with these world matrices, one per joint.
    void add(const std::vector<Matrixd>& world);

    /// Empty when nothing is drawn.
    [[nodiscard]] const Box& getBox() const noexcept { return m_box; }
    /// Radius of a sphere around the scene's origin.
    [[nodiscard]] double getRadius() const noexcept { return m_dRadius; }

private:
    struct Part
    {
        std::size_t m_uiJoint;
        Box m_box;  ///< in the joint's space
    };
    std::vector<Part> m_vecParts;
    Box m_box;
    double m_dRadius = 0.0;
};
}  // namespace TW2::convert
