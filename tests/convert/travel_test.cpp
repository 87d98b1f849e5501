#include "convert/travel.h"

#include "tests/convert/model_builder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace convert_test;
using TW2::convert::ClipSampler;
using TW2::convert::Travel;

TEST(Travel, CarriesEveryNodeOnceAndJumpsWhereTheClipDoes)
{
    // A lamp with a light stands beside the rig of the hips that travel; a leg hangs on them.
    Model model;
    addNode(model, "lamp", -1, move(1, 0, 2));
    addNode(model, "light", 0, move(0, 1, 0.5));
    addNode(model, "rig", -1, turnZ(20.0) * move(0.2, 0.5, 0));
    addNode(model, "hips", 2, move(0, 0.5, 0));
    addNode(model, "leg", 3, move(0.5, 0, 0));
    Clip clip;
    clip.m_dStart = 0.5;
    clip.m_dDuration = 2.0;
    const auto animate = [&clip](int node, Interpolation kind, const std::vector<std::pair<double, Vector3d>>& keys)
    {
        Channel& channel = clip.m_vecChannels.emplace_back();
        channel.m_iNode = node;
        channel.m_positions = makeCurve<Vector3d>(kind, keys);
    };
    animate(1, Interpolation::Step, {{0.0, {0, 1, 0}}, {1.25, {0, 2, 0}}});
    animate(2, Interpolation::Step, {{0.0, {0.2, 0.5, 0}}, {1.0, {0.2, 0.5, 3}}});
    animate(3, Interpolation::Linear, {{0.5, {0, 0.5, 0}}, {1.5, {0, 0.5, 4}}, {2.5, {3, 0.7, 5}}});
    animate(4, Interpolation::Step, {{0.0, {0.5, 0, 0}}, {2.0, {0.7, 0, 0}}});
    for (const std::string choice : {"hips", "hips:xyz", "leg:x,z", "lamp:z"})
    {
        const auto travel =
            std::make_shared<const Travel>(model, clip, TW2::convert::chooseTravel(model, choice, "file"));
        const Clip standing = TW2::convert::makeStandingClip(travel);
        const ClipSampler is(model, standing);
        const ClipSampler was(model, clip);
        const auto getWorld = [&model](const ClipSampler& sampler, int node, double seconds)
        {
            Matrixd world;
            for (; node >= 0; node = model.m_vecNodes[static_cast<std::size_t>(node)].m_iParent)
            {
                world = world * sampler.sample(static_cast<std::size_t>(node), seconds);
            }
            return world;
        };
        for (const double seconds : {0.0, 0.3, 0.6, 1.0, 1.7, 2.0})
        {
            for (const int node : {1, 3, 4})
            {
                if (choice != "leg:x,z" || node != 3)  // above the leg, and left as it was
                {
                    EXPECT_LT(largestDifference(getWorld(is, node, seconds) * travel->at(seconds),
                                                getWorld(was, node, seconds)),
                              1e-9)
                        << choice << ": " << model.m_vecNodes[static_cast<std::size_t>(node)].m_strName << seconds;
                }
            }
        }
        EXPECT_EQ(is.findJumps(1), std::vector<double>{0.75}) << choice;
        const std::vector<double> own = choice == "lamp:z"    ? std::vector<double>()
                                        : choice == "leg:x,z" ? std::vector<double>{0.5, 1.5}
                                                              : std::vector<double>{0.5};
        EXPECT_EQ(is.findJumps(0), own) << choice;
    }
}
