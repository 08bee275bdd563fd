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

std::vector<std::string> table_of(const text::TextLines& l) { return firefly_orbital_table(read_listing_orbitals(l)); }

}  // namespace

TEST(FireflyListing, OptimisationGivesEveryResult) {
    const auto l = fixture("firefly8.0_h2o_opt.log");
    // Cards echoed in lower case, through $data.
    const auto cards = input_cards(l);
    ASSERT_EQ(cards.size(), 5u);
    EXPECT_EQ(cards.front(), " INPUT CARD> $contrl scftyp=rhf runtyp=optimize coord=zmt $end");
    EXPECT_EQ(cards.back(), " INPUT CARD> $data");
    EXPECT_FALSE(chelpg_requested(cards));
    // Nine coordinate blocks: the last one is the equilibrium geometry.
    const ListingGeometry g = read_listing_geometry(l);
    EXPECT_EQ(g.total_atoms, 3);
    EXPECT_TRUE(g.equilibrium);
    EXPECT_EQ(g.equilibrium_record, "      ***** EQUILIBRIUM GEOMETRY LOCATED");
    EXPECT_EQ(g.blocks, 9);
    ASSERT_EQ(g.last.size(), 3u);
    EXPECT_NEAR(g.first[0].z, -0.0650904232, 1e-6);   // the input block, in bohr
    EXPECT_DOUBLE_EQ(g.last[0].z, -0.1012186151);
    EXPECT_DOUBLE_EQ(g.last[1].x, -0.7580713602);
    // The last Mulliken block.
    EXPECT_EQ(charge_kind(l, false), kMullikenCharges);
    const auto q = read_charges(l, kMullikenCharges, 3);
    ASSERT_EQ(q.size(), 3u);
    EXPECT_DOUBLE_EQ(q[0], -0.330538);
    EXPECT_EQ(firefly_charge_log(kMullikenCharges, "3-21G", {"O1  ", "H2  ", "H3  "}, q),
              (std::vector<std::string>{"#Firefly 3-21G Mulliken atom charges", "O1           -0.3305",
                                        "H2            0.1653", "H3            0.1653"}));
    // Energies: the final printout, the last SCF before the equilibrium, the first.
    EXPECT_DOUBLE_EQ(*listing_total_energy(l), -74.9659012157);
    EXPECT_DOUBLE_EQ(*listing_final_energy(l, true), -74.9659012157);
    EXPECT_DOUBLE_EQ(*listing_final_energy(l, false), -74.9617540616);
    EXPECT_EQ(total_energy_geo_line(-74.9659012157),
              " TOTAL ENERGY =       -74.96590 HARTREES    -2039.92675 kV        -196822.95865 kJ/mol");
    EXPECT_EQ(final_energy_geo_line(-1.0), " Final Energy =       -1.00000 Hartrees      -27.21139 eV          -2625.49980 kJ/mol");
    EXPECT_EQ(final_energy_status(-1.0), "             -27.21139 eV");
    // Seven orbitals, the highest first: the L.U.M.O stands above the H.O.M.O.
    const auto table = table_of(l);
    ASSERT_EQ(table.size(), 8u);
    EXPECT_EQ(table[0], "     M.O.    Energy(eV)");
    EXPECT_EQ(table[1], "       7    20.43576");
    EXPECT_EQ(table[2], "       6    16.67786 L.U.M.O");
    EXPECT_EQ(table[3], "       5   -10.66142 H.O.M.O");
    EXPECT_EQ(table[7], "       1  -550.78313");
    // The summary: cards, the equilibrium record, its coordinates, the energy.
    const auto summary = firefly_summary(l);
    ASSERT_EQ(summary.size(), 5u + 1 + 6 + 2);
    EXPECT_EQ(summary[6], " COORDINATES OF ALL ATOMS ARE (ANGS)");
    EXPECT_EQ(summary[12], " TOTAL ENERGY =       -74.9659012157 HARTREES");
    EXPECT_EQ(summary[13], "                  -196822.95865 kJ/mol");
}

TEST(FireflyListing, FailedRunsGiveNoResult) {
    // An optimisation out of steps: no equilibrium, its TOTAL ENERGY 0.0 is
    // no result and the last single-point energy stands.
    const auto opt = fixture("firefly8.0_dvb_opt_unconverged.out");
    EXPECT_FALSE(read_listing_geometry(opt).equilibrium);
    EXPECT_DOUBLE_EQ(*listing_total_energy(opt), -379.7737170059);
    EXPECT_DOUBLE_EQ(*listing_final_energy(opt, true), -379.7737170059);
    // An SCF that did not converge.
    const auto uhf = fixture("firefly8.0_dvb_uhf_sp_scf_unconverged.out");
    EXPECT_FALSE(listing_final_energy(uhf, false));
    // Its alpha set only, and the charges of the last of three Mulliken blocks.
    const ListingOrbitals o = read_listing_orbitals(uhf);
    EXPECT_EQ(o.nocc, 35);
    EXPECT_EQ(o.energies.size(), 60u);
    EXPECT_NEAR(o.energies[0], -11.2977 * kHartreeToEv, 1e-9);
    const auto q = read_charges(uhf, charge_kind(uhf, false), 20);
    ASSERT_EQ(q.size(), 20u);
    EXPECT_DOUBLE_EQ(q[0], 0.050169);
}

TEST(FireflyListing, EachEngineOfTheFamily) {
    // AM1 in Firefly 8.1: MOPAC CHARGES.
    const auto am1 = fixture("firefly8.1_benzene_am1.log");
    EXPECT_EQ(charge_kind(am1, false), kMopacCharges);
    const auto q = read_charges(am1, kMopacCharges, 12);
    ASSERT_EQ(q.size(), 12u);
    EXPECT_DOUBLE_EQ(q[0], -0.1292);
    EXPECT_DOUBLE_EQ(q[6], 0.1293);
    EXPECT_DOUBLE_EQ(*listing_final_energy(am1, false), -31.2483119228);
    // A parallel run: 216 orbitals of 230 functions, ended by the SCF's end.
    const ListingOrbitals big = read_listing_orbitals(fixture("firefly8.1_naphthalene_dft_sp_parallel.out"));
    EXPECT_EQ(big.nbasis, 230);
    EXPECT_EQ(big.nocc, 47);
    EXPECT_EQ(big.energies.size(), 216u);
    // UHF of seven functions stops at the beta set.
    EXPECT_EQ(read_listing_orbitals(fixture("firefly8.2_exam02_uhf_gradient.out")).energies.size(), 7u);
    // Labels as typed in the deck: the four numbers after the first word.
    const ListingGeometry g = read_listing_geometry(fixture("firefly8.2_exam12_opt.out"));
    ASSERT_EQ(g.last.size(), 4u);
    EXPECT_EQ(g.last[0].label, "CARBON");
    EXPECT_DOUBLE_EQ(g.last[0].nuclear_charge, 6.0);
    EXPECT_TRUE(g.equilibrium);
    // PC GAMESS prints each Mulliken row twice: only those with a charge count.
    const auto pc = fixture("pcgamess6.2_dvb_sp.out");
    const auto doubled = read_charges(pc, charge_kind(pc, false), 20);
    ASSERT_EQ(doubled.size(), 20u);
    EXPECT_DOUBLE_EQ(doubled[0], 0.002777);
    EXPECT_DOUBLE_EQ(doubled[2], -0.062489);
    EXPECT_DOUBLE_EQ(doubled[19], 0.064504);
    const auto cn = fixture("pcgamess7.0_cn_hessian.out");
    EXPECT_EQ(read_charges(cn, kMullikenCharges, 2), (std::vector<double>{-0.405900, -0.594100}));
    EXPECT_TRUE(not_stationary(cn));
    EXPECT_FALSE(not_stationary(am1));
    // GAMESS-US: the occupied count further right, the method in the energy key.
    const auto us = fixture("gamessus2018_nh3_ts_hessian.out");
    EXPECT_EQ(read_listing_orbitals(us).nocc, 4);
    EXPECT_DOUBLE_EQ(*listing_final_energy(us, false), -9.1286961082);
    EXPECT_EQ(read_charges(us, charge_kind(us, false), 4).size(), 4u);
}

TEST(FireflyListing, EquilibriumRecordOfEveryEngine) {
    EXPECT_TRUE(is_equilibrium_record("      ***** EQUILIBRIUM GEOMETRY LOCATED *****"));
    EXPECT_TRUE(is_equilibrium_record("1     ***** EQUILIBRIUM GEOMETRY LOCATED *****"));
    EXPECT_FALSE(is_equilibrium_record("2     ***** EQUILIBRIUM GEOMETRY LOCATED *****"));
    const auto pc = text::TextLines::from_lines(
        {" FINAL ENERGY IS      -10.5 AFTER   5 ITERATIONS", " FINAL ENERGY IS      -11.5 AFTER   5 ITERATIONS",
         "1     ***** EQUILIBRIUM GEOMETRY LOCATED *****", " FINAL ENERGY IS      -12.5 AFTER   5 ITERATIONS"});
    EXPECT_DOUBLE_EQ(*listing_final_energy(pc, true), -11.5);
    EXPECT_TRUE(read_listing_geometry(pc).equilibrium);
}

TEST(FireflyListing, ChargeLogStopsAt250Atoms) {
    std::vector<std::string> lines{"          TOTAL MULLIKEN AND LOWDIN ATOMIC POPULATIONS",
                                   "       ATOM         MULL.POP.    CHARGE          LOW.POP.     CHARGE"};
    std::vector<std::string> labels;
    for (int i = 1; i <= 251; ++i) {
        lines.push_back(text::format_i(i, 5) + " H             0.900000    0.100000         0.900000    0.100000");
        labels.emplace_back("H   ");
    }
    const auto l = text::TextLines::from_lines(lines);
    const auto q = read_charges(l, kMullikenCharges, 251);
    EXPECT_EQ(q.size(), 251u);
    EXPECT_EQ(firefly_charge_log(kMullikenCharges, "6-31G", labels, q).size(), 251u);   // heading and 250
}

TEST(FireflyModes, NormalModesOfEachEngine) {
    // Firefly 8.0 Raman run: rigid modes 1 to 6, Raman activities.
    const auto raman = read_listing_modes(fixture("firefly8.0_dvb_raman.out"), true);
    EXPECT_EQ(raman.rigid_first, 1);
    EXPECT_EQ(raman.rigid_last, 6);
    EXPECT_EQ(raman.natoms, 20);
    ASSERT_EQ(raman.vibrations.size(), 54u);
    EXPECT_EQ(raman.vibrations[0].number, 7);
    EXPECT_DOUBLE_EQ(raman.vibrations[0].frequency, 38.65);
    EXPECT_DOUBLE_EQ(raman.vibrations[1].intensity, 3.995);
    ASSERT_EQ(raman.vibrations[0].displacement.size(), 20u);
    EXPECT_DOUBLE_EQ(raman.vibrations[0].displacement[0][2], -0.04186743);
    // Runs other than optimisations print the molecule only in bohr.
    const auto g = read_listing_geometry(fixture("firefly8.0_dvb_raman.out"));
    ASSERT_EQ(g.first.size(), 20u);
    EXPECT_DOUBLE_EQ(g.first[0].x, 2.6342558126 * 0.52917721092);
    EXPECT_EQ(g.blocks, 0);
    const auto ir = read_listing_modes(fixture("firefly8.0_dvb_raman.out"), false);
    EXPECT_DOUBLE_EQ(ir.vibrations[0].intensity, 0.00004);
    // Three imaginary modes sort first, the rigid ones are 4 to 9.
    const auto gvb = read_listing_modes(fixture("firefly8.2_exam21_gvb_hessian.out"), false);
    ASSERT_EQ(gvb.vibrations.size(), 6u);
    EXPECT_DOUBLE_EQ(gvb.vibrations[0].frequency, -4805.54);
    EXPECT_DOUBLE_EQ(gvb.vibrations[0].intensity, 105.04125);
    EXPECT_EQ(gvb.vibrations[3].number, 10);
    EXPECT_DOUBLE_EQ(gvb.vibrations[3].frequency, 988.81);
    // GAMESS-US: rigid modes 2 to 7, a SYMMETRY row.
    const auto us = read_listing_modes(fixture("gamessus2018_nh3_ts_hessian.out"), false);
    ASSERT_EQ(us.vibrations.size(), 6u);
    EXPECT_DOUBLE_EQ(us.vibrations[0].frequency, -825.18);
    EXPECT_EQ(us.vibrations[1].number, 8);
    EXPECT_DOUBLE_EQ(us.vibrations[5].frequency, 3661.48);
    EXPECT_DOUBLE_EQ(us.vibrations[5].displacement[3][0], 0.57700408);
    // A linear molecule: rigid modes 1 to 5.
    const auto cn = read_listing_modes(fixture("pcgamess7.0_cn_hessian.out"), false);
    ASSERT_EQ(cn.vibrations.size(), 1u);
    EXPECT_DOUBLE_EQ(cn.vibrations[0].frequency, 2980.06);
    EXPECT_FALSE(read_listing_modes(fixture("firefly8.0_h2o_opt.log"), false).found);
}

TEST(FireflyPunch, GeometryWavefunctionAndHessian) {
    const auto dat = fixture("gamessus2018_dvb_opt.dat");
    const PunchGeometry done = read_punch_geometry(dat, 0);
    EXPECT_TRUE(done.converged);
    ASSERT_EQ(done.atoms.size(), 10u);   // the symmetry-unique atoms of this C2h run
    EXPECT_DOUBLE_EQ(done.atoms[0].x, -1.4168673288);
    EXPECT_DOUBLE_EQ(done.atoms[9].z, 0.0);
    EXPECT_EQ(done.atoms[3].label, "H");
    EXPECT_EQ(read_punch_geometry(dat, 4).atoms.size(), 4u);
    // Without the results: the last of five coordinate blocks.
    std::vector<std::string> cut;
    for (std::size_t i = 0; i < 2660; ++i) cut.emplace_back(dat[i]);
    const PunchGeometry five = read_punch_geometry(text::TextLines::from_lines(cut), 10);
    EXPECT_FALSE(five.converged);
    EXPECT_EQ(five.cycles, 5);
    ASSERT_EQ(five.atoms.size(), 10u);
    EXPECT_DOUBLE_EQ(five.atoms[0].x, text::read_f(dat[2210].substr(17, 15)).value());

    const auto nh3 = fixture("gamessus2018_nh3_ts_hessian.dat");
    const auto hess = hessian_group(nh3);
    ASSERT_TRUE(hess);
    EXPECT_EQ(hess->front(), " $HESS");
    EXPECT_EQ(hess->back().substr(0, 5), " $END");
    EXPECT_GT(hess->size(), 10u);
    const auto bader = bader_section(nh3);
    ASSERT_TRUE(bader);
    EXPECT_FALSE(bader->empty());
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
            std::vector<std::string> part;
            for (std::size_t i = 0; i < end; ++i) part.emplace_back(whole[i]);
            const std::string tail = end < whole.size() ? std::string(whole[end]).substr(0, 13) : "";
            part.push_back(tail);
            const auto l = text::TextLines::from_lines(part);
            const auto g = read_listing_geometry(l);
            EXPECT_LE(g.last.size(), 4u);
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
