#include "tests/support/expectations.h"
#include "tests/support/picture_files.h"

#include <platform/image/image.h>
#include <platform/image/image_exception.h>
#include <platform/runtime/memory_scope.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
    }
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
    ASSERT_EQ(image.getSize(), original.getSize());
    EXPECT_EQ(std::memcmp(image.getPixels(), original.getPixels(), image.getSize()), 0);

    EXPECT_THAT(support::messageOf([] { G_Image().writePNG("out.png"); }), HasSubstr("out.png"));
    EXPECT_THAT(support::messageOf([] { static_cast<void>(G_Image().encodePNG()); }), HasSubstr("nothing to encode"));
    EXPECT_EQ(G_Image("out.png").getWidth(), 16u);
    directory.write("broken.png", "no picture");
    EXPECT_THAT(support::messageOf([] { G_Image("broken.png"); }), HasSubstr("Image \"broken.png\": not a PNG"));
    EXPECT_THROW(G_Image("missing.png"), S_FileException);
}
