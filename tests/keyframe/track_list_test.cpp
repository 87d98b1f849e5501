#include "tests/support/expectations.h"
#include "tests/support/keyframe_tracks.h"
#include "tests/support/object_files.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/keyframe/track_list.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using TW2::TW_KeyframeAnimation;
using TW2::TW_ObjectAnimation;
using TW2::TW_TrackList;
using Matrix = M_Matrix4x3Template<float>;

namespace
{
// Two meshes that animation 0 moves, and what may come in place of its tracks.
class PlayedTracks : public testing::Test
{
protected:
    PlayedTracks()
    {
        m_files.addMesh("a");
        m_files.addMesh("b");
        m_files.addAnimation(0, {makeTrack("a"), makeTrack("b")});
        m_object = m_files.build();
    }

    TW2::KeyframeAnimationChunk makeTrack(const char* target, bool scaled = false)
    {
        return support::makeTrack(m_random, {.frames = 40, .keys = 9, .scaled = scaled}, target);
    }
    static TW_KeyframeAnimation& getTrack(const TW_ObjectAnimation& object, std::size_t mesh)
    {
        return *object.getAnimation(0)->m_vecKeyframeAnimations[mesh];
    }

    // The meshes show the poses that these animations give themselves.
    static void expectPlays(TW_ObjectAnimation& object, const TW_KeyframeAnimation& a, const TW_KeyframeAnimation& b)
    {
        for (const float frame : {3.25F, 17.5F, 30.75F})
        {
            object.animateObjectFrame(0, frame, nullptr);
            Matrix pose;
            (void)a.animateFrameWithLastFrame(pose, frame, 0);
            EXPECT_EQ(object.getMesh(0)->getMatrix(), pose);
            (void)b.animateFrameWithLastFrame(pose, frame, 0);
            EXPECT_EQ(object.getMesh(1)->getMatrix(), pose);
        }
    }

    std::mt19937 m_random{3};
    support::ObjectFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_object;
};
}  // namespace

TEST_F(PlayedTracks, AreThoseThatAnAnimationHoldsNow)
{
    TW_ObjectAnimation copy(*m_object);
    TW_KeyframeAnimation& track = getTrack(*m_object, 0);
    const TW_KeyframeAnimation& other = getTrack(*m_object, 1);
    expectPlays(*m_object, track, other);

    // Built anew in place, of the same and of another kind, for every object that plays it.
    track.decreaseObjectReferenceCount();  // a build sets the count to 1
    track.construct(makeTrack("a"), false);
    expectPlays(*m_object, track, other);
    expectPlays(copy, track, other);
    track.construct(makeTrack("a", true), false);
    expectPlays(*m_object, track, other);
    expectPlays(copy, track, other);
    track = other;
    expectPlays(*m_object, other, other);
    // Given up, and failed on the way: the identity.
    track.destruct();
    expectPlays(copy, TW_KeyframeAnimation(), other);
    const TW2::KeyframeAnimationChunk chunk = makeTrack("a");
    S_Memory::failAllocation(3);
    EXPECT_THROW(track.construct(chunk, false), S_MemoryException_Allocation);
    S_Memory::failAllocation(0);
    expectPlays(*m_object, TW_KeyframeAnimation(), other);
    track.construct(chunk, false);
    track.increaseObjectReferenceCount();
    expectPlays(copy, track, other);
}

TEST_F(PlayedTracks, OfACopyStayWhenItsSourceGetsOthers)
{
    TW_ObjectAnimation copy(*m_object);
    TW_ObjectAnimation shared(*m_object);
    shared.shareAnimation(0, &copy);
    auto* const inserted = new TW_KeyframeAnimation(makeTrack("a", true), false);
    ASSERT_TRUE(m_object->insertAnimation("a", 0, inserted));
    inserted->decreaseObjectReferenceCount();

    expectPlays(*m_object, *inserted, getTrack(copy, 1));
    expectPlays(copy, getTrack(copy, 0), getTrack(copy, 1));
    expectPlays(shared, getTrack(copy, 0), getTrack(copy, 1));
    EXPECT_NE(&getTrack(copy, 0), inserted);

    copy.deleteAnimation("b", 0);
    EXPECT_EQ(copy.getAnimation(0)->m_vecKeyframeAnimations[1], nullptr);
    expectPlays(*m_object, *inserted, getTrack(shared, 1));
    shared.deleteAnimation(0);
    expectPlays(*m_object, *inserted, getTrack(*m_object, 1));
}

TEST_F(PlayedTracks, AreWholeAgainAfterAFailedChange)
{
    TW_ObjectAnimation copy(*m_object);
    const TW_KeyframeAnimation inserted(makeTrack("a"), false);
    TW_KeyframeAnimation& before = getTrack(copy, 0);
    const int references = before.getObjectReferenceCount();
    support::expectUnchangedByFailedAllocations(
        [&] { EXPECT_TRUE(copy.insertAnimation("a", 0, const_cast<TW_KeyframeAnimation*>(&inserted))); },
        [&]
        {
            EXPECT_EQ(&getTrack(copy, 0), &before);
            EXPECT_EQ(before.getObjectReferenceCount(), references);
            EXPECT_EQ(inserted.getObjectReferenceCount(), 1);
        });
    expectPlays(copy, inserted, getTrack(copy, 1));
    expectPlays(*m_object, getTrack(*m_object, 0), getTrack(*m_object, 1));
    copy.deleteAnimation("a", 0);
}

namespace
{
class OpenAnimation : public TW_KeyframeAnimation
{
public:
    using TW_KeyframeAnimation::getSharedData;
    using TW_KeyframeAnimation::TW_KeyframeAnimation;
};
}  // namespace

// Loading packs the tracks of an animation that have the same key frames; nobody can tell but by speed and memory.
TEST(PackedTracks, ReadAsTheyWereWritten)
{
    for (const unsigned int bones : {1u, 8u, 19u})
    {
        std::mt19937 random(bones);
        support::ObjectFiles files;
        std::vector<TW2::KeyframeAnimationChunk> tracks;
        for (unsigned int bone = 0; bone < bones; ++bone)
        {
            const std::string name = "bone" + std::to_string(bone);
            files.addMesh(name);
            tracks.push_back(support::makeTrack(random, {.frames = 12, .keys = 12}, name.c_str()));
            for (TW2::MatrixKey& key : tracks.back().keys)
            {
                if (bone > 7)  // turns only
                {
                    key.matrix.setTranslation(tracks.back().keys.front().matrix.getTranslation());
                }
                if (bone == 17)  // nearly
                {
                    key.matrix.m[3][2] = key.frame == 5 ? -0.0F : 0.0F;
                }
            }
        }
        files.addAnimation(0, tracks);
        auto object = files.build();
        std::vector<OpenAnimation> copies(bones);
        for (unsigned int bone = 0; bone < bones; ++bone)
        {
            copies[bone].construct(*object->getAnimation(0)->m_vecKeyframeAnimations[bone]);
        }
        object.reset();
        for (unsigned int bone = 0; bone < bones; ++bone)
        {
            const auto& values = copies[bone].getSharedData()->m_keyframes.m_vecValues;
            TW2::TW_RigidKeys changed(values);
            changed[5] = TW2::TW_KeyframeMatrix(Matrix::translation({1, 2, 3}));
            changed.push_back(values.back());
            ASSERT_EQ(values.size(), 12u);
            ASSERT_EQ(changed.size(), 13u);
            for (std::size_t key = 0; key < values.size(); ++key)
            {
                const TW2::TW_KeyframeMatrix expected(tracks[bone].keys[key].matrix);
                EXPECT_EQ(values[key], expected);
                EXPECT_EQ(std::signbit(values[key].m_vTranslation.z), std::signbit(expected.m_vTranslation.z));
                EXPECT_EQ(values.at(key), expected);
                EXPECT_EQ(std::as_const(changed)[key] == expected, key != 5);
            }
            EXPECT_EQ(std::count(values.begin(), values.end(), values[3]), 1);
            EXPECT_THROW((void)values.at(12), std::out_of_range);
            for (TW2::TW_KeyframeMatrix& key : changed)
            {
                key.m_fRotationW = 2.0F;
            }
            for (const TW2::TW_KeyframeMatrix key : std::as_const(changed))
            {
                EXPECT_EQ(key.m_fRotationW, 2.0F);
            }
            EXPECT_THROW((void)changed.at(13), std::out_of_range);
            Matrix pose;
            (void)copies[bone].animateFrameWithLastFrame(pose, 4.0F, 0);
            EXPECT_EQ(pose, TW2::TW_KeyframeMatrix(tracks[bone].keys[4].matrix).toMatrix());
            TW2::TW_RigidKeys kept;
            kept.swap(const_cast<TW2::TW_RigidKeys&>(values));
            EXPECT_EQ(std::as_const(kept)[4], TW2::TW_KeyframeMatrix(tracks[bone].keys[4].matrix));
            kept[4] = {};
            EXPECT_EQ(kept.size(), 12u);
            EXPECT_EQ(kept[5], TW2::TW_KeyframeMatrix(tracks[bone].keys[5].matrix));
        }
    }
}

TEST(TrackList, KeepsNoAnimationThatIsGone)
{
    const support::NothingLeft check;
    std::mt19937 random(1);
    TW_TrackList list(3);
    auto animation = std::make_unique<TW_KeyframeAnimation>(support::makeTrack(random, {}), false);
    list.set(1, animation.get());
    EXPECT_EQ(list.at(1), animation.get());
    EXPECT_EQ(std::count(list.begin(), list.end(), nullptr), 2);
    EXPECT_THROW((void)list.at(3), std::out_of_range);
    const TW_TrackList copy(list);
    list.resize(5);
    list.set(4, animation.get());
    TW_TrackList moved(std::move(list));
    EXPECT_EQ(moved.size(), 5u);
    EXPECT_EQ(std::vector<TW_KeyframeAnimation*>({nullptr, animation.get(), nullptr, nullptr, animation.get()}),
              std::vector<TW_KeyframeAnimation*>({moved[0], moved[1], moved[2], moved[3], moved[4]}));
    moved.resize(2);
    moved.resize(5);
    EXPECT_EQ(std::count(moved.begin(), moved.end(), animation.get()), 1);
    // Some go again, from the middle, the end and the beginning of those that know the animation.
    TW_TrackList many(9);
    for (std::size_t slot = 0; slot < many.size(); ++slot)
    {
        many.set(slot, animation.get());
    }
    for (const std::size_t slot : {4U, 5U, 8U, 0U})
    {
        many.set(slot, nullptr);
    }
    animation->construct(support::makeTrack(random, {}), false);
    animation.reset();
    for (const TW_TrackList* const each : {&copy, static_cast<const TW_TrackList*>(&moved), &std::as_const(many)})
    {
        for (const TW_KeyframeAnimation* const track : *each)
        {
            EXPECT_EQ(track, nullptr);
        }
    }
    moved = copy;
    EXPECT_EQ(moved.size(), 3u);
}
