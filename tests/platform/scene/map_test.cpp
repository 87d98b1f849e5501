#include "tests/support/expectations.h"
#include "tests/support/picture_files.h"

#include <platform/image/image_exception.h>
#include <platform/scene/driver.h>
#include <platform/scene/map.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace
{
constexpr support::Pixel s_gray = {100, 100, 100, 255};
}

TEST(Map, TheSecondPictureGivesItsAlphaOrElseItsBrightness)
{
    const std::tuple<const char*, support::Pixel, int> cases[] = {
        {"an alpha of its own", {255, 255, 255, 40}, 40},
        {"white is opaque", {255, 255, 255, 255}, 255},
        {"black is transparent", {0, 0, 0, 255}, 0},
        {"green counts most", {0, 255, 0, 255}, 150},  // 0.587 x 255
    };
    const G_Image color = support::makePlainPicture(4, 2, s_gray);
    for (const auto& [what, alphaPixel, expected] : cases)
    {
        const G_Image alpha = support::makePlainPicture(3, 5, alphaPixel);
        P_Map map(&color, &alpha);
        map.validate();
        ASSERT_EQ(map.getImage().getWidth(), 4u);
        EXPECT_EQ(map.getImage().getPixel(3, 1)[3], expected) << what;
        EXPECT_EQ(map.getImage().getPixel(3, 1)[0], 100) << what;
        EXPECT_EQ(map.hasAlpha(), expected != 255) << what;
        EXPECT_TRUE(map.isUniform()) << what;
    }
}

TEST(Map, AnAlphaPictureOfAnotherSizeIsScaledBetweenItsPixels)
{
    G_Image alpha = support::makePlainPicture(2, 3, {0, 0, 0, 0});
    alpha.accessPixel(1, 0)[3] = 200;
    alpha.accessPixel(1, 2)[3] = 80;
    const G_Image color = support::makePlainPicture(4, 3, s_gray);
    P_Map map(&color, &alpha);
    map.validate();
    // Centres of the four pixels lie at 1/8, 3/8, 5/8 and 7/8, those of the two at 1/4 and 3/4.
    const int expected[3][4] = {{0, 50, 150, 200}, {0, 0, 0, 0}, {0, 20, 60, 80}};
    for (unsigned int i = 0; i < 12; ++i)
    {
        EXPECT_EQ(map.getImage().getPixel(i % 4, i / 4)[3], expected[i / 4][i % 4]) << "pixel " << i;
    }
    EXPECT_FALSE(map.isUniform());
}

TEST(Map, ASizeTheDriverDoesNotTakeIsAnErrorAndTheMapStaysWithoutPicture)
{
    support::TemporaryDirectory directory;
    const std::string name = directory.write("wide.png", support::makePlainPicture(65, 1, s_gray).encodePNG());
    P_DriverCaps caps;
    caps.m_uiMaximumTextureSize = 64;
    P_Driver driver(caps);
    P_Driver* previous = P_Driver::m_initializedDriver;
    P_Driver::m_initializedDriver = &driver;
    P_Map map(name.c_str(), nullptr);
    EXPECT_THAT(support::messageOf([&] { map.addToTextureMemory(); }), testing::HasSubstr("wide.png"));
    EXPECT_FALSE(map.isValid());
    EXPECT_FALSE(map.isInTextureMemory());
    P_Driver::m_initializedDriver = previous;
    map.addToTextureMemory();
    EXPECT_TRUE(map.isValid());
    EXPECT_TRUE(map.isInTextureMemory());
}

TEST(Map, MipLevelsStayWithinWhatTheSizeAllows)
{
    const G_Image color = support::makePlainPicture(8, 3, s_gray);
    P_Map map(&color, nullptr);
    map.validate();
    const int table[][2] = {{0, 4}, {1, 1}, {3, 3}, {9, 4}, {-2, 4}};  // asked for, made (8, 4, 2, 1)
    for (const auto& [asked, made] : table)
    {
        map.setMipLevelCount(asked);
        EXPECT_EQ(map.getUsedMipLevelCount(), made) << asked;
    }
    EXPECT_NE(P_Map(&color, nullptr).getId(), map.getId());
}
