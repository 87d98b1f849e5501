#include "test_object.h"

#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>
#include <platform/scene/camera.h>
#include <platform/scene/driver_exception.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

namespace
{
P_VertexFormat makeFormat(unsigned int flags)
{
    P_VertexFormat format;
    format.constructFromOldVertexFormat(flags);
    return format;
}

/// Gives primitive 0 random vertices; with bones also random influences among them.
void fill(P_VirtualObject& object, Dice& dice, unsigned int vertices, unsigned int bones)
{
    P_TriangleMesh* mesh;
    P_SkinMesh* skin = nullptr;
    if (bones > 0)
    {
        mesh = skin = object.createSkinMesh(0, nullptr, makeFormat(0x30 | 4 << P_VertexFormat::BONE_COUNT_SHIFT));
    }
    else
    {
        mesh = object.createTriangleMesh(0, nullptr, makeFormat(0x30));
    }
    mesh->allocate(1, vertices, false);
    mesh->lock();
    for (unsigned int v = 0; v < vertices; ++v)
    {
        mesh->getVertexBuffer().setPosition(v, dice.vector(2.0f));
        const unsigned int slots = skin ? static_cast<unsigned int>(dice.pick(5)) : 0;
        for (unsigned int slot = 0; slot < slots; ++slot)
        {
            skin->setBoneIndex(v, slot, static_cast<unsigned int>(dice.pick(bones)));
            skin->setBoneWeight(v, slot, 1.0f / static_cast<float>(slots));
        }
    }
    mesh->unlock();
}

/// Where a vertex stands by the definition of skinning, in double precision.
M_Vector3Template<double> getSkinned(const P_VirtualObject& object, unsigned int vertex)
{
    const P_TriangleMesh& mesh = *object.getPrimitive(0);
    const Vector rest = mesh.getVertexBuffer().getPosition(vertex);
    const M_Vector3Template<double> p{static_cast<double>(rest.x), static_cast<double>(rest.y),
                                      static_cast<double>(rest.z)};
    const P_SkinMesh* skin = mesh.asSkinMesh();
    M_Vector3Template<double> sum;
    double weights = 0.0;
    for (unsigned int slot = 0; skin && slot < skin->getSlotCount(); ++slot)
    {
        M_Matrix4x3Template<double> bone;
        if (skin->getBoneIndex(vertex, slot) < object.getBoneMatrixCount())
        {
            std::copy_n(object.getBoneMatrix(skin->getBoneIndex(vertex, slot)).data(), 12, bone.data());
        }
        const double weight = static_cast<double>(skin->getBoneWeight(vertex, slot));
        sum += bone.transformPoint(p) * weight;
        weights += weight;
    }
    return weights > 0.0 ? sum : p;
}

/// Runs `action` with each of its allocations failing in turn, then without failure. Each failed run must leave no
/// allocation behind; `check` looks at what must be as before.
void failEachAllocation(const std::function<void()>& action, const std::function<void()>& check)
{
    const long long live = S_Memory::getLiveCount();
    for (long long n = 1;; ++n)
    {
        ASSERT_LT(n, 1000);
        S_Memory::failAllocation(n);
        try
        {
            action();
            EXPECT_TRUE(S_Memory::isFailurePending());
            S_Memory::failAllocation(0);
            EXPECT_GT(n, 1) << "nothing was allocated";
            return;
        }
        catch (const S_MemoryException_Allocation&)
        {
            ASSERT_EQ(S_Memory::getLiveCount(), live) << "allocation " << n;
            check();
        }
    }
}
}  // namespace

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
    const long long live = S_Memory::getLiveCount();
    {
        Dice dice(1);
        auto original = std::make_unique<P_VirtualObject>(1);
        fill(*original, dice, 3, 2);
        original->setName("a name that is longer than a string holds by itself");
        original->getPrimitiveInstance(0)->setTextureMatrix(1, M_Matrix4Template<float>());
        P_TriangleMesh* mesh = original->getPrimitive(0);
        P_VirtualObject copy(*original);
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
    EXPECT_EQ(S_Memory::getLiveCount(), live);
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
    const auto nothing = [] {};
    failEachAllocation([&] { P_VirtualObject object(3); }, nothing);
    failEachAllocation([&] { P_VirtualObject copy(original); }, [&] { EXPECT_EQ(mesh->getReferenceCount(), 1); });
    {
        P_VirtualObject target(1);
        fill(target, dice, 1, 0);
        const P_TriangleMesh* before = target.getPrimitive(0);
        failEachAllocation([&] { target.duplicate(original); },
                           [&]
                           {
                               EXPECT_EQ(target.getPrimitive(0), before);
                               EXPECT_EQ(target.getName(), "");
                           });
    }
    failEachAllocation([&] { P_LODObject lod(2); }, nothing);
    failEachAllocation([&] { mesh->allocate(5, 7, false); },
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

TEST(BoundingVolumes, HoldEveryVertexOfTheEnabledMeshesBelow)
{
    for (unsigned int seed = 0; seed < 60; ++seed)
    {
        Dice dice(seed);
        std::vector<Matrix> bones(3);
        S_Vector<const Matrix*> pointers{&bones[0], &bones[1], &bones[2]};
        std::vector<std::unique_ptr<P_BaseObject>> objects;
        std::vector<P_VirtualObject*> meshes;
        for (std::size_t i = 0; i < 12; ++i)
        {
            if (dice.chance(0.5))
            {
                auto mesh = std::make_unique<P_VirtualObject>(1);
                fill(*mesh, dice, 8, dice.chance(0.5) ? 3 : 0);
                mesh->setBoneMatrices(pointers);
                mesh->enable(dice.chance(0.7));
                meshes.push_back(mesh.get());
                objects.push_back(std::move(mesh));
            }
            else
            {
                objects.push_back(std::make_unique<TestObject>());
            }
            objects[i]->setMatrix(dice.matrix(3.0f));
            if (i > 0)
            {
                objects[i]->addTo(objects[dice.pick(i)].get());
            }
        }
        for (Matrix& bone : bones)
        {
            bone = dice.matrix(1.0f);
        }
        for (const std::unique_ptr<P_BaseObject>& top : objects)
        {
            float radius = 0.0f;
            std::vector<Vector> points;
            for (P_VirtualObject* mesh : meshes)
            {
                const P_BaseObject* at = mesh;
                while (at && at != top.get())
                {
                    at = at->getParent();
                }
                const Matrix toTop = mesh->getObjectToWorldMatrix() * top->getWorldToObjectMatrix();
                for (unsigned int v = 0; at && mesh->isEnabled() && v < 8; ++v)
                {
                    points.push_back(toTop.transformPoint(mesh->getVertexPosition(0, v)));
                    radius = std::max(radius, points.back().length());
                }
            }
            Vector minimum = points.empty() ? Vector() : points[0];
            Vector maximum = minimum;
            for (const Vector& p : points)
            {
                minimum = {std::min(minimum.x, p.x), std::min(minimum.y, p.y), std::min(minimum.z, p.z)};
                maximum = {std::max(maximum.x, p.x), std::max(maximum.y, p.y), std::max(maximum.z, p.z)};
            }
            ASSERT_NEAR(top->getBoundingRadius(), radius, 1e-3f);
            ASSERT_LT((top->getBoundingBoxMin() - minimum).length(), 1e-3f);
            ASSERT_LT((top->getBoundingBoxMax() - maximum).length(), 1e-3f);
        }
    }
}

TEST(BoundingVolumes, ComeFromTheLevelInUseAndStayWhenTheyAreFixed)
{
    const auto makePoint = [](P_VirtualObject& object, float x)
    {
        P_TriangleMesh* mesh = object.createTriangleMesh(0, nullptr, makeFormat(0x10));
        mesh->allocate(0, 1, false);
        mesh->lock();
        mesh->getVertexBuffer().setPosition(0, {x, 0.0f, 0.0f});
        mesh->unlock();
    };
    P_VirtualObject fine(1);
    P_VirtualObject coarse(1);
    makePoint(fine, 1.0f);
    makePoint(coarse, 2.0f);
    TestObject root;
    P_LODObject lod(2);
    lod.addTo(&root);
    lod.setLODObject(0, &fine, 10.0f);
    lod.setLODObject(1, &coarse, 20.0f);
    EXPECT_EQ(root.getBoundingRadius(), 0.0f);
    lod.calculateLOD();
    EXPECT_EQ(root.getBoundingRadius(), 1.0f);
    lod.removeLODObject(0);
    lod.calculateLOD();
    EXPECT_EQ(root.getBoundingRadius(), 2.0f);
    root.setEngineFlag(P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME, true);
    root.setBoundingRadius(7.0f);
    root.setBoundingBox({-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f});
    EXPECT_EQ(root.getBoundingRadius(), 7.0f);
    root.calculateBoundingVolumes();
    EXPECT_EQ(root.getBoundingRadius(), 2.0f);

    // Sphere and box must both touch the view volume; what is switched off is not asked.
    P_Camera camera;
    root.setPosition(0.0f, 0.0f, -3.0f);
    root.setBoundingRadius(5.0f);
    root.setBoundingBox({-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f});
    EXPECT_TRUE(root.isInsideViewVolume(&camera));
    root.setEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE, true);
    EXPECT_TRUE(root.isInsideViewVolume(&camera));
    root.setEngineFlag(P_BaseObject::FLAG_BOUNDING_BOX, true);
    EXPECT_FALSE(root.isInsideViewVolume(&camera));
    EXPECT_TRUE(root.isInsideViewVolume(nullptr));
    Matrix larger = root.getMatrix();
    larger.m[2][2] = 4.0f;
    root.setMatrix(larger);
    EXPECT_TRUE(root.isInsideViewVolume(&camera));
}
