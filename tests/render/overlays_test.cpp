#include "render/overlays.h"

#include "render/studio.h"

#include <platform/scene/lod_object.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;
using TW2::render::View;

bool near(const Vector& a, const Vector& b)
{
    return (a - b).length() < 1e-5F;
}

/// Whether a view has a line between two places, in either direction, whose colour is strongest in a channel, if given.
bool hasLine(const std::vector<View::Line>& lines, const Vector& from, const Vector& to, int strongest = -1)
{
    return std::ranges::any_of(lines,
                               [&](const View::Line& line)
                               {
                                   const float rgb[] = {line.m_color.red, line.m_color.green, line.m_color.blue};
                                   return ((near(line.m_vFrom, from) && near(line.m_vTo, to)) ||
                                           (near(line.m_vFrom, to) && near(line.m_vTo, from))) &&
                                          (strongest < 0 || std::ranges::max_element(rgb) - rgb == strongest);
                               });
}

/// One triangle that faces negative z, in an object at (10, 0, 0) that is stretched to twice its width.
class Overlays : public testing::Test
{
protected:
    Overlays()
    {
        P_VertexFormat format;
        format.constructFromOldVertexFormat(P_VertexFormat::POSITION | P_VertexFormat::NORMAL);
        P_TriangleMesh& mesh = *m_object.createTriangleMesh(0, nullptr, format);
        mesh.allocate(1, 3, false);
        mesh.lock();
        mesh.getVertexBuffer().setPosition(0, {0.0F, 0.0F, 0.0F});
        mesh.getVertexBuffer().setPosition(1, {0.0F, 3.0F, 1.0F});
        mesh.getVertexBuffer().setPosition(2, {4.0F, 0.0F, 0.0F});
        for (unsigned int vertex = 0; vertex < 3; ++vertex)
        {
            mesh.getVertexBuffer().setNormal(vertex, {std::sqrt(0.5F), 0.0F, -std::sqrt(0.5F)});
        }
        mesh.unlock();
        Matrix place = Matrix::translation({10.0F, 0.0F, 0.0F});
        place.m[0][0] = 2.0F;
        m_object.setMatrix(place);
    }

    P_VirtualObject m_object{1};
    View m_view;
    G_FColor m_color{1.0F, 2.0F, 3.0F};
};
}  // namespace

TEST_F(Overlays, AxesStandWhereTheObjectsStandAndAreAsLongAsAsked)
{
    TW2::render::addAxes(m_view, m_object, 0.5F);
    ASSERT_EQ(m_view.m_vecOverlayLines.size(), 3U);
    EXPECT_TRUE(hasLine(m_view.m_vecOverlayLines, {10.0F, 0.0F, 0.0F}, {10.5F, 0.0F, 0.0F}, 0));
    EXPECT_TRUE(hasLine(m_view.m_vecOverlayLines, {10.0F, 0.0F, 0.0F}, {10.0F, 0.5F, 0.0F}, 1));
    EXPECT_TRUE(hasLine(m_view.m_vecOverlayLines, {10.0F, 0.0F, 0.0F}, {10.0F, 0.0F, 0.5F}, 2));
}

TEST_F(Overlays, BoxesHaveTheTwelveEdgesOfTheObjectsVolume)
{
    TW2::render::addBoundingBox(m_view, m_object, m_color);
    ASSERT_EQ(m_view.m_vecLines.size(), 12U);
    EXPECT_TRUE(hasLine(m_view.m_vecLines, {10.0F, 0.0F, 0.0F}, {18.0F, 0.0F, 0.0F}));
    EXPECT_TRUE(hasLine(m_view.m_vecLines, {10.0F, 3.0F, 0.0F}, {18.0F, 3.0F, 0.0F}));
    EXPECT_TRUE(hasLine(m_view.m_vecLines, {18.0F, 0.0F, 0.0F}, {18.0F, 3.0F, 0.0F}));
    EXPECT_TRUE(hasLine(m_view.m_vecLines, {10.0F, 3.0F, 0.0F}, {10.0F, 3.0F, 1.0F}));
    EXPECT_TRUE(hasLine(m_view.m_vecLines, {10.0F, 3.0F, 1.0F}, {18.0F, 3.0F, 1.0F}));
    EXPECT_EQ(m_view.m_vecLines[0].m_color, m_color);
}

TEST_F(Overlays, SpheresRunAroundTheObjectAtItsRadius)
{
    m_object.setMatrix(Matrix::translation({10.0F, 0.0F, 0.0F}));
    TW2::render::addBoundingSphere(m_view, m_object, m_color);
    ASSERT_GT(m_view.m_vecLines.size(), 3U * 30U);
    Vector total;
    for (const View::Line& line : m_view.m_vecLines)
    {
        EXPECT_NEAR((line.m_vFrom - Vector{10.0F, 0.0F, 0.0F}).length(), 4.0F, 1e-4F);
        EXPECT_LT((line.m_vTo - line.m_vFrom).length(), 1.0F);
        EXPECT_EQ(line.m_color, m_color);
        total = total + line.m_vTo - line.m_vFrom;
    }
    EXPECT_LT(total.length(), 1e-3F) << "closed circles";
}

TEST_F(Overlays, NormalsStandOnTheSurfaceUnderUnevenScales)
{
    TW2::render::addVertexNormals(m_view, m_object, 1.0F, m_color);
    ASSERT_EQ(m_view.m_vecLines.size(), 3U);
    // The plane through the normal (1, 0, -1) is stretched to twice its width: (1, 0, -2) stands on it.
    const Vector normal = Vector{1.0F, 0.0F, -2.0F}.normalized();
    EXPECT_TRUE(hasLine(m_view.m_vecLines, {18.0F, 0.0F, 0.0F}, Vector{18.0F, 0.0F, 0.0F} + normal));
    m_object.getPrimitiveInstance(0)->setVisible(false);
    m_view.m_vecLines.clear();
    TW2::render::addVertexNormals(m_view, m_object, 1.0F, m_color);
    EXPECT_TRUE(m_view.m_vecLines.empty()) << "what is not drawn has no normals";
}

TEST_F(Overlays, SkeletonsJoinWhatHangsOnAnotherAndLevelsInUseStandForAll)
{
    P_VirtualObject hand(1);
    P_LODObject levels(2);
    P_VirtualObject coarse(1);
    hand.addTo(&m_object);
    hand.setMatrix(Matrix::translation({1.0F, 2.0F, 0.0F}));
    levels.addTo(&m_object);
    P_VirtualObject fine(1);
    levels.setLODObject(0, &fine, 1.0F);
    levels.setLODObject(1, &coarse, 2.0F);
    TW2::render::addSkeleton(m_view, m_object, m_color);
    ASSERT_EQ(m_view.m_vecOverlayLines.size(), 1U);
    EXPECT_TRUE(hasLine(m_view.m_vecOverlayLines, {10.0F, 0.0F, 0.0F}, {12.0F, 2.0F, 0.0F}));
    const auto countAxes = [this]
    {
        m_view.m_vecOverlayLines.clear();
        TW2::render::addAxes(m_view, m_object, 1.0F);
        return m_view.m_vecOverlayLines.size();
    };
    EXPECT_EQ(countAxes(), 2 * 3U) << "no level is in use yet";
    levels.calculateLOD();
    EXPECT_EQ(countAxes(), 3 * 3U) << "one level";
}
