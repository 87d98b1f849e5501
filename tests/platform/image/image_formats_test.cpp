#include "tests/support/expectations.h"
#include "tests/support/picture_files.h"

#include <platform/image/image.h>
#include <platform/image/image_exception.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{
using testing::HasSubstr;
using Bytes = std::vector<unsigned char>;

G_Image decode(const Bytes& bytes)
{
    return G_Image::decode(bytes.data(), bytes.size(), "stone");
}

std::string complaintAbout(const Bytes& bytes)
{
    return support::messageOf([&] { static_cast<void>(decode(bytes)); });
}

Bytes cut(const Bytes& bytes, std::size_t size)
{
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

/// A grey JPEG of 8 x 72 pixels, one block after the other with a restart mark between any two: all eight kinds of it.
Bytes makeRestartingJPEG()
{
    Bytes bytes{0xFF, 0xD8, 0xFF, 0xDB, 0, 67, 0};  // quantisation: 64 times 1
    bytes.insert(bytes.end(), 64, 1);
    const Bytes frame{0xFF, 0xC0, 0, 11, 8, 0, 72, 0, 8, 1, 1, 0x11, 0};
    bytes.insert(bytes.end(), frame.begin(), frame.end());
    for (const int table : {0x00, 0x10})  // one code each: no difference, end of block
    {
        bytes.insert(bytes.end(), {0xFF, 0xC4, 0, 20, static_cast<unsigned char>(table), 1});
        bytes.insert(bytes.end(), 15, 0);
        bytes.push_back(0);
    }
    bytes.insert(bytes.end(), {0xFF, 0xDD, 0, 4, 0, 1});                     // a restart mark after each block
    bytes.insert(bytes.end(), {0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0, 0x3F});  // and the first block: bits 0, 0, filling
    for (unsigned char block = 0; block < 8; ++block)
    {
        bytes.insert(bytes.end(), {0xFF, static_cast<unsigned char>(0xD0 + block), 0x3F});
    }
    bytes.insert(bytes.end(), {0xFF, 0xD9});
    return bytes;
}
}  // namespace

TEST(ImageFormats, ANewPictureIsOpaqueBlackAndOfASizeThatThereIs)
{
    const G_Image image(3, 2);
    for (unsigned int x = 0; x < 3; ++x)
    {
        EXPECT_THAT(std::vector<int>(image.getPixel(x, 1), image.getPixel(x, 1) + 4),
                    testing::ElementsAre(0, 0, 0, 255));
    }
    // Products that are small numbers again in 32 bits.
    EXPECT_THROW(G_Image(65536, 65536), G_ImageException);
    EXPECT_THROW(G_Image(65537, 65536), G_ImageException);
    EXPECT_THROW(G_Image(5, 0), G_ImageException);
    EXPECT_THROW(G_Image(0, 5), G_ImageException);
}

TEST(ImageFormats, APictureOfJustTheLimitIsTaken)
{
    Bytes bytes = support::encodePicture(support::makeVariedPicture(12, 7), support::PictureFormat::PNG);
    bytes.insert(bytes.end(), 20, 'x');  // what stands behind a picture is none of its
    EXPECT_EQ(G_Image::decode(bytes.data(), bytes.size(), "stone", 12 * 7).getWidth(), 12U);
    EXPECT_THROW(static_cast<void>(G_Image::decode(bytes.data(), bytes.size(), "stone", 12 * 7 - 1)), G_ImageException);
}

TEST(ImageFormats, APNGOfOneColourMayBeFarSmallerThanItsPixels)
{
    const G_Image image = decode(support::makeHollowPNG(1000, 1000, 1000 * 126, support::HollowPNG::BlackAndWhite));
    EXPECT_EQ(image.getWidth(), 1000U);
    EXPECT_TRUE(image.isUniform());
}

TEST(ImageFormats, AJPEGMayRestartAsOftenAsThereAreMarks)
{
    Bytes bytes = makeRestartingJPEG();
    for (const bool filled : {false, true})
    {
        const G_Image image = decode(bytes);
        EXPECT_EQ(image.getHeight(), 72U);
        EXPECT_TRUE(image.isUniform());
        EXPECT_EQ(image.getPixel(4, 70)[0], 128);
        EXPECT_THAT(complaintAbout(cut(bytes, bytes.size() - 2)), HasSubstr("cut off")) << filled;
        // Any number of bytes 0xFF may stand before a mark.
        bytes.insert(bytes.end() - 2, 2, 0xFF);
        bytes.insert(bytes.begin() + 2, 0xFF);
    }
}

TEST(ImageFormats, AJPEGWithBytesBehindItsCodeTablesIsRejected)
{
    Bytes bytes = makeRestartingJPEG();
    const std::size_t table = 2 + 69 + 13;
    ASSERT_EQ(bytes[table + 1], 0xC4);
    ++bytes[table + 3];  // the segment's length
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(table + 22), 0);
    EXPECT_THAT(complaintAbout(bytes), HasSubstr("its code tables are damaged"));
    // More codes than there are values, all of which are there.
    bytes[table + 19] = bytes[table + 20] = 128;
    bytes[table + 2] = 1;
    bytes[table + 3] = 20;  // 276 bytes
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(table + 22), 255, 0);
    EXPECT_THAT(complaintAbout(bytes), HasSubstr("its code tables are damaged"));
}

TEST(ImageFormats, ABMPNeedsItsRowsWholeButForTheLastPadding)
{
    // Rows of five pixels take 15 bytes and one of padding.
    Bytes bytes = support::encodePicture(support::makeVariedPicture(5, 5), support::PictureFormat::BMP);
    const std::size_t end = bytes.size() - 1;
    EXPECT_EQ(decode(cut(bytes, end)).getWidth(), 5U) << "some writers leave the last padding out";
    for (std::size_t missing = 1; missing <= 15; ++missing)
    {
        EXPECT_THAT(complaintAbout(cut(bytes, end - missing)), HasSubstr("cut off")) << missing << " bytes";
    }
    bytes.insert(bytes.begin() + bytes[10], 4, 0);
    bytes[10] = 58;
    EXPECT_THAT(complaintAbout(bytes), HasSubstr("bad offset")) << "in the decoder's own words";
}

TEST(ImageFormats, ABMPWithTheOldestHeaderIsReadWholeAndRejectedCutOff)
{
    // Three by two pixels of 24 bits, the lower row first: blue, black, black and black, black, red.
    const Bytes bytes{'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 26, 0, 0, 0, 12, 0, 0, 0, 3, 0, 2, 0,   1, 0, 24,
                      0,   255, 0, 0, 0, 0, 0, 0, 0, 0, 0,  0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 255, 0, 0, 0};
    const G_Image image = decode(bytes);
    ASSERT_EQ(image.getHeight(), 2U);
    EXPECT_EQ(image.getPixel(0, 1)[2], 255);
    EXPECT_EQ(image.getPixel(2, 0)[0], 255);
    EXPECT_THAT(complaintAbout(cut(bytes, bytes.size() - 4)), HasSubstr("cut off"));
}

TEST(ImageFormats, ABMPMayHaveItsRowsFromTopToBottom)
{
    const G_Image original = support::makeVariedPicture(5, 3);
    Bytes bytes = support::encodePicture(original, support::PictureFormat::BMP);
    ASSERT_EQ(bytes[22], 3);
    bytes[22] = 0xFD;  // minus three
    bytes[23] = bytes[24] = bytes[25] = 0xFF;
    const G_Image image = decode(bytes);
    ASSERT_EQ(image.getHeight(), 3U);
    EXPECT_TRUE(std::equal(image.getPixel(0, 0), image.getPixel(0, 0) + 3, original.getPixel(0, 2)));
    EXPECT_EQ(G_Image::inspect(bytes.data(), bytes.size(), "stone").m_uiHeight, 3U);
    EXPECT_THAT(complaintAbout(cut(bytes, bytes.size() - 2)), HasSubstr("cut off"));
    for (const int least : {0x00, 0x80})  // none, and the number that has no opposite
    {
        bytes[22] = bytes[23] = bytes[24] = 0;
        bytes[25] = static_cast<unsigned char>(least);
        EXPECT_THAT(complaintAbout(bytes), HasSubstr("pixels are no picture")) << least;
    }
}

TEST(ImageFormats, ATGAIsMeasuredByWhatItsHeaderSays)
{
    const G_Image original = support::makeVariedPicture(6, 4);
    Bytes named = support::encodePicture(original, support::PictureFormat::TGA);
    named[0] = 5;  // letters of a name behind the header
    named.insert(named.begin() + 18, 5, 'n');
    Bytes withoutPalette = support::encodePicture(original, support::PictureFormat::TGA);
    withoutPalette[5] = withoutPalette[6] = 255;  // of which only a picture with a palette means anything
    withoutPalette[7] = 24;
    for (const Bytes& bytes : {named, withoutPalette})
    {
        const G_Image image = decode(bytes);
        ASSERT_EQ(image.getSize(), original.getSize());
        EXPECT_TRUE(std::equal(image.getPixels(), image.getPixels() + image.getSize(), original.getPixels()));
        EXPECT_THAT(complaintAbout(cut(bytes, bytes.size() - 1)), HasSubstr("cut off"));
    }
    const Bytes fifteenBits{0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 1, 0, 15, 0, 0x00, 0x7C, 0x1F, 0x00};
    EXPECT_EQ(decode(fifteenBits).getPixel(1, 0)[2], 255);
    EXPECT_THAT(complaintAbout(cut(fifteenBits, fifteenBits.size() - 1)), HasSubstr("cut off"));
}

TEST(ImageFormats, ATGAOfRunsIsReadWholeAndRejectedCutOff)
{
    for (const unsigned int width : {1U, 3U, 16U})
    {
        const Bytes bytes = support::encodePicture(support::makePlainPicture(width, 8, {10, 20, 30, 40}),
                                                   support::PictureFormat::CompressedTGA);
        const G_Image image = decode(bytes);
        EXPECT_TRUE(image.isUniform());
        EXPECT_EQ(image.getPixel(0, 7)[2], 30);
        EXPECT_THROW(static_cast<void>(decode(cut(bytes, bytes.size() - 1))), G_ImageException) << width;
    }
}

TEST(ImageFormats, ATGAWithAPaletteOfFifteenBitsIsReadWholeAndRejectedCutOff)
{
    // Two colours of five bits a channel, red and blue; a row of four pixels.
    const Bytes bytes{0, 1, 1, 0, 0, 2, 0, 15, 0, 0, 0, 0, 4, 0, 1, 0, 8, 0, 0x00, 0x7C, 0x1F, 0x00, 0, 1, 1, 0};
    const G_Image image = decode(bytes);
    ASSERT_EQ(image.getWidth(), 4U);
    EXPECT_EQ(image.getPixel(0, 0)[0], 255);
    EXPECT_EQ(image.getPixel(1, 0)[2], 255);
    EXPECT_EQ(image.getPixel(1, 0)[0], 0);
    for (std::size_t missing = 1; missing <= 4; ++missing)
    {
        EXPECT_THROW(static_cast<void>(decode(cut(bytes, bytes.size() - missing))), G_ImageException) << missing;
    }
}

TEST(ImageFormats, SayTheirSizeAndWhetherTheyHaveAnAlphaWithoutTheirPixels)
{
    for (const support::PictureFormat format : support::allPictureFormats)
    {
        const Bytes bytes = support::encodePicture(support::makeVariedPicture(12, 7), format);
        const G_Image::Description description = G_Image::inspect(bytes.data(), bytes.size(), "stone");
        EXPECT_EQ(description.m_uiWidth, 12U);
        EXPECT_EQ(description.m_uiHeight, 7U);
        const bool withAlpha = format != support::PictureFormat::JPEG && format != support::PictureFormat::BMP;
        EXPECT_EQ(description.m_bAlpha, withAlpha) << "format " << static_cast<int>(format);
        EXPECT_THROW(static_cast<void>(G_Image::inspect(bytes.data(), bytes.size() / 2, "stone")), G_ImageException);
    }
    const Bytes grey = support::makeHollowPNG(3, 2, 14, support::HollowPNG::GreyAndAlpha);
    EXPECT_TRUE(G_Image::inspect(grey.data(), grey.size(), "stone").m_bAlpha);
}
