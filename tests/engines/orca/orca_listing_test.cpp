// Real ORCA listings of versions 4.0 to 6.0 read into the side files: the
// first and last band of every table, the encodings, the summary, the
// geometry files, and listings of failed or cut runs.
#include <gtest/gtest.h>

#include "engines/orca/orca_listing.h"
#include "support/test_support.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

text::TextLines listing(const std::string& name) {
    auto lines = files::read_text_lines(test_data("orca/" + name));
    EXPECT_TRUE(lines.has_value()) << name;
    return lines.value_or(text::TextLines{});
}

OrcaScan scan(const std::string& name, int natoms, OrcaFlags& flags) {
    return scan_orca_listing(listing(name), natoms, "job", flags);
}

// The first and the last row of a stick file, and whether it is closed.
struct Rows {
    std::string first, last;
    bool ended = false;
};

Rows rows(const std::optional<StickLines>& f, std::size_t heading) {
    Rows r;
    if (!f || f->size() <= heading) return r;
    r.ended = f->back() == "  END";
    r.first = (*f)[heading];
    r.last = (*f)[f->size() - (r.ended ? 2 : 1)];
    return r;
}

}  // namespace

TEST(OrcaListing, IrTablesOfEveryVersionGiveKmPerMolAndTheModeNumber) {
    struct Case {
        const char* file;
        bool version5;
        const char* first;
        const char* last;
    };
    for (const Case c : {
             Case{"orca4.0_dvb_raman.out", false, "    76.62        0.07743    6", "  3544.80        0.00000   59"},
             Case{"orca4.2_dvb_raman.out", false, "    76.62        0.07743    6", "  3544.80        0.00000   59"},
             Case{"orca4.0_h2anion_casscf_opt_numfreq.out", false, "   942.92        0.00000    5",
                  "   942.92        0.00000    5"},
             // Imaginary modes left out: the first row is mode 10.
             Case{"orca5.0_irme_freq_imaginary.out", true, "   950.60       37.06000   10",
                  "  4173.63      261.83000   14"},
             // A linear molecule (mode 5), CRLF and CR CR LF lines; the last of three tables.
             Case{"orca5.0_cl2_opt_numfreq_crlf.out", true, "   585.76        0.00000    5",
                  "   585.76        0.00000    5"},
             Case{"orca6.0_dvb_raman.out", true, "    36.86        0.02000    6", "  3545.64        0.01000   59"},
             // The second of two tables; the imaginary mode 6 left out.
             Case{"orca6.0_dihedral_optts_freq.out", true, "   270.89        0.31000    7",
                  "  3087.21       43.60000   23"},
         }) {
        SCOPED_TRACE(c.file);
        OrcaFlags flags;
        const OrcaScan s = scan(c.file, 0, flags);
        EXPECT_EQ(flags.version5, c.version5);
        ASSERT_TRUE(s.ir.has_value());
        EXPECT_EQ((*s.ir)[0], "");
        EXPECT_EQ((*s.ir)[1], "  IR Spectrum");
        EXPECT_EQ((*s.ir)[2], "  freq.cm**-1  Int.");
        const Rows r = rows(s.ir, 3);
        EXPECT_TRUE(r.ended);
        EXPECT_TRUE(s.ir_seen);
        EXPECT_EQ(r.first, c.first);
        EXPECT_EQ(r.last, c.last);
    }
}

TEST(OrcaListing, RamanAndUvTablesOfEveryVersion) {
    OrcaFlags flags;
    for (const char* file : {"orca4.0_dvb_raman.out", "orca4.2_dvb_raman.out"}) {
        const OrcaScan s = scan(file, 0, flags);
        ASSERT_TRUE(s.raman.has_value()) << file;
        EXPECT_EQ((*s.raman)[1], "  Raman Spectrum");
        EXPECT_EQ(rows(s.raman, 3).first, "    76.62        0.00000    6");
        EXPECT_EQ(rows(s.raman, 3).last, "  3544.80      135.91978   59");
        EXPECT_TRUE(s.raman_seen);
    }
    EXPECT_EQ(rows(scan("orca6.0_dvb_raman.out", 0, flags).raman, 3).last, "  3545.64       94.49484   59");

    // 4.0: five singlets, the triplets ("spin forbidden (mult=3)") skipped.
    OrcaScan s = scan("orca4.0_dvb_td.out", 0, flags);
    ASSERT_TRUE(s.uv.has_value());
    EXPECT_EQ(s.uv->size(), 6u);
    EXPECT_EQ(rows(s.uv, 0).first, "  231.7        0.04293");
    EXPECT_EQ(rows(s.uv, 0).last, "  167.2        0.00000");
    EXPECT_TRUE(rows(s.uv, 0).ended);
    // 6.0: the key moved to column 22, rows begin with transition labels and
    // the triplets sit in the table with zero intensity.
    s = scan("orca6.0_dvb_td.out", 0, flags);
    ASSERT_TRUE(s.uv.has_value());
    ASSERT_EQ(s.uv->size(), 11u);
    EXPECT_EQ((*s.uv)[0], "  396.2        0.00000");
    EXPECT_EQ((*s.uv)[5], "  231.7        0.03842");
    EXPECT_EQ((*s.uv)[9], "  167.2        0.00000");
}

TEST(OrcaListing, Utf16AndCrlfListingsReadLikeTheOthers) {
    OrcaFlags flags;
    OrcaScan s = scan("orca5.0_h2_sp_utf16.out", 2, flags);
    EXPECT_TRUE(flags.version5);
    EXPECT_TRUE(flags.terminated);
    ASSERT_TRUE(s.charges.has_value());
    EXPECT_EQ(*s.charges, (std::vector<std::string>{"#Orca mulliken charges", "H       0.000000", "H      -0.000000"}));

    // The CRLF listing, and the same listing with plain line ends, scan alike.
    const std::string raw = read_file(test_data("orca/orca5.0_cl2_opt_numfreq_crlf.out"));
    std::string plain;
    for (char c : raw)
        if (c != '\r') plain += c;
    ASSERT_NE(raw.size(), plain.size());
    OrcaFlags crlf_flags, lf_flags;
    const OrcaScan crlf = scan_orca_listing(text::TextLines::from_bytes(raw), 2, "cl2", crlf_flags);
    const OrcaScan lf = scan_orca_listing(text::TextLines::from_bytes(plain), 2, "cl2", lf_flags);
    EXPECT_EQ(crlf.charges, lf.charges);
    EXPECT_EQ(crlf.ir, lf.ir);
    EXPECT_EQ(crlf.summary, lf.summary);
    EXPECT_EQ(*crlf.charges, (std::vector<std::string>{"#Orca mulliken charges", "Cl      0.000000", "Cl     -0.000000"}));
    EXPECT_TRUE(crlf_flags.terminated && crlf_flags.geom_converged && crlf_flags.opt_requested);
}

TEST(OrcaListing, TheSummaryOfAConvergedOptimisation) {
    OrcaFlags flags;
    const OrcaScan s = scan("orca5.0_cl2_opt_numfreq_crlf.out", 2, flags);
    ASSERT_TRUE(s.summary.has_value());
    const auto& lines = *s.summary;
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Summary of contributions to the inner energy U:"), 3);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Eh = Hartrees. Use Cv button in Zentol to convert units."), 3);
    EXPECT_EQ(lines[1], "Electronic energy                ...   -920.37140806 Eh");
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(std::vector<std::string>(lines.end() - 4, lines.end() - 1),
              (std::vector<std::string>{"job", "", "FINAL SINGLE POINT ENERGY " +
                                                       text::format_f(hartree_to_kj(-920.375690332503f), 20, 5) +
                                                       " kJ/mol"}));
    EXPECT_EQ(lines.back(), "TOTAL RUN TIME: 0 days 0 hours 1 minutes 4 seconds 310 msec");
    // A frequency run that optimised nothing keeps no summary.
    OrcaFlags sp;
    EXPECT_FALSE(scan("orca4.0_dvb_raman.out", 20, sp).summary.has_value());

    // The energy in kJ/mol with five decimals, whatever the listing's
    // precision; no run time printed, an empty line in its place.
    auto banner = [](int column, const std::string& key) { return std::string(column - 1, ' ') + key; };
    OrcaFlags small_flags;
    const OrcaScan small = scan_orca_listing(
        text::TextLines::from_lines({banner(26, "Program Version 5.0.4 -  RELEASE  -"), banner(34, "Geometry convergence"),
                                     "FINAL SINGLE POINT ENERGY       -76.400000000000",
                                     banner(30, "****ORCA TERMINATED NORMALLY****")}),
        3, "water", small_flags);
    ASSERT_TRUE(small.summary.has_value());
    const std::string energy = (*small.summary)[small.summary->size() - 2];
    ASSERT_EQ(energy.substr(0, 26), "FINAL SINGLE POINT ENERGY ");
    const std::string field = energy.substr(26, 20);
    EXPECT_NEAR(text::read_f(field).value_or(0), -76.4 * 2625.4998, 0.1);
    EXPECT_EQ(field.size() - field.find('.') - 1, 5u);
    EXPECT_EQ(energy.substr(46), " kJ/mol");
    EXPECT_EQ(small.summary->back(), "");
}

TEST(OrcaListing, FailedAndCutListingsKeepWhatTheyHold) {
    // The SCF did not converge: no banner, no charges.
    OrcaFlags failed;
    EXPECT_FALSE(scan("orca4.0_ircl6_sp_scf_unconverged.out", 7, failed).charges.has_value());
    EXPECT_FALSE(failed.terminated);

    // Cut after the charges of an open shell: the charges are there, the
    // banner is not.
    const auto full = listing("orca4.2_dvb_uhf_sp.out");
    std::vector<std::string> head(full.begin(), full.begin() + 3100);
    OrcaFlags cut;
    OrcaScan s = scan_orca_listing(text::TextLines::from_lines(head), 20, "dvb", cut);
    ASSERT_TRUE(s.charges.has_value());
    EXPECT_EQ(s.charges->size(), 21u);
    EXPECT_EQ((*s.charges)[1], "C       0.055876");
    EXPECT_FALSE(cut.terminated);

    // Cut anywhere: no crash, and a table cut short has rows but no end.
    const auto cl2 = listing("orca5.0_cl2_opt_numfreq_crlf.out");
    for (std::size_t n = 0; n <= cl2.size(); n += 37) {
        std::vector<std::string> part(cl2.begin(), cl2.begin() + n);
        OrcaFlags f;
        const OrcaScan p = scan_orca_listing(text::TextLines::from_lines(part), 2, "cl2", f);
        if (p.ir && !p.ir_seen) {
            EXPECT_NE(p.ir->back(), "  END");
        }
        if (p.charges) {
            EXPECT_LE(p.charges->size(), 3u);
        }
    }
    const auto dvb = listing("orca6.0_dvb_raman.out");
    std::vector<std::string> in_table(dvb.begin(), dvb.begin() + 2225);
    OrcaFlags f;
    s = scan_orca_listing(text::TextLines::from_lines(in_table), 20, "dvb", f);
    ASSERT_TRUE(s.ir.has_value());
    EXPECT_FALSE(s.ir_seen);
    EXPECT_EQ(s.ir->size(), 3u + 10u);
}

TEST(OrcaListing, GeometriesFromThePropertyFileAndTheEnginesXyz) {
    auto h2 = property_geometry(listing("orca5.0_h2_property.txt"), 2);
    ASSERT_TRUE(h2 && h2->size() == 2);
    EXPECT_EQ((*h2)[0].symbol, "H");
    EXPECT_DOUBLE_EQ((*h2)[0].xyz[0], -11.12734);
    EXPECT_DOUBLE_EQ((*h2)[1].xyz[1], 2.78016);
    // The last of several blocks.
    auto cl2 = property_geometry(listing("cl2_property.txt"), 2);
    ASSERT_TRUE(cl2 && cl2->size() == 2);
    EXPECT_DOUBLE_EQ((*cl2)[0].xyz[0], -2.914677);
    // Too few rows, or none at all.
    EXPECT_TRUE(property_geometry(listing("orca5.0_h2_property.txt"), 3)->empty());
    EXPECT_FALSE(property_geometry(text::TextLines::from_lines({"$end"}), 2).has_value());

    auto xyz = orca_xyz_geometry(listing("orca6.0_dihedral_final.xyz"), 8);
    ASSERT_TRUE(xyz.has_value());
    EXPECT_EQ((*xyz)[6].symbol, "F");
    EXPECT_DOUBLE_EQ((*xyz)[7].xyz[2], 1.017364);
    EXPECT_FALSE(orca_xyz_geometry(listing("orca6.0_dihedral_final.xyz"), 7).has_value());

    const auto pdb = orca_pdb_records(*cl2);
    ASSERT_EQ(pdb.size(), 6u);
    EXPECT_EQ(pdb[0], "CRYST1    1.000    1.000    1.000  90.00  90.00  90.00");
    EXPECT_EQ(pdb[4], "HETATM    1 Cl   UNK     0      -2.915   2.481   0.000");
    EXPECT_EQ(orca_pdb_records(*h2)[5], "HETATM    2  H   UNK     0     -10.127   2.780   0.000");
}

TEST(OrcaListing, TheDeckGetsTheNewCoordinatesFromOrcaFiveOn) {
    const std::vector<std::string> old{" # Orca input from Brevan / Zentol", " # cl2", " ! RHF B3LYP 6-31G**",
                                       " * xyz            0           1", "Cl1   -2.9714   2.4777   0.0000",
                                       "Cl2   -0.8875   2.6088   0.0000", " *"};
    const std::vector<OrcaAtom> atoms{{"Cl", {-2.914677, 2.481221, 0}}, {"Cl", {-0.944263, 2.605249, 0}}};
    const auto deck = orca_deck_with_geometry(old, {"Cl1 ", "Cl2 "}, atoms, true);
    EXPECT_EQ(deck, (std::vector<std::string>{old[0], old[1], old[2], old[3], "Cl1     -2.914677  2.481221  0.000000",
                                              "Cl2     -0.944263  2.605249  0.000000", " *"}));
    // An older engine's deck keeps no coordinates.
    EXPECT_EQ(orca_deck_with_geometry(old, {"Cl1 ", "Cl2 "}, atoms, false),
              (std::vector<std::string>{old[0], old[1], old[2], old[3], " *"}));
    // At most 60 records are kept ahead of the coordinates.
    const std::vector<std::string> long_deck(70, " ! Opt");
    EXPECT_EQ(orca_deck_with_geometry(long_deck, {}, {}, true).size(), 61u);
}
