#include "tests/support/expectations.h"
#include "tests/support/picture_files.h"

#include <platform/image/image.h>
#include <platform/image/image_exception.h>
#include <platform/runtime/memory_scope.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <tuple>

namespace
{
using support::PictureFormat;
using testing::HasSubstr;
using Bytes = std::vector<unsigned char>;

G_Image decode(const Bytes& bytes)
{
    return G_Image::decode(bytes.data(), bytes.size(), "stone.png");
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

/// A picture of these pixels, row by row.
G_Image makePicture(unsigned int width, const std::vector<support::Pixel>& pixels)
{
    G_Image image(width, static_cast<unsigned int>(pixels.size()) / width);
    std::memcpy(image.accessPixels(), pixels.data(), image.getSize());
    return image;
}

bool areEqual(const G_Image& a, const G_Image& b)
{
    return a.getWidth() == b.getWidth() && a.getSize() == b.getSize() &&
           std::memcmp(a.getPixels(), b.getPixels(), a.getSize()) == 0;
}
}  // namespace

TEST(Image, EveryFormatGivesItsPixelsFromTopToBottom)
{
    const G_Image original = support::makeVariedPicture(12, 7);
    for (const PictureFormat format : support::allPictureFormats)
    {
        const G_Image image = decode(support::encodePicture(original, format));
        ASSERT_EQ(image.getWidth(), 12u);
        ASSERT_EQ(image.getHeight(), 7u);
        const bool isExact = format != PictureFormat::JPEG;
        const bool keepsAlpha = isExact && format != PictureFormat::BMP;
        int worst = 0;
        for (std::size_t i = 0; i < image.getSize(); ++i)
        {
            const bool isAlpha = i % 4 == 3;
            const int expected = isAlpha && !keepsAlpha ? 255 : original.getPixels()[i];
            worst = std::max(worst, std::abs(image.getPixels()[i] - expected));
        }
        // Neighbours differ by 16 in some channel: a swapped row, column or channel is off by more.
        EXPECT_LE(worst, isExact ? 0 : 12) << "format " << static_cast<int>(format);
        const Bytes bytes = support::encodePicture(original, format);
        const G_Image::Description description = G_Image::inspect(bytes.data(), bytes.size(), "stone");
        EXPECT_EQ(description.m_uiWidth, 12U);
        EXPECT_EQ(description.m_uiHeight, 7U);
        EXPECT_EQ(description.m_bAlpha, keepsAlpha) << "format " << static_cast<int>(format);
        EXPECT_THROW(static_cast<void>(G_Image::inspect(bytes.data(), bytes.size() / 2, "stone")), G_ImageException);
    }
    const Bytes grey = support::makeHollowPNG(3, 2, 14, support::HollowPNG::GreyAndAlpha);
    EXPECT_TRUE(G_Image::inspect(grey.data(), grey.size(), "stone").m_bAlpha);
}

TEST(Image, APictureCutOffAnywhereIsRejectedByName)
{
    const G_Image original = support::makeVariedPicture(8, 5);
    for (const PictureFormat format : support::allPictureFormats)
    {
        const Bytes bytes = support::encodePicture(original, format);
        for (std::size_t size = 0; size < bytes.size(); ++size)
        {
            const long long live = S_Memory::getLiveCount();
            EXPECT_THAT(complaintAbout(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size))),
                        HasSubstr("Image \"stone.png\": "))
                << "format " << static_cast<int>(format) << ", " << size << " of " << bytes.size() << " bytes";
            ASSERT_EQ(S_Memory::getLiveCount(), live);
        }
    }
}

TEST(Image, AnAlteredByteNeverDoesMoreHarmThanAWrongPicture)
{
    const G_Image original = support::makeVariedPicture(8, 5);
    for (const PictureFormat format : support::allPictureFormats)
    {
        Bytes bytes = support::encodePicture(original, format);
        const long long live = S_Memory::getLiveCount();
        for (std::size_t i = 0; i < bytes.size(); ++i)
        {
            bytes[i] ^= 0xFF;
            try
            {
                const G_Image image = G_Image::decode(bytes.data(), bytes.size(), "stone", 1000);
                EXPECT_EQ(image.getSize(), std::size_t{image.getWidth()} * image.getHeight() * 4);
                EXPECT_NE(format, PictureFormat::PNG) << "has a checksum, byte " << i;
            }
            catch (const G_ImageException&)
            {
                // Refused, as most are.
            }
            bytes[i] ^= 0xFF;
            ASSERT_EQ(S_Memory::getLiveCount(), live) << "byte " << i << ", format " << static_cast<int>(format);
        }
    }
}

TEST(Image, AJPEGWithMoreCodesThanValuesIsRejectedWhereverItsMarksAre)
{
    Bytes bytes = support::encodePicture(support::makeVariedPicture(8, 5), PictureFormat::JPEG);
    Bytes filled = bytes;
    filled.insert(filled.begin(), 0xFF);
    EXPECT_THAT(complaintAbout(filled), HasSubstr("not the beginning of a picture"));
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i)
    {
        if (bytes[i] == 0xFF && bytes[i + 1] == 0xC4)
        {
            bytes[i + 12] = 255;  // codes of eight bits
            break;
        }
    }
    EXPECT_THAT(complaintAbout(bytes), HasSubstr("its code tables are damaged"));
}

TEST(Image, AnAbsurdSizeIsRejectedBeforeMemoryIsReserved)
{
    Bytes largeBMP = support::encodePicture(support::makePlainPicture(4, 4, {1, 2, 3, 255}), PictureFormat::BMP);
    largeBMP[20] = largeBMP[24] = 1;  // the sides' third bytes: 65540 x 65540
    const std::tuple<const char*, Bytes, const char*> cases[] = {
        {"far too many pixels", support::makeHollowPNG(30000, 30000, 100),
         "not a PNG, JPEG, TGA or BMP picture of up to 67108864 pixels"},
        {"a few pixels too many", support::makeHollowPNG(8193, 8192, 100), "8193 x 8192 pixels are more than 67108864"},
        {"less data than any picture of this size", support::makeHollowPNG(8000, 8000, 100), "cut off"},
        {"data for more pixels than there are", support::makeHollowPNG(1, 1, 8 << 20), "unpack to more"},
        {"too many pixels in a BMP", largeBMP, "65540 x 65540 pixels are more"},
    };
    for (const auto& [name, bytes, reason] : cases)
    {
        const auto before = S_MemoryScope::getUsage("absurd pictures");
        {
            const S_MemoryScope scope("absurd pictures");
            EXPECT_THAT(complaintAbout(bytes), HasSubstr(reason)) << name;
        }
        EXPECT_LT(S_MemoryScope::getUsage("absurd pictures").m_iBytes - before.m_iBytes, 10'000'000) << name;
    }
    EXPECT_THROW(G_Image(1, std::numeric_limits<unsigned int>::max()), G_ImageException);
}

TEST(Image, RunningOutOfMemoryLeavesNothingBehind)
{
    const G_Image original = support::makeVariedPicture(9, 6);
    for (const PictureFormat format : support::allPictureFormats)
    {
        const Bytes bytes = support::encodePicture(original, format);
        support::expectNothingLeftByFailedAllocations([&] { static_cast<void>(decode(bytes)); });
    }
    support::expectNothingLeftByFailedAllocations([&] { static_cast<void>(original.encodePNG()); });
}

TEST(Image, AWrittenPNGIsReadBackAndReplacesTheOldFileAsAWhole)
{
    support::TemporaryDirectory directory;
    directory.enter();
    const G_Image original = support::makeVariedPicture(16, 9);
    original.writePNG("out.png");
    const G_Image image("OUT.PNG");
    EXPECT_TRUE(areEqual(image, original));

    EXPECT_THAT(support::messageOf([] { G_Image().writePNG("out.png"); }), HasSubstr("out.png"));
    EXPECT_THAT(support::messageOf([] { static_cast<void>(G_Image().encodePNG()); }), HasSubstr("nothing to encode"));
    EXPECT_EQ(G_Image("out.png").getWidth(), 16u);
    directory.write("broken.png", "no picture");
    EXPECT_THAT(support::messageOf([] { G_Image("broken.png"); }), HasSubstr("Image \"broken.png\": not a PNG"));
    EXPECT_THROW(G_Image("missing.png"), S_FileException);
}

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
    Bytes bytes = support::encodePicture(support::makeVariedPicture(12, 7), PictureFormat::PNG);
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

TEST(ImageFormats, EveryVariantIsReadWholeAndRejectedCutOff)
{
    constexpr support::Pixel red = {255, 0, 0, 255};
    constexpr support::Pixel blue = {0, 0, 255, 255};
    constexpr support::Pixel black = {0, 0, 0, 255};
    const G_Image grey = support::makePlainPicture(8, 72, {128, 128, 128, 255});
    Bytes filledJPEG = makeRestartingJPEG();  // any number of bytes 0xFF may stand before a mark
    filledJPEG.insert(filledJPEG.end() - 2, 2, 0xFF);
    filledJPEG.insert(filledJPEG.begin() + 2, 0xFF);
    const G_Image original = support::makeVariedPicture(5, 3);
    G_Image opaque = original;
    G_Image turned = original;
    for (unsigned int i = 0; i < 15; ++i)
    {
        opaque.accessPixel(i % 5, i / 5)[3] = 255;
        std::copy_n(original.getPixel(i % 5, i / 5), 3, turned.accessPixel(i % 5, 2 - i / 5));
        turned.accessPixel(i % 5, i / 5)[3] = 255;
    }
    // Rows of five pixels take 15 bytes and one of padding; some writers leave the last one out.
    const Bytes bmp = support::encodePicture(original, PictureFormat::BMP);
    Bytes fromTheTop = bmp;
    fromTheTop[22] = 0xFD;  // minus three
    fromTheTop[23] = fromTheTop[24] = fromTheTop[25] = 0xFF;
    const Bytes oldestBMP{'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 26, 0, 0, 0, 12, 0, 0, 0, 3, 0, 2, 0,   1, 0, 24,
                          0,   255, 0, 0, 0, 0, 0, 0, 0, 0, 0,  0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 255, 0, 0, 0};
    Bytes named = support::encodePicture(original, PictureFormat::TGA);
    named[0] = 5;  // letters of a name behind the header
    named.insert(named.begin() + 18, 5, 'n');
    Bytes withoutPalette = support::encodePicture(original, PictureFormat::TGA);
    withoutPalette[5] = withoutPalette[6] = 255;  // of which only a picture with a palette means anything
    withoutPalette[7] = 24;
    const auto makeRuns = [](unsigned int width) {
        return support::encodePicture(support::makePlainPicture(width, 8, {10, 20, 30, 40}),
                                      PictureFormat::CompressedTGA);
    };
    const struct
    {
        const char* name;
        Bytes bytes;
        std::size_t mostMissing;  ///< so many bytes, and the numbers below, may not be missing at the end
        std::size_t leastMissing;
        G_Image expected;
    } cases[] = {
        {"JPEG with restart marks", makeRestartingJPEG(), 2, 2, grey},
        {"JPEG with filling before its marks", filledJPEG, 2, 2, grey},
        {"BMP without its last padding", cut(bmp, bmp.size() - 1), 15, 1, opaque},
        {"BMP with its rows from the top", fromTheTop, 2, 2, turned},
        {"BMP of the oldest header", oldestBMP, 4, 4, makePicture(3, {black, black, red, blue, black, black})},
        {"TGA with a name", named, 1, 1, original},
        {"TGA with marks of a palette", withoutPalette, 1, 1, original},
        {"TGA of fifteen bits",
         {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 1, 0, 15, 0, 0x00, 0x7C, 0x1F, 0x00},
         1,
         1,
         makePicture(2, {red, blue})},
        {"TGA with a palette of fifteen bits",
         {0, 1, 1, 0, 0, 2, 0, 15, 0, 0, 0, 0, 4, 0, 1, 0, 8, 0, 0x00, 0x7C, 0x1F, 0x00, 0, 1, 1, 0},
         4,
         1,
         makePicture(4, {red, blue, blue, red})},
        {"TGA of runs of one", makeRuns(1), 1, 1, support::makePlainPicture(1, 8, {10, 20, 30, 40})},
        {"TGA of runs of three", makeRuns(3), 1, 1, support::makePlainPicture(3, 8, {10, 20, 30, 40})},
        {"TGA of runs of sixteen", makeRuns(16), 1, 1, support::makePlainPicture(16, 8, {10, 20, 30, 40})},
    };
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.name);
        EXPECT_TRUE(areEqual(decode(each.bytes), each.expected));
        for (std::size_t missing = each.leastMissing; missing <= each.mostMissing; ++missing)
        {
            EXPECT_THAT(complaintAbout(cut(each.bytes, each.bytes.size() - missing)), HasSubstr("cut off")) << missing;
        }
    }
}

TEST(ImageFormats, ABMPWithAWrongOffsetOrHeightIsRejected)
{
    const Bytes bmp = support::encodePicture(support::makeVariedPicture(5, 3), PictureFormat::BMP);
    Bytes bytes = bmp;
    bytes[22] = 0xFD;  // minus three
    bytes[23] = bytes[24] = bytes[25] = 0xFF;
    EXPECT_EQ(G_Image::inspect(bytes.data(), bytes.size(), "stone").m_uiHeight, 3U);
    for (const int least : {0x00, 0x80})  // none, and the number that has no opposite
    {
        bytes[22] = bytes[23] = bytes[24] = 0;
        bytes[25] = static_cast<unsigned char>(least);
        EXPECT_THAT(complaintAbout(bytes), HasSubstr("pixels are no picture")) << least;
    }
    bytes = bmp;
    bytes.insert(bytes.begin() + bytes[10], 4, 0);
    bytes[10] = 58;
    EXPECT_THAT(complaintAbout(bytes), HasSubstr("bad offset")) << "in the decoder's own words";
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
