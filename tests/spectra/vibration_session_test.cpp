// The spectra and the movie as a chemist reaches them: Firefly mode on a
// recorded Raman run, and Mopac mode on a FORCE run of the installed MOPAC.
#include <filesystem>

#include <gtest/gtest.h>

#include "display/image.h"
#include "engines/firefly/firefly_mode.h"
#include "engines/mopac/mopac_vibrations.h"
#include "session/openers.h"
#include "session/session.h"
#include "spectra/transmission.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

std::vector<std::string> lines_of(const std::string& path) {
    return files::read_lines(path).value_or(std::vector<std::string>{});
}

bool box_says(const TestSession& t, const std::string& part) {
    for (const std::string& text : t.tk.message_boxes())
        if (text.find(part) != std::string::npos) return true;
    return false;
}

int movie_frames(const std::string& dir) { return static_cast<int>(files::list(dir, "MV*.INS").size()); }

}  // namespace

TEST(FireflySpectra, ModesMovieAndBothPlots) {
    TestSession t;
    std::filesystem::copy_file(test_data("firefly/firefly8.0_dvb_raman.out"), t.scratch() + "/empty.lst");
    const std::string keep = t.dir / "movies";
    std::filesystem::create_directories(keep);
    write_file(keep + "/MV99.INS", "an old frame\n");
    run_on_molecule(t, "firefly/empty.xyz",
                    "menu 40015\nmsgbox yes\n"                                           // load the listing
                    "menu 40017\nmsgbox ok\ndialog 117 ok 1085=7 1101=5\nmsgbox yes\ndir " + keep + "\n"
                    "menu 40002\ndialog 119 ok 1071=0.97\nmsgbox ok\n"
                    "menu 40020\nmsgbox ok\ndialog 117 cancel\n"
                    "menu 40016\ndialog 119 ok\nmsgbox ok\n"
                    "menu 40001\n");
    const std::string dir = t.scratch();
    // 54 vibrations less the six rigid ones, in both stick lists.
    const auto ir = lines_of(dir + "/empty_IR.lst");
    ASSERT_EQ(ir.size(), 58u);
    EXPECT_EQ(ir[3], "    38.65   0.00004    1");
    EXPECT_EQ(lines_of(dir + "/empty_RA.lst")[1], " Raman Spectrum");
    // Forty frames, copied to the chosen folder, whose old frames went.
    EXPECT_EQ(movie_frames(dir), 40);
    EXPECT_EQ(movie_frames(keep), 40);
    EXPECT_FALSE(file_present(keep + "/MV99.INS"));
    // The IR plot: its files, the clipboard and the closing message.
    EXPECT_TRUE(box_says(t, "The spectrum has been copied to the clipboard\rand written to empty_ir.hgl and "
                            "empty_ir.png,\rempty_IR.lst and empty.geo contain original and corr. peaks."));
    EXPECT_TRUE(box_says(t, "and written to empty_ra.hgl and empty_ra.png\r"));
    auto png = decode_png(read_file(dir + "/empty_ir.png"));
    ASSERT_TRUE(png);
    EXPECT_EQ(png->width, 1200);
    int blue = 0;
    for (int y = 0; y < png->height; ++y)
        for (int x = 0; x < png->width; ++x) blue += pixel(*png, x, y) == std::array<std::uint8_t, 3>{0, 0, 255};
    EXPECT_GT(blue, 1000);
    EXPECT_EQ(read_file(dir + "/empty_ir.hgl").substr(0, 3), "IN;");
    ASSERT_TRUE(t.tk.clipboard_image());
    EXPECT_NE(read_file(dir + "/empty.geo").find("    37.49   0.00004"), std::string::npos);   // 38.65 times 0.97
}

TEST(FireflySpectra, MovieAtomLimitAndMissingStickList) {
    for (int natoms : {36, 35}) {
        SCOPED_TRACE(natoms);
        TestSession t;
        Store& st = t.s.store;
        for (int i = 1; i <= natoms; ++i)
            st.atom_label[i] = make_label("C"), st.atom_rec[i] = {1.5f * static_cast<float>(i), 0, 0, 0.76f, 0, 0};
        st.natoms = natoms, t.s.job.name = "big";
        std::filesystem::copy_file(test_data("firefly/firefly8.0_dvb_raman.out"), t.scratch() + "/big.lst");
        t.tk.load_script("menu 40002\nmsgbox ok\nmenu 40017\nmsgbox ok\nmsgbox ok\ndialog 117 cancel\nmenu 40001\n");
        firefly_mode(t.s);
        EXPECT_EQ(box_says(t, "The atom limit for animation is 35"), natoms > 35);
        // The stick list is written all the same, and before it there was none.
        EXPECT_TRUE(box_says(t, "There is no IR stick list big_IR.lst"));
        EXPECT_EQ(lines_of(t.scratch() + "/big_IR.lst").size(), 58u);
        EXPECT_EQ(movie_frames(t.scratch()), 0);
    }
}

TEST(MopacSpectra, RecordedForceRunGivesModesAndOrientation) {
    const auto listing = text::TextLines::from_bytes(read_file(test_data("mopac/m22_water_optF.out")));
    const MopacVibrations v = read_mopac_vibrations(listing);
    ASSERT_EQ(v.modes.size(), 3u);
    EXPECT_DOUBLE_EQ(v.modes[0].frequency, 1395.03);
    EXPECT_DOUBLE_EQ(v.modes[1].intensity, 1.2612 * 1.2612);
    EXPECT_TRUE(v.displacements);
    ASSERT_EQ(v.modes[2].displacement.size(), 3u);
    EXPECT_DOUBLE_EQ(v.modes[2].displacement[2][1], 0.4313);
    ASSERT_EQ(v.orientation.size(), 3u);
    EXPECT_DOUBLE_EQ(v.orientation[1][0], 0.9161);
    // A listing without a FORCE job has none; a cut one has what it holds.
    EXPECT_TRUE(read_mopac_vibrations(text::TextLines::from_bytes(read_file(test_data("mopac/m22_water_E.out")))).modes.empty());
    std::vector<std::string> cut;
    for (std::size_t i = 0; i < 360 && i < listing.size(); ++i) cut.emplace_back(listing[i]);
    EXPECT_TRUE(read_mopac_vibrations(text::TextLines::from_lines(cut)).modes.empty());
}

// The installed MOPAC: an IR-Hessian run of water, its spectrum and the
// movie of its modes.
TEST(MopacSpectra, RealForceRunOfWater) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    t.s.engines.values["mopac2016"] = "mopac";
    run_on_water(t, "menu 40014\nmenu 40012\nmsgbox ok\n"                 // no FORCE run yet
                    "menu 40023\ndialog 107 button:3 1077=1 1048=1\n"
                    "menu 40012\ndialog 119 ok\nmsgbox ok\n"
                    "menu 40011\nmsgbox ok\ndialog 117 ok 1085=3 1101=10\nmsgbox no\nmenu 40001\n");
    const std::string dir = t.scratch();
    EXPECT_TRUE(box_says(t, "No vibrations in water.lst"));
    const auto ir = lines_of(dir + "/water_IR.lst");
    ASSERT_EQ(ir.size(), 7u) << read_file(dir + "/water.lst");
    EXPECT_EQ(ir[1], " IR Spectrum");
    EXPECT_TRUE(file_present(dir + "/water_ir.png"));
    EXPECT_TRUE(file_present(dir + "/water_ir.hgl"));
    EXPECT_EQ(movie_frames(dir), 40);
    EXPECT_NE(read_file(dir + "/MV05.INS"), read_file(dir + "/MV15.INS"));
}
