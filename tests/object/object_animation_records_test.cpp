#include "tests/support/expectations.h"
#include "tests/support/object_files.h"

#include <tw2/core/exceptions.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace TW2;
using support::makeTrack;
using support::ObjectFiles;

namespace
{
/// Arm and leg; animation 0 moves both, animation 1 the arm alone.
struct ObjectAnimationRecords : testing::Test
{
    ObjectAnimationRecords()
    {
        m_files.addMesh("arm");
        m_files.addMesh("leg");
        m_files.addAnimation(0, {makeTrack("arm", 1.0f, 11, 10), makeTrack("leg", 2.0f, 21, 20)});
        m_files.addAnimation(1, {makeTrack("arm", 3.0f)});
        m_object = m_files.build();
    }

    [[nodiscard]] TW_KeyframeAnimation* getTrack(int index, std::size_t mesh) const
    {
        return m_object->getAnimation(index)->m_vecKeyframeAnimations[mesh];
    }
    /// x of a mesh at the end of an animation.
    float play(TW_ObjectAnimation& object, int index, unsigned int mesh)
    {
        EXPECT_TRUE(object.animateObjectFrame(index, 20.0f, nullptr));
        return object.getMesh(mesh)->getMatrix().m[3][0];
    }

    ObjectFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_object;
};
}  // namespace

TEST_F(ObjectAnimationRecords, ARecordTellsRateAndLengthOfItsTracks)
{
    const TW_ObjectAnimation::ObjectAnimation& record = *m_object->getAnimation(0);
    EXPECT_EQ(record.m_iFrameRate, 10);
    EXPECT_EQ(record.m_uiFrames, 21u);
    EXPECT_EQ(record.m_iKeyframeAnimationCount, 2);
    EXPECT_EQ(record.m_iInstance + 1, m_object->getAnimation(1)->m_iInstance);
    EXPECT_EQ(m_object->getAnimation(1)->m_vecKeyframeAnimations.size(), 2u);
    EXPECT_EQ(getTrack(1, 1), nullptr);
    EXPECT_EQ(m_object->getAnimation(7), nullptr);
    EXPECT_EQ(m_object->accessAnimation(-1), nullptr);
}

TEST_F(ObjectAnimationRecords, AppendedAnimationsReplaceThoseOfTheSameIndexAndStayCounted)
{
    const std::string file = m_files.writeAnimation("more.tw", {makeTrack("arm", 50.0f)});
    const std::string text = "more { animation { index 1 filename \"" + file + "\" } animation { index 9 filename \"" +
                             file + "\" } }\nempty { }\n";
    const std::string name = m_files.getDirectory().write("more.txt", text);
    S_Script script(name.c_str());
    m_object->appendAnimations(&script, "more", false);
    EXPECT_EQ(m_object->getTotalAnimations(), 4u);
    EXPECT_EQ(m_object->getMaximumAnimationIndex(), 9);
    EXPECT_EQ(play(*m_object, 1, 0), 50.0f);
    m_object->appendAnimations(&script, 0, false);
    m_object->appendAnimations(name.c_str(), "empty", false);
    EXPECT_EQ(m_object->getTotalAnimations(), 6u);
    m_object->appendSingleAnimation(-4, file.c_str(), false);
    EXPECT_EQ(m_object->getTotalAnimations(), 7u);
    EXPECT_EQ(m_object->getMaximumAnimationIndex(), 9);
    EXPECT_EQ(play(*m_object, -4, 0), 50.0f);
    EXPECT_EQ(play(*m_object, 0, 0), 1.0f);
}

TEST_F(ObjectAnimationRecords, AnAppendThatFailsKeepsWhatWasLoadedBefore)
{
    const std::string good = m_files.writeAnimation("good.tw", {makeTrack("arm", 50.0f)});
    const std::string bad = m_files.writeAnimation("bad.tw", {makeTrack("arm", 60.0f), makeTrack("wing", 1.0f)});
    S_Script script = S_Script::fromText("memory", ("a { animation { index 5 filename \"" + good +
                                                    "\" } animation { index 0 filename \"" + bad + "\" } }")
                                                       .c_str());
    EXPECT_THROW(m_object->appendAnimations(&script, "a", false), TW_Exception_AnimationTargetNotFound);
    EXPECT_EQ(script.getDepth(), 0u);
    EXPECT_TRUE(m_object->isConstructed());
    EXPECT_EQ(m_object->getTotalAnimations(), 3u);
    EXPECT_EQ(play(*m_object, 5, 0), 50.0f);
    EXPECT_FALSE(m_object->isValidAnimation(0));
    EXPECT_THAT(support::messageOf([&] { m_object->appendSingleAnimation(8, bad.c_str(), false); }),
                testing::HasSubstr("callback not set <script not available>: Target name \"wing\""));
    EXPECT_FALSE(m_object->isValidAnimation(8));
    S_Script geometry = S_Script::fromText("memory", "a { geometry { } }");
    EXPECT_THROW(m_object->appendAnimations(&geometry, 0, false), S_Exception);
}

TEST_F(ObjectAnimationRecords, AnInsertedTrackTakesThePlaceOfTheOneBefore)
{
    auto* const slow = new TW_KeyframeAnimation(makeTrack("anything", 7.0f, 5, 25), false);
    EXPECT_FALSE(m_object->insertAnimation("Arm", 1, slow));
    EXPECT_FALSE(m_object->insertAnimation("arm", 2, slow));
    EXPECT_EQ(slow->getObjectReferenceCount(), 1);
    ASSERT_TRUE(m_object->insertAnimation("arm", 1, slow));
    EXPECT_EQ(slow->getObjectReferenceCount(), 2);
    EXPECT_EQ(m_object->getAnimation(1)->m_iFrameRate, 25);  // the only track's
    EXPECT_EQ(m_object->getAnimationFrames(1), 5u);
    ASSERT_TRUE(m_object->insertAnimation("arm", 0, slow));
    EXPECT_EQ(m_object->getAnimation(0)->m_iFrameRate, 10);  // the first one's
    EXPECT_EQ(m_object->getAnimation(0)->m_iKeyframeAnimationCount, 2);
    ASSERT_TRUE(m_object->insertAnimation("arm", 0, slow));  // instead of itself
    EXPECT_EQ(slow->getObjectReferenceCount(), 3);
    m_object->accessAnimation(0)->m_vecLastFrames.clear();  // as a host may do
    ASSERT_TRUE(m_object->insertAnimation("arm", 0, slow));
    slow->decreaseObjectReferenceCount();
    EXPECT_EQ(play(*m_object, 0, 0), 7.0f);

    auto* const tail = new P_VirtualObject(1);
    tail->setName("tail");
    m_object->addMesh(tail);
    ASSERT_TRUE(m_object->insertAnimation("tail", 1, slow));
    EXPECT_EQ(play(*m_object, 1, 2), 7.0f);
}

TEST_F(ObjectAnimationRecords, DeletingShortensARecordAndEmptiesIt)
{
    m_object->deleteAnimation("leg", 0);
    m_object->deleteAnimation("leg", 0);
    m_object->deleteAnimation("wing", 0);
    m_object->deleteAnimation("arm", 17);
    EXPECT_EQ(m_object->getAnimationFrames(0), 11u);
    EXPECT_EQ(m_object->getAnimation(0)->m_iKeyframeAnimationCount, 1);
    m_object->deleteAnimation("arm", 0);
    EXPECT_EQ(m_object->getAnimationFrames(0), 0u);
    EXPECT_EQ(m_object->getAnimationFPS(0), 0.0f);
    EXPECT_TRUE(m_object->isValidAnimation(0));

    m_object->deleteAnimation(1);
    m_object->deleteAnimation(1);
    EXPECT_FALSE(m_object->isValidAnimation(1));
    EXPECT_FALSE(m_object->animateObjectFrame(1, 0.0f, nullptr));
    EXPECT_EQ(m_object->getTotalAnimations(), 2u);
    EXPECT_EQ(m_object->getMaximumAnimationIndex(), 1);
}

TEST_F(ObjectAnimationRecords, SharedAnimationsOutliveTheirSource)
{
    const auto source = m_files.build();
    source->appendSingleAnimation(
        6, m_files.writeAnimation("wave.tw", {makeTrack("leg", 40.0f), makeTrack("arm", 30.0f)}).c_str(), false);
    m_object->shareAnimation(6, source.get());
    m_object->shareAnimation(0, source.get());  // instead of its own
    m_object->shareAnimation(12, source.get());
    m_object->shareAnimation(6, m_object.get());
    EXPECT_EQ(m_object->getTotalAnimations(), 4u);
    EXPECT_EQ(m_object->getMaximumAnimationIndex(), 6);
    EXPECT_FALSE(m_object->isValidAnimation(12));
    const TW_ObjectAnimation::ObjectAnimation& shared = *m_object->getAnimation(6);
    EXPECT_EQ(shared.m_iInstance, source->getAnimation(6)->m_iInstance);
    EXPECT_EQ(shared.m_iKeyframeAnimationCount, 1);
    EXPECT_GT(m_object->getAnimationLoopToFrame(6), 0u);
    EXPECT_EQ(m_object->getAnimationLoopToFrame(6), source->getAnimationLoopToFrame(6));
    EXPECT_EQ(getTrack(6, 0), source->getAnimation(6)->m_vecKeyframeAnimations[0]);
    EXPECT_EQ(getTrack(6, 0)->getObjectReferenceCount(), 2);
    source->destruct();
    EXPECT_EQ(getTrack(6, 0)->getObjectReferenceCount(), 1);
    EXPECT_EQ(play(*m_object, 6, 1), 40.0f);
    EXPECT_EQ(play(*m_object, 0, 1), 2.0f);
}
