// Maps of orbitals and densities, checked against what quantum mechanics
// says they must integrate to, summed over the grid here in the test, and
// against a Slater orbital of H2 evaluated by hand. The MOPAC graph files
// are from real runs of MOPAC 22 (tests/data/orbitals/*.mop); the punch
// file is a GAMESS-US run with its AIMPAC wavefunction.
#include <gtest/gtest.h>

#include <cmath>

#include "engines/mopac/mopac_plot.h"
#include "support/test_support.h"
#include "toolkit/files.h"
#include "wavefunction/map_files.h"
#include "wavefunction/orbital_map.h"

namespace zentol {
namespace {

constexpr double kAngstrom = 0.52917721067;  // bohr in Angstrom

MapWavefunction mopac_file(const std::string& name) {
    const auto lines = files::read_text_lines(testing::test_data("orbitals/" + name));
    EXPECT_TRUE(lines.has_value()) << name;
    std::string error;
    MapWavefunction w = mopac_wavefunction(read_mop2016_vectors(lines->views()), error);
    EXPECT_EQ(error, "");
    return w;
}

MapWavefunction dvb_punch() {
    const auto lines = files::read_text_lines(testing::test_data("firefly/gamessus2018_dvb_opt.dat"));
    EXPECT_TRUE(lines.has_value());
    std::string error;
    MapWavefunction w = aimpac_wavefunction(*lines, error);
    EXPECT_EQ(error, "");
    return w;
}

CubeGrid map_of(const MapWavefunction& w, MapKind kind, int orbital, int steps, double margin = 5.0) {
    MapRequest r;
    r.kind = kind;
    r.orbital = orbital;
    r.steps = steps;
    r.margin = margin;
    std::string error;
    auto g = make_map(w, r, error);
    EXPECT_TRUE(g.has_value()) << error;
    return g ? *g : CubeGrid{};
}

// Sum of f(value) times the volume of a grid cell: the cell is a cube whose
// edge is the distance between two neighbouring points.
template <class F>
double integrate(const CubeGrid& g, F f) {
    const double h = g.axes[0][0];
    double sum = 0;
    for (float v : g.values) sum += f(v);
    return sum * h * h * h;
}

double overlap(const CubeGrid& a, const CubeGrid& b) {
    const double h = a.axes[0][0];
    double sum = 0;
    for (std::size_t i = 0; i < a.values.size(); ++i) sum += double(a.values[i]) * b.values[i];
    return sum * h * h * h;
}

TEST(MopacMaps, HydrogenOrbitalIsTheHandMadeSlaterSum) {
    const MapWavefunction w = mopac_file("h2.mgf");
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

TEST(MopacMaps, OrbitalsAreNormalisedAndOrthogonalOnAFineGrid) {
    const MapWavefunction h2 = mopac_file("h2.mgf");
    const CubeGrid sigma = map_of(h2, MapKind::Orbital, 1, 128), sigma_star = map_of(h2, MapKind::Orbital, 2, 128);
    EXPECT_NEAR(integrate(sigma, [](double v) { return v * v; }), 1.0, 0.01);
    EXPECT_NEAR(integrate(sigma_star, [](double v) { return v * v; }), 1.0, 0.01);
    EXPECT_NEAR(overlap(sigma, sigma_star), 0.0, 0.01);

    const MapWavefunction water = mopac_file("water.mgf");
    ASSERT_EQ(water.homo, 4);
    const CubeGrid homo = map_of(water, MapKind::Orbital, 4, 128), lumo = map_of(water, MapKind::Orbital, 5, 128);
    const CubeGrid sigma_oh = map_of(water, MapKind::Orbital, 3, 128);
    EXPECT_NEAR(integrate(homo, [](double v) { return v * v; }), 1.0, 0.01);
    EXPECT_NEAR(integrate(lumo, [](double v) { return v * v; }), 1.0, 0.01);
    EXPECT_NEAR(integrate(sigma_oh, [](double v) { return v * v; }), 1.0, 0.01);
    EXPECT_NEAR(overlap(homo, lumo), 0.0, 0.01);
    EXPECT_NEAR(overlap(sigma_oh, lumo), 0.0, 0.01);
}

TEST(MopacMaps, SulfurDFunctionsInMopacsOrderKeepOrbitalsNormalised) {
    // SO2 by PM7: sulfur has s, p and d functions (zeta_d 3.51). With the d
    // functions in another order than x2-y2, xz, z2, yz, xy the norms of
    // orbitals 9 and 13 stray by 2%.
    const MapWavefunction so2 = mopac_file("so2.mgf");
    ASSERT_EQ(so2.slater[0].functions, 9);
    for (int mo : {9, 11, 13}) {
        const CubeGrid g = map_of(so2, MapKind::Orbital, mo, 96, 4.0);
        EXPECT_NEAR(integrate(g, [](double v) { return v * v; }), 1.0, 0.01) << mo;
    }
}

TEST(MopacMaps, DensityHoldsTheValenceElectronsAndSpinTheUnpairedOne) {
    const CubeGrid water = map_of(mopac_file("water.mgf"), MapKind::Density, 0, 128);
    EXPECT_NEAR(integrate(water, [](double v) { return v; }), 8.0, 0.08);
    // The methyl radical, UHF: 4 alpha and 3 beta valence electrons.
    const MapWavefunction methyl = mopac_file("ch3_uhf.mgf");
    EXPECT_NEAR(integrate(map_of(methyl, MapKind::Density, 0, 112), [](double v) { return v; }), 7.0, 0.07);
    const CubeGrid spin = map_of(methyl, MapKind::Spin, 0, 112);
    EXPECT_NEAR(integrate(spin, [](double v) { return v; }), 1.0, 0.01);
    // The unpaired electron sits in the p orbital out of the plane: the
    // spin is largest above and below the carbon atom, not in the plane.
    float top = 0;
    for (float v : spin.values) top = std::max(top, v);
    EXPECT_GT(top, 0.0f);
}

TEST(MopacMaps, WhatCannotBeMappedIsSaid) {
    const MapWavefunction water = mopac_file("water.mgf");
    MapRequest r;
    r.orbital = 9;
    std::string error;
    EXPECT_FALSE(make_map(water, r, error));
    EXPECT_EQ(error, "orbital 9 is not in the file (it holds orbitals 1 to 6)");
    r.kind = MapKind::Spin;
    EXPECT_FALSE(make_map(water, r, error));
    EXPECT_EQ(error, "a closed shell has no spin density");
    // Without ALLVEC a larger molecule's file starts above orbital 1.
    MapWavefunction cut = water;
    cut.complete = false;
    r.kind = MapKind::Density;
    EXPECT_FALSE(make_map(cut, r, error));
    EXPECT_NE(error.find("ALLVEC"), std::string::npos);
    // A file without exponents or with a matrix of another size.
    auto lines = files::read_text_lines(testing::test_data("orbitals/water.mgf"));
    Mop2016Vectors v = read_mop2016_vectors(lines->views());
    v.inverse.pop_back();
    EXPECT_TRUE(mopac_wavefunction(v, error).orbitals.empty());
    EXPECT_EQ(error, "the graph file's inverse matrix does not fit its 6 basis functions");
}

TEST(MopacMaps, GraphDatCarriesEverythingTheMapNeeds) {
    // Zentol hands the map program graph.dat, not the .mgf: the same map
    // must come out of both, the beta set of a UHF run included.
    for (const char* name : {"water.mgf", "ch3_uhf.mgf"}) {
        const auto lines = files::read_text_lines(testing::test_data(std::string("orbitals/") + name));
        const Mop2016Vectors v = read_mop2016_vectors(lines->views());
        const text::TextLines graph = text::TextLines::from_lines(graph_file_from_mgf(v));
        std::string error;
        const auto back = read_graph_file(graph, error);
        ASSERT_TRUE(back.has_value()) << error;
        EXPECT_EQ(back->orbitals.size(), v.orbitals.size());
        EXPECT_EQ(back->beta_from, v.beta_from);
        const MapWavefunction a = mopac_wavefunction(v, error), b = mopac_wavefunction(*back, error);
        const MapKind kind = v.beta_from < v.orbitals.size() ? MapKind::Spin : MapKind::Orbital;
        const CubeGrid ga = map_of(a, kind, 4, 32), gb = map_of(b, kind, 4, 32);
        ASSERT_EQ(ga.values.size(), gb.values.size());
        for (std::size_t i = 0; i < ga.values.size(); i += 97) EXPECT_NEAR(ga.values[i], gb.values[i], 1e-6);
    }
}

TEST(FireflyMaps, PunchWavefunctionIsNormalisedAndOrthogonal) {
    const MapWavefunction dvb = dvb_punch();
    ASSERT_EQ(dvb.atoms.size(), 20u);
    ASSERT_EQ(dvb.orbitals.size(), 35u);
    EXPECT_EQ(dvb.homo, 35);
    const CubeGrid homo = map_of(dvb, MapKind::Orbital, 35, 128, 4.0);
    const CubeGrid below = map_of(dvb, MapKind::Orbital, 34, 128, 4.0);
    EXPECT_NEAR(integrate(homo, [](double v) { return v * v; }), 1.0, 0.01);
    EXPECT_NEAR(integrate(below, [](double v) { return v * v; }), 1.0, 0.01);
    EXPECT_NEAR(overlap(homo, below), 0.0, 0.01);
}

TEST(FireflyMaps, PunchWithoutWavefunctionOrCutShortIsSaid) {
    std::string error;
    const auto nh3 = files::read_text_lines(testing::test_data("firefly/gamessus2018_nh3_ts_hessian.dat"));
    EXPECT_TRUE(aimpac_wavefunction(*nh3, error).orbitals.empty());
    EXPECT_EQ(error, "the punch file's wavefunction has no orbitals or no primitives");
    const auto dvb = testing::test_data_lines("firefly/gamessus2018_dvb_opt.dat");
    const std::vector<std::string> cut(dvb.begin(), dvb.begin() + 5300);
    EXPECT_TRUE(aimpac_wavefunction(text::TextLines::from_lines(cut), error).orbitals.empty());
    EXPECT_EQ(error, "the punch file's wavefunction is cut short or damaged");
    const std::vector<std::string> none(dvb.begin(), dvb.begin() + 100);
    EXPECT_TRUE(aimpac_wavefunction(text::TextLines::from_lines(none), error).orbitals.empty());
    EXPECT_NE(error.find("WFN"), std::string::npos);
}

}  // namespace
}  // namespace zentol
