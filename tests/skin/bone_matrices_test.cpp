#include "tests/support/character_files.h"
#include "tests/support/track_oracle.h"

#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using namespace TW2;

namespace
{
using Matrix = M_Matrix4x3Template<float>;
using support::DoubleMatrix;
using support::toDouble;

/// World matrix by multiplying the local ones out, in doubles.
DoubleMatrix worldOf(const P_BaseObject& object)
{
    DoubleMatrix result;
    for (const P_BaseObject* o = &object; o; o = o->getParent())
    {
        result = result * toDouble(o->getMatrix());
    }
    return result;
}

/// A character in a scene, and what linear blend skinning in doubles says about its vertices.
class Character
{
public:
    explicit Character(const support::CharacterShape& shape = {}, const char* skinKeys = "") : m_files(shape)
    {
        m_files.m_skinKeys = skinKeys;
        m_object.construct(m_files.write().c_str(), "skeleton", "skin");
        m_object.addTo(&m_scene);
        const DoubleMatrix worldToMesh = worldOf(body()).inverse();
        for (unsigned int b = 0; b < m_object.getTotalMeshes(); ++b)
        {
            m_restBones.push_back(worldOf(bone(b)) * worldToMesh);
        }
    }

    /// One frame of the scene, then the largest distance of a vertex from where it should be.
    double executeFrameAndGetError()
    {
        m_scene.executeFrame();
        const DoubleMatrix worldToMesh = worldOf(body()).inverse();
        std::vector<DoubleMatrix> bones;
        for (std::size_t b = 0; b < m_restBones.size(); ++b)
        {
            bones.push_back(m_restBones[b].inverse() * (worldOf(bone(b)) * worldToMesh));
        }
        double error = 0.0;
        const TW_VertexAnimation::Skin& skin = *m_object.getSkinData();
        for (int p = 0; p < body().getPrimitiveCount(); ++p)
        {
            for (int v = 0; v < skin.getPrimitiveVertexCount(p); ++v)
            {
                support::DoubleVector expected(0, 0, 0);
                const auto& rest =
                    m_files.m_skinMeshes[0].getPosition(static_cast<std::size_t>(p), static_cast<std::size_t>(v));
                for (int k = 0; k < skin.getVertexBoneCount(p, v); ++k)
                {
                    const auto b = static_cast<std::size_t>(skin.getVertexBone(p, v, k));
                    expected = expected + bones[b].transformPoint({rest.x, rest.y, rest.z}) *
                                              static_cast<double>(skin.getVertexWeight(p, v, k));
                }
                const auto found = body().getVertexPosition(p, static_cast<unsigned int>(v));
                error = std::max(error, std::hypot(found.x - expected.x, found.y - expected.y, found.z - expected.z));
                expectInsideVolumes(body().getMatrix().transformPoint(found));
            }
        }
        return error;
    }

    /// Volumes that are computed hold the skin in every pose.
    void expectInsideVolumes(const M_Vector3Template<float>& p)
    {
        TW_ObjectAnimation& skin = *m_object.getSkin();
        if (skin.hasEngineFlag(P_BaseObject::FLAG_AUTOMATIC_BOUNDING_VOLUME))
        {
            const M_Vector3Template<float> low = skin.getBoundingBoxMin();
            const M_Vector3Template<float> high = skin.getBoundingBoxMax();
            ASSERT_LE(p.length(), skin.getBoundingRadius());
            ASSERT_TRUE(low.x <= p.x && low.y <= p.y && low.z <= p.z);
            ASSERT_TRUE(p.x <= high.x && p.y <= high.y && p.z <= high.z);
        }
    }

    [[nodiscard]] P_VirtualObject& body() { return *m_object.getSkin()->getMesh(0); }
    [[nodiscard]] P_VirtualObject& bone(std::size_t b) { return *m_object.getMesh(static_cast<unsigned int>(b)); }

    support::CharacterFiles m_files;
    P_Context m_context;
    P_Scene m_scene{&m_context};
    TW_VertexAnimation m_object;

private:
    std::vector<DoubleMatrix> m_restBones;
};

/// Turned, moved by a few units and scaled evenly.
Matrix place(float x)
{
    Matrix matrix = support::CharacterFiles::makeTransform(x, {x, -2 * x, 0.5f});
    for (int row = 0; row < 3; ++row)
    {
        matrix.setRow(row, matrix.getRow(row) * 1.5f);
    }
    return matrix;
}

double distanceFromIdentity(const Matrix& matrix)
{
    return support::relativeError(matrix, {});
}
}  // namespace

TEST(BoneMatrices, AtRestEveryOneIsTheIdentityWhereverTheCharacterStands)
{
    Character character;
    ASSERT_EQ(character.m_object.getBoneMatrixCount(), 8);
    for (const float x : {0.0f, 1.0f, 1000.0f, 1.0e6f})
    {
        character.m_object.animateObjectFrame(0, 0.0f, nullptr);
        character.m_object.setMatrix(place(x));
        character.m_scene.executeFrame();
        for (int b = 0; b < 8; ++b)
        {
            EXPECT_LT(distanceFromIdentity(character.m_object.getBoneMatrix(b)), 1e-6) << "bone " << b << " at " << x;
        }
    }
}

TEST(BoneMatrices, ASkinOnASkeletonOfAnotherRestPoseTakesThatOne)
{
    const support::CharacterFiles files;
    support::CharacterFiles taller;
    for (MeshChunk& bone : taller.m_bones)
    {
        bone.transform.setTranslation(bone.transform.getTranslation() * 1.5f);
    }
    for (KeyframeAnimationChunk& track : taller.m_animations[0])
    {
        for (MatrixKey& key : track.keys)
        {
            key.matrix.setTranslation(key.matrix.getTranslation() * 1.5f);
        }
    }
    const TW_VertexAnimation source(files.write().c_str(), "skeleton", "skin");
    TW_VertexAnimation tall(taller.write().c_str(), "skeleton", "skin");
    TW_VertexAnimation heir(&tall, source, nullptr);
    P_Scene scene;
    tall.addTo(&scene);
    heir.addTo(&scene);
    tall.animateObjectFrame(0, 0.0f, nullptr);
    scene.executeFrame();
    for (int bone = 0; bone < heir.getBoneMatrixCount(); ++bone)
    {
        EXPECT_LT(distanceFromIdentity(heir.getBoneMatrix(bone)), 1e-5) << bone;
    }
}

TEST(BoneMatrices, SkinnedVerticesFollowTheBones)
{
    P_VirtualObject outside(0);
    const std::pair<const char*, std::function<void(Character&)>> variants[] = {
        {"as built", [](Character&) {}},
        {"moved", [](Character& c) { c.m_object.setMatrix(place(3)); }},
        {"skeleton moved", [](Character& c) { c.m_object.getSkeleton()->setMatrix(place(1)); }},
        {"skin moved", [](Character& c) { c.m_object.getSkin()->setMatrix(place(2)); }},
        {"body moved", [](Character& c) { c.body().setMatrix(place(-1)); }},
        {"skeleton elsewhere", [](Character& c) { c.m_object.getSkeleton()->addTo(&c.m_scene); }},
        {"bone outside the skeleton",
         [&](Character& c)
         {
             outside.setMatrix(place(0.5f));
             c.bone(5).addTo(&outside);
         }},
        {"a parent behind its child", [](Character& c) { c.bone(1).addTo(&c.bone(6)); }},
        {"a bone that keeps its matrices itself",
         [](Character& c) { c.m_object.getSkeleton()->accessMeshTransforms().release(c.bone(1)); }},
        {"bones that keep their matrices themselves",
         [](Character& c) { c.m_object.getSkeleton()->accessMeshTransforms().release(); }},
    };
    for (const auto& [name, change] : variants)
    {
        Character character;
        change(character);
        character.m_scene.executeFrame();
        const long long made = S_Memory::sm_iNewCount;
        for (int i = 0; i < 40; ++i)
        {
            EXPECT_TRUE(character.m_object.animateObject(i % 2, 0.07f * static_cast<float>(i), nullptr));
            EXPECT_LT(character.executeFrameAndGetError(), 1e-5) << name << ", frame " << i;
        }
        EXPECT_EQ(S_Memory::sm_iNewCount, made) << name;
    }
}

TEST(BoneMatrices, SkeletonsOfAnySizeAreFollowed)
{
    for (const unsigned int bones : {1u, 512u, 700u})
    {
        Character character({.bones = bones});
        character.m_object.animateObjectFrame(1, 7.5f, nullptr);
        EXPECT_LT(character.executeFrameAndGetError(), 1e-5) << bones << " bones";
    }
}

TEST(BoneMatrices, WhatMovesAfterFramesWithoutMotionIsNoticed)
{
    Character character;
    P_VirtualObject pivot(0);
    const std::function<void()> moves[] = {
        [&] { character.m_object.animateObjectFrame(1, 3.3f, nullptr); },
        [&] { character.bone(6).setMatrix(place(0.1f)); },
        [&] { character.m_object.getSkeleton()->setMatrix(place(0.2f)); },
        [&] { character.m_object.getSkin()->setMatrix(place(0.3f)); },
        [&] { character.body().setMatrix(place(0.4f)); },
        [&] { character.bone(5).addTo(&character.bone(3)); },
        [&] { character.bone(5).addTo(&pivot); },
        [&] { pivot.setMatrix(place(0.5f)); },
        [&] { character.m_object.getSkeleton()->accessMeshTransforms().release(character.bone(6)); },
        [&] { character.bone(6).setMatrix(place(0.6f)); },
        [&] { character.m_object.setMatrix(place(0.7f)); },
    };
    int number = 0;
    for (const auto& move : moves)
    {
        ++number;
        move();
        EXPECT_LT(character.executeFrameAndGetError(), 1e-5) << "move " << number;
        // In the frames after a motion the object learns that it stands still; moving in any of them must not be lost.
        for (int still = 0; still < number % 4; ++still)
        {
            EXPECT_LT(character.executeFrameAndGetError(), 1e-5) << "after move " << number;
        }
    }
}

TEST(BoneMatrices, AHostWithoutASceneGetsThemWhenItAsks)
{
    const support::CharacterFiles files;
    const std::string script = files.write();
    P_Scene scene;
    TW_VertexAnimation inScene(script.c_str(), "skeleton", "skin");
    inScene.addTo(&scene);
    TW_VertexAnimation alone(script.c_str(), "skeleton", "skin");
    for (const float frame : {3.0f, 8.5f, 8.5f, 8.5f, 0.0f, 12.25f})
    {
        const M_Matrix4x3Template<float> where = place(frame);
        for (TW_VertexAnimation* character : {&inScene, &alone})
        {
            character->animateObjectFrame(1, frame, nullptr);
            character->setMatrix(where);
            character->getMesh(2)->setMatrix(where);
        }
        scene.executeFrame();
        const long long allocations = S_Memory::sm_iNewCount;
        alone.updateBones();
        EXPECT_EQ(S_Memory::sm_iNewCount, allocations);
        for (int b = 0; b < 8; ++b)
        {
            EXPECT_EQ(alone.getBoneMatrix(b), inScene.getBoneMatrix(b)) << "bone " << b << " at " << frame;
        }
    }

    TW_VertexAnimation nothing;
    nothing.updateBones();
    EXPECT_EQ(nothing.getBoneMatrixCount(), 0);
}

TEST(BoneMatrices, TheSceneIsToldThatNothingElseIsToBeDone)
{
    struct Open : TW_VertexAnimation
    {
        using TW_VertexAnimation::executeAlways;
    };
    Open character;
    EXPECT_FALSE(character.executeAlways());
    const support::CharacterFiles files;
    character.construct(files.write().c_str(), "skeleton", "skin");
    EXPECT_FALSE(character.executeAlways());
    EXPECT_TRUE(character.getSkin()->getMesh(0)->isEnabled());
}

TEST(BoneMatrices, ACharacterThatStandsStillIsNotComputedAgain)
{
    Character character;
    character.m_object.animateObjectFrame(1, 3.0f, nullptr);
    for (int i = 0; i < 3; ++i)
    {
        character.m_scene.executeFrame();
    }
    auto& matrix = const_cast<Matrix&>(character.m_object.getBoneMatrix(2));
    matrix = Matrix::zero();
    const long long allocations = S_Memory::sm_iNewCount;
    character.m_scene.executeFrame();
    EXPECT_EQ(matrix, Matrix::zero());
    character.m_object.animateObjectFrame(1, 3.0f, nullptr);
    character.m_scene.executeFrame();
    EXPECT_NE(matrix, Matrix::zero());
    EXPECT_EQ(S_Memory::sm_iNewCount, allocations);
}

TEST(BoneMatrices, ASkinWithBoundingVolumesOutOfViewIsHiddenAndLeftAsItIs)
{
    // The box that the engine computes in the second case is that of what is shown.
    for (const char* const volumes : {"boundingSphereRadius 2 enableBoundingBox 0", "boundingSphereRadius 2"})
    {
        Character character({}, volumes);
        P_Camera camera;
        camera.addTo(&character.m_scene);
        character.m_context.setCurrentCamera(&camera);
        character.m_object.setPosition(0, 0, 50);
        character.m_object.animateObjectFrame(1, 3.0f, nullptr);
        EXPECT_LT(character.executeFrameAndGetError(), 1e-5);
        EXPECT_TRUE(character.body().isEnabled());

        const Matrix before = character.m_object.getBoneMatrix(5);
        character.m_object.setPosition(0, 0, -50);
        character.m_object.animateObjectFrame(1, 8.0f, nullptr);
        character.m_scene.executeFrame();
        EXPECT_FALSE(character.body().isEnabled());
        EXPECT_EQ(character.m_object.getBoneMatrix(5), before);
        character.m_object.updateBones();
        EXPECT_NE(character.m_object.getBoneMatrix(5), before) << "for a host that asks";

        character.m_object.setPosition(0, 0, 50);
        EXPECT_LT(character.executeFrameAndGetError(), 1e-5);
        EXPECT_TRUE(character.body().isEnabled()) << volumes;
        character.m_object.setPosition(0, 0, -50);
        character.m_scene.executeFrame();
        EXPECT_FALSE(character.body().isEnabled());
        character.m_context.setCurrentCamera(nullptr);
        EXPECT_LT(character.executeFrameAndGetError(), 1e-5);
        EXPECT_TRUE(character.body().isEnabled());
    }
}
