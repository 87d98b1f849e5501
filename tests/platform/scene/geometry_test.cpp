#include "skinned_geometry.h"
#include "tests/support/expectations.h"

#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>
#include <platform/scene/context.h>
#include <platform/scene/driver_exception.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

TEST(Geometry, AFormatIsWhatItsFlagsSay)
{
    const P_VertexFormat format = makeFormat(0x72 | 3 << 8);
    EXPECT_EQ(format.getOldVertexFormat(), 0x372u);
    EXPECT_EQ(format.getBonesPerVertex(), 3u);
    EXPECT_EQ(format.getTextureOffset(1), 12u);
    EXPECT_EQ(format.getStride(), 14u);
    P_VertexFormat kept = format;
    EXPECT_THROW(kept.constructFromOldVertexFormat(0x35), P_DriverException);
    EXPECT_THROW(kept.constructFromOldVertexFormat(0x30 | 5 << 8), P_DriverException_TooManyBonesPerVertex);
    EXPECT_EQ(kept, format);
}

TEST(Geometry, NormalsAreShownAsLinesThatBeginAtTheirVertices)
{
    Dice dice{5};
    P_VirtualObject object(2);
    P_TriangleMesh& mesh = *object.createTriangleMesh(0, nullptr, makeFormat(0x30));
    object.createTriangleMesh(1, nullptr, makeFormat(0x10))->allocate(1, 3, false);
    mesh.allocate(1, 3, false);
    mesh.lock();
    for (unsigned int vertex = 0; vertex < 3; ++vertex)
    {
        mesh.getVertexBuffer().setPosition(vertex, dice.vector(2.0f));
        mesh.getVertexBuffer().setNormal(vertex, dice.vector(1.0f));
    }
    mesh.unlock();
    object.setMatrix(M_Matrix4x3Template<float>::translation({7, 8, 9}));
    P_Context& context = *object.getContext();
    P_Scene scene;
    object.addTo(&scene);
    scene.executeFrame();
    EXPECT_TRUE(context.getDebugLines().empty());
    object.enableVertexNormalVisualization(true);
    scene.executeFrame();
    ASSERT_EQ(context.getDebugLines().size(), 3u) << "and none where there are no normals";
    for (unsigned int vertex = 0; vertex < 3; ++vertex)
    {
        const P_Context::DebugLine& line = context.getDebugLines()[vertex];
        const Vector from = mesh.getVertexBuffer().getPosition(vertex) + Vector{7, 8, 9};
        EXPECT_LT((line.m_vFrom - from).length(), 1e-5f);
        EXPECT_LT((line.m_vTo - from - mesh.getVertexBuffer().getNormal(vertex)).length(), 1e-5f);
    }
    context.clearDebugLines();
}
TEST(Geometry, BuffersKeepWhatIsWrittenInsideALockAndRefuseTheRest)
{
    P_VirtualObject object(2);
    P_TriangleMesh& mesh = *object.createTriangleMesh(1, nullptr, makeFormat(0x52));
    mesh.allocate(2, 3, true);
    P_VertexBuffer& vertices = mesh.getVertexBuffer();
    P_IndexBuffer& indices = mesh.getIndexBuffer();
    EXPECT_THROW(vertices.setPosition(0, {}), P_SceneException);
    const unsigned int revision = mesh.getRevision();
    mesh.lock();
    mesh.lock();
    vertices.setPosition(2, {1.0f, 2.0f, 3.0f});
    vertices.setTextureCoordinate(2, 1, 0.25f, 0.75f);
    EXPECT_EQ(vertices.getColorAlpha(2), 255.0f);
    vertices.setColorAlpha(2, 127.5f);
    indices.setTriangle(1, 2, 0, 1);
    EXPECT_THROW(vertices.setNormal(2, {}), P_SceneException);
    EXPECT_THROW(vertices.setTextureCoordinate(2, 2, 0.0f, 0.0f), P_SceneException);
    EXPECT_THROW(vertices.setPosition(3, {}), P_SceneException);
    EXPECT_THROW(indices.setTriangle(0, 0, 1, 3), P_SceneException);
    EXPECT_THROW(vertices.setUsedCount(4), P_SceneException);
    indices.setUsedCount(1);
    EXPECT_THROW(indices.setTriangle(1, 0, 1, 2), P_SceneException);
    mesh.unlock();
    EXPECT_TRUE(vertices.isLocked());
    mesh.unlock();
    mesh.unlock();
    EXPECT_FALSE(mesh.isLocked());
    EXPECT_EQ(mesh.getRevision(), revision + 1);
    EXPECT_EQ(vertices.getPosition(2), (Vector{1.0f, 2.0f, 3.0f}));
    EXPECT_EQ(vertices.getTextureV(2, 1), 0.75f);
    EXPECT_EQ(vertices.getColorAlpha(2), 127.5f);
    EXPECT_EQ(vertices.getTextureU(0, 0), 0.0f);
    EXPECT_EQ(indices.getIndex(1, 0), 2u);
    mesh.setDrawnRange(1, 5);
    EXPECT_EQ(mesh.getDrawnCount(), 0u);
    indices.setUsedCount(2);
    EXPECT_EQ(mesh.getDrawnCount(), 1u);
}

TEST(Geometry, CopiesShareItAndDuplicatesHaveTheirOwn)
{
    const support::NothingLeft check;
    Dice dice(1);
    auto original = std::make_unique<P_VirtualObject>(1);
    fill(*original, dice, 3, 2);
    original->setName("a name that is longer than a string holds by itself");
    original->getPrimitiveInstance(0)->setTextureMatrix(1, M_Matrix4Template<float>());
    P_TriangleMesh* mesh = original->getPrimitive(0);
    P_VirtualObject copy(*original);
    EXPECT_EQ(copy.getPrimitive(0), mesh);
    EXPECT_EQ(mesh->getReferenceCount(), 1) << "primitives are shared as they are";
    copy.getPrimitiveInstance(0)->setVisible(false);
    EXPECT_TRUE(original->getPrimitiveInstance(0)->isVisible());
    EXPECT_EQ(copy.getPrimitive(0), mesh);
    EXPECT_EQ(mesh->getReferenceCount(), 2);
    P_VirtualObject own(4);
    own.duplicate(*original);
    EXPECT_EQ(mesh->getReferenceCount(), 2);
    EXPECT_EQ(own.getPrimitiveCount(), 1);
    EXPECT_EQ(own.getName(), original->getName());
    EXPECT_NE(own.getPrimitive(0), mesh);
    EXPECT_NE(own.getPrimitive(0)->asSkinMesh(), nullptr);
    original.reset();
    EXPECT_EQ(mesh->getReferenceCount(), 1);
    EXPECT_EQ(copy.getVertexPosition(0, 2), own.getVertexPosition(0, 2));
    EXPECT_NE(copy.getPrimitiveInstance(0)->getTextureMatrix(1), nullptr);
}

TEST(Geometry, FailedAllocationsLeaveNothingBehindAndObjectsAsTheyWere)
{
    Dice dice(1);
    P_VirtualObject original(2);
    fill(original, dice, 3, 2);
    original.setName("a name that is longer than a string holds by itself");
    original.getPrimitiveInstance(0)->setTextureMatrix(1, M_Matrix4Template<float>());
    P_TriangleMesh* mesh = original.getPrimitive(0);
    const Vector position = original.getVertexPosition(0, 2);
    support::expectNothingLeftByFailedAllocations([&] { P_VirtualObject object(3); });
    support::expectUnchangedByFailedAllocations([&] { P_VirtualObject copy(original); },
                                                [&] { EXPECT_EQ(mesh->getReferenceCount(), 1); });
    {
        P_VirtualObject target(1);
        fill(target, dice, 1, 0);
        const P_TriangleMesh* before = target.getPrimitive(0);
        support::expectUnchangedByFailedAllocations([&] { target.duplicate(original); },
                                                    [&]
                                                    {
                                                        EXPECT_EQ(target.getPrimitive(0), before);
                                                        EXPECT_EQ(target.getName(), "");
                                                    });
    }
    support::expectNothingLeftByFailedAllocations([&] { P_LODObject lod(2); });
    support::expectUnchangedByFailedAllocations([&] { mesh->allocate(5, 7, false); },
                                                [&]
                                                {
                                                    EXPECT_EQ(mesh->getVertexBuffer().getCapacity(), 3u);
                                                    EXPECT_EQ(original.getVertexPosition(0, 2), position);
                                                });
    EXPECT_THROW(P_VirtualObject(-1), P_SceneException);
    EXPECT_THROW(P_LODObject(-1), P_SceneException);
    EXPECT_THROW(original.createTriangleMesh(2, nullptr, {}), P_SceneException);
    EXPECT_EQ(original.getPrimitive(-1), nullptr);
}

TEST(Skinning, AVertexStandsAtTheWeightedSumOfItsBones)
{
    Dice dice(5);
    P_VirtualObject object(1);
    fill(object, dice, 500, 6);
    // The last bone has no matrix: it counts as the identity.
    std::vector<Matrix> bones(5);
    S_Vector<const Matrix*> pointers;
    for (Matrix& bone : bones)
    {
        pointers.push_back(&bone);
    }
    object.setBoneMatrices(pointers);
    for (int frame = 0; frame < 3; ++frame)
    {
        for (unsigned int v = 0; v < 500; ++v)
        {
            const Vector actual = object.getVertexPosition(0, v);
            const M_Vector3Template<double> expected = getSkinned(object, v);
            ASSERT_NEAR(static_cast<double>(actual.x), expected.x, 1e-5);
            ASSERT_NEAR(static_cast<double>(actual.y), expected.y, 1e-5);
            ASSERT_NEAR(static_cast<double>(actual.z), expected.z, 1e-5);
        }
        for (Matrix& bone : bones)
        {
            bone = dice.matrix(2.0f);  // read in place: nothing else is called
        }
    }
    EXPECT_LE(object.getPrimitive(0)->asSkinMesh()->getBoneLimit(), 6u);
}
