#include "src/keyframe/pose_batch.h"
#include "tests/support/keyframe_tracks.h"
#include "tests/support/object_files.h"
#include "tests/support/pose_hash.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/allocator.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

using TW2::PoseWidth;
using TW2::TW_KeyframeAnimation;
using TW2::TW_ObjectAnimation;
using Matrix = M_Matrix4x3Template<float>;

namespace
{
// Plays with each number of matrices at a time that the machine has.
class PoseWidths : public testing::TestWithParam<PoseWidth>
{
protected:
    void SetUp() override
    {
        if (!TW2::setPoseWidth(GetParam()))
        {
            GTEST_SKIP() << "not on this machine";
        }
    }
    void TearDown() override { TW2::setPoseWidth(m_usual); }

private:
    PoseWidth m_usual = TW2::getPoseWidth();
};
INSTANTIATE_TEST_SUITE_P(, PoseWidths, testing::Values(PoseWidth::One, PoseWidth::Four, PoseWidth::Eight),
                         [](const auto& width) {
                             return width.param == PoseWidth::One    ? "One"
                                    : width.param == PoseWidth::Four ? "Four"
                                                                     : "Eight";
                         });

std::string name(unsigned int bone)
{
    return "bone" + std::to_string(bone);
}

// Animation 0 has tracks of all kinds with gaps, the others rigid ones of one mode for all bones: animation 1 with
// other key frames for each, animation 2 with the same.
std::unique_ptr<TW_ObjectAnimation> makeObject(std::mt19937& random, unsigned int bones)
{
    const auto pick = [&random](unsigned int n) { return static_cast<unsigned int>(random() % n); };
    support::ObjectFiles files;
    std::vector<TW2::KeyframeAnimationChunk> mixed;
    std::vector<TW2::KeyframeAnimationChunk> rigid;
    std::vector<TW2::KeyframeAnimationChunk> alike;
    const int mode = static_cast<int>(pick(3));
    for (unsigned int bone = 0; bone < bones; ++bone)
    {
        files.addMesh(name(bone));
        support::TrackShape shape;
        shape.frames = bone % 3 == 0 ? 20 + pick(30) : 40;
        shape.keys = 1 + pick(20);
        shape.looping = pick(4) != 0;
        shape.loopInterpolation = pick(4) == 0;
        shape.loopToFrame = pick(15);
        shape.interpolationMode = static_cast<int>(pick(3));
        shape.scaled = pick(8) == 0;
        shape.keepScale = pick(8) == 0;
        if (pick(8) != 0)
        {
            mixed.push_back(support::makeTrack(random, shape, name(bone).c_str()));
        }
        rigid.push_back(
            support::makeTrack(random, {.keys = 1 + pick(20), .interpolationMode = mode}, name(bone).c_str()));
        alike.push_back(support::makeTrack(random, {.keys = 40, .interpolationMode = mode}, name(bone).c_str()));
    }
    files.addAnimation(0, mixed);
    files.addAnimation(1, rigid);
    files.addAnimation(2, alike);
    return files.build();
}

using Change = float (*)(float pose, float current, float weight);

// What one call does with every element of the poses of one animation, in the plainest way, track by track.
void playOneByOne(const TW_ObjectAnimation& object, int index, float frame, float weight, Change change,
                  std::vector<Matrix>& matrices)
{
    const auto& tracks = object.getAnimation(index)->m_vecKeyframeAnimations;
    for (std::size_t bone = 0; bone < tracks.size(); ++bone)
    {
        if (const TW_KeyframeAnimation* const track = tracks[bone])
        {
            Matrix pose;
            (void)track->animateFrameWithLastFrame(pose, frame, 0);
            for (std::size_t e = 0; e < 12; ++e)
            {
                float& current = matrices[bone].data()[e];
                current = change(pose.data()[e], current, weight);
            }
        }
    }
}
}  // namespace

TEST_P(PoseWidths, GiveTheSameBitsOnEveryMachine)
{
    EXPECT_EQ(support::PoseHash::run(20), 0x7c4537ac5cca593cULL);
}

TEST_P(PoseWidths, GiveTheBitsOfOneTrackAfterTheOther)
{
    const Change replace = [](float pose, float, float) { return pose; };
    const Change scale = [](float pose, float, float weight) { return pose * weight; };
    const Change add = [](float pose, float current, float weight) { return pose * weight + current; };
    const Change approach = [](float pose, float current, float weight) { return current + (pose - current) * weight; };
    std::mt19937 random(21);
    for (int round = 0; round < 40; ++round)
    {
        const unsigned int bones = 1 + static_cast<unsigned int>(random() % 75);
        const auto object = makeObject(random, bones);
        std::vector<Matrix> expected(bones);
        for (int step = 0; step < 30; ++step)
        {
            const int index = static_cast<int>(random() % 3);
            const float frame =
                step < 20 ? 0.5F * static_cast<float>(step) : static_cast<float>(random() % 1000) / 8.0F - 40.0F;
            const float weight = 0.01F + 0.98F * static_cast<float>(random() % 100) / 100.0F;
            const long long allocations = S_Memory::sm_iNewCount;
            switch (step % 3)
            {
                case 0:
                    object->animateObjectFrame(index, frame, nullptr);
                    playOneByOne(*object, index, frame, 1.0F, replace, expected);
                    break;
                case 1:
                    object->subAnimateObject(index, frame / 30.0F, weight);
                    playOneByOne(*object, index, 30.0F * (frame / 30.0F), weight, approach, expected);
                    break;
                default:
                {
                    // Two that have tracks for all bones.
                    const int first = 1 + index % 2;
                    object->crossAnimateObjectFrame(first, frame, weight, 2, frame + 3.0F, nullptr);
                    playOneByOne(*object, first, frame, weight, scale, expected);
                    playOneByOne(*object, 2, frame + 3.0F, 1.0F - weight, add, expected);
                    break;
                }
            }
            ASSERT_EQ(S_Memory::sm_iNewCount, allocations);
            for (unsigned int bone = 0; bone < bones; ++bone)
            {
                ASSERT_EQ(std::memcmp(&object->getMesh(bone)->getMatrix(), &expected[bone], sizeof(Matrix)), 0)
                    << "round " << round << ", step " << step << ", bone " << bone;
            }
        }
    }
}
