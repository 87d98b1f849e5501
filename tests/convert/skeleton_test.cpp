#include "convert/skeleton.h"

#include "tests/convert/model_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace
{
using namespace convert_test;
using TW2::convert::makeSkeleton;
using TW2::convert::Skeleton;

Skeleton makeQuietly(const Model& model)
{
    std::vector<std::string> warnings;
    Skeleton skeleton = makeSkeleton(model, warnings);
    EXPECT_THAT(warnings, testing::IsEmpty());
    for (const auto& joint : skeleton.m_vecJoints)
    {
        const Matrixd above =
            joint.m_iParent < 0 ? Matrixd() : skeleton.m_vecJoints[static_cast<std::size_t>(joint.m_iParent)].m_world;
        EXPECT_LT(largestDifference(joint.m_local * above, joint.m_world), 1e-9) << joint.m_strName;
    }
    return skeleton;
}

/// A chain of three nodes under a holder, the last two of which carry a skin.
Model makeCharacter(const Matrixd& holder, const Matrixd& boundWith)
{
    Model model = makeChain(3);
    addNode(model, "holder", -1, holder);
    model.m_vecMeshes.push_back(
        makeSkin({{1, boundWith * move(1, 0, 0).inverse()}, {2, boundWith * move(2, 0, 0).inverse()}}));
    model.m_vecNodes[3].m_vecMeshes = {0};
    return model;
}
}  // namespace

TEST(Skeleton, NamesAreToldApartAndKeepTheirLetters)
{
    Model model;
    for (const char* name : {"Hüfte", "arm", "Arm", "", "arm_2", "arm"})
    {
        addNode(model, name, model.m_vecNodes.empty() ? -1 : 0, Matrixd());
    }
    std::vector<std::string> warnings;
    const Skeleton skeleton = makeSkeleton(model, warnings);
    std::vector<std::string> names;
    for (const auto& joint : skeleton.m_vecJoints)
    {
        names.push_back(joint.m_strName);
    }
    EXPECT_THAT(names, testing::ElementsAre("Hüfte", "arm", "Arm_2", "node", "arm_2_2", "arm_3"));
    EXPECT_THAT(warnings, testing::ElementsAre(testing::AllOf(testing::HasSubstr("several nodes have one name"),
                                                              testing::HasSubstr("\"Arm\" (a second one is written"),
                                                              testing::HasSubstr("3 are written with a number"))));
}

TEST(Skeleton, ASkinBoundInTheFilesRestPoseStandsInItWhateverHoldsTheMeshAndWhereverItWasModelled)
{
    // The last is modelled a hundred times as large and turned; its inverse bind matrices know.
    for (const auto& [holder, toBones] : {std::pair(Matrixd(), Matrixd()),
                                          {scale(0.01) * turnZ(90.0), Matrixd()},
                                          {move(7, 8, 9), Matrixd()},
                                          {Matrixd(), scale(0.01) * turnZ(-90.0)}})
    {
        const Skeleton skeleton = makeQuietly(makeCharacter(holder, toBones));
        EXPECT_LT(largestDifference(skeleton.m_vecMeshToSkin[0], toBones), 1e-9);
        for (std::size_t node = 0; node < 3; ++node)
        {
            EXPECT_LT(largestDifference(skeleton.m_vecJoints[node].m_world, move(static_cast<double>(node), 0, 0)),
                      1e-9);
        }
    }
}

TEST(Skeleton, SkinsThatWereModelledBesideEachOtherStandAsTheyWereModelled)
{
    // The body's upper bone leans in the file's rest pose, and the face goes with it; both were bound upright.
    Model model = makeChain(3);
    model.m_vecNodes[1].m_local = turnZ(5.0) * model.m_vecNodes[1].m_local;
    addNode(model, "body", -1, Matrixd());
    addNode(model, "face", -1, move(2, 1, 0));
    model.m_vecMeshes.push_back(makeSkin({{0, Matrixd()}, {1, move(1, 0, 0).inverse()}}));
    model.m_vecMeshes.push_back(makeSkin({{2, move(0, 1, 0)}}));
    model.m_vecNodes[3].m_vecMeshes = {0};
    model.m_vecNodes[4].m_vecMeshes = {1};
    const auto grow = [](Matrixd& matrix, double size) { matrix.setTranslation(matrix.getTranslation() * size); };
    for (const double size : {1.0, 100.0, 1e-4})
    {
        Model sized = model;
        std::ranges::for_each(sized.m_vecNodes, [&](Node& node) { grow(node.m_local, size); });
        for (Mesh& mesh : sized.m_vecMeshes)
        {
            std::ranges::for_each(mesh.m_vecPositions, [&](auto& position) { position *= static_cast<float>(size); });
            std::ranges::for_each(mesh.m_vecBones, [&](Bone& bone) { grow(bone.m_offset, size); });
        }
        const Skeleton skeleton = makeQuietly(sized);
        EXPECT_LT(largestDifference(skeleton.m_vecMeshToSkin[0], Matrixd()), 1e-9 * size) << size;
        EXPECT_LT(largestDifference(skeleton.m_vecMeshToSkin[1], move(2 * size, size, 0)), 1e-9 * size) << size;
        EXPECT_LT(largestDifference(skeleton.m_vecJoints[2].m_world, move(2 * size, 0, 0)), 1e-9) << "the face's bone";
    }
}

TEST(Skeleton, BoneThatTwoMeshesBoundDifferentlyGetsOneCompanion)
{
    Model model = makeChain(3);
    const Matrixd turned = turnZ(40.0) * move(1, 0, 0);
    model.m_vecMeshes.push_back(makeSkin({{0, Matrixd()}, {1, move(1, 0, 0).inverse()}, {2, move(2, 0, 0).inverse()}}));
    for (int mesh = 1; mesh < 4; ++mesh)
    {
        // With the second bone turned, which comes first here.
        model.m_vecMeshes.push_back(makeSkin({{1, turned.inverse()}, {0, Matrixd()}, {2, move(2, 0, 0).inverse()}}));
    }
    // With all of them turned about themselves: none is where the first mesh has it.
    model.m_vecMeshes.push_back(
        makeSkin({{2, (turnZ(20.0) * move(2, 0, 0)).inverse()}, {1, turned.inverse()}, {0, turnZ(-10.0).inverse()}}));
    for (const char* name : {"body", "left", "right", "hat", "coat"})
    {
        const int mesh = static_cast<int>(model.m_vecNodes[0].m_vecMeshes.size());
        model.m_vecMeshes[static_cast<std::size_t>(mesh)].m_strName = name;
        model.m_vecNodes[0].m_vecMeshes.push_back(mesh);
    }
    std::vector<std::string> warnings;
    const Skeleton skeleton = makeSkeleton(model, warnings);
    EXPECT_THAT(warnings, testing::ElementsAre(testing::AllOf(
                              testing::HasSubstr("mesh \"left\", mesh \"right\", mesh \"hat\", mesh \"coat\""),
                              testing::HasSubstr("it stands as it was bound"))));
    for (const Matrixd& place : skeleton.m_vecMeshToSkin)
    {
        EXPECT_LT(largestDifference(place, Matrixd()), 1e-9) << "beside the others, whatever one bone says";
    }
    ASSERT_EQ(skeleton.m_vecJoints.size(), 6U) << "meshes share them";
    EXPECT_EQ(skeleton.m_vecJoints[3].m_iParent, 1);
    EXPECT_LT(largestDifference(skeleton.m_vecJoints[3].m_world, turned), 1e-9);
    EXPECT_THAT(skeleton.m_vecBones, testing::ElementsAre(testing::ElementsAre(0, 1, 2), testing::ElementsAre(3, 0, 2),
                                                          testing::ElementsAre(3, 0, 2), testing::ElementsAre(3, 0, 2),
                                                          testing::ElementsAre(4, 3, 5)));
}

TEST(Skeleton, WhatHangsOnBonesGoesWithThemIntoTheBindPose)
{
    Model model = makeCharacter(Matrixd(), Matrixd());
    addNode(model, "hat", 2, move(0, 1, 0));
    model.m_vecMeshes.push_back(makeSkin({}));
    model.m_vecNodes[4].m_vecMeshes = {1};
    // Bound with the second bone bent upwards.
    model.m_vecMeshes[0].m_vecBones[1].m_offset = (turnZ(90.0) * move(2, 0, 0)).inverse();
    const Skeleton skeleton = makeQuietly(model);
    EXPECT_LT(largestDifference(skeleton.m_vecJoints[4].m_world, move(0, 1, 0) * turnZ(90.0) * move(2, 0, 0)), 1e-9);
    EXPECT_LT(largestDifference(skeleton.m_vecMeshToSkin[1], skeleton.m_vecJoints[4].m_world), 1e-9) << "what it shows";
}
