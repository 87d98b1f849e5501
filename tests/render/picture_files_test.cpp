#include "render/animation_writer.h"
#include "render/contact_sheet.h"
#include "render/render_exception.h"
#include "tests/support/temporary_directory.h"

#include <platform/image/image.h>

#include <gif_lib.h>
#include <gtest/gtest.h>
#include <webp/demux.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

namespace
{
/// A moving bright square on a course of colours, few enough for a palette.
G_Image makePicture(unsigned int width, unsigned int height, unsigned int step)
{
    G_Image picture(width, height);
    for (unsigned int y = 0; y < height; ++y)
    {
        for (unsigned int x = 0; x < width; ++x)
        {
            unsigned char* pixel = picture.accessPixel(x, y);
            const bool square = x >= step && x < step + 8 && y >= 4 && y < 12;
            pixel[0] = square ? 250 : static_cast<unsigned char>(x / 8 * 16);
            pixel[1] = square ? 240 : static_cast<unsigned char>(y / 8 * 32);
            pixel[2] = square ? 10 : 90;
        }
    }
    return picture;
}

/// Plays a GIF as a viewer does: every frame is laid over the one before it.
std::vector<G_Image> playGIF(const std::string& name, std::vector<int>& delays)
{
    int error = 0;
    GifFileType* file = DGifOpenFileName(name.c_str(), &error);
    EXPECT_NE(file, nullptr);
    EXPECT_EQ(DGifSlurp(file), GIF_OK);
    std::vector<G_Image> frames;
    G_Image shown(static_cast<unsigned int>(file->SWidth), static_cast<unsigned int>(file->SHeight));
    for (int i = 0; i < file->ImageCount; ++i)
    {
        GraphicsControlBlock control{};
        EXPECT_EQ(DGifSavedExtensionToGCB(file, i, &control), GIF_OK);
        delays.push_back(control.DelayTime);
        const SavedImage& saved = file->SavedImages[i];
        const GifImageDesc& place = saved.ImageDesc;
        EXPECT_EQ(control.DisposalMode, DISPOSE_DO_NOT);
        for (int p = 0; p < place.Width * place.Height; ++p)
        {
            if (saved.RasterBits[p] != control.TransparentColor)
            {
                const GifColorType& color = file->SColorMap->Colors[saved.RasterBits[p]];
                unsigned char* pixel = shown.accessPixel(static_cast<unsigned int>(place.Left + p % place.Width),
                                                         static_cast<unsigned int>(place.Top + p / place.Width));
                pixel[0] = color.Red;
                pixel[1] = color.Green;
                pixel[2] = color.Blue;
            }
        }
        frames.push_back(shown);
    }
    DGifCloseFile(file, &error);
    return frames;
}

/// Frames of an animated WebP, and the milliseconds at which each ends.
std::vector<G_Image> playWebP(const std::string& bytes, std::vector<int>& ends)
{
    const WebPData data{reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()};
    const std::unique_ptr<WebPAnimDecoder, decltype(&WebPAnimDecoderDelete)> decoder(WebPAnimDecoderNew(&data, nullptr),
                                                                                     WebPAnimDecoderDelete);
    EXPECT_NE(decoder, nullptr);
    WebPAnimInfo info{};
    EXPECT_NE(WebPAnimDecoderGetInfo(decoder.get(), &info), 0);
    EXPECT_EQ(info.loop_count, 0U) << "for ever";
    std::vector<G_Image> frames;
    while (WebPAnimDecoderHasMoreFrames(decoder.get()) != 0)
    {
        unsigned char* pixels = nullptr;
        int end = 0;
        EXPECT_NE(WebPAnimDecoderGetNext(decoder.get(), &pixels, &end), 0);
        G_Image frame(info.canvas_width, info.canvas_height);
        std::copy_n(pixels, frame.getSize(), frame.accessPixels());
        frames.push_back(std::move(frame));
        ends.push_back(end);
    }
    return frames;
}

/// The largest difference of a channel.
int measureDifference(const G_Image& a, const G_Image& b)
{
    int largest = 0;
    for (std::size_t i = 0; i < a.getSize(); ++i)
    {
        largest = std::max(largest, std::abs(a.getPixels()[i] - b.getPixels()[i]));
    }
    return largest;
}
}  // namespace

TEST(GIF, PlaysBackWhatWasWrittenAtTheRateAskedFor)
{
    const support::TemporaryDirectory directory;
    std::vector<G_Image> pictures;
    for (unsigned int step = 0; step < 12; ++step)
    {
        pictures.push_back(makePicture(64, 48, 2 * step));
    }
    pictures.push_back(pictures.back());          // nothing changes
    pictures.back().accessPixel(63, 47)[2] = 10;  // but for one channel in the last corner
    pictures.push_back(pictures.back());
    pictures.back().accessPixel(0, 40)[2] = 10;  // and then in the first column
    pictures.push_back(pictures.back());
    const std::string name = directory.file("motion.gif");
    TW2::render::writeGIF(name.c_str(), pictures, 30.0);

    std::vector<int> delays;
    const std::vector<G_Image> played = playGIF(name, delays);
    ASSERT_EQ(played.size(), pictures.size());
    int total = 0;
    for (std::size_t i = 0; i < played.size(); ++i)
    {
        EXPECT_LE(measureDifference(played[i], pictures[i]), 3) << "frame " << i << ", to the last pixel of the change";
        total += delays[i];
    }
    EXPECT_EQ(total, 50) << "15 frames at 30 per second, in hundredths of a second";
    EXPECT_NE(directory.read("motion.gif").find(std::string("NETSCAPE2.0\x03\x01\0\0", 15)), std::string::npos)
        << "for ever";
}

TEST(GIF, RefusesWhatItCannotShowAndLeavesNoFile)
{
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("none.gif");
    std::vector<G_Image> pictures;
    EXPECT_THROW(TW2::render::writeGIF(name.c_str(), pictures, 25.0), TW2::render::RenderException);
    pictures.push_back(makePicture(16, 16, 0));
    EXPECT_THROW(TW2::render::writeGIF(name.c_str(), pictures, 0.0), TW2::render::RenderException);
    EXPECT_THROW(TW2::render::writeGIF(name.c_str(), pictures, 50.5), TW2::render::RenderException);
    EXPECT_THROW(TW2::render::makeGIFWriter(pictures, 50.0)->write(name.c_str()), TW2::render::RenderException);
    for (const unsigned int width : {17U, 16U})
    {
        const std::vector<G_Image> two{pictures[0], makePicture(width, 33 - width, 0)};
        EXPECT_THROW(TW2::render::writeGIF(name.c_str(), two, 25.0), TW2::render::RenderException) << width;
    }
    EXPECT_FALSE(std::filesystem::exists(name));
    for (const double rate : {1.0, 50.0})
    {
        EXPECT_NO_THROW(TW2::render::writeGIF(name.c_str(), pictures, rate));
    }
}

TEST(WebP, PlaysBackColoursAndAlphaAtTheRateAskedFor)
{
    const support::TemporaryDirectory directory;
    const auto writer = TW2::render::makeWebPWriter(30.0, 100.0F);
    std::vector<G_Image> pictures;
    for (unsigned int step = 0; step < 7; ++step)
    {
        pictures.push_back(makePicture(64, 48, 8 * step));
        for (unsigned int y = 24; y < 48; ++y)
        {
            for (unsigned int x = 0; x < 64; ++x)
            {
                pictures.back().accessPixel(x, y)[3] = x < 32 ? 0 : 128;
            }
        }
        writer->add(pictures.back());
    }
    const std::string name = directory.file("motion.webp");
    writer->write(name.c_str());
    std::vector<int> ends;
    const std::vector<G_Image> played = playWebP(directory.read("motion.webp"), ends);
    ASSERT_EQ(played.size(), pictures.size());
    for (std::size_t i = 0; i < played.size(); ++i)
    {
        EXPECT_EQ(ends[i], std::lround(1000.0 * static_cast<double>(i + 1) / 30.0));
        const auto column = static_cast<unsigned int>(8 * i + 4);
        const unsigned char* inSquare = played[i].getPixel(column, 8);
        EXPECT_NEAR(inSquare[0], 250, 16) << "frame " << i;
        EXPECT_NEAR(inSquare[2], 10, 24) << "frame " << i;
        EXPECT_EQ(inSquare[3], 255);
        EXPECT_EQ(played[i].getPixel(10, 40)[3], 0);
        EXPECT_EQ(played[i].getPixel(50, 40)[3], 128);
    }

    for (const auto& [rate, quality] : {std::pair(0.9, 50.0F), {100.1, 50.0F}, {25.0, -0.1F}, {25.0, 100.1F}})
    {
        EXPECT_THROW(static_cast<void>(TW2::render::makeWebPWriter(rate, quality)), TW2::render::RenderException)
            << rate << ", " << quality;
    }
    EXPECT_NO_THROW(static_cast<void>(TW2::render::makeWebPWriter(1.0, 0.0F)));
    EXPECT_NO_THROW(static_cast<void>(TW2::render::makeWebPWriter(100.0, 100.0F)));
    EXPECT_THROW(TW2::render::makeWebPWriter(25.0)->write(directory.file("none.webp").c_str()),
                 TW2::render::RenderException);
    EXPECT_THROW(writer->add(makePicture(65, 48, 0)), TW2::render::RenderException) << "another size";
    EXPECT_FALSE(std::filesystem::exists(directory.file("none.webp")));
}

TEST(ContactSheet, HoldsEveryPictureInReadingOrder)
{
    std::vector<G_Image> pictures;
    for (unsigned int i = 0; i < 5; ++i)
    {
        pictures.push_back(makePicture(20, 16, i));
    }
    const G_Image sheet = TW2::render::makeContactSheet(pictures, 2);
    EXPECT_EQ(sheet.getWidth(), 2 * 22 + 2U);
    EXPECT_EQ(sheet.getHeight(), 3 * 18 + 2U);
    for (unsigned int i = 0; i < 5; ++i)
    {
        for (const unsigned int row : {4U, 11U})
        {
            const unsigned char* edge = sheet.getPixel(2 + i % 2 * 22 + i, 2 + i / 2 * 18 + row);
            EXPECT_EQ(edge[0], 250) << "the square of picture " << i << " begins at its column " << i;
            EXPECT_EQ(sheet.getPixel(1 + i % 2 * 22, 2 + i / 2 * 18 + row)[0], 150) << "a grey line before it";
        }
    }
    pictures.pop_back();
    EXPECT_EQ(TW2::render::makeContactSheet(pictures, 2).getHeight(), 2 * 18 + 2U) << "no row stays empty";
    EXPECT_EQ(TW2::render::makeContactSheet(pictures, 9).getWidth(), 4 * 22 + 2U) << "nor a column";
    pictures.resize(6, pictures[0]);
    EXPECT_EQ(TW2::render::makeContactSheet(pictures).getWidth(), 3 * 22 + 2U) << "a little wider than high";
    pictures.resize(16, pictures[0]);
    EXPECT_EQ(TW2::render::makeContactSheet(pictures).getWidth(), 4 * 22 + 2U) << "rather than with empty places";
    EXPECT_THROW(static_cast<void>(TW2::render::makeContactSheet({})), TW2::render::RenderException);
}
