#include <gtest/gtest.h>

#include "display/image.h"

using namespace zentol;

TEST(Png, PicturesReadBackPixelForPixel) {
    Image image;
    image.width = 7, image.height = 3;
    for (int i = 0; i < 7 * 3 * 3; ++i) image.rgb.push_back(static_cast<std::uint8_t>(i * 37));
    auto png = encode_png(image);
    ASSERT_EQ(png.compare(0, 8, std::string("\x89PNG\r\n\x1a\n", 8)), 0);
    auto back = decode_png(png);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->width, 7);
    EXPECT_EQ(back->rgb, image.rgb);
    EXPECT_FALSE(decode_png(png.substr(0, 40)));   // cut inside the data
    EXPECT_FALSE(decode_png("not a picture"));
}

