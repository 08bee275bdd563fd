#include <gtest/gtest.h>

#include <cmath>

#include "display/image.h"
#include "toolkit/plot_raster.h"

using namespace zentol;

TEST(PlotRaster, ItemsLandWhereTheirUnitsSay) {
    Plot plot;
    plot.left = 0, plot.right = 10, plot.bottom = 0, plot.top = 10;
    plot.items.push_back({PlotItem::Line, 0, 5, 10, 5, 16 + 8, ""});     // red, across the middle
    plot.items.push_back({PlotItem::Line, -1e9, 1, 1e300, 1, 208, ""});  // far ends: clipped, still drawn
    plot.items.push_back({PlotItem::Text, 1, 9, 0, 0, 208, "8"});
    plot.items.push_back({PlotItem::Line, 0, 0, 0, NAN, 208, ""});        // ignored
    Image image = render_plot(plot, 101, 101);
    EXPECT_EQ(pixel(image, 50, 50), (std::array<std::uint8_t, 3>{255, 0, 0}));
    EXPECT_EQ(pixel(image, 50, 49), (std::array<std::uint8_t, 3>{255, 255, 255}));
    EXPECT_EQ(pixel(image, 70, 90), (std::array<std::uint8_t, 3>{0, 0, 0}));
    // The "8" stands above its point, 7 rows high: its top bar is black.
    int dark = 0;
    for (int y = 0; y < 10; ++y)
        for (int x = 10; x < 16; ++x) dark += pixel(image, x, y)[0] == 0;
    EXPECT_GT(dark, 8);
}
