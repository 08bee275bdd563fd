// Maps of orbitals and densities against what they must integrate to and
// against a Slater orbital of H2 worked by hand; then the map programs as
// Zentol and as a user run them. The .mgf files are real MOPAC 22 runs; the
// punch file is a GAMESS-US run with its AIMPAC wavefunction.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "engines/mopac/mopac_plot.h"
#include "support/test_support.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "wavefunction/cube_file.h"
#include "wavefunction/map_files.h"
#include "wavefunction/map_maker.h"
#include "wavefunction/orbital_map.h"

namespace zentol {
namespace {

using testing::read_file;
using testing::test_data;
using testing::test_data_lines;
using testing::write_file;

constexpr double kAngstrom = 0.52917721067;  // bohr in Angstrom
constexpr const char* kDvb = "gamessus2018_dvb_opt.dat";

// A MOPAC graph file of tests/data/orbitals, or a punch file of tests/data/firefly.
MapWavefunction wavefunction(const std::string& name) {
    const bool mopac = name.ends_with(".mgf");
    const auto lines = files::read_text_lines(test_data((mopac ? "orbitals/" : "firefly/") + name));
    EXPECT_TRUE(lines.has_value()) << name;
    std::string error;
    MapWavefunction w = mopac ? mopac_wavefunction(read_mop2016_vectors(lines->views()), error)
                              : aimpac_wavefunction(*lines, error);
    EXPECT_EQ(error, "");
    return w;
}

CubeGrid map_of(const MapWavefunction& w, MapKind kind, int orbital, int steps, double margin = 5.0) {
    std::string error;
    auto g = make_map(w, MapRequest{.kind = kind, .orbital = orbital, .steps = steps, .margin = margin}, error);
    EXPECT_TRUE(g.has_value()) << error;
    return g ? *g : CubeGrid{};
}

// The sum over the grid of a times b (of a alone without b) times the volume
// of a cell: a cube whose edge is the distance between neighbouring points.
double integral(const CubeGrid& a, const CubeGrid* b = nullptr) {
    if (b && b->values.size() != a.values.size()) return NAN;
    const double h = a.axes[0][0];
    double sum = 0;
    for (std::size_t i = 0; i < a.values.size(); ++i) sum += double(a.values[i]) * (b ? b->values[i] : 1.0);
    return sum * h * h * h;
}

struct MakerRun {
    int status = 0;
    std::string out, err;
};

MakerRun map_maker(std::vector<std::string> args) {
    std::ostringstream out, err;
    const int status = run_map_maker(args, out, err);
    return {status, out.str(), err.str()};
}

CubeGrid cube(const std::string& path) {
    std::string error;
    auto g = read_cube(read_file(path), error);
    EXPECT_TRUE(g.has_value()) << path << ": " << error;
    return g ? *g : CubeGrid{};
}

void same_values(const CubeGrid& a, const CubeGrid& b) {
    ASSERT_EQ(a.values.size(), b.values.size());
    for (std::size_t i = 0; i < a.values.size(); i += 97) EXPECT_NEAR(a.values[i], b.values[i], 1e-6) << i;
}

// Zentol's Plot: graph.dat from the run's .mgf and pppmap.KEW from the dialog.
void mopac_hand_over(const std::string& mgf, int orbital, int kind, const std::string& job) {
    const auto lines = files::read_text_lines(test_data("orbitals/" + mgf));
    files::write_lines("graph.dat", graph_file_from_mgf(read_mop2016_vectors(lines->views())));
    files::write_lines("pppmap.KEW", plot_control_file({.orbital = orbital, .grid_steps = 48, .kind = kind,
                                                        .homo_index = 4, .job = job}));
}

// Each test in a folder of its own, with copies of the data files it names.
class MapMaker : public ::testing::Test {
protected:
    MapMaker() { files::change_dir(dir.path()); }
    void copy(const std::string& data, const std::string& name) { files::copy(test_data(data), name); }
    testing::TempDir dir;
};

TEST(MopacMaps, HydrogenOrbitalIsTheHandMadeSlaterSum) {
    const MapWavefunction w = wavefunction("h2.mgf");
    const CubeGrid g = map_of(w, MapKind::Orbital, 1, 40);
    // From h2.mgf: zeta 1.2602370, atoms on z, the bonding orbital
    // (0.70710678, 0.70710678) in MOPAC's orthogonal basis and the matrix
    // [[1.2226642, -0.44154164], [-0.44154164, 1.2226642]] that takes it
    // back to the two 1s functions.
    const double zeta = 1.2602370, c = 0.70710678 * (1.2226642 - 0.44154164);
    const double za = -0.0097468 / kAngstrom, zb = 0.7497468 / kAngstrom;
    const double n1s = std::sqrt(zeta * zeta * zeta / M_PI);
    for (auto [i, j, k] : {std::array{20, 20, 20}, std::array{12, 25, 17}, std::array{3, 30, 39}}) {
        const auto p = g.point(i, j, k);
        const double ra = std::sqrt(p[0] * p[0] + p[1] * p[1] + (p[2] - za) * (p[2] - za));
        const double rb = std::sqrt(p[0] * p[0] + p[1] * p[1] + (p[2] - zb) * (p[2] - zb));
        const double psi = c * n1s * (std::exp(-zeta * ra) + std::exp(-zeta * rb));
        EXPECT_NEAR(g.at(i, j, k), psi, 1e-6 + 1e-5 * std::abs(psi)) << i << " " << j << " " << k;
    }
}

TEST(OrbitalMaps, OrbitalsAreNormalisedAndOrthogonalOnAFineGrid) {
    // SO2 by PM7 (regression): sulfur has s, p and d functions (zeta_d 3.51).
    // With the d functions in another order than x2-y2, xz, z2, yz, xy the
    // norms of orbitals 9 and 13 stray by 2%.
    struct Case {
        const char* file;
        std::vector<int> orbitals;   // the last is checked against the others
        int steps;
        double margin;
    };
    for (const Case& c : {Case{"so2.mgf", {9, 11, 13}, 96, 4.0}, Case{kDvb, {34, 35}, 128, 4.0}}) {
        const MapWavefunction w = wavefunction(c.file);
        std::vector<CubeGrid> maps;
        for (int mo : c.orbitals) {
            maps.push_back(map_of(w, MapKind::Orbital, mo, c.steps, c.margin));
            EXPECT_NEAR(integral(maps.back(), &maps.back()), 1.0, 0.01) << c.file << " orbital " << mo;
        }
        for (std::size_t i = 0; i + 1 < maps.size(); ++i)
            EXPECT_NEAR(integral(maps[i], &maps.back()), 0.0, 0.01) << c.file << " orbital " << c.orbitals[i];
    }
}

TEST(MopacMaps, DensityHoldsTheValenceElectronsAndSpinTheUnpairedOne) {
    const CubeGrid water = map_of(wavefunction("water.mgf"), MapKind::Density, 0, 128);
    EXPECT_NEAR(integral(water), 8.0, 0.08);
    // The methyl radical, UHF: 4 alpha and 3 beta valence electrons.
    const MapWavefunction methyl = wavefunction("ch3_uhf.mgf");
    EXPECT_NEAR(integral(map_of(methyl, MapKind::Density, 0, 112)), 7.0, 0.07);
    const CubeGrid spin = map_of(methyl, MapKind::Spin, 0, 112);
    EXPECT_NEAR(integral(spin), 1.0, 0.01);
}

TEST(MopacMaps, WhatCannotBeMappedIsSaid) {
    const MapWavefunction water = wavefunction("water.mgf");
    MapRequest r{.orbital = 9};
    std::string error;
    EXPECT_FALSE(make_map(water, r, error));
    EXPECT_EQ(error, "orbital 9 is not in the file (it holds orbitals 1 to 6)");
    r.kind = MapKind::Spin;
    EXPECT_FALSE(make_map(water, r, error));
    EXPECT_EQ(error, "a closed shell has no spin density");
    // A file without exponents or with a matrix of another size.
    Mop2016Vectors v = read_mop2016_vectors(files::read_text_lines(test_data("orbitals/water.mgf"))->views());
    v.inverse.pop_back();
    EXPECT_TRUE(mopac_wavefunction(v, error).orbitals.empty());
    EXPECT_EQ(error, "the graph file's inverse matrix does not fit its 6 basis functions");
}

TEST(FireflyMaps, PunchWithoutWavefunctionOrCutShortIsSaid) {
    // The punch file's first n lines, or all of them (n = 0).
    auto refused = [](const char* file, long n) {
        auto lines = test_data_lines(std::string("firefly/") + file);
        if (n) lines.resize(static_cast<std::size_t>(n));
        std::string error;
        EXPECT_TRUE(aimpac_wavefunction(text::TextLines::from_lines(lines), error).orbitals.empty()) << n;
        return error;
    };
    EXPECT_EQ(refused("gamessus2018_nh3_ts_hessian.dat", 0), "the punch file's wavefunction has no orbitals or no primitives");
    EXPECT_EQ(refused(kDvb, 5300), "the punch file's wavefunction is cut short or damaged");
    EXPECT_NE(refused(kDvb, 100).find("WFN"), std::string::npos);
}

// Zentol hands the map program graph.dat, not the .mgf: the same map must
// come out of both, the beta set of a UHF run included.
TEST_F(MapMaker, MopacHandOverWritesTheJobsCubeAndTellsTheViewer) {
    mopac_hand_over("water.mgf", 4, 0, "water");
    MakerRun r = map_maker({"/somewhere/bin/orbgrid"});
    EXPECT_EQ(r.status, 0) << r.err;
    const CubeGrid g = cube("water_MO004.cube");
    EXPECT_EQ(g.atoms.size(), 3u);
    EXPECT_EQ(std::max({g.n[0], g.n[1], g.n[2]}), 48);
    EXPECT_FALSE(files::exists("pppmap.log"));
    copy("orbitals/water.mgf", "water.mgf");
    ASSERT_EQ(map_maker({"zentol-orbgrid", "--mo", "4", "--steps", "48", "-o", "mgf.cube", "water.mgf"}).status, 0);
    same_values(cube("mgf.cube"), g);

    mopac_hand_over("ch3_uhf.mgf", 4, 1, "methyl");
    EXPECT_EQ(map_maker({"orbgrids"}).status, 0);
    EXPECT_EQ(cube("methyl_spin.cube").title, "Spin density");
    EXPECT_EQ(read_file("pppmap.atl").substr(0, 18), "methyl_spin.cube\nS");
    copy("orbitals/ch3_uhf.mgf", "methyl.mgf");
    ASSERT_EQ(map_maker({"zentol-orbgrid", "--spin", "--steps", "48", "-o", "mgf.cube", "methyl.mgf"}).status, 0);
    same_values(cube("mgf.cube"), cube("methyl_spin.cube"));
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
