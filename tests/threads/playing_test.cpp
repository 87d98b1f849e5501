// Under the thread sanitizer these tests tell of any memory that two threads touch without order; everywhere else they
// compare what the threads see with what one thread sees.

#include "tests/support/threads.h"
#include "tests/threads/players.h"

#include <tw2/light/light_animation_chunks.h>
#include <tw2/light/point_light_animation.h>
#include <tw2/material/material.h>

#include <platform/runtime/allocator.h>
#include <platform/scene/camera.h>
#include <platform/scene/point_light.h>

#include <gtest/gtest.h>

#include <deque>
#include <mutex>
#include <optional>
#include <vector>

using namespace TW2;

namespace
{
constexpr unsigned int threadCount = 4;
constexpr unsigned int frameCount = 40;

using support::runOnThreads;

/// Players on a thread each, which see what one player alone sees, beside something else on this thread.
template <typename Meanwhile>
void expectUndisturbedPlayers(const Prototypes& prototypes, const Meanwhile& meanwhile)
{
    const std::uint64_t expected = Player(prototypes).play(0, frameCount);
    std::deque<Player> players;
    for (unsigned int i = 0; i < threadCount; ++i)
    {
        players.emplace_back(prototypes);
    }
    std::vector<std::uint64_t> seen(threadCount);
    runOnThreads(
        threadCount, [&](unsigned int i) { seen[i] = players[i].play(0, frameCount); }, meanwhile);
    for (const std::uint64_t player : seen)
    {
        EXPECT_EQ(player, expected);
    }
}
}  // namespace

TEST(Threads, PlayWhileOneLoadsCopiesAndDestroysOtherObjectsAndScenes)
{
    const Prototypes prototypes;
    const long long live = S_Memory::getLiveCount();
    expectUndisturbedPlayers(prototypes,
                             [&prototypes]
                             {
                                 for (int round = 0; round < 8; ++round)
                                 {
                                     const auto object = prototypes.makeObject();
                                     const auto skinned = prototypes.makeSkinned();
                                     TW_ObjectAnimation copy(*prototypes.object);
                                     TW_VertexAnimation skinnedCopy(*prototypes.skinned);
                                     const TW_VertexAnimation shared(&skinnedCopy, *prototypes.skinned, nullptr);
                                     copy.shareAnimation(1, prototypes.object.get());
                                     copy.deleteAnimation(0);
                                     copy = *object;
                                     skinnedCopy = *skinned;
                                     Player(prototypes).play(0, static_cast<unsigned int>(round % 3));
                                     TW_VertexAnimationLODs levels(*prototypes.levels);
                                     levels = *prototypes.levels;
                                     EXPECT_TRUE(copy.animateObjectFrame(1, 5.0F, nullptr));
                                     EXPECT_TRUE(skinnedCopy.animateObjectFrame(1, 5.0F, nullptr));
                                     P_Context context;
                                     P_Scene scene(&context);
                                     P_Camera camera;
                                     context.setCurrentCamera(&camera);
                                     skinnedCopy.addTo(&scene);
                                     scene.executeFrame();
                                 }
                             });
    EXPECT_EQ(S_Memory::getLiveCount(), live);
}

TEST(Threads, EachMakesItsCopiesAndLetsThemGoInItsTurnWhileTheOthersPlay)
{
    const Prototypes prototypes;
    const long long live = S_Memory::getLiveCount();
    const std::uint64_t expected = Player(prototypes).play(0, 3);
    std::mutex turn;  // copies are made and go on one thread at a time
    runOnThreads(threadCount,
                 [&](unsigned int)
                 {
                     for (int round = 0; round < 12; ++round)
                     {
                         std::optional<Player> player;
                         {
                             const std::lock_guard lock(turn);
                             player.emplace(prototypes);
                         }
                         EXPECT_EQ(player->play(0, 3), expected);
                         const std::lock_guard lock(turn);
                         player.reset();
                     }
                 });
    EXPECT_EQ(S_Memory::getLiveCount(), live);
}

TEST(Threads, EachReadsTheTracksOfLightsThatCopiesShare)
{
    PointLightAnimationChunk chunk;
    chunk.header = {"lamp", 25, false};
    chunk.totalFrameCount = 50;
    chunk.colorKeys = {{0, {255, 0, 0, 255}}, {20, {0, 98, 49, 255}}, {49, {0, 0, 49, 255}}};
    chunk.brightnessKeys = {{0, 0.5F}, {49, 1.0F}};
    chunk.fallOffKeys = {{0, 3.0F}, {30, 7.0F}, {49, 2.0F}};
    const TW_PointLightAnimation lamp(chunk);
    const auto shine = [&lamp](unsigned int)
    {
        const TW_PointLightAnimation copy(lamp);
        P_PointLight light;
        for (unsigned int frame = 0; frame < 75 * frameCount; ++frame)
        {
            copy.animateFrame(&light, static_cast<float>(frame % 50));
            ASSERT_NEAR(light.getFalloffRange(),
                        frame % 50 < 30 ? 3.0 + 4.0 * (frame % 50) / 30.0 : 7.0 - 5.0 * (frame % 50 - 30) / 19.0, 1e-4);
        }
    };
    runOnThreads(threadCount, shine);
}

TEST(Threads, AskAHandleWithoutABoneForItsOwnMatrix)
{
    const Prototypes prototypes;
    runOnThreads(threadCount,
                 [&prototypes](unsigned int i)
                 {
                     TW_BoneHandle handle("a bone of another object", 1000);
                     handle.attach(prototypes.object.get());
                     for (unsigned int round = 0; round < frameCount; ++round)
                     {
                         M_Matrix4x3Template<float>& matrix = handle.accessMatrix();
                         matrix.m[3][0] = static_cast<float>(i + 1);
                         ASSERT_EQ(matrix.m[3][0], static_cast<float>(i + 1));
                     }
                 });
}
