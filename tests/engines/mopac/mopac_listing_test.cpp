// The MOPAC listing and graph-file readers on real listings of MOPAC 2012,
// 2016, 21 and of the open-source MOPAC 22, and on a Mopac 6 style listing.
#include "engines/mopac/mopac_listing.h"
#include "engines/mopac/mopac_mgf.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "support/test_support.h"
#include "text/text_lines.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

using Lines = std::vector<std::string>;

Lines data(const std::string& name) { return test_data_lines("mopac/" + name); }

MopacListing read_listing(const Lines& lines, int version, int multiplicity, int natoms) {
    return read_mopac_listing(text::TextLines::from_lines(lines).views(), version, multiplicity, natoms);
}

Mop2016Vectors read_mgf(const Lines& lines, int listing_homo = 0) {
    return read_mop2016_vectors(text::TextLines::from_lines(lines).views(), listing_homo);
}

Lines without(Lines lines, const std::string& key) {
    std::erase_if(lines, [&](const std::string& l) { return l.find(key) != std::string::npos; });
    return lines;
}

// The listing up to (not including) the first line holding `key`.
Lines up_to(Lines lines, const std::string& key) {
    lines.erase(std::ranges::find_if(lines, [&](const std::string& l) { return l.find(key) != std::string::npos; }),
                lines.end());
    return lines;
}

}  // namespace

TEST(MopacListing, EnergyFromTheTotalLineOrItsParts) {
    const MopacListing benzene = read_listing(data("m2016_benzene.out"), 1, 1, 12);
    EXPECT_EQ(benzene.energy_kind, MopacEnergy::total);
    EXPECT_DOUBLE_EQ(benzene.energy, -817.56195);
    EXPECT_EQ(benzene.status_text, "      -817.56195 EV ");

    // With DISP the open-source MOPAC prints a kcal/mol total first.
    const Lines disp = data("m22_water_E_DISP.out");
    const MopacListing water = read_listing(disp, 1, 1, 3);
    EXPECT_DOUBLE_EQ(water.energy, -322.67879);
    EXPECT_EQ(mopac_result_text(water, "AM1"), "PM7  -322.67879 eV  -31133.50 kJ/mol");

    // Without a total the parts add up to it, and the status reads the same.
    const MopacListing summed = read_listing(without(disp, "TOTAL ENERGY"), 1, 1, 3);
    EXPECT_EQ(summed.energy_kind, MopacEnergy::summed);
    EXPECT_NEAR(summed.energy, -322.67879, 1e-9);
    EXPECT_EQ(summed.status_text, water.status_text);
}

TEST(MopacListing, HomoIndexAndOrbitalEnergiesOfRealListings) {
    // The HOMO and LUMO energies as the listing's own HOMO/LUMO line gives
    // them; water's plain listing is read in full by GeoLogLines.
    struct Case { const char* file; int multiplicity, natoms, homo; std::size_t orbitals; float homo_energy, lumo_energy; };
    const Case cases[] = {
        {"m22_water_optF.out", 1, 3, 4, 6, -12.115f, 4.049f},      // the force job's roots stay out
        {"m22_ch3_RHF.out", 2, 4, 4, 7, -4.713f, 6.265f},          // the SOMO: 3 filled + 1 open level
        {"m22_ch3_UHF.out", 2, 4, 4, 7, -9.966f, 6.172f},          // 4 alpha electrons, the alpha set
        {"m22_ethanol_E.out", 1, 9, 10, 17, -10.878f, 3.500f},     // orbitals 2..17 printed
        {"m2016_o2_trip.out", 3, 2, 7, 8, -10.66781f, 2.45143f},   // ALPHA EIGENVALUES, 7 alpha electrons
        {"m2012_benzene_polar.out", 1, 12, 15, 30, -9.82365f, 0.23578f},   // EIGENVALUES, the upper of a pair
        // Several jobs: the first printed only its heat of formation.
        {"m21_propane_vectors.out", 1, 11, 10, 20, -11.38812f, 4.30394f},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const MopacListing r = read_listing(data(c.file), 1, c.multiplicity, c.natoms);
        ASSERT_TRUE(r.vectors_found);
        EXPECT_EQ(r.homo_index, c.homo);
        ASSERT_EQ(r.mo_energy.size(), c.orbitals);
        EXPECT_FLOAT_EQ(r.mo_energy[static_cast<std::size_t>(c.homo - 1)], c.homo_energy);
        EXPECT_FLOAT_EQ(r.mo_energy[static_cast<std::size_t>(c.homo)], c.lumo_energy);
    }

    EXPECT_EQ(read_listing(data("m22_ethanol_E.out"), 1, 1, 9).first_orbital, 2);
}

// A root number beyond the table of 500 orbitals (a damaged listing) lands
// on its last entry instead of growing the table.
TEST(MopacListing, TheOrbitalTableLimit) {
    Lines damaged = data("m22_water_E_DISP.out");
    ASSERT_TRUE(damaged[146].ends_with("         6"));
    damaged[146].replace(damaged[146].size() - 10, 10, "    999999");
    const MopacListing r = read_listing(damaged, 1, 1, 3);
    ASSERT_EQ(r.mo_energy.size(), 500u);
    EXPECT_FLOAT_EQ(r.mo_energy[4], 4.044f);
    EXPECT_FLOAT_EQ(r.mo_energy[499], 6.306f);
}

TEST(MopacListing, ChargesAndSpinDensities) {
    const MopacListing water = read_listing(data("m22_water_E_DISP.out"), 1, 1, 3);
    EXPECT_EQ(water.charges, (std::vector<float>{-0.645360f, 0.322680f, 0.322680f}));

    // From 251 atoms on the charges are not kept and no side log is written.
    const MopacListing big = read_listing(data("m22_water_E_DISP.out"), 1, 1, 251);
    EXPECT_TRUE(big.charges.empty());
    EXPECT_EQ(mopac_charge_log(big, Lines(251, "H")), Lines{});
    EXPECT_EQ(mopac_charge_log(water, Lines(250, "H")).size(), 4u);

    // RHF doublet: the C.I. table, total in the last column.
    const MopacListing rhf = read_listing(data("m22_ch3_RHF.out"), 1, 2, 4);
    EXPECT_TRUE(rhf.complete());
    EXPECT_EQ(rhf.spin_density, (std::vector<float>{1.0f, 0.0f, 0.0f, 0.0f}));
    // UHF: the spin populations, total in the first column.
    const MopacListing uhf = read_listing(data("m22_ch3_UHF.out"), 1, 2, 4);
    EXPECT_TRUE(uhf.complete());
    EXPECT_EQ(uhf.spin_density, (std::vector<float>{1.0910f, -0.0303f, -0.0303f, -0.0303f}));

    EXPECT_EQ(mopac_charge_log(rhf, {"C1", "H1", "H2", "H3"}),
              (Lines{"#MOP atom charges", "C1           -0.4070", "H1            0.1357", "H2            0.1357",
                     "H3            0.1357"}));
    EXPECT_EQ(mopac_spin_log(uhf, {"C1", "H1", "H2", "H3"}),
              (Lines{"#MOP spin densities", "C1            1.0910000", "H1           -0.0303000",
                     "H2           -0.0303000", "H3           -0.0303000"}));
}

TEST(MopacListing, FinalStructureTurnedTwoDegrees) {
    // The 2016 generation: the final block, not the input echo of the
    // ten-blank key (there the first hydrogen stands at x = 1.0790).
    const MopacListing ch3 = read_listing(data("m22_ch3_RHF.out"), 1, 2, 4);
    ASSERT_EQ(ch3.coordinates.size(), 4u);
    EXPECT_FLOAT_EQ(ch3.coordinates[1][0], 1.056744256f);
    EXPECT_NEAR(ch3.coordinates[2][1], 0.915123730 * 0.99939084, 1e-6);
    EXPECT_NEAR(ch3.coordinates[2][2], 0.915123730 * 0.0348995, 1e-6);

    // MOPAC 2012 has no 29-blank key: its final structure is the ten-blank
    // block after the charges, x in columns 31-40; the orientation block
    // further down (x in columns 21-30) is never taken for it.
    Lines m2012 = data("m2012_benzene_polar.out");
    const MopacListing benzene = read_listing(m2012, 1, 1, 12);
    ASSERT_EQ(benzene.coordinates.size(), 12u);
    EXPECT_FLOAT_EQ(benzene.coordinates[11][0], -3.4029f);
    EXPECT_NEAR(benzene.coordinates[11][1], -2.5164 * 0.99939084, 1e-6);
    EXPECT_NEAR(benzene.coordinates[11][2], -2.5164 * 0.0348995, 1e-6);
    m2012.erase(m2012.begin() + 182, m2012.begin() + 200);
    EXPECT_FALSE(read_listing(m2012, 1, 1, 12).coordinates_found);

    // Mopac 6 columns (the rest of that listing is read in the mode tests).
    const MopacListing six = read_listing(data("m6_water_style.lst"), 0, 1, 3);
    EXPECT_TRUE(six.complete());
    ASSERT_EQ(six.coordinates.size(), 3u);
    EXPECT_NEAR(six.coordinates[1][1], 0.76 * 0.99939084 + 0.47 * 0.0348995, 1e-6);
    EXPECT_NEAR(six.coordinates[1][2], 0.76 * 0.0348995 - 0.47 * 0.99939084, 1e-6);
}

TEST(MopacListing, MissingKeysStopTheReading) {
    // No energy of any kind: nothing after it is read.
    const Lines no_energy = without(data("m22_water_E.out"), "FINAL HEAT OF FORMATION");
    const MopacListing plain = read_listing(no_energy, 1, 1, 3);
    EXPECT_TRUE(plain.scf_found);
    EXPECT_FALSE(plain.energy_found || plain.levels_found || plain.coordinates_found || plain.complete());
    EXPECT_EQ(mopac_geo_lines(plain, true), Lines{});
    EXPECT_EQ(mopac_result_text(plain, "PM7"), "PM7  no energy in the listing");

    const Lines disp = data("m22_water_E_DISP.out");
    const MopacListing failed = read_listing(without(disp, "SCF FIELD WAS ACHIEVED"), 1, 1, 3);
    EXPECT_FALSE(failed.scf_found || failed.energy_found);

    // A listing that ends in the charge table keeps what it read, and the
    // reading ends there, though the structure stands further up.
    Lines cut = up_to(disp, "    2          H           0.322680");
    const MopacListing short_table = read_listing(cut, 1, 1, 3);
    EXPECT_EQ(short_table.charges, std::vector<float>{-0.645360f});
    EXPECT_FALSE(short_table.coordinates_found);

    // An open shell needs its spin table; the structure is not reached.
    const MopacListing no_spin = read_listing(disp, 1, 2, 3);
    EXPECT_TRUE(no_spin.charges_found);
    EXPECT_FALSE(no_spin.spin_found || no_spin.coordinates_found || no_spin.complete());
}

TEST(MopacListing, GeoLogLines) {
    const MopacListing water = read_listing(data("m22_water_E_DISP.out"), 1, 1, 3);
    EXPECT_EQ(mopac_geo_lines(water, true),
              (Lines{"", " Mopac Energy calculation", "     M.O.    Energy(eV)", "       6     6.30600",
                     "       5     4.04400 L.U.M.O", "       4   -12.09500 H.O.M.O", "       3   -14.25100",
                     "       2   -17.76100", "       1   -29.59600",
                     " Total Energy =      -322.67879 eV       -31133.50333 kJ/mol"}));

    const Lines ethanol = mopac_geo_lines(read_listing(data("m22_ethanol_E.out"), 1, 1, 9), false);
    ASSERT_EQ(ethanol.size(), 2u + 1u + 16u + 1u);   // from orbital 17 down to 2
    EXPECT_EQ(ethanol[18], "       2   -31.56000");

    // As far as the reader got: the title alone when the orbitals are missing.
    const Lines cut = up_to(data("m22_water_E_DISP.out"), "                EIGENVECTORS");
    const MopacListing no_vectors = read_listing(cut, 1, 1, 3);
    EXPECT_EQ(mopac_geo_lines(no_vectors, true), (Lines{"", " Mopac Energy calculation"}));
    EXPECT_EQ(mopac_charge_log(no_vectors, {"O", "H", "H"}), Lines{});
}

TEST(MopacGraphFile, AtomsOrbitalsAndTheHomo) {
    // Atoms and coefficients are checked by the maps made from them.
    const Mop2016Vectors water = read_mgf(data("m22_water_E.mgf"));
    EXPECT_EQ(water.atoms.size(), 3u);
    EXPECT_EQ(water.geo_lines, (Lines{" Mopac 2016", "     M.O.    Energy(eV)", "       6     6.30580",
                                      "       5     4.04370", "       4   -12.09510 H.O.M.O.",
                                      "       3   -14.25150", "       2   -17.76080", "       1   -29.59570"}));

    // A doublet's singly filled level is its highest filled one; a UHF file
    // lists the beta set after the alpha set.
    EXPECT_EQ(read_mgf(data("m22_ch3_RHF.mgf")).homo, 4);
    const Mop2016Vectors uhf = read_mgf(data("m22_ch3_UHF.mgf"));
    EXPECT_EQ(uhf.orbitals.size(), 14u);
    EXPECT_EQ(uhf.homo, 4);
    EXPECT_EQ(uhf.geo_lines.size(), 2u + 7u);

    // Numbered from the listing's highest occupied level: a file that
    // starts at HOMO-3 of a listing whose HOMO is 12 holds orbitals 9-14.
    const Mop2016Vectors shifted = read_mgf(data("m22_water_E.mgf"), 12);
    EXPECT_EQ(shifted.first_orbital, 9);
    EXPECT_EQ(shifted.homo, 12);
    EXPECT_EQ(shifted.geo_lines[4], "      12   -12.09510 H.O.M.O.");
    EXPECT_EQ(read_mgf(data("m22_water_E.mgf"), 3).first_orbital, 1);   // no room below: as it stands

    EXPECT_EQ(read_mgf({}).geo_lines, Lines{" Mopac 2016"});

    // An atom row whose atomic number runs into the next number ends the atoms.
    Lines damaged = data("m22_water_E.mgf");
    damaged[3] = "   322753285718D+01    0.0000000  -0.7572000  -0.4692000   0.322753285718D+00";
    EXPECT_EQ(read_mgf(damaged).atoms.size(), 2u);
}
