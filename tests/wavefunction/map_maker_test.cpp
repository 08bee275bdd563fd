// The map programs as Zentol runs them (hand-over files in the job folder)
// and as a user runs them from the shell; their cube files read back here
// and by Open Babel.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "engines/mopac/mopac_plot.h"
#include "support/test_support.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "wavefunction/cube_file.h"
#include "wavefunction/map_maker.h"

namespace zentol {
namespace {

using testing::read_file;
using testing::test_data;
using testing::write_file;

struct MakerRun {
    int status = 0;
    std::string out, err;
};

MakerRun map_maker(std::vector<std::string> args) {
    std::ostringstream out, err;
    MakerRun r;
    r.status = run_map_maker(args, out, err);
    r.out = out.str();
    r.err = err.str();
    return r;
}

CubeGrid cube(const std::string& path) {
    std::string error;
    auto g = read_cube(read_file(path), error);
    EXPECT_TRUE(g.has_value()) << path << ": " << error;
    return g ? *g : CubeGrid{};
}

// Zentol's Plot: graph.dat from the run's .mgf and pppmap.KEW from the dialog.
void mopac_hand_over(const std::string& mgf, int orbital, int kind, const std::string& job) {
    const auto lines = files::read_text_lines(test_data("orbitals/" + mgf));
    files::write_lines("graph.dat", graph_file_from_mgf(read_mop2016_vectors(lines->views())));
    PlotRequest r;
    r.orbital = orbital;
    r.grid_steps = 48;
    r.kind = kind;
    r.homo_index = 4;
    r.job = job;
    files::write_lines("pppmap.KEW", plot_control_file(r));
}

// Each test in a folder of its own, with copies of the data files it names.
class MapMaker : public ::testing::Test {
protected:
    MapMaker() { files::change_dir(dir.path()); }
    void copy(const std::string& data, const std::string& name) { files::copy(test_data(data), name); }
    testing::TempDir dir;
};

TEST_F(MapMaker, MopacHandOverWritesTheJobsCubeAndTellsTheViewer) {
    mopac_hand_over("water.mgf", 4, 0, "water");
    MakerRun r = map_maker({"/somewhere/bin/orbgrid"});
    EXPECT_EQ(r.status, 0) << r.err;
    const CubeGrid g = cube("water_MO004.cube");
    EXPECT_EQ(g.atoms.size(), 3u);
    EXPECT_EQ(std::max({g.n[0], g.n[1], g.n[2]}), 48);
    EXPECT_FALSE(files::exists("pppmap.log"));

    mopac_hand_over("ch3_uhf.mgf", 4, 1, "methyl");
    EXPECT_EQ(map_maker({"orbgrids"}).status, 0);
    EXPECT_EQ(cube("methyl_spin.cube").title, "Spin density");
    EXPECT_EQ(read_file("pppmap.atl").substr(0, 18), "methyl_spin.cube\nS");
}

TEST_F(MapMaker, FailedHandOverSaysWhyInTheLog) {
    MakerRun r = map_maker({"orbgrid"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(read_file("pppmap.log").find("pppmap.KEW is missing"), std::string::npos);
    write_file("pppmap.KEW", "graph.dat\n    4  M.O.\n   64  Grid Steps\n");
    r = map_maker({"orbgrid"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(read_file("pppmap.log").find("there is no graph file graph.dat"), std::string::npos);
    mopac_hand_over("water.mgf", 4, 0, "water");
    write_file("pppmap.KEW", "graph.dat\n    4  M.O.\n  300  Grid Steps\n");
    EXPECT_EQ(map_maker({"orbgrid"}).status, 1);
    EXPECT_NE(read_file("pppmap.log").find("32 to 128"), std::string::npos);
    EXPECT_FALSE(files::exists("pppmap.atl"));
}

TEST_F(MapMaker, FireflyHandOverReadsPunchAndKew) {
    copy("firefly/gamessus2018_dvb_opt.dat", "PUNCH");
    write_file("pppmap.kew", "          35          35          40\n");
    MakerRun r = map_maker({"gridmap"});
    EXPECT_EQ(r.status, 0) << r.err;
    const CubeGrid g = cube("pppmap_MO035.cube");
    EXPECT_EQ(g.atoms.size(), 20u);
    EXPECT_EQ(g.atoms[0].atomic_number, 6);
    EXPECT_EQ(read_file("pppmap.atl").substr(0, 18), "pppmap_MO035.cube\n");
}

TEST_F(MapMaker, ShellUseWithOptionsAndTheCubeFileReadBack) {
    copy("orbitals/water.mgf", "water.mgf");
    MakerRun r = map_maker({"zentol-orbgrid", "--lumo", "--steps", "32", "water.mgf"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(cube("water_MO005.cube").title, "Molecular orbital 5");
    EXPECT_EQ(map_maker({"zentol-orbgrid", "--density", "-o", "d.cube", "water.mgf"}).status, 0);
    EXPECT_EQ(cube("d.cube").title, "Total electron density");
    EXPECT_EQ(map_maker({"zentol-orbgrid", "--steps", "8", "water.mgf"}).status, 2);
    EXPECT_EQ(map_maker({"zentol-orbgrid", "--bogus"}).status, 2);
    r = map_maker({"zentol-orbgrid", "missing.mgf"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "no map: cannot read missing.mgf\n");

    // A cube file cut short, with words for numbers, or too large is refused.
    const std::string text = read_file("water_MO005.cube");
    std::string error;
    EXPECT_FALSE(read_cube(text.substr(0, text.size() / 2), error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(read_cube("title\ncomment\n    3 a b c\n", error));
    EXPECT_FALSE(read_cube("t\nc\n    1 0 0 0\n 999999 0.1 0 0\n 999999 0 0.1 0\n 999999 0 0 0.1\n", error));
    EXPECT_EQ(error, "the cube file's grid is too large");
}

TEST_F(MapMaker, LargerMopacRunIsNumberedFromItsListing) {
    // Hexadecane without ALLVEC: the file holds orbitals 41 to 56 only.
    copy("orbitals/hexadecane.mgf", "hexadecane.mgf");
    MakerRun r = map_maker({"zentol-orbgrid", "--steps", "32", "--density", "hexadecane.mgf"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("ALLVEC"), std::string::npos);
    copy("orbitals/hexadecane.out", "hexadecane.out");
    r = map_maker({"zentol-orbgrid", "--steps", "32", "hexadecane.mgf"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(cube("hexadecane_MO049.cube").title, "Molecular orbital 49");
}

TEST_F(MapMaker, OpenBabelReadsTheAtomsAndTheGrid) {
    if (std::system("obabel -V >/dev/null 2>&1") != 0) GTEST_SKIP() << "obabel is not installed";
    copy("orbitals/water.mgf", "water.mgf");
    ASSERT_EQ(map_maker({"zentol-orbgrid", "--steps", "36", "water.mgf"}).status, 0);
    ASSERT_EQ(std::system("obabel -icube water_MO004.cube -oxyz -O water.xyz >/dev/null 2>&1"), 0);
    const auto xyz = files::read_lines("water.xyz");
    ASSERT_TRUE(xyz && xyz->size() >= 5);
    EXPECT_EQ(text::split_words((*xyz)[2])[0], "O");
    EXPECT_EQ(text::split_words((*xyz)[3])[0], "H");
    EXPECT_NEAR(*text::read_f(text::split_words((*xyz)[3])[2]), 0.7572, 1e-4);
    // Open Babel writes the grid it read: the same points and values.
    ASSERT_EQ(std::system("obabel -icube water_MO004.cube -ocube -O copy.cube >/dev/null 2>&1"), 0);
    const CubeGrid ours = cube("water_MO004.cube"), theirs = cube("copy.cube");
    EXPECT_EQ(theirs.n, ours.n);
    EXPECT_NEAR(theirs.axes[0][0], ours.axes[0][0], 1e-5);
    EXPECT_NEAR(theirs.origin[2], ours.origin[2], 1e-5);
    ASSERT_EQ(theirs.values.size(), ours.values.size());
    for (std::size_t i = 0; i < ours.values.size(); i += 101)
        EXPECT_NEAR(theirs.values[i], ours.values[i], 1e-5 + 1e-4 * std::abs(ours.values[i]));
}

}  // namespace
}  // namespace zentol
