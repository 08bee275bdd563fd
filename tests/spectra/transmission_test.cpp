// The drawn spectrum: sticks on the grid, transmission heights, the picture
// and its HP-GL copy (its PNG file: vibration_session_test); the stick list;
// the movie's list of modes and the frame alignment of the displacements.
#include "spectra/transmission.h"

#include <cmath>

#include <gtest/gtest.h>

#include "display/image.h"
#include "spectra/frame_alignment.h"
#include "spectra/hpgl.h"
#include "spectra/vibration_movie.h"
#include "toolkit/plot_raster.h"
#include "toolkit/scripted_toolkit.h"

using namespace zentol;

TEST(Transmission, SticksLandOnTheGridSpreadAndGiveTheHeights) {
    // 1000.7 cm-1 scaled by 0.97 is 970.68: point 485 of the 2 cm-1 grid.
    auto y = transmission_bands({{1000.7, 2.0}}, 0.97);
    EXPECT_DOUBLE_EQ(y[485], 2.0);
    EXPECT_DOUBLE_EQ(y[484], 1.8);
    EXPECT_DOUBLE_EQ(y[491], 0.1);
    EXPECT_DOUBLE_EQ(y[478], 0.0);
    // A stick 4 cm-1 above another overwrites the tail and even the centre
    // of the first with its own fractions.
    y = transmission_bands({{1000, 1.0}, {1004, 1.0}}, 1.0);
    EXPECT_DOUBLE_EQ(y[502], 1.5);
    EXPECT_DOUBLE_EQ(y[500], 0.75);
    EXPECT_DOUBLE_EQ(y[501], 1.35);
    // Sticks that leave the grid are passed over; one at its edge keeps the
    // side that fits.
    y = transmission_bands({{9000, 5.0}, {-825.18, 5.0}, {4, 1.0}}, 1.0);
    EXPECT_DOUBLE_EQ(y[2], 1.0);
    EXPECT_DOUBLE_EQ(y[8], 0.05);
    double sum = 0;
    for (double v : y) sum += v;
    EXPECT_NEAR(sum, 1.0 + 0.9 + 0.5 + 0.9 + 0.5 + 0.3 + 0.15 + 0.1 + 0.05, 1e-12);

    // The strongest band reaches 1 - 0.8 exp(-2.303 * 0.7); point n is 2(n + 99) cm-1.
    const auto h = transmission_heights(transmission_bands({{1000, 3.0}, {3000, 1.0}}, 1.0));
    EXPECT_NEAR(h[500 - 100], 1.0 - 0.8 * std::exp(-2.303 * 0.7), 1e-12);
    EXPECT_NEAR(h[1500 - 100], 1.0 - 0.8 * std::exp(-2.303 * 0.7 / 3.0), 1e-12);
    EXPECT_DOUBLE_EQ(h[0], 0.2);
    EXPECT_DOUBLE_EQ(transmission_heights(transmission_bands({}, 1.0))[900], 0.2);   // no band: flat, not NaN
    EXPECT_NEAR(transmission_x(1401), 0.30, 5e-4);   // 3000 cm-1 stands under its caption
}

TEST(Transmission, PictureAndItsCopies) {
    ScriptedToolkit tk;
    tk.WindowOpenChild("water IR spectrum", 800, 600);
    const auto heights = transmission_heights(transmission_bands({{1600, 1.0}, {3700, 0.5}}, 0.97));
    draw_transmission(tk, heights, "water", 0.97);
    const Plot& p = tk.plot();
    std::vector<std::string> texts;
    for (const PlotItem& it : p.items)
        if (it.kind == PlotItem::Text) texts.push_back(it.text);
    EXPECT_EQ(texts, (std::vector<std::string>{"4000", "3000", "2000", "1000", "200", "cm", "-1", "water",
                                               "Scale factor 0.97"}));
    EXPECT_DOUBLE_EQ(p.items.back().x2, 0.1);   // the curve ends at 4000 cm-1 on the left

    // The picture: black rules, the blue band of 1552 cm-1 (1600 * 0.97: grid point 776).
    const Image img = render_plot(p, 1200, 900);
    auto at = [&](double x, double y) {
        return pixel(img, static_cast<int>(std::lround(x * 1199)), static_cast<int>(std::lround((1 - y) * 899)));
    };
    EXPECT_EQ(at(0.5, 0.15), (std::array<std::uint8_t, 3>{0, 0, 0}));
    const int n = 776 - 99;
    EXPECT_EQ(at(transmission_x(n), heights[static_cast<std::size_t>(n - 1)]), (std::array<std::uint8_t, 3>{0, 0, 255}));

    // HP-GL: pen moves in plotter units, labels closed by character 3.
    const std::string hpgl = hpgl_from_plot(p);
    EXPECT_EQ(hpgl.substr(0, 17), "IN;\nSI0.19,0.27;\n");
    EXPECT_NE(hpgl.find("SP1;\nPU1000,1125;\nPD8600,1125;\n"), std::string::npos);
    EXPECT_NE(hpgl.find("PU3000,750;\nLB3000\x03\n"), std::string::npos);
    EXPECT_NE(hpgl.find("PU8600,6750;\nPD8596,1500;\nSP4;\nPD"), std::string::npos);
    EXPECT_EQ(hpgl.substr(hpgl.size() - 9), "PU;\nSP0;\n");
}

TEST(StickList, WrittenReadBackAndListedForTheMovie) {
    std::vector<VibrationMode> modes(2);
    modes[0].frequency = 38.65, modes[0].intensity = 0.00004;
    modes[1].frequency = -825.18, modes[1].intensity = 21.64357;
    EXPECT_EQ(stick_file(modes, false), (std::vector<std::string>{"", " IR Spectrum", "  freq.cm**-1  Int.  No.",
                                               "    38.65   0.00004    1", "  -825.18  21.64357    2", "  END"}));
    // Read back whole by the plots (vibration_session_test); without "  END"
    // the file's end closes the list, without "  freq" it is none.
    auto cut = read_stick_file(text::TextLines::from_lines({"", " IR Spectrum", "  freq.cm**-1  Int.  No.",
                                                            "   100.00   1.00000    1", "   200.0"}));
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->size(), 1u);
    EXPECT_FALSE(read_stick_file(text::TextLines::from_lines({"garbage", "   100.00   1.00000    1"})));

    // The movie's dialog lists the modes in rows of the same layout, a bounded number.
    modes.resize(120);
    const auto rows = movie_rows(modes);
    EXPECT_EQ(rows.size(), static_cast<std::size_t>(kMovieListRows));
    EXPECT_EQ(rows[1], "  -825.18  21.64357    2");
}

TEST(FrameAlignment, FindsTheTurnBetweenTwoFrames) {
    // Turned 90 degrees about z, then 30 about x.
    const double c = std::cos(M_PI / 6), s = std::sin(M_PI / 6);
    const Matrix3 turn{{{0, -1, 0}, {c, 0, -s}, {s, 0, c}}};
    const std::vector<Point3> from{{0, 0, 0.12}, {0, 0.76, -0.47}, {0, -0.76, -0.47}, {1.1, 0.2, 0.3}};
    std::vector<Point3> to;
    for (const Point3& p : from) {
        Point3 q = rotate(turn, p);
        to.push_back({q[0] + 5, q[1] - 2, q[2] + 1});
    }
    const Matrix3 r = best_rotation(from, to);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_NEAR(r[i][j], turn[i][j], 1e-9);
}
