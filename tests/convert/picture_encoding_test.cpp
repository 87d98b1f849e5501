#include "convert/pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

TEST(PictureEncoding, WhateverRunsThroughAPictureComesBack)
{
    // Each of these is smallest behind another filter, or nearly so; no noise hides what a filter gets wrong.
    std::mt19937 random(3);
    const std::function<unsigned int(unsigned int, unsigned int)> patterns[]{
        [](unsigned int x, unsigned int) { return 7 * x; }, [](unsigned int, unsigned int y) { return 5 * y; },
        [](unsigned int x, unsigned int y) { return 3 * x + 5 * y; },
        [](unsigned int x, unsigned int y) { return x * y + x * x; },
        [&random](unsigned int, unsigned int) { return static_cast<unsigned int>(random()); }};
    for (const auto& pattern : patterns)
    {
        for (const bool opaque : {true, false})
        {
            G_Image image(37, 23);
            for (unsigned int y = 0; y < image.getHeight(); ++y)
            {
                for (unsigned int x = 0; x < image.getWidth(); ++x)
                {
                    const unsigned int value = pattern(x, y);
                    for (unsigned int c = 0; c < 4; ++c)
                    {
                        image.accessPixel(x, y)[c] =
                            c == 3 && opaque ? 255 : static_cast<unsigned char>(value * (c + 1) >> (c == 1 ? 1U : 0U));
                    }
                }
            }
            TW2::convert::Picture picture;
            picture.m_vecBytes = TW2::convert::encodePicture(image);
            const G_Image read = TW2::convert::decodePicture(picture);
            ASSERT_EQ(read.getSize(), image.getSize());
            EXPECT_TRUE(std::equal(image.getPixels(), image.getPixels() + image.getSize(), read.getPixels()))
                << "pattern " << &pattern - patterns << (opaque ? ", opaque" : "");
        }
    }
}
