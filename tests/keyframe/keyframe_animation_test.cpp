#include "tests/support/chunk_files.h"
#include "tests/support/expectations.h"
#include "tests/support/keyframe_tracks.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/track_oracle.h"
#include "tests/support/verbose_capture.h"

#include <tw2/core/exceptions.h>
#include <tw2/keyframe/keyframe_animation.h>

#include <platform/runtime/exception.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <random>

using TW2::KeyframeAnimationChunk;
using TW2::TW_KeyframeAnimation;
using Matrix = M_Matrix4x3Template<float>;

namespace
{
// Shows what is protected.
struct OpenAnimation : TW_KeyframeAnimation
{
    using TW_KeyframeAnimation::getSharedData;
    using TW_KeyframeAnimation::TW_KeyframeAnimation;

    [[nodiscard]] bool isCompact() const { return getSharedData()->m_pMatrices == nullptr; }
};

Matrix poseAt(const TW_KeyframeAnimation& animation, float frame, int hint = 0)
{
    Matrix matrix;
    animation.animateFrameWithLastFrame(matrix, frame, hint);
    return matrix;
}

// Two keys ten frames apart.
KeyframeAnimationChunk twoKeys(const Matrix& first, const Matrix& second, int mode = 0)
{
    KeyframeAnimationChunk chunk;
    chunk.header = {"bone", 30, false};
    chunk.totalFrameCount = 31;
    chunk.interpolationMode = mode;
    chunk.keys = {{10, first}, {20, second}};
    return chunk;
}
}  // namespace

TEST(KeyframeAnimation, MovesAsADoublePrecisionEvaluationDoes)
{
    std::mt19937 random(11);
    for (int round = 0; round < 400; ++round)
    {
        const auto chance = [&random] { return random() % 2 == 0; };
        support::TrackShape shape;
        shape.frames = 2 + static_cast<unsigned int>(random() % 50);
        shape.keys = 1 + static_cast<unsigned int>(random() % 20);
        shape.looping = chance();
        shape.loopInterpolation = chance();
        shape.loopToFrame = static_cast<unsigned int>(random() % (shape.frames - 1));
        shape.interpolationMode = static_cast<int>(random() % 3);
        shape.scaled = chance();
        shape.keepScale = chance();
        shape.visibilityKeys = 1 + static_cast<unsigned int>(random() % 5);
        const KeyframeAnimationChunk chunk = support::makeTrack(random, shape);
        const OpenAnimation animation(chunk, true);
        ASSERT_EQ(animation.isCompact(), !shape.scaled && !shape.keepScale);
        const support::TrackOracle oracle(chunk);
        // Kept row lengths come from the fast inverse square root.
        const double tolerance = shape.keepScale ? 3e-5 : 1e-5;

        int hint = 0;
        for (int step = 0; step < 100; ++step)
        {
            // Quarters of frames far inside and outside the track; playing forward half of the time.
            const double frame = step < 50 ? 0.25 * step
                                           : static_cast<double>(random() % (shape.frames * 24)) / 4.0 -
                                                 2.0 * static_cast<double>(shape.frames);
            const auto at = static_cast<float>(frame);
            Matrix matrix;
            hint = animation.animateFrameWithLastFrame(matrix, at, hint);
            ASSERT_LT(support::relativeError(matrix, oracle.getTransform(frame)), tolerance)
                << "frame " << frame << " of " << shape.frames << ", " << chunk.keys.size() << " keys, mode "
                << shape.interpolationMode << (shape.looping ? ", looping to " : ", once ") << shape.loopToFrame
                << (shape.loopInterpolation ? " interpolated" : "") << (shape.scaled ? ", scaled" : "")
                << (shape.keepScale ? ", keeping scale" : "");
            ASSERT_EQ(poseAt(animation, at, 0), matrix);
            ASSERT_EQ(poseAt(animation, at, static_cast<int>(random())), matrix) << "stale hint";
            ASSERT_NEAR(animation.getVisibilityFrame(at), oracle.getVisibility(frame), 1e-5);
        }
    }
}

TEST(KeyframeAnimation, TimesAreFramesAtItsFrameRateAndOnlyTheHintlessFormsKeepAHint)
{
    std::mt19937 random(2);
    TW_KeyframeAnimation animation(support::makeTrack(random, {.visibilityKeys = 4}), true);
    Matrix matrix;
    animation.animate(matrix, 0.5F);
    EXPECT_EQ(matrix, poseAt(animation, 15.0F));
    animation.animateFrame(matrix, 7.25F);
    EXPECT_EQ(matrix, poseAt(animation, 7.25F));
    EXPECT_EQ(animation.getVisibility(0.5F), animation.getVisibilityFrame(15.0F));
    animation.setFrameRate(10);
    EXPECT_EQ(animation.getFrameRate(), 10);
    const int hint = animation.animateWithLastFrame(matrix, 0.5F, 0);
    EXPECT_EQ(matrix, poseAt(animation, 5.0F));
    EXPECT_EQ(hint, animation.animateFrameWithLastFrame(matrix, 5.0F, hint));

    const support::VerboseCapture log;
    animation.setAnimationTargetName("arm \"left\"");
    animation.dump();
    EXPECT_EQ(log.getText(), "Keyframe animation for object: \"arm \"left\"\"\nFrame rate: 10\n");
}

TEST(KeyframeAnimation, TracksWithoutScaleAreHeldCompactly)
{
    struct Case
    {
        float length;
        bool compact;
    };
    for (const Case& c : {Case{1.0F, true},
                          {1.00005F, true},
                          {0.99995F, true},
                          {1.0002F, false},
                          {0.9998F, false},
                          {0.0F, false},
                          {-1.0F, true},
                          {3e38F, false}})
    {
        for (int row = 0; row < 3; ++row)
        {
            Matrix key = support::rotation(1, 2, 3, 0.7);
            key.setRow(row, key.getRow(row) * c.length);
            EXPECT_EQ(OpenAnimation(twoKeys(Matrix(), key), false).isCompact(), c.compact) << c.length;
        }
    }
    KeyframeAnimationChunk chunk = twoKeys(Matrix(), Matrix());
    chunk.keepScale = true;
    EXPECT_FALSE(OpenAnimation(chunk, false).isCompact());
    // A block that is not quite a rotation comes back as one.
    Matrix skewed;
    skewed.setRow(0, {0.99999F, 0.004F, 0.0F});
    const Matrix back = poseAt(TW_KeyframeAnimation(twoKeys(skewed, skewed), false), 10.0F);
    EXPECT_NEAR(back.getRow(0).dot(back.getRow(1)), 0.0F, 1e-7F);
}

TEST(KeyframeAnimation, HalfTurnsBlendToRowsWithoutDirectionThatStayFinite)
{
    for (const bool full : {false, true})
    {
        for (int mode = 0; mode < 3; ++mode)
        {
            KeyframeAnimationChunk chunk = twoKeys(Matrix(), support::rotation(0, 0, 1, std::numbers::pi), mode);
            chunk.keepScale = full;
            // Exactly, so that the rows meet at zero.
            chunk.keys[1].matrix.m[0][1] = chunk.keys[1].matrix.m[1][0] = 0.0F;
            const Matrix middle = poseAt(TW_KeyframeAnimation(chunk, false), 15.0F);
            EXPECT_EQ(middle.getRow(0), M_Vector3Template<float>());
            EXPECT_EQ(middle.getRow(1), M_Vector3Template<float>());
            EXPECT_NEAR(middle.getRow(2).z, 1.0F, 1e-4F);
        }
    }
}

TEST(KeyframeAnimation, NoFrameAndNoFiniteKeysGiveANaN)
{
    std::mt19937 random(5);
    const float values[] = {0.0F, -0.0F, 1.0F, -1.0F, 1e-45F, 1e-20F, 1e18F, -1e20F, 3.4e38F, -3.4e38F};
    const float frames[] = {0.0F,
                            9.999F,
                            -0.3F,
                            1e9F,
                            -1e9F,
                            3e38F,
                            std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN()};
    for (int round = 0; round < 3000; ++round)
    {
        KeyframeAnimationChunk chunk;
        // Frame counts that no file should have are negative as the whole numbers that frames become.
        chunk.totalFrameCount = static_cast<unsigned int>(random() % 12) + (random() % 8 == 0 ? 0x80000000U - 4U : 0U);
        chunk.header.looping = random() % 2 == 0;
        chunk.loopInterpolation = random() % 2 == 0;
        chunk.loopToFrame = static_cast<unsigned int>(random() % 12);
        chunk.interpolationMode = static_cast<int>(random() % 3);
        chunk.keepScale = random() % 2 == 0;
        const bool compact = random() % 2 == 0;
        for (unsigned int key = 0, frame = 0; key < 4; ++key)
        {
            // Rows along the axes are of unit length and often parallel.
            Matrix matrix;
            for (std::size_t e = 0; e < 12; ++e)
            {
                matrix.data()[e] = compact && e < 9 ? 0.0F : values[random() % std::size(values)];
            }
            for (int row = 0; row < 3 && compact; ++row)
            {
                matrix.m[row][random() % 3] = random() % 2 == 0 ? 1.0F : -1.0F;
            }
            chunk.keys.push_back({frame, matrix});
            frame += static_cast<unsigned int>(random() % 4);
        }
        const TW_KeyframeAnimation animation(chunk, false);
        for (const float frame : frames)
        {
            const Matrix matrix = poseAt(animation, frame, static_cast<int>(random()));
            for (std::size_t e = 0; e < 12; ++e)
            {
                ASSERT_FALSE(std::isnan(matrix.data()[e]))
                    << "element " << e << " at frame " << frame << ", mode " << chunk.interpolationMode
                    << ", keep scale " << chunk.keepScale << ", round " << round;
            }
        }
    }
}

TEST(KeyframeAnimation, AnAnimationWithoutKeysOrTracksIsTheIdentityAndVisible)
{
    TW_KeyframeAnimation animation;
    EXPECT_FALSE(animation.isConstructed());
    EXPECT_EQ(animation.getDataReferenceCount(), 0);
    for (int kind = 0; kind < 4; ++kind)
    {
        if (kind == 1)
        {
            animation.construct();
            EXPECT_NE(animation.getVisibilityContainer(), nullptr);
        }
        else if (kind >= 2)
        {
            KeyframeAnimationChunk chunk;
            chunk.keepScale = kind == 3;
            animation.construct(chunk, kind == 3);
        }
        Matrix matrix;
        matrix *= 5.0F;
        EXPECT_EQ(animation.animateFrameWithLastFrame(matrix, 3.0F, 5), 0);
        EXPECT_EQ(matrix, Matrix());
        EXPECT_EQ(animation.getVisibility(1.0F), 1.0F);
        EXPECT_EQ(animation.getTotalFrameCount(), 0u);
    }
}

TEST(KeyframeAnimation, ReportsWhereItLoops)
{
    for (const bool full : {false, true})
    {
        KeyframeAnimationChunk chunk = twoKeys(Matrix(), Matrix());
        chunk.keepScale = full;
        chunk.loopToFrame = 4;
        chunk.loopInterpolation = true;
        const TW_KeyframeAnimation once(chunk, false);
        EXPECT_FALSE(once.isLooping() || once.isLoopInterpolating());
        EXPECT_EQ(once.getLoopToFrame(), 31u) << "its frame count";
        chunk.header.looping = true;
        const TW_KeyframeAnimation looping(chunk, false);
        EXPECT_TRUE(looping.isLooping() && looping.isLoopInterpolating());
        EXPECT_EQ(looping.getLoopToFrame(), 4u);
        EXPECT_EQ(looping.getTotalFrameCount(), 31u);
        chunk.header.looping = false;
        chunk.totalFrameCount = 0;
        EXPECT_EQ(TW_KeyframeAnimation(chunk, false).getLoopToFrame(), 4u);
    }
    // An unknown mode counts as linear.
    const Matrix quarter = support::rotation(0, 0, 1, 1.5);
    for (const int mode : {7, -1})
    {
        TW_KeyframeAnimation animation(twoKeys(Matrix(), quarter, 2), false);
        animation.construct(twoKeys(Matrix(), quarter, mode), false);
        EXPECT_EQ(poseAt(animation, 15.0F), poseAt(TW_KeyframeAnimation(twoKeys(Matrix(), quarter, 0), false), 15.0F));
    }
    // Frames are 16 bits.
    KeyframeAnimationChunk late = twoKeys(Matrix(), quarter);
    late.keys[1].frame += 0x10000;
    EXPECT_EQ(TW_KeyframeAnimation(late, false).getKeyFrames(), (S_Vector<int>{10, 20}));
}

TEST(KeyframeAnimation, CopiesShareTheTracksUntilTheLastIsGone)
{
    const long long live = S_Memory::getLiveCount();
    {
        std::mt19937 random(1);
        const KeyframeAnimationChunk chunk = support::makeTrack(
            random, {.interpolationMode = 2, .scaled = true, .keepScale = true, .visibilityKeys = 2});
        auto first = std::make_unique<OpenAnimation>(chunk, true);
        const Matrix expected = poseAt(*first, 12.5F);
        {
            const TW_KeyframeAnimation copy(*first);
            EXPECT_EQ(first->getDataReferenceCount(), 2);
            EXPECT_EQ(copy.getObjectReferenceCount(), 1);
            EXPECT_EQ(poseAt(copy, 12.5F), expected);
        }
        EXPECT_EQ(first->getDataReferenceCount(), 1);
        TW_KeyframeAnimation second;
        second.construct();
        second = *first;
        const TW_KeyframeAnimation& self = second;
        second = self;
        EXPECT_EQ(second.getDataReferenceCount(), 2);
        first.reset();
        EXPECT_EQ(second.getDataReferenceCount(), 1);
        EXPECT_EQ(poseAt(second, 12.5F), expected);
        EXPECT_EQ(second.getAnimationTargetName(), "bone");
    }
    EXPECT_EQ(S_Memory::getLiveCount(), live);

    // With further holders an object keeps its hands off the tracks.
    TW_KeyframeAnimation owner;
    owner.construct();
    {
        const TW_KeyframeAnimation held(owner);
        EXPECT_EQ(held.increaseObjectReferenceCount(), 2);
    }
    EXPECT_EQ(owner.getDataReferenceCount(), 2);
    EXPECT_EQ(owner.decreaseDataReferenceCount(), 1);
}

TEST(KeyframeAnimation, AFailedAllocationLeavesAnEmptyAnimationAndNothingElse)
{
    std::mt19937 random(1);
    const char* const name = "a bone whose name does not fit into a short string";
    const support::TemporaryDirectory directory;
    const S_String file = directory.write("bone.tw", support::toBytes(support::makeTrack(random, {}, name))).c_str();
    for (const bool scaled : {false, true})
    {
        const KeyframeAnimationChunk chunk = support::makeTrack(random, {.scaled = scaled, .visibilityKeys = 3}, name);
        support::expectNothingLeftByFailedAllocations(
            [&]
            {
                TW_KeyframeAnimation animation;
                try
                {
                    animation.construct(chunk, true);
                    TW_KeyframeAnimation copy(animation);
                    copy.construct();
                    copy = animation;
                    copy.construct(file);
                }
                catch (...)
                {
                    if (!animation.isConstructed())
                    {
                        EXPECT_EQ(animation.getDataReferenceCount(), 0);
                        EXPECT_EQ(animation.getFrameRate(), 0);
                        EXPECT_TRUE(animation.getAnimationTargetName().empty());
                    }
                    throw;
                }
            });
    }
    support::expectNothingLeftByFailedAllocations([&file] { const TW_KeyframeAnimation animation(file); });
}

TEST(KeyframeAnimation, AFileHoldsOneAnimationAndNothingElse)
{
    std::mt19937 random(9);
    const support::TemporaryDirectory directory;
    const KeyframeAnimationChunk first = support::makeTrack(random, {.visibilityKeys = 2}, "first");
    const auto write = [&directory](const char* name, std::initializer_list<KeyframeAnimationChunk> chunks, bool other)
    {
        S_MemoryFileWriter writer;
        for (const KeyframeAnimationChunk& chunk : chunks)
        {
            writer << chunk;
        }
        if (other)
        {
            const S_MemoryFileWriter::Chunk chunk(writer, TW2::CHUNK_CAMERA, 0);
        }
        return S_String(directory.write(name, writer.getBytes()).c_str());
    };
    TW_KeyframeAnimation animation(write("good.tw", {first}, false));
    EXPECT_EQ(animation.getAnimationTargetName(), "first");
    EXPECT_EQ(animation.getVisibilityContainer(), nullptr);
    EXPECT_EQ(animation.getVisibilityFrame(3.0F), 1.0F);
    EXPECT_EQ(poseAt(animation, 8.5F), poseAt(TW_KeyframeAnimation(first, true), 8.5F));

    animation.setAnimationTargetName("kept");
    const S_String empty = write("empty.tw", {}, false);
    EXPECT_EQ(support::messageOf([&] { animation.construct(empty); }),
              ("TW2: File \"" + empty + "\" did not have a valid keyframe animation chunk").c_str());
    const S_String camera = write("camera.tw", {}, true);
    EXPECT_EQ(support::messageOf([&] { animation.construct(camera); }),
              ("TW2: File \"" + camera + "\" had more than one or other than animation chunks").c_str());
    EXPECT_THROW(animation.construct(S_String("no such file.tw")), S_FileException);
    EXPECT_EQ(animation.getAnimationTargetName(), "kept");
    EXPECT_TRUE(support::isFinite(poseAt(animation, 3.0F)));

    EXPECT_THROW(animation.construct(write("two.tw", {first, first}, false)), TW2::TW_Exception_InvalidAnimationChunk);
    EXPECT_EQ(animation.getAnimationTargetName(), "first") << "the first chunk's tracks";
    EXPECT_THROW(TW_KeyframeAnimation(write("other.tw", {first}, true)), TW2::TW_Exception_InvalidAnimationChunk);
    // Its own name as the file's.
    animation.setAnimationTargetName(write("good.tw", {first}, false));
    animation.construct(animation.getAnimationTargetName());
    EXPECT_EQ(animation.getAnimationTargetName(), "first");
}
