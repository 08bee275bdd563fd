// Real ORCA listings of versions 4.0 to 6.0 read into the side files: the
// first and last band of every table layout, the summary, the geometry
// files, and listings cut short.
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

OrcaScan scan_head(const text::TextLines& whole, std::size_t n, int natoms) {
    OrcaFlags f;
    return scan_orca_listing(text::TextLines::from_lines(std::vector<std::string>(whole.begin(), whole.begin() + n)),
                             natoms, "job", f);
}

// A stick file's first `heading` records, its first and last row, its end mark.
std::vector<std::string> outline(const std::optional<StickLines>& f, std::size_t heading) {
    if (!f || f->size() < heading + 2) return {};
    std::vector<std::string> r(f->begin(), f->begin() + static_cast<long>(heading));
    for (std::size_t i : {heading, f->size() - 2, f->size() - 1}) r.push_back((*f)[i]);
    return r;
}

}  // namespace

// IR in km/mol with the mode number, in both layouts (the session tests read
// the 5.0 table of a linear molecule and the 6.0 one), Raman, and UV.
TEST(OrcaListing, StickTablesOfEveryLayout) {
    struct Case { const char *file, *first, *last; bool version5; };
    for (const Case c : {
             Case{"orca4.0_dvb_raman.out", "    76.62        0.07743    6", "  3544.80        0.00000   59", false},
             // Imaginary modes left out: the first row is mode 10.
             Case{"orca5.0_irme_freq_imaginary.out", "   950.60       37.06000   10", "  4173.63      261.83000   14",
                  true},
         }) {
        SCOPED_TRACE(c.file);
        OrcaFlags flags;
        const OrcaScan s = scan(c.file, 0, flags);
        EXPECT_EQ(flags.version5, c.version5);
        EXPECT_TRUE(s.ir_seen);
        EXPECT_EQ(outline(s.ir, 3),
                  (std::vector<std::string>{"", "  IR Spectrum", "  freq.cm**-1  Int.", c.first, c.last, "  END"}));
    }

    // Raman: one layout in every version (6.0 is read in the same way).
    OrcaFlags flags;
    OrcaScan s = scan("orca4.0_dvb_raman.out", 0, flags);
    EXPECT_TRUE(s.raman_seen);
    EXPECT_EQ(outline(s.raman, 3), (std::vector<std::string>{"", "  Raman Spectrum", "  freq.cm**-1  Int.",
                                                             "    76.62        0.00000    6",
                                                             "  3544.80      135.91978   59", "  END"}));

    // 4.0: five singlets, the triplets ("spin forbidden (mult=3)") skipped.
    s = scan("orca4.0_dvb_td.out", 0, flags);
    ASSERT_TRUE(s.uv.has_value());
    EXPECT_EQ(s.uv->size(), 6u);
    EXPECT_EQ(outline(s.uv, 0), (std::vector<std::string>{"  231.7        0.04293", "  167.2        0.00000", "  END"}));
    // 6.0: the key moved to column 22, rows begin with transition labels and
    // the triplets sit in the table with zero intensity.
    s = scan("orca6.0_dvb_td.out", 0, flags);
    ASSERT_TRUE(s.uv.has_value());
    ASSERT_EQ(s.uv->size(), 11u);
    EXPECT_EQ((*s.uv)[0], "  396.2        0.00000");
    EXPECT_EQ((*s.uv)[5], "  231.7        0.03842");
}

// The energy in kJ/mol with five decimals, whatever the listing's
// precision; no run time printed, an empty line in its place.
TEST(OrcaListing, TheSummaryOfAConvergedOptimisation) {
    // A frequency run that optimised nothing keeps no summary.
    OrcaFlags sp;
    EXPECT_FALSE(scan("orca4.0_dvb_raman.out", 20, sp).summary.has_value());
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

// Cut anywhere: no crash, and a table cut short has rows but no end.
TEST(OrcaListing, CutListingsKeepWhatTheyHold) {
    const auto cl2 = listing("orca5.0_cl2_opt_numfreq_crlf.out");
    for (std::size_t n = 0; n <= cl2.size(); n += 37) {
        const OrcaScan p = scan_head(cl2, n, 2);
        if (p.ir && !p.ir_seen) { EXPECT_NE(p.ir->back(), "  END"); }
        if (p.charges) { EXPECT_LE(p.charges->size(), 3u); }
    }
    const OrcaScan s = scan_head(listing("orca6.0_dvb_raman.out"), 2225, 20);
    ASSERT_TRUE(s.ir.has_value());
    EXPECT_FALSE(s.ir_seen);
    EXPECT_EQ(s.ir->size(), 3u + 10u);
}

TEST(OrcaListing, GeometryFilesAndTheDeckOfAnOlderEngine) {
    const auto h2 = property_geometry(listing("orca5.0_h2_property.txt"), 2);
    ASSERT_TRUE(h2 && h2->size() == 2);
    EXPECT_DOUBLE_EQ((*h2)[1].xyz[1], 2.78016);
    // A one-letter symbol stands right in its field.
    EXPECT_EQ(orca_pdb_records(*h2)[5], "HETATM    2  H   UNK     0     -10.127   2.780   0.000");
    // Too few rows, or none at all.
    EXPECT_TRUE(property_geometry(listing("orca5.0_h2_property.txt"), 3)->empty());
    EXPECT_FALSE(property_geometry(text::TextLines::from_lines({"$end"}), 2).has_value());
    EXPECT_FALSE(orca_xyz_geometry(listing("orca6.0_dihedral_final.xyz"), 7).has_value());

    // The session tests see an ORCA 5 and 6 deck get the new coordinates back;
    // an older engine's deck gets none.
    const std::vector<std::string> old{" # cl2", " ! RHF B3LYP 6-31G**", " * xyz            0           1",
                                       "Cl1   -2.9714   2.4777   0.0000", "Cl2   -0.8875   2.6088   0.0000", " *"};
    const std::vector<OrcaAtom> atoms{{"Cl", {-2.914677, 2.481221, 0}}, {"Cl", {-0.944263, 2.605249, 0}}};
    EXPECT_EQ(orca_deck_with_geometry(old, {"Cl1 ", "Cl2 "}, atoms, false),
              (std::vector<std::string>{old[0], old[1], old[2], " *"}));
}
