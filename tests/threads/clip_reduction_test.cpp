// The converter reduces clips on threads: what comes out does not tell on how many.

#include "convert/clip_reducer.h"
#include "convert/node_motion.h"
#include "tests/convert/model_builder.h"

#include <platform/runtime/memory_file_writer.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace
{
using namespace convert_test;
using namespace TW2::convert;

constexpr unsigned int jointCount = 6;

/// A node that goes ahead along x and rolls on its way.
class Rolling : public NodeMotion
{
public:
    explicit Rolling(double speed) : m_dSpeed(speed) {}
    [[nodiscard]] Matrixd at(double seconds) const override
    {
        return turnZ(90.0 * std::sin(5.0 * m_dSpeed * seconds)) * move(m_dSpeed * seconds, 0.0, 0.0);
    }
    void addTimes(std::vector<double>& times) const override { times.insert(times.end(), {0.0, 1.0}); }
    void addJumps(std::vector<double>&) const override {}

private:
    double m_dSpeed;
};

class Damaged : public Rolling
{
public:
    Damaged() : Rolling(1.0) {}
    [[nodiscard]] Matrixd at(double) const override { throw std::runtime_error("damaged"); }
};

/// A limb with a skin, and clips of many lengths, of which one is damaged.
Model makeModel(std::size_t damaged)
{
    Model model = makeChain(jointCount);
    model.m_vecNodes[4].m_iParent = 1;  // two limbs, which are looked at side by side
    model.m_vecSurfaces.emplace_back().m_strName = "surface";
    model.m_vecMeshes.push_back(makeSkin({{1, move(-1.0, 0.0, 0.0)}, {5, move(-5.0, 0.0, 0.0)}}));
    model.m_vecNodes[0].m_vecMeshes = {0};
    for (std::size_t i = 0; i < 10; ++i)
    {
        Clip& clip = model.m_vecClips.emplace_back();
        clip.m_strName = "clip" + std::to_string(i);
        clip.m_dDuration = i % 3 == 0 ? 3.0 : 0.2;
        for (int node = 0; node < static_cast<int>(jointCount); ++node)
        {
            Channel& channel = clip.m_vecChannels.emplace_back();
            channel.m_iNode = node;
            const double speed = 1.0 + static_cast<double>(i) / 10.0;
            channel.m_pMotion = node == 3 && i == damaged
                                    ? std::make_shared<Damaged>()
                                    : std::make_shared<Rolling>(node == 0 ? speed : speed / 100.0);
        }
    }
    return model;
}

/// What each clip becomes: its records, or why there are none.
std::vector<std::string> reduceAll(const Model& model, unsigned int threads, bool travels)
{
    std::vector<std::string> warnings;
    const Skeleton skeleton = makeSkeleton(model, warnings);
    const Options options;
    const ClipReducer reducer(model, skeleton, options, {0.002, 0.1},
                              travels ? std::optional(chooseTravel(model, "node0", "model")) : std::nullopt);
    std::vector<std::string> clips;
    ClipsAhead ahead(reducer, model.m_vecClips, threads);
    for (std::size_t i = 0; i < model.m_vecClips.size(); ++i)
    {
        try
        {
            WrittenClip clip = ahead.takeNext();
            EXPECT_EQ(clip.m_travel.has_value(), travels);
            EXPECT_TRUE(clip.m_error.isWithin({0.002, 0.1})) << "clip " << i;
            if (travels)
            {
                clip.m_vecRecords.push_back(*clip.m_travel);
            }
            S_MemoryFileWriter writer;
            write(writer, clip.m_vecRecords);
            clips.emplace_back(writer.getBytes().begin(), writer.getBytes().end());
        }
        catch (const std::runtime_error& error)
        {
            clips.emplace_back(error.what());
        }
    }
    return clips;
}
}  // namespace

TEST(Threads, ClipsAreReducedAsOnOneThread)
{
    const Model model = makeModel(4);
    for (const bool travels : {false, true})
    {
        const std::vector<std::string> expected = reduceAll(model, 1, travels);
        EXPECT_EQ(expected[4], "damaged");
        EXPECT_GT(expected[5].size(), 500U);
        EXPECT_NE(expected[0], expected[3]);
        EXPECT_EQ(reduceAll(model, 3, travels), expected);
        EXPECT_EQ(reduceAll(model, 40, travels), expected);
    }
}

TEST(Threads, ClipsThatNobodyTakesAreWaitedFor)
{
    const Model model = makeModel(1);
    std::vector<std::string> warnings;
    const Skeleton skeleton = makeSkeleton(model, warnings);
    const Options options;
    const ClipReducer reducer(model, skeleton, options, {0.002, 0.1}, std::nullopt);
    ClipsAhead ahead(reducer, model.m_vecClips, 2);
    EXPECT_FALSE(ahead.takeNext().m_vecRecords.empty());
    EXPECT_THROW((void)ahead.takeNext(), std::runtime_error);
}
