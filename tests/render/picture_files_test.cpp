#include "render/contact_sheet.h"
#include "render/gif_writer.h"
#include "render/render_exception.h"
#include "tests/support/temporary_directory.h"

#include <platform/image/image.h>

#include <gif_lib.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace
{
/// A moving bright square on a course of colours.
G_Image makePicture(unsigned int width, unsigned int height, unsigned int step)
{
    G_Image picture(width, height);
    for (unsigned int y = 0; y < height; ++y)
    {
        for (unsigned int x = 0; x < width; ++x)
        {
            unsigned char* pixel = picture.accessPixel(x, y);
            const bool square = x >= step && x < step + 8 && y >= 4 && y < 12;
            pixel[0] = square ? 250 : static_cast<unsigned char>(2 * x);
            pixel[1] = square ? 240 : static_cast<unsigned char>(4 * y);
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

double measureDifference(const G_Image& a, const G_Image& b)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < a.getSize(); ++i)
    {
        sum += std::abs(a.getPixels()[i] - b.getPixels()[i]);
    }
    return sum / static_cast<double>(a.getSize());
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
    pictures.push_back(pictures.back());  // nothing changes
    const std::string name = directory.file("motion.gif");
    TW2::render::writeGIF(name.c_str(), pictures, 30.0);

    std::vector<int> delays;
    const std::vector<G_Image> played = playGIF(name, delays);
    ASSERT_EQ(played.size(), pictures.size());
    int total = 0;
    for (std::size_t i = 0; i < played.size(); ++i)
    {
        EXPECT_LT(measureDifference(played[i], pictures[i]), 4.0) << "frame " << i;
        total += delays[i];
    }
    EXPECT_EQ(total, 43) << "13 frames at 30 per second, in hundredths of a second";
}

TEST(GIF, RefusesWhatItCannotShowAndLeavesNoFile)
{
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("none.gif");
    std::vector<G_Image> pictures;
    EXPECT_THROW(TW2::render::writeGIF(name.c_str(), pictures, 25.0), TW2::render::RenderException);
    pictures.push_back(makePicture(16, 16, 0));
    EXPECT_THROW(TW2::render::writeGIF(name.c_str(), pictures, 0.0), TW2::render::RenderException);
    EXPECT_THROW(TW2::render::writeGIF(name.c_str(), pictures, 120.0), TW2::render::RenderException);
    pictures.push_back(makePicture(17, 16, 0));
    EXPECT_THROW(TW2::render::writeGIF(name.c_str(), pictures, 25.0), TW2::render::RenderException);
    EXPECT_FALSE(std::filesystem::exists(name));
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
        const unsigned char* corner = sheet.getPixel(2 + i % 2 * 22 + i, 2 + i / 2 * 18 + 4);
        EXPECT_EQ(corner[0], 250) << "the square of picture " << i << " begins at its column " << i;
    }
    EXPECT_THROW(static_cast<void>(TW2::render::makeContactSheet({})), TW2::render::RenderException);
}
