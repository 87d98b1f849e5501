#include "tests/support/expectations.h"
#include "tests/support/material_records.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/texture_animation.h>

#include <platform/scene/map.h>
#include <platform/scene/material.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <set>
#include <tuple>
#include <utility>

using namespace TW2;

namespace
{
constexpr float s_fNotANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float s_fInfinity = std::numeric_limits<float>::infinity();

/// Frames are the files 0.png, 1.png and so on.
MaterialTextureChunk makeSlot(int files, int playback, int framesPerSecond = 10, int startFrame = 0)
{
    MaterialTextureChunk slot;
    slot.name = "wave";
    for (int i = 0; i < files; ++i)
    {
        slot.frameFiles.emplace_back((std::to_string(i) + ".png").c_str());
    }
    slot.playback = playback;
    slot.framesPerSecond = framesPerSecond;
    slot.startFrame = startFrame;
    return slot;
}

/// The files in playing order, one digit each.
std::string getSequence(const TextureAnimation& animation, unsigned int count)
{
    std::string sequence;
    for (unsigned int frame = 0; frame < count; ++frame)
    {
        sequence += animation.getFrame(frame)->getFilename()[0];
    }
    return sequence;
}

class AnimatedTexture : public testing::Test
{
protected:
    AnimatedTexture()
    {
        m_folder.add({"0.png", "1.png", "2.png", "3.png", "x.png", "y.png"});
        m_record.shading = 2;
    }

    /// A textured material whose diffuse slot is `slot`.
    void build(const MaterialTextureChunk& slot)
    {
        m_record.accessDiffuseTexture() = slot;
        m_material.construct(m_record);
    }
    char getShown() const
    {
        const S_String& file = m_material.getMaterial()->getTexture(0)->getFilename();
        return file[file.size() - 5];
    }
    char showAt(float seconds)
    {
        EXPECT_TRUE(m_material.animateTexture(TW_Material::TEXTURE_DIFFUSE, seconds));
        return getShown();
    }
    char showFrame(float frame)
    {
        EXPECT_TRUE(m_material.animateTextureFrame(TW_Material::TEXTURE_DIFFUSE, frame));
        return getShown();
    }

    support::TextureFolder m_folder;
    TWMaterialChunk m_record;
    TW_Material m_material;
};
}  // namespace

TEST_F(AnimatedTexture, PlaysOnceOrLoopsOrGoesBackAndForth)
{
    const std::pair<MaterialTextureChunk, const char*> cases[] = {
        {makeSlot(1, 2), "0000"},
        {makeSlot(1, 0), "0000"},
        {makeSlot(3, 2), "0122222"},
        {makeSlot(3, 0), "0120120"},
        {makeSlot(3, 1), "0122100122"},
        {makeSlot(1, 1), "000"},
        {makeSlot(4, 0, 10, 2), "230123"},
        {makeSlot(4, 2, 10, 2), "2333"},
        {makeSlot(4, 0, 10, 9), "1230"},
        {makeSlot(4, 2, 10, -1), "3012333"},  // unsigned: far past the end, then from the beginning
        {makeSlot(4, 7), "01230"},            // whatever is not "once" loops
    };
    for (const auto& [slot, sequence] : cases)
    {
        const TextureAnimation animation(slot);
        const auto count = static_cast<unsigned int>(std::strlen(sequence));
        EXPECT_EQ(getSequence(animation, count), sequence);
        EXPECT_EQ(getSequence(TextureAnimation(animation), count), sequence) << "of the copy";
    }
    EXPECT_EQ(TextureAnimation(makeSlot(3, 1)).getFrameCount(), 6u);
}

TEST_F(AnimatedTexture, ShowsTheFrameThatATimeHasReached)
{
    const std::tuple<int, float, char> cases[] = {{2, 0, '0'},
                                                  {2, 0.15f, '1'},
                                                  {2, 0.25f, '2'},
                                                  {2, 0.3f, '2'},
                                                  {2, 1e30f, '2'},
                                                  {2, s_fInfinity, '2'},
                                                  {2, -0.5f, '0'},
                                                  {2, -s_fInfinity, '0'},
                                                  {2, s_fNotANumber, '0'},
                                                  {0, 0.3f, '0'},
                                                  {0, 0.45f, '1'},
                                                  {0, -0.15f, '0'},
                                                  {0, s_fNotANumber, '0'},
                                                  // Frame 2^31 - 1 of a loop of three.
                                                  {0, s_fInfinity, '1'}};
    for (const auto& [playback, seconds, shown] : cases)
    {
        build(makeSlot(3, playback));
        EXPECT_EQ(showAt(seconds), shown) << seconds << " s, playback " << playback;
    }
    build(makeSlot(3, 2, 10, 1));
    EXPECT_EQ(showAt(s_fInfinity), '2') << "a start frame does not carry the end of time around";
    EXPECT_EQ(showAt(0), '1') << "times may jump backwards";
}

TEST_F(AnimatedTexture, ShowsTheNearestFrameHalvesToEven)
{
    build(makeSlot(4, 0));
    const std::pair<float, char> table[] = {{0.5f, '0'},  {1.5f, '2'},          {2.5f, '2'}, {2.51f, '3'},
                                            {-3.0f, '0'}, {s_fNotANumber, '0'}, {5.0f, '1'}};
    for (const auto& [frame, shown] : table)
    {
        EXPECT_EQ(showFrame(frame), shown) << frame;
    }
}

TEST_F(AnimatedTexture, RateAndLengthFollowOneAnother)
{
    const auto type = TW_Material::TEXTURE_DIFFUSE;
    build(makeSlot(3, 1, 12));
    EXPECT_EQ(m_material.getTextureAnimationFrames(type), 6u);
    EXPECT_EQ(m_material.getTextureAnimationFPS(type), 12.0f);
    EXPECT_FLOAT_EQ(m_material.getTextureAnimationLength(type), 0.5f);
    const std::pair<float, float> table[] = {{2.5f, 2.0f}, {3.5f, 4.0f}, {-1.4f, -1.0f}, {1e20f, 2147483648.0f}};
    for (const auto& [asked, rate] : table)
    {
        m_material.setTextureAnimationFPS(type, asked);
        EXPECT_EQ(m_material.getTextureAnimationFPS(type), rate) << asked;
    }
    m_material.setTextureAnimationFPS(type, 4);
    m_material.setTextureAnimationFPS(type, s_fNotANumber);
    EXPECT_EQ(showAt(0.25f), '1');
    EXPECT_EQ(m_material.getTextureName(type, 1), "wave");

    build(makeSlot(1, 2, 0));
    EXPECT_EQ(m_material.getTextureAnimationLength(type), s_fInfinity);
    EXPECT_EQ(showAt(5), '0');
}

TEST_F(AnimatedTexture, ASlotWithoutAnimationAnswersNothingAndChangesNothing)
{
    build(makeSlot(3, 0));
    for (const int value : {1, 2, 3, 4, 7, -1})
    {
        const auto type = static_cast<TW_Material::TextureType>(value);
        EXPECT_FALSE(m_material.animateTexture(type, 0.2f)) << value;
        EXPECT_FALSE(m_material.animateTextureFrame(type, 2)) << value;
        m_material.setTextureAnimationFPS(type, 3);
        EXPECT_EQ(m_material.getTextureAnimationFrames(type), 0u) << value;
        EXPECT_EQ(m_material.getTextureAnimationFPS(type), 0.0f) << value;
        EXPECT_EQ(m_material.getTextureAnimationLength(type), 0.0f) << value;
        EXPECT_EQ(m_material.getTextureName(type, 0), "") << value;
    }
    EXPECT_EQ(getShown(), '0');
}

TEST_F(AnimatedTexture, TheShorterOfColourAndAlphaFilesRepeats)
{
    MaterialTextureChunk alpha;
    support::fillTexture(alpha, "alpha", {"x.png", "y.png"});
    const auto getPairs = [](const TextureAnimation& animation)
    {
        std::string pairs;
        for (unsigned int frame = 0; frame < animation.getFrameCount(); ++frame)
        {
            const TW_Texture& texture = *animation.getFrame(frame);
            pairs += texture.getFilename()[0];
            pairs += texture.getAlphaFilename().empty() ? '-' : texture.getAlphaFilename()[0];
        }
        return pairs;
    };
    EXPECT_EQ(getPairs(TextureAnimation(makeSlot(4, 0), &alpha)), "0x1y2x3y");
    EXPECT_EQ(getPairs(TextureAnimation(makeSlot(1, 0), &alpha)), "0x0y");
    EXPECT_EQ(getPairs(TextureAnimation(makeSlot(3, 1), &alpha)), "0x1y2x2x1y0x");
    const MaterialTextureChunk withoutFiles;
    EXPECT_EQ(getPairs(TextureAnimation(makeSlot(2, 0), &withoutFiles)), "0-1-");
    EXPECT_EQ(support::messageOf([&] { TextureAnimation(makeSlot(0, 0), &alpha); }), "TW2: Texture \"wave\" not found");
}

TEST_F(AnimatedTexture, ARandomStartIsOneOfItsFrames)
{
    MaterialTextureChunk slot = makeSlot(3, 1, 10, 99);
    slot.randomStart = true;
    std::set<int> starts;
    for (int i = 0; i < 200; ++i)
    {
        starts.insert(TextureAnimation(slot).getStartFrame());
    }
    EXPECT_THAT(starts, testing::ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST_F(AnimatedTexture, EveryFrameGoesToTextureMemoryAndEachTextureIsFreedOnce)
{
    const long long live = S_Memory::getLiveCount();
    {
        TextureAnimation animation(makeSlot(3, 1));
        animation.addToTextureMemory();
        EXPECT_TRUE(animation.getFrame(2)->getMap()->isInTextureMemory());
        TextureAnimation copy(animation);
        animation.construct(makeSlot(2, 0));
        copy.removeFromTextureMemory();
        EXPECT_FALSE(animation.getFrame(1)->getMap()->isInTextureMemory()) << "the map is shared";
        EXPECT_EQ(getSequence(copy, 6), "012210");
    }
    EXPECT_EQ(S_Memory::getLiveCount(), live);
    support::expectNothingLeftByFailedAllocations(
        []
        {
            TextureAnimation animation(makeSlot(3, 1));
            const TextureAnimation copy(animation);
        });
}
