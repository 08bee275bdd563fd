// The Firefly listing and punch readers on the recorded runs of Firefly
// 8.0 to 8.2, PC GAMESS and GAMESS-US, and on the same files cut short.
#include "engines/firefly/firefly_listing.h"

#include <gtest/gtest.h>

#include "engines/firefly/firefly_modes.h"
#include "engines/firefly/firefly_punch.h"
#include "support/test_support.h"
#include "text/fixed_format.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

text::TextLines fixture(const std::string& name) { return text::TextLines::from_bytes(read_file(test_data("firefly/" + name))); }

}  // namespace

// The session tests see both runs refused; what is read of them all the same.
TEST(FireflyListing, FailedRuns) {
    // An optimisation out of steps: its TOTAL ENERGY 0.0 is no result and
    // the last single-point energy stands.
    const auto opt = fixture("firefly8.0_dvb_opt_unconverged.out");
    EXPECT_DOUBLE_EQ(*listing_total_energy(opt), -379.7737170059);
    EXPECT_DOUBLE_EQ(*listing_final_energy(opt, true), -379.7737170059);
    // A UHF SCF that did not converge: its alpha set only.
    const ListingOrbitals o = read_listing_orbitals(fixture("firefly8.0_dvb_uhf_sp_scf_unconverged.out"));
    EXPECT_EQ(o.nocc, 35);
    EXPECT_EQ(o.energies.size(), 60u);
    EXPECT_NEAR(o.energies[0], -11.2977 * kHartreeToEv, 1e-9);
}

TEST(FireflyListing, EachEngineOfTheFamily) {
    // AM1 in Firefly 8.1: MOPAC CHARGES.
    const auto am1 = fixture("firefly8.1_benzene_am1.log");
    EXPECT_EQ(charge_kind(am1, false), kMopacCharges);
    const auto q = read_charges(am1, kMopacCharges, 12);
    ASSERT_EQ(q.size(), 12u);
    EXPECT_DOUBLE_EQ(q[6], 0.1293);
    // A parallel run: 216 orbitals of 230 functions, ended by the SCF's end.
    const ListingOrbitals big = read_listing_orbitals(fixture("firefly8.1_naphthalene_dft_sp_parallel.out"));
    EXPECT_EQ(big.nocc, 47);
    EXPECT_EQ(big.energies.size(), 216u);
    // PC GAMESS prints each Mulliken row twice: only those with a charge count.
    const auto pc = fixture("pcgamess6.2_dvb_sp.out");
    const auto doubled = read_charges(pc, charge_kind(pc, false), 20);
    ASSERT_EQ(doubled.size(), 20u);
    EXPECT_DOUBLE_EQ(doubled[19], 0.064504);
    EXPECT_TRUE(not_stationary(fixture("pcgamess7.0_cn_hessian.out")));
    // GAMESS-US: the occupied count further right, the method in the energy key.
    const auto us = fixture("gamessus2018_nh3_ts_hessian.out");
    EXPECT_EQ(read_listing_orbitals(us).nocc, 4);
    EXPECT_DOUBLE_EQ(*listing_final_energy(us, false), -9.1286961082);
    EXPECT_EQ(read_charges(us, charge_kind(us, false), 4).size(), 4u);
    // PC GAMESS puts a carriage-control "1" before the equilibrium record.
    EXPECT_FALSE(is_equilibrium_record("2     ***** EQUILIBRIUM GEOMETRY LOCATED *****"));
    const auto cc = text::TextLines::from_lines(
        {" FINAL ENERGY IS      -10.5 AFTER   5 ITERATIONS", " FINAL ENERGY IS      -11.5 AFTER   5 ITERATIONS",
         "1     ***** EQUILIBRIUM GEOMETRY LOCATED *****", " FINAL ENERGY IS      -12.5 AFTER   5 ITERATIONS"});
    EXPECT_DOUBLE_EQ(*listing_final_energy(cc, true), -11.5);
    EXPECT_TRUE(read_listing_geometry(cc).equilibrium);
}

TEST(FireflyModes, NormalModesOfEachEngine) {
    // Firefly 8.0 Raman run (its IR list and movie are seen in the spectra
    // tests): Raman activities, and the molecule printed only in bohr.
    const auto raman = read_listing_modes(fixture("firefly8.0_dvb_raman.out"), true);
    ASSERT_EQ(raman.vibrations.size(), 54u);
    EXPECT_DOUBLE_EQ(raman.vibrations[1].intensity, 3.995);
    EXPECT_DOUBLE_EQ(raman.vibrations[0].displacement.at(0)[2], -0.04186743);
    EXPECT_DOUBLE_EQ(read_listing_geometry(fixture("firefly8.0_dvb_raman.out")).first.at(0).x,
                     2.6342558126 * 0.52917721092);
    // Three imaginary modes sort first, the rigid ones are 4 to 9.
    const auto gvb = read_listing_modes(fixture("firefly8.2_exam21_gvb_hessian.out"), false);
    ASSERT_EQ(gvb.vibrations.size(), 6u);
    EXPECT_DOUBLE_EQ(gvb.vibrations[0].frequency, -4805.54);
    EXPECT_EQ(gvb.vibrations[3].number, 10);
    // GAMESS-US: rigid modes 2 to 7, a SYMMETRY row.
    const auto us = read_listing_modes(fixture("gamessus2018_nh3_ts_hessian.out"), false);
    ASSERT_EQ(us.vibrations.size(), 6u);
    EXPECT_EQ(us.vibrations[1].number, 8);
    EXPECT_DOUBLE_EQ(us.vibrations[5].displacement[3][0], 0.57700408);
    EXPECT_FALSE(read_listing_modes(fixture("firefly8.0_h2o_opt.log"), false).found);
}

// The whole punch file is loaded in the session tests.
TEST(FireflyPunch, CutGeometryAndNoHessian) {
    // The results cut off: the last of five coordinate blocks.
    const auto dat = fixture("gamessus2018_dvb_opt.dat");
    const PunchGeometry five = read_punch_geometry(
        text::TextLines::from_lines(std::vector<std::string>(dat.begin(), dat.begin() + 2660)), 10);
    EXPECT_FALSE(five.converged);
    EXPECT_EQ(five.cycles, 5);
    ASSERT_EQ(five.atoms.size(), 10u);
    EXPECT_DOUBLE_EQ(five.atoms[0].x, text::read_f(dat[2210].substr(17, 15)).value());

    const auto nh3 = fixture("gamessus2018_nh3_ts_hessian.dat");
    ASSERT_TRUE(bader_section(nh3));
    EXPECT_FALSE(bader_section(nh3)->empty());
    EXPECT_FALSE(hessian_group(text::TextLines::from_lines({" $HESS", "ENERGY IS -1.0"})));
    EXPECT_FALSE(bader_section(fixture("firefly8.0_h2o_opt.log")));
}

// Every reader on every file cut at many places: results so far, no crash.
TEST(FireflyListing, CutFilesAreReadAsFarAsTheyGo) {
    for (const char* name : {"firefly8.0_h2o_opt.log", "firefly8.2_exam21_gvb_hessian.out",
                             "pcgamess7.0_cn_hessian.out", "gamessus2018_nh3_ts_hessian.dat",
                             "firefly8.2_exam02_uhf_gradient.out"}) {
        const auto whole = fixture(name);
        for (std::size_t end = 0; end < whole.size(); end += 7) {
            std::vector<std::string> part(whole.begin(), whole.begin() + static_cast<long>(end));
            part.push_back(end < whole.size() ? std::string(whole[end]).substr(0, 13) : "");
            const auto l = text::TextLines::from_lines(part);
            EXPECT_LE(read_listing_geometry(l).last.size(), 4u);
            read_charges(l, charge_kind(l, chelpg_requested(input_cards(l))), 4);
            EXPECT_LE(read_listing_orbitals(l).energies.size(), static_cast<std::size_t>(kMaxFireflyOrbitals));
            listing_total_energy(l);
            listing_final_energy(l, true);
            firefly_summary(l);
            for (const auto& m : read_listing_modes(l, false).vibrations) EXPECT_LE(m.displacement.size(), 4u);
            read_punch_geometry(l, 0);
            hessian_group(l);
        }
    }
}
