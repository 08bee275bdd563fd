// The orbital viewer as a chemist meets it: the water HOMO on the screen
// (read back from the picture the viewer saves), and leaving the viewer
// handing the job back to Zentol, which comes up in Mopac mode. Needs a
// display (the tests run under xvfb-run).
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>

#include "display/image.h"
#include "support/test_support.h"
#include "toolkit/files.h"
#include "wavefunction/viewer_start.h"

namespace zentol {
namespace {

using testing::read_file;
using testing::test_data;
using testing::write_file;

int run(const std::string& line) { return std::system(line.c_str()); }

const std::string kOrbview = ZENTOL_ORBVIEW_PROGRAM;

// Each test in a folder of its own; the viewer's need a display.
struct InFolder : ::testing::Test {
    InFolder() { files::change_dir(dir.path()); }
    testing::TempDir dir;
};
using ViewerWords = InFolder;
struct Orbview : InFolder {
    void SetUp() override {
        if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display";
    }
};

// Pixels of the lobes' colours, translucent over the dark background: red
// well above green and blue, or blue well above red and green; their count
// and mean column.
struct Lobes {
    int red = 0, blue = 0;
    double red_x = 0, blue_x = 0;
};

Lobes lobe_pixels(const Image& img) {
    Lobes c;
    for (int y = 0; y < img.height; ++y) {
        for (int x = 0; x < img.width; ++x) {
            const auto p = pixel(img, x, y);
            if (p[0] > 90 && p[0] > p[1] + 50 && p[0] > p[2] + 50) ++c.red, c.red_x += x;
            if (p[2] > 90 && p[2] > p[0] + 50 && p[2] > p[1] + 20) ++c.blue, c.blue_x += x;
        }
    }
    c.red_x /= std::max(c.red, 1);
    c.blue_x /= std::max(c.blue, 1);
    return c;
}

TEST_F(Orbview, WaterHomoShowsTwoLobesOfOppositeColour) {
    files::copy(test_data("orbitals/water.mgf"), "water.mgf");
    ASSERT_EQ(run(std::string(ZENTOL_ORBGRID_PROGRAM) + " --steps 64 water.mgf > /dev/null"), 0);
    // The HOMO is oxygen's p orbital across the molecule's plane (yz): seen
    // along z its lobes lie left and right of the oxygen atom.
    ASSERT_EQ(run(kOrbview + " --png shot.png water_MO004.cube"), 0);
    const auto img = decode_png(read_file("shot.png"));
    ASSERT_TRUE(img.has_value());
    ASSERT_GT(img->width, 300);
    const Lobes seen = lobe_pixels(*img);
    const int area = img->width * img->height, centre = img->width / 2;
    EXPECT_GT(seen.red, area / 50);
    EXPECT_GT(seen.blue, area / 50);
    // One lobe on each side of the middle, a fair way apart.
    EXPECT_LT((seen.red_x - centre) * (seen.blue_x - centre), 0.0);
    EXPECT_GT(std::abs(seen.red_x - seen.blue_x), 0.15 * img->width);
}

TEST_F(Orbview, ABadCubeIsRefusedWithAMessage) {
    write_file("broken.cube", "title\ncomment\n    1 0 0 0\n");
    EXPECT_NE(run(kOrbview + " --png x.png broken.cube 2> err.txt"), 0);
    EXPECT_NE(read_file("err.txt").find("cannot show broken.cube"), std::string::npos);
    // Help from a shell without a display.
    EXPECT_EQ(run("env -u DISPLAY -u WAYLAND_DISPLAY " + kOrbview + " --help > help.txt"), 0);
    EXPECT_EQ(read_file("help.txt").substr(0, 20), "usage: orbview FILE.");
}

// Zentol's words find the map the map program named, and give the words
// that bring Zentol back (MOPAC 04 and the way back: the leaving test below).
TEST_F(ViewerWords, FindTheMapAndTheWayBack) {
    write_file("water_MO112.cube", "x");
    // An orbital above 99 comes through pppmap.atl; the way back keeps 99.
    write_file("pppmap.atl", "water_MO112.cube\nMolecular orbital 112\n");
    ViewerStart v = read_viewer_words({"water", "1", "MOPAS", "99", "IMX"});
    EXPECT_EQ(v.cube, "water_MO112.cube");
    EXPECT_EQ(zentol_return_words(v, 112), (std::vector<std::string>{"water", "1", "MOPAS", "99", "IMX"}));
    v = read_viewer_words({"pppmap", "FIREFLY"});
    EXPECT_EQ(v.cube, "water_MO112.cube");
    EXPECT_FALSE(returns_to_zentol(v));
    EXPECT_NE(read_viewer_words({"water", "1", "MOPAC"}).error, "");
}

TEST_F(Orbview, LeavingStartsZentolInMopacModeOnTheSameJob) {
    const std::string job = dir.path() + "/job", root = dir.path() + "/root";
    ASSERT_EQ(run("mkdir -p '" + job + "' '" + root + "/cfgset'"), 0);
    files::copy(test_data("water.xyz"), job + "/water.xyz");
    files::copy(test_data("orbitals/water.mgf"), job + "/water.mgf");
    write_file(job + "/water.geo", " Zentol water\n Mopac Energy calculation\n");
    // The job's folder is the one of instance 1.
    write_file(root + "/cfgset/dir1.def", job + "\n");
    // Zentol, as the viewer finds it, runs headless and leaves Mopac mode.
    write_file(dir.path() + "/script", "menu 40001\n");
    const std::string d = "'" + dir.path() + "/";
    write_file(dir.path() + "/zentol.sh", "#!/bin/sh\necho \"$@\" > " + d + "words'\nZENTOL_ROOT=" + d + "root' ZENTOL_WORK=" +
                                              d + "work' '" ZENTOL_PROGRAM "' --headless --script " + d + "script' \"$@\" > " +
                                              d + "transcript.part'\nmv " + d + "transcript.part' " + d + "transcript'\n");
    ASSERT_EQ(run("chmod +x '" + dir.path() + "/zentol.sh'"), 0);
    ASSERT_EQ(run("cd '" + job + "' && " + ZENTOL_ORBGRID_PROGRAM + " --steps 32 water.mgf > /dev/null"), 0);
    ASSERT_EQ(run("cd '" + job + "' && ZENTOL_PROGRAM='" + dir.path() + "/zentol.sh' " + kOrbview +
                  " water 1 MOPAC 04 --leave"), 0);
    // The viewer does not wait for Zentol.
    for (int i = 0; i < 300 && !files::exists(dir.path() + "/transcript"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(read_file(dir.path() + "/words"), "water 1 MOPA 04\n");
    const std::string transcript = read_file(dir.path() + "/transcript");
    EXPECT_NE(transcript.find("status 2: 1:water"), std::string::npos) << transcript;
    EXPECT_NE(transcript.find("status 10: Mopac"), std::string::npos) << transcript;
    EXPECT_NE(transcript.find("menu 30004"), std::string::npos) << transcript;
    // The log was continued, not restarted.
    EXPECT_EQ(read_file(job + "/water.geo").substr(0, 40), " Zentol water\n Mopac Energy calculation\n");
}

}  // namespace
}  // namespace zentol
