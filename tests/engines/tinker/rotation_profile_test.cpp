// The bond rotation energy profile: whole sweeps of butane's C1-C2-C3-C4
// dihedral against a stand-in for ANALYZE that hands out energies from a
// list and keeps each structure it was given.
#include "engines/tinker/rotation_profile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

#include "building/geometry.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "tinker_test_util.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// Plays ANALYZE: the answers must be the job's .xyz and E; the structure
// goes to seen.<call>; the log is Tinker's own with the energy of line
// <call> of the energies file, or without an energy line for "none".
constexpr const char* kFakeAnalyze = R"(#!/bin/sh
dir=$(dirname "$0")
read xyz
read what
n=$(( $(cat "$dir/calls" 2>/dev/null || echo 0) + 1 ))
echo "$n" > "$dir/calls"
if [ "$xyz" != butane.xyz ] || [ "$what" != E ]; then echo "call $n: $xyz $what" >> "$dir/errors"; exit 1; fi
cp "$xyz" "$dir/seen.$n"
energy=$(sed -n "${n}p" "$dir/energies")
if [ "$energy" = none ]; then
    grep -v 'Total Potential Energy' "$dir/template.log"
else
    sed "s/^ Total Potential Energy : .*/ Total Potential Energy :   $energy Kcal\/mole/" "$dir/template.log"
fi
)";

// The C1-C2-C3-C4 dihedral.
double dihedral(const Store& st) { return dihedral_of_atoms(st, std::array{1, 2, 3, 4}.data(), 0.0); }

struct ProfileSession {
    ProfileSession() {
        namespace fs = std::filesystem;
        fs::create_directories(bin);
        write_file(bin + "/analyze", kFakeAnalyze);
        fs::permissions(bin + "/analyze", fs::perms::owner_all);
        fs::copy_file(test_data("tinker/analyze/ZENTOL.LOG"), bin + "/template.log");
        t.s.engines.values["tinker_dir"] = bin;
        fs::copy_file(test_data("tinker/butane.xyz"), t.scratch() + "/butane.xyz");
        t.s.job.name = "butane";
        int status = 0;
        read_job_xyz(t.s, status);
        EXPECT_EQ(status, kXyzRead);
        open_job_log(t.s, false, " Zentol butane");
    }
    void store_dihedral(const std::string& atoms) {
        write_file(t.scratch() + "/IDHED.DAT", atoms + "\n");
        t.s.view.marks.count = 2;
    }
    Lines lines(const std::string& name) const { return files::read_lines(name).value_or(Lines{}); }
    int calls() const { return file_present(bin + "/calls") ? std::stoi(read_file(bin + "/calls")) : 0; }
    // The C1-C2-C3-C4 dihedral of the structure ANALYZE got at a call.
    double seen_dihedral(int call) const { return dihedral(*store_of(lines(bin + "/seen." + std::to_string(call)))); }

    TestSession t;
    std::string bin = t.dir / "tinker";
};

// Difference of two dihedrals on the circle, -180 to 180.
double turn_between(double from, double to) { return std::fmod(to - from + 540.0, 360.0) - 180.0; }

}  // namespace

TEST(RotationProfile, PointCountsLinesAndStatusTexts) {
    // The step is rounded first, then 360 / step as whole numbers, plus one.
    EXPECT_EQ(profile_point_count(6.6f), 52);
    EXPECT_EQ(profile_extremes_line(-60.0, 180.0), " Minimum at  -60.00 Maximum at  180.00");
    EXPECT_EQ(start_dihedral_status("C1-C2-C3-C4", 65.4321), "C1-C2-C3-C4 Dihedral    65.43");
    EXPECT_EQ(step_status(-175.0, " kcal/mol", 7.0517), "Dihedral  -175.00 kcal/mol    7.052");
}

TEST(RotationProfile, ASweepOfButaneTurnsTheFarSideAndTabulatesTheEnergies) {
    ProfileSession p;
    // Call 5 is capped.
    std::string energies;
    for (int k = 1; k <= 19; ++k)
        energies += k == 3 ? "5.5000\n" : k == 5 ? "12345.6000\n" : k == 10 ? "2.0000\n" : std::to_string(3 + k) + ".5000\n";
    write_file(p.bin + "/energies", energies);
    p.store_dihedral("           1           2           3           4");
    const double start = dihedral(p.t.s.store);
    p.t.tk.load_script("msgbox yes\nprint ok\nmsgbox yes\nprint cancel\nmsgbox no\n");

    tinker_rotation_profile(p.t.s);

    EXPECT_FALSE(file_present(p.bin + "/errors")) << read_file(p.bin + "/errors");
    ASSERT_EQ(p.calls(), 19);
    // Each run saw the structure of its step: turned by 20 degrees a step,
    // round to the start again. C1 and C2 stay where they were.
    EXPECT_NEAR(p.seen_dihedral(1), start, 0.01);
    for (int k = 2; k <= 19; ++k) EXPECT_NEAR(std::abs(turn_between(p.seen_dihedral(k - 1), p.seen_dihedral(k))), 20.0, 0.01) << k;
    EXPECT_NEAR(turn_between(p.seen_dihedral(1), p.seen_dihedral(19)), 0.0, 0.01);
    EXPECT_NEAR(p.t.s.store.atom_rec[2][kX], 1.56, 1e-5);

    // The log: title, table of the sweep in its order, the extremes.
    const Lines log = p.lines("butane.geo");
    ASSERT_NE(std::find(log.begin(), log.end(), " Tinker Bond Rotation Profile for butane"), log.end());
    const auto header = std::find(log.begin(), log.end(), "  Dihedral  Rel.kJ/mol  Total Pot. Energy kcal/mol");
    ASSERT_NE(header, log.end());
    ASSERT_EQ(log.end() - header, 1 + 1 + 19 + 1 + 1);
    auto row = [&](int k) { return *(header + 1 + k); };
    EXPECT_EQ(row(1).substr(0, 9), text::format_f(p.seen_dihedral(1), 9, 2));
    EXPECT_EQ(row(1).substr(9), "         10.46        4.500");   // (4.5 - 2.0) * 4.184
    EXPECT_EQ(row(5).substr(9), "      41827.45     9999.000");
    EXPECT_EQ(row(10).substr(9), "          0.00        2.000");
    EXPECT_EQ(log.back(), profile_extremes_line(p.seen_dihedral(10), p.seen_dihedral(5)));
    EXPECT_EQ(read_file(p.t.scratch() + "/ZENTOL.LOG"), read_file(p.t.scratch() + "/butane.geo"));
    log_line(p.t.s, "after");   // the log is open again
    EXPECT_EQ(p.lines("butane.geo").back(), "after");

    // The chart: sorted by dihedral, each relative energy still with its
    // dihedral, up to the cap.
    ASSERT_TRUE(p.t.tk.last_chart());
    const Chart& c = *p.t.tk.last_chart();
    EXPECT_EQ(c.title, "C1-C2-C3-C4 Dihedral");
    ASSERT_EQ(c.points.size(), 19u);
    EXPECT_TRUE(std::is_sorted(c.points.begin(), c.points.end(), [](auto& a, auto& b) { return a.x < b.x; }));
    auto by_y = [](auto& a, auto& b) { return a.y < b.y; };
    EXPECT_NEAR(std::min_element(c.points.begin(), c.points.end(), by_y)->x, p.seen_dihedral(10), 0.01);
    EXPECT_NEAR(std::max_element(c.points.begin(), c.points.end(), by_y)->x, p.seen_dihedral(5), 0.01);
    EXPECT_DOUBLE_EQ(c.y_min, 0.0);
    EXPECT_NEAR(c.y_max, (9999.0 - 2.0) * 4.184, 1e-6);

    EXPECT_EQ(p.t.tk.charts_printed(), 1);
    EXPECT_EQ(std::count(p.t.tk.message_boxes().begin(), p.t.tk.message_boxes().end(), "Note the Min. and Max."), 3);
    EXPECT_EQ(p.t.tk.status(9), "Dihedral finished results in .LOG");
}

TEST(RotationProfile, AStepWithoutAnEnergyEndsTheSweepAndSaysWhy) {
    ProfileSession p;
    write_file(p.bin + "/energies", "4.5000\n5.5000\nnone\n7.5000\n");
    p.store_dihedral("1 2 3 4");
    const double start = dihedral(p.t.s.store);
    tinker_rotation_profile(p.t.s);

    EXPECT_EQ(p.calls(), 3);
    ASSERT_EQ(p.t.tk.message_boxes().size(), 1u);
    const std::string& said = p.t.tk.message_boxes()[0];
    EXPECT_EQ(said.rfind("Bond rotation stopped at point 3 of 19: no energy.\rTinker's analyze gave no result: "
                         "its log holds no \"Total Potential Energy\".", 0), 0u) << said;
    // No table of made-up energies, no chart; the molecule turned back.
    const Lines log = p.lines("butane.geo");
    EXPECT_EQ(log.back(), " Bond rotation stopped at point 3 of 19: no energy");
    EXPECT_EQ(std::find(log.begin(), log.end(), "  Dihedral  Rel.kJ/mol  Total Pot. Energy kcal/mol"), log.end());
    EXPECT_FALSE(p.t.tk.last_chart());
    EXPECT_NEAR(dihedral(p.t.s.store), start, 0.01);
    EXPECT_NEAR(dihedral(*store_of(p.lines("butane.xyz"))), start, 0.01);
}

TEST(RotationProfile, NothingRunsWithoutAStoredChainDihedral) {
    struct Case {
        const char *name, *molecule;   // tests/data/tinker/<molecule>, nullptr for butane
        int marks;
        const char *file, *message;    // IDHED.DAT
    };
    for (const Case& c : {Case{"no marks", nullptr, 0, "1 2 3 4", "No Dihedral Stored"},
                          Case{"atom out of range", nullptr, 2, "1 2 3 40", "No Dihedral Stored"},
                          Case{"not bonded", nullptr, 2, "1 2 4 3", "Atoms not Adjacent"},
                          Case{"ring bond", "undef3ring_minimize/cyclopropane.xyz", 2, "4 1 2 6", "Atoms in Ring"}}) {
        SCOPED_TRACE(c.name);
        ProfileSession p;
        if (c.molecule) p.t.s.store = *store_of(tinker_lines(c.molecule));
        p.store_dihedral(c.file);
        p.t.s.view.marks.count = c.marks;
        tinker_rotation_profile(p.t.s);
        EXPECT_EQ(p.t.tk.message_boxes(), Lines{c.message});
        EXPECT_EQ(p.calls(), 0);
        EXPECT_FALSE(p.t.tk.last_chart());
    }
}
