#include "structure_files/xyz_file.h"

#include <gtest/gtest.h>

#include <random>

#include "session/store_ops.h"
#include "toolkit/files.h"

using namespace zentol;

namespace {

const std::string kWaterText =
    "     3 water chamul   0   1\n"
    "     1  O      0.000000    0.000000    0.119262     6     2     3\n"
    "     2  H      0.000000    0.763239   -0.477047    21     1\n"
    "     3  H      0.000000   -0.763239   -0.477047    21     1\n";
const std::vector<std::string> kWater = files::split_lines(kWaterText);

struct Parsed {
    Store st;
    int charge = 5, mult = 7, status = -1;
};

std::unique_ptr<Parsed> parse(const std::vector<std::string>& lines, XyzProblem* problem = nullptr) {
    auto p = std::make_unique<Parsed>();
    element_lookup(p->st, nullptr, "", kLookupConfirmAll);
    p->status = parse_xyz(lines, p->st, nullptr, p->charge, p->mult, problem);
    return p;
}

}  // namespace

TEST(XyzFile, ReadsAndWritesTheSameText) {
    auto p = parse(kWater);
    ASSERT_EQ(p->status, kXyzRead);
    EXPECT_EQ(p->st.nbonds, 2);
    EXPECT_EQ(format_xyz(p->st, "water", p->charge, p->mult), kWaterText);
}

// The charge and multiplicity are found from the title's end; what is not
// there stays as it was (5 and 7).
TEST(XyzFile, TitleTailIsFoundFromTheLineEnd) {
    const struct { const char* title; int charge, mult; } cases[] = {
        {"     3 ben CHAMUL   0   2", 0, 2},
        {"     3 a chamul job chamul  -1   3   ", -1, 3},   // the name may hold the word
        {"     3 plain tinker file", 5, 7},
        {"     3 w chamul   2", 2, 7},                      // charge only
    };
    for (const auto& c : cases) {
        auto lines = kWater;
        lines[0] = c.title;
        auto p = parse(lines);
        EXPECT_EQ(p->charge, c.charge) << c.title;
        EXPECT_EQ(p->mult, c.mult) << c.title;
    }
}

TEST(XyzFile, NeighbourSlotsEightReadSevenWrittenHolesAndLargeNumbers) {
    std::vector<std::string> lines = {"     9 star"};
    lines.push_back("     1  C      0.000000    0.000000    0.000000     1     2     3     4     5     6     7     8     9");
    for (int i = 2; i <= 9; ++i) lines.push_back("     " + std::to_string(i) + "  H      1.000000    0.000000    0.000000     5     1");
    auto p = parse(lines);
    ASSERT_EQ(p->status, kXyzRead);
    EXPECT_EQ(p->st.conn_count(1), 8);
    EXPECT_EQ(files::split_lines(format_xyz(p->st, "star", 0, 1))[1],
              lines[1].substr(0, lines[1].size() - 6));   // the eighth is dropped

    // A hole in the first slot reads as a hole; the bond behind it is kept
    // and written without the hole, so no save loses it.
    auto q = parse({"     2 x", "     1  C      0.000000    0.000000    0.000000     1     0     2",
                    "     2  C      1.000000    0.000000    0.000000     1     1"});
    EXPECT_EQ(q->st.conn_count(1), 1);
    EXPECT_EQ(q->st.nbr(1, 1), 0);
    EXPECT_NE(format_xyz(q->st, "x", 0, 1).find("     1  C      0.000000    0.000000    0.000000     1     2\n"),
              std::string::npos);

    // A line with a type only has no neighbours; a comma separates as well
    // as a blank once the words are counted.
    auto r = parse({"     2 x", "     1  C      0.000000    0.000000    0.000000     1",
                    "     2  O      1.000000    0.000000    0.000000     6, 1"});
    EXPECT_EQ(r->st.conn_count(1), 0);
    EXPECT_EQ(r->st.nbr(2, 1), 1);
}

TEST(XyzFile, LabelsAreNormalisedAndBoxCornersCopied) {
    auto p = parse({"     4 x", "     1  cl1    0.000000    0.000000    0.000000    12",
                    "     2  CEN1   1.000000    0.000000    0.000000     0",
                    "     3  bx2    2.000000    3.000000    4.000000     0",
                    "     4  Xx1    1.000000    1.000000    1.000000     0"});
    ASSERT_EQ(p->status, kXyzRead);
    EXPECT_EQ(label_text(p->st.atom_label[1]), "Cl1 ");
    EXPECT_EQ(label_text(p->st.atom_label[2]), "CEN1");
    EXPECT_EQ(label_text(p->st.atom_label[3]), "BX2 ");
    EXPECT_FLOAT_EQ(p->st.atom_rec[2][kRadius], 0.0f);
    EXPECT_FLOAT_EQ(p->st.atom_rec[4][kRadius], 0.74f);   // unknown element, no question
    EXPECT_FLOAT_EQ(p->st.box_corner_count, 1.0f);
    EXPECT_FLOAT_EQ(p->st.atom_rec[kBoxCornerBase + 2][kZ], 4.0f);
}

TEST(XyzFile, RowsThatWouldNotSurviveASaveAreRefusedWithTheirLine) {
    const struct { int row; const char* line; const char* why; } cases[] = {
        {2, "     2  H      0.000000    0.763239   -0.477047    21     1     9",
         "w.xyz line 3: neighbour 9 is not one of the 3 atoms of the file"},
        {2, "     2  H", "w.xyz line 3: the row ends before its coordinates"},
        {2, "     2  H      0.000000    0.763239   -0.477047", "w.xyz line 3: the row ends before the atom type"},
        {3, "     3  H      0.000000   -0.763239   -0.477047   -0.     1",
         "w.xyz line 4: the type and the neighbours must be whole numbers"},
        {3, "     3  H      0.000000   -0.763239   -0.477047 1000000     1",
         "w.xyz line 4: the atom type 1000000 does not fit its column"},
        {1, "     1  O   -1000.00000    0.000000    0.119262     6     2     3",
         "w.xyz line 2: a coordinate lies beyond what the file's columns hold"},
        {0, "    -0 water", "w.xyz line 1: the title does not begin with the number of atoms"},
        {0, "     0 water", "w.xyz line 1: the title says 0 atoms but atom rows follow"},
        {2, "     2  H      0.000000    x.y239   -0.477047    21     1", "w.xyz line 3: a coordinate is not a number"},
    };
    for (const auto& c : cases) {
        auto lines = kWater;
        lines[c.row] = c.line;
        XyzProblem problem;
        EXPECT_EQ(parse(lines, &problem)->status, kXyzDamaged) << c.line;
        EXPECT_EQ(problem.text("w.xyz"), c.why);
    }

    // The same limits hold for a molecule in memory, which is never written.
    auto p = parse(kWater);
    EXPECT_EQ(unwritable_atom(p->st), 0);
    p->st.atom_rec[2][kZ] = 123456.0f;
    XyzProblem problem;
    EXPECT_EQ(unwritable_atom(p->st, &problem), 2);
    EXPECT_EQ(problem.why, "atom 2 (H) at        0.000       0.763  123456.000 lies beyond what a .xyz file holds");
}

// Thousands of mutated files: the reader reports or reads, it never faults
// (run under AddressSanitizer and UBSan by make test).
TEST(XyzFile, MutatedFilesNeverFault) {
    std::mt19937 rng(12345);
    const std::string noise = " 0123456789-+.,eEdD*/abcXYZ\t\r\x01\xff";
    std::vector<std::string> base = kWater;
    base.push_back("     4  Fe    12.000000 -123.500000    0.000000    61     1     2     3     1     2     3     1     2     3");
    base[0] = "     4 mut chamul   1   2";
    int read = 0;
    for (int round = 0; round < 5000; ++round) {
        auto lines = base;
        int edits = 1 + static_cast<int>(rng() % 6);
        for (int e = 0; e < edits; ++e) {
            auto& line = lines[rng() % lines.size()];
            std::size_t at = line.empty() ? 0 : rng() % (line.size() + 1);
            switch (rng() % 4) {
                case 0: if (at < line.size()) line[at] = noise[rng() % noise.size()]; break;
                case 1: line.insert(at, 1, noise[rng() % noise.size()]); break;
                case 2: line = line.substr(0, at); break;
                case 3: line.append(std::string(rng() % 200, noise[rng() % noise.size()])); break;
            }
        }
        if (rng() % 10 == 0) lines.resize(rng() % lines.size());
        auto p = parse(lines);
        if (p->status == kXyzRead) {
            ++read;
            EXPECT_LE(p->st.natoms, kMaxAtoms);
            EXPECT_LE(p->st.nbonds, kMaxBonds);
            // Whatever was accepted is saved so that it reads back the same.
            std::string once = format_xyz(p->st, "mut", p->charge, p->mult);
            auto again = parse(files::split_lines(once));
            ASSERT_EQ(again->status, kXyzRead) << once;
            EXPECT_EQ(format_xyz(again->st, "mut", again->charge, again->mult), once);
        }
    }
    EXPECT_GT(read, 100);
}
