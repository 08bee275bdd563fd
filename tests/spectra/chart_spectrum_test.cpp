// The chart spectra: sticks on the grid and their spread, the UV band, the
// tables, and the commands' pictures and windows.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "display/image.h"
#include "session/session.h"
#include "spectra/chart_picture.h"
#include "spectra/chart_spectrum.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

text::TextLines stick_file(const std::vector<std::string>& rows, const char* title = "  IR Spectrum") {
    std::vector<std::string> lines{"", title, "  freq.cm**-1  Int."};
    lines.insert(lines.end(), rows.begin(), rows.end());
    lines.emplace_back("  END");
    return text::TextLines::from_lines(lines);
}

bool blue(const Image& image, int x, int y) {
    const auto p = pixel(image, x, y);
    return p[2] > 200 && p[0] < 80 && p[1] < 80;
}

// Whether the trace passes through a column of the picture between two
// heights (pixel rows from the top).
bool trace_in_column(const Image& image, int x, int top, int bottom) {
    for (int y = top; y <= bottom; ++y)
        for (int dx = -1; dx <= 1; ++dx)
            if (blue(image, x + dx, y)) return true;
    return false;
}

int px(const Chart& c, double x) { return static_cast<int>(std::lround(chart_plot_x(c, x) * 80.0)); }
int py(const Chart& c, double y) { return static_cast<int>(std::lround((kChartUnitsHigh - chart_plot_y(c, y)) * 80.0)); }

}  // namespace

TEST(ChartSpectrum, SticksLandOnTheNearestGridPointAndTheLaterOverwritesTheEarlierTail) {
    // Scaled 970.68: grid point 970, tails to six points either side.
    StickSpectrum s = spread_sticks(stick_file({"  1000.70       12.00000    7"}), 0.97f, 1);
    const int i = nearest_ir_point(1000.7 * 0.97f);
    EXPECT_DOUBLE_EQ(ir_grid_wave(i), 970.0);
    EXPECT_DOUBLE_EQ(s.band[i], 12.0);
    EXPECT_DOUBLE_EQ(s.band[i - 1], 0.9 * 12.0);
    EXPECT_DOUBLE_EQ(s.band[i + 6], 0.05 * 12.0);
    EXPECT_DOUBLE_EQ(s.band[i + 7], 0.0);

    // 4 cm-1 apart, two grid points: the second adds to the first's tail (0.5
    // of 10) and its own tail then overwrites the first's centre with 0.5 of the sum.
    s = spread_sticks(stick_file({"  1000.00       10.00000", "  1004.00        2.00000"}), 1.0f, 1);
    const int first = nearest_ir_point(1000.0), second = nearest_ir_point(1004.0);
    ASSERT_EQ(second - first, 2);
    EXPECT_DOUBLE_EQ(s.band[second], 5.0 + 2.0);
    EXPECT_DOUBLE_EQ(s.band[first], 0.5 * 7.0);
    EXPECT_DOUBLE_EQ(s.band[first - 1], 0.3 * 7.0);
    EXPECT_EQ(s.strongest, first);   // the first stick keeps the scale

    // Sticks near the low end have no tails; one above 4000 lands on the last point.
    s = spread_sticks(stick_file({"   205.00        3.00000", "  4400.00        1.00000"}), 1.0f, 2);
    EXPECT_DOUBLE_EQ(s.band[2], 3.0);
    EXPECT_DOUBLE_EQ(s.band[1], 0.0);
    EXPECT_DOUBLE_EQ(s.band[3], 0.0);
    EXPECT_DOUBLE_EQ(s.band[kIrGridPoints], 1.0);

    // A file cut before its rows is flat (an imaginary mode: the session below).
    s = spread_sticks(text::TextLines::from_lines({"", "  IR Spectrum"}), 1.0f, 1);
    EXPECT_FALSE(s.abandoned);
    EXPECT_EQ(s.strongest, 1);
    for (double v : s.band) EXPECT_EQ(v, 0.0);
}

TEST(ChartSpectrum, UvTransitionsAccumulateAGaussianBand) {
    const UvSpectrum s = spread_transitions(
        text::TextLines::from_lines({"  300.0        0.50000", "  300.0        0.50000", "  101.0        2.00000", "  END"}));
    const int k = nearest_uv_point(300.0);
    EXPECT_DOUBLE_EQ(uv_grid_wave(k), 300.0);
    EXPECT_DOUBLE_EQ(s.absorbance[k], 1.0);
    EXPECT_DOUBLE_EQ(s.absorbance[k - 1], std::exp(-0.005 * 2 * 2));   // a Gaussian of the distance in nm
    // At 101 nm the band starts at point 1; its lower half falls off the grid.
    EXPECT_EQ(nearest_uv_point(101.0), 1);
    EXPECT_DOUBLE_EQ(s.absorbance[1], 2.0);
    EXPECT_EQ(s.strongest, 1);

    const auto table = absorbance_table(s);   // its length: the session below
    EXPECT_EQ(table.front(), "   102.  2.0000");
    EXPECT_EQ(table.back(), "   800.  0.0000");
}

TEST(ChartSpectrum, TheChartRunsFrom4000Downwards) {
    const StickSpectrum s = spread_sticks(stick_file({"  1600.00       40.00000", "  3000.00       10.00000"}), 1.0f, 1);
    const Chart c = stick_chart(s, "water", 1, 0.97f);
    EXPECT_EQ(c.caption, "Scale factor 0.97");
    EXPECT_DOUBLE_EQ(c.y_max, 40.0);
    EXPECT_EQ(stick_chart(s, "water", 2, 1.0f).title, "water Raman spectrum");

    const auto table = band_table(s);
    EXPECT_EQ(table.front(), "    202.  0.00000000");
    EXPECT_EQ(table.at(nearest_ir_point(1600) - 1), "   1600. 40.00000000");
}

// The commands in a session: files, GEO log, the chart on the screen.
TEST(ChartSpectrum, PlotsWriteTheirPicturesTablesAndLogLines) {
    TestSession t;
    t.s.job.name = "dvb";
    open_job_log(t.s, false, " Zentol dvb");
    files::write_lines("dvb_ir.lst", {"", "  IR Spectrum", "  freq.cm**-1  Int.", "   950.60       37.06000   10",
                                      "  2778.45     2425.16000   11", "  END"});
    plot_spectrum(t.s, 0.97f, 1);
    ASSERT_TRUE(t.tk.last_chart().has_value());
    EXPECT_EQ(t.tk.last_chart()->title, "dvb IR spectrum");
    EXPECT_EQ(files::read_lines("dvb_irspec.lst")->size(), 1900u);
    auto png = decode_png(read_file(t.scratch() + "/dvb_ir.png"));
    ASSERT_TRUE(png.has_value());
    const Chart& c = *t.tk.last_chart();
    // The strong band reaches the bottom of the graph, the baseline elsewhere runs along the top.
    EXPECT_TRUE(trace_in_column(*png, px(c, 2778.45 * 0.97), py(c, c.y_max) - 3, py(c, c.y_max) + 3));
    EXPECT_TRUE(trace_in_column(*png, px(c, 2000), py(c, 0.0) - 3, py(c, 0.0) + 3));
    EXPECT_FALSE(trace_in_column(*png, px(c, 2000), py(c, c.y_max / 2), py(c, c.y_max)));
    const std::string geo = read_file(t.scratch() + "/dvb.geo");
    EXPECT_NE(geo.find(" IR Spectrum\n frequency scale factor"), std::string::npos);
    // Fixed fields: a wide intensity runs into the frequency.
    EXPECT_NE(geo.find("  2695.102425.16000\n"), std::string::npos);

    // An imaginary mode: the log keeps its heading, nothing else is written.
    files::write_lines("dvb_ra.lst", {"", "  Raman Spectrum", "  freq.cm**-1  Int.", "  -388.51        1.00000    6", "  END"});
    plot_spectrum(t.s, 1.0f, 2);
    EXPECT_FALSE(files::exists("dvb_raman.png"));
    EXPECT_FALSE(files::exists("dvb_raspec.lst"));
    EXPECT_NE(read_file(t.scratch() + "/dvb.geo").find(" Raman Spectrum"), std::string::npos);

    files::write_lines("dvb_uv.lst", {"  231.7        0.04293", "  216.7        8.31192", "  END"});
    plot_uv(t.s);
    EXPECT_EQ(t.tk.last_chart()->title, "dvb UV-visible spectrum");
    EXPECT_EQ(t.tk.last_chart()->x_title, "Wavlength nm");
    EXPECT_EQ(files::read_lines("dvb_uvvis.lst")->size(), 350u);
    EXPECT_TRUE(file_present(t.scratch() + "/dvb_uvvis.png"));
    close_job_log(t.s);

    // No stick file: nothing at all.
    files::remove("dvb_ir.lst");
    files::remove("dvb_ir.png");
    plot_spectrum(t.s, 1.0f, 1);
    EXPECT_FALSE(files::exists("dvb_ir.png"));
}
