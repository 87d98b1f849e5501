#include "skinned_geometry.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <vector>

namespace
{
/// The smallest box around points, and the largest distance of one from the origin.
struct Extent
{
    void add(const DoubleVector& p)
    {
        minimum = {std::min(minimum.x, p.x), std::min(minimum.y, p.y), std::min(minimum.z, p.z)};
        maximum = {std::max(maximum.x, p.x), std::max(maximum.y, p.y), std::max(maximum.z, p.z)};
        radius = std::max(radius, p.length());
    }
    /// Adds the box that `transform` makes of this one.
    void addTo(Extent& other, const DoubleMatrix& transform) const
    {
        Extent box;
        for (unsigned int corner = 0; corner < 8 && minimum.x <= maximum.x; ++corner)
        {
            box.add(transform.transformPoint({corner & 1 ? minimum.x : maximum.x, corner & 2 ? minimum.y : maximum.y,
                                              corner & 4 ? minimum.z : maximum.z}));
        }
        for (unsigned int corner = 0; corner < 8 && minimum.x <= maximum.x; ++corner)
        {
            other.add({corner & 1 ? box.minimum.x : box.maximum.x, corner & 2 ? box.minimum.y : box.maximum.y,
                       corner & 4 ? box.minimum.z : box.maximum.z});
        }
    }

    void addEverything()
    {
        add({-1e3, -1e3, -1e3});
        add({1e3, 1e3, 1e3});
    }

    DoubleVector minimum{1e9, 1e9, 1e9};
    DoubleVector maximum{-1e9, -1e9, -1e9};
    double radius = 0.0;
};

/// That the object's volumes hold `content` and are no larger than `most`.
void expectBetween(P_BaseObject& object, const Extent& content, const Extent& most)
{
    const Vector minimum = object.getBoundingBoxMin();
    const Vector maximum = object.getBoundingBoxMax();
    const double content0[] = {content.minimum.x, content.minimum.y, content.minimum.z};
    const double content1[] = {content.maximum.x, content.maximum.y, content.maximum.z};
    const double most0[] = {most.minimum.x, most.minimum.y, most.minimum.z};
    const double most1[] = {most.maximum.x, most.maximum.y, most.maximum.z};
    const float box0[] = {minimum.x, minimum.y, minimum.z};
    const float box1[] = {maximum.x, maximum.y, maximum.z};
    const double rounding = 1e-6 * std::max(1.0, content.radius);  // of rigid geometry; skins have a margin for it
    for (int c = 0; c < 3 && content.radius > 0.0; ++c)
    {
        ASSERT_LE(static_cast<double>(box0[c]), content0[c] + rounding);
        ASSERT_GE(static_cast<double>(box1[c]), content1[c] - rounding);
        ASSERT_GE(static_cast<double>(box0[c]), most0[c] - 1e-3);
        ASSERT_LE(static_cast<double>(box1[c]), most1[c] + 1e-3);
    }
    ASSERT_GE(static_cast<double>(object.getBoundingRadius()), content.radius - rounding);
    ASSERT_LE(static_cast<double>(object.getBoundingRadius()), most.radius + 1e-3);
}

/// What the volumes of a mesh may hold: one box per bone, and one around what no bone moves.
Extent getBoneBoxes(const P_VirtualObject& mesh, const DoubleMatrix& transform)
{
    std::vector<Extent> boxes(mesh.getBoneMatrixCount() + 1);
    const P_SkinMesh* const skin = mesh.getPrimitive(0)->asSkinMesh();
    for (unsigned int v = 0; v < mesh.getPrimitive(0)->getVertexBuffer().getUsedCount(); ++v)
    {
        const Vector p = mesh.getPrimitive(0)->getVertexBuffer().getPosition(v);
        const DoubleVector rest{static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
        bool moved = false;
        for (unsigned int slot = 0; skin && slot < skin->getSlotCount(); ++slot)
        {
            if (skin->getBoneWeight(v, slot) > 0.0f)
            {
                moved = true;
                boxes[std::min<std::size_t>(skin->getBoneIndex(v, slot), boxes.size() - 1)].add(rest);
            }
        }
        if (!moved)
        {
            boxes.back().add(rest);
        }
    }
    Extent result;
    for (std::size_t b = 0; b + 1 < boxes.size(); ++b)
    {
        boxes[b].addTo(result, toDouble(mesh.getBoneMatrix(b)) * transform);
    }
    boxes.back().addTo(result, transform);
    return result;
}
/// Gives a skin weights that need not add up to 1 nor be above 0, and takes some vertices out of use.
void makeWild(P_VirtualObject& object, Dice& dice)
{
    auto& skin = static_cast<P_SkinMesh&>(*object.getPrimitive(0));
    const float least = dice.number(-0.2f, 0.25f);
    skin.lock();
    for (unsigned int v = 0; v < 8; ++v)
    {
        for (unsigned int slot = 0; slot < 4; ++slot)
        {
            skin.setBoneWeight(v, slot, dice.number(least, 0.5f - least));
        }
    }
    skin.unlock();
    skin.getVertexBuffer().setUsedCount(static_cast<unsigned int>(1 + dice.pick(8)));
}
}  // namespace

TEST(BoundingVolumes, HoldEveryVertexOfTheEnabledMeshesBelow)
{
    for (unsigned int seed = 0; seed < 200; ++seed)
    {
        Dice dice(seed);
        std::vector<Matrix> bones(3);
        S_Vector<const Matrix*> pointers{&bones[0], &bones[1], &bones[2]};
        std::vector<std::unique_ptr<P_BaseObject>> objects;
        std::vector<P_VirtualObject*> meshes;
        std::set<P_VirtualObject*> wild;
        for (std::size_t i = 0; i < 12; ++i)
        {
            if (dice.chance(0.5))
            {
                auto mesh = std::make_unique<P_VirtualObject>(1);
                const bool isSkinned = dice.chance(0.5);
                fill(*mesh, dice, 8, isSkinned ? 4 : 0);  // the fourth has no matrix
                if (isSkinned && dice.chance(0.5))
                {
                    makeWild(*mesh, dice);
                    wild.insert(mesh.get());
                }
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
        for (int pose = 0; pose < 3; ++pose)
        {
            for (const std::unique_ptr<P_BaseObject>& top : objects)
            {
                Extent content;
                Extent most;
                for (P_VirtualObject* mesh : meshes)
                {
                    DoubleMatrix toTop;
                    const P_BaseObject* at = mesh;
                    while (at && at != top.get())
                    {
                        toTop = toTop * toDouble(at->getMatrix());
                        at = at->getParent();
                    }
                    if (!at || !mesh->isEnabled())
                    {
                        continue;
                    }
                    for (unsigned int v = 0; v < mesh->getPrimitive(0)->getVertexBuffer().getUsedCount(); ++v)
                    {
                        content.add(toTop.transformPoint(getSkinned(*mesh, v)));
                    }
                    if (wild.count(mesh) > 0)
                    {
                        most.addEverything();
                        continue;
                    }
                    const Extent boxes = getBoneBoxes(*mesh, toTop);
                    boxes.addTo(most, DoubleMatrix());
                    most.radius = std::max(most.radius, boxes.radius);
                }
                expectBetween(*top, content, most);
            }
            for (Matrix& bone : bones)
            {
                bone = dice.matrix(1.0f);
            }
            for (P_VirtualObject* mesh : wild)  // vertices that were not in use when the geometry was written
            {
                mesh->getPrimitive(0)->lock();
                mesh->getPrimitive(0)->unlock();
                mesh->getPrimitive(0)->getVertexBuffer().setUsedCount(8);
            }
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

TEST(BoundingVolumes, AreDrawnAsABoxAndAsThreeCircles)
{
    struct Open : P_VirtualObject
    {
        using P_VirtualObject::visualization;
    };
    P_Context context;
    P_Scene scene(&context);
    Open object;
    EXPECT_TRUE(object.isInView()) << "before a scene has looked";
    object.addTo(&scene);
    object.setPosition(1.0F, 2.0F, 3.0F);
    object.setEngineFlag(P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME, true);
    object.setBoundingRadius(2.0F);
    object.setBoundingBox({-1.0F, -2.0F, -3.0F}, {1.0F, 2.0F, 3.0F});
    P_VirtualObject copy;
    copy.duplicate(object);
    EXPECT_EQ(copy.getStoredBoundingRadius(), 2.0F);

    object.setEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE, true);
    object.visualization();
    const M_Vector3Template<float> middle(1.0F, 2.0F, 3.0F);
    ASSERT_EQ(context.getDebugLines().size(), 72U);
    for (const P_Context::DebugLine& line : context.getDebugLines())
    {
        EXPECT_NEAR((line.m_vFrom - middle).length(), 2.0F, 1e-5F);
        EXPECT_NEAR((line.m_vTo - middle).length(), 2.0F, 1e-5F);
        EXPECT_NEAR((line.m_vTo - line.m_vFrom).length(), 4.0 * std::sin(3.14159265 / 24.0), 1e-5)
            << "a circle's 24th part";
    }
    context.clearDebugLines();
    object.setEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE, false);
    object.setEngineFlag(P_BaseObject::FLAG_BOUNDING_BOX, true);
    object.visualization();
    ASSERT_EQ(context.getDebugLines().size(), 12U);
    float all = 0.0F;
    for (const P_Context::DebugLine& line : context.getDebugLines())
    {
        EXPECT_NEAR((line.m_vFrom - middle).length(), std::sqrt(14.0F), 1e-5F);
        all += (line.m_vTo - line.m_vFrom).length();
    }
    EXPECT_NEAR(all, 4.0F * (2.0F + 4.0F + 6.0F), 1e-4F);
}

TEST(BoundingVolumes, ASphereIsInViewWhereverAPointOfItIs)
{
    P_Camera camera;
    TestObject object;
    object.setBoundingRadius(1.0f);
    object.setEngineFlags(P_BaseObject::FLAG_BOUNDING_SPHERE | P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME);
    Dice dice(9);
    int seen = 0;
    for (int i = 0; i < 3000; ++i)
    {
        // Any rows: sheared, mirrored, flat.
        Matrix matrix;
        matrix.setRow(0, dice.vector(1.5f));
        matrix.setRow(1, dice.vector(1.5f));
        matrix.setRow(2, dice.chance(0.3) ? matrix.getRow(1) * -1.2f : dice.vector(1.5f));
        matrix.setTranslation(dice.vector(3.0f));
        object.setMatrix(matrix);
        for (int k = 0; k < 60; ++k)
        {
            const Vector p = matrix.transformPoint(dice.vector(1.0f).normalized());
            const P_Camera::ViewVolume& planes = camera.getViewVolume();
            if (std::all_of(planes.begin(), planes.end(),
                            [&p](const P_Camera::Plane& plane)
                            { return plane.m_vNormal.dot(p) + plane.m_fDistance > 1e-4f; }))
            {
                ++seen;
                ASSERT_TRUE(object.isInsideViewVolume(&camera)) << i;
                break;
            }
        }
    }
    EXPECT_GT(seen, 500);
    object.setMatrix(Matrix::translation({0.0f, 0.0f, -1.2f}));
    EXPECT_FALSE(object.isInsideViewVolume(&camera));
}

// A view volume that is kept follows the camera all the same.
TEST(BoundingVolumes, AreTestedAgainstTheCameraWhereItIsNow)
{
    P_Camera camera;
    TestObject carrier;
    camera.addTo(&carrier);
    TestObject object;
    object.setBoundingRadius(1.0f);
    object.setEngineFlags(P_BaseObject::FLAG_BOUNDING_SPHERE | P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME);
    object.setPosition(0.0f, 0.0f, 10.0f);
    EXPECT_TRUE(object.isInsideViewVolume(&camera));
    carrier.setPosition(50.0f, 0.0f, 0.0f);
    EXPECT_FALSE(object.isInsideViewVolume(&camera));
    carrier.setPosition(0.0f, 0.0f, 0.0f);
    EXPECT_TRUE(object.isInsideViewVolume(&camera));
    camera.accessMatrix().m[3][0] = 50.0f;
    camera.invalidateMatrices();
    EXPECT_FALSE(object.isInsideViewVolume(&camera));
    camera.setPosition(0.0f, 0.0f, 0.0f);
    (void)camera.getObjectToWorldMatrix();
    camera.setPerspective(60.0f, 1.0f, 0.1f, 5.0f);
    EXPECT_FALSE(object.isInsideViewVolume(&camera));
    camera.setPosition(0.0f, 0.0f, 6.0f);
    EXPECT_TRUE(object.isInsideViewVolume(&camera));
}
