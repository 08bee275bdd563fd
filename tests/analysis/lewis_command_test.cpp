// The Lewis button on whole sessions: the log, lewis.brt and the viewer, on
// the shipped carbonyl example, a ferrocene built with the Cp tool, and
// molecules the analysis refuses.
#include "analysis/lewis_command.h"

#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "session/startup.h"
#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

bool shown_in_viewer(const TestSession& t) {
    for (const auto& line : t.tk.transcript())
        if (line == "viewer: Lewis Structure and Oxidation States") return true;
    return false;
}

// A job written by the test into the scratch directory, then the script.
void run_on_job_text(TestSession& t, const std::string& job, const std::string& xyz, const std::string& script) {
    write_file(t.scratch() + "/" + job + ".xyz", xyz);
    write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
    write_file(t.s.inst.cfgset + "/zentol.def", t.s.inst.default_library + "\n" + t.scratch() + "\n1\n");
    t.tk.load_script(script);
    run_program(t.s, {"zentol", job, "1"});
}

// A chain of n carbons 1.5 Angstrom apart, each bonded to the next.
std::string carbon_chain(int n) {
    auto st = std::make_unique<Store>();
    st->natoms = n;
    for (int i = 1; i <= n; ++i) {
        st->atom_label[i] = make_label("C");
        st->atom_rec[i] = {1.5f * static_cast<float>(i), 0, 0, 0.76f, 0, 0};
        st->conn_type(i) = 1;
        if (i > 1) st->nbr(i, ++st->conn_count(i)) = i - 1;
        if (i < n) st->nbr(i, ++st->conn_count(i)) = i + 1;
    }
    return format_xyz(*st, "chain", 0, 1);
}

}  // namespace

TEST(LewisCommand, ShippedChromiumCarbonylIsZeroValent) {
    TestSession t;
    run_on_molecule(t, "../../examples/chromium-carbonyl.xyz", "menu 40081\n");
    const std::string geo = read_file(t.scratch() + "/chromium-carbonyl.geo");
    EXPECT_NE(geo.find("Covalent Bond Classification CrL6  OS  0\n"), std::string::npos) << geo;
    EXPECT_NE(geo.find("Cr1    1  24  12  18   6   0  -6   6   0\n"), std::string::npos) << geo;
    EXPECT_NE(geo.find("At. no. ATN V.e  TEC  nbe  Chg    FC   B.e OS"), std::string::npos);
    EXPECT_NE(geo.find(" B.ord    3\n"), std::string::npos);
    EXPECT_EQ(geo.find("B.ord    0"), std::string::npos);
    EXPECT_NE(read_file(t.scratch() + "/lewis.brt").find("TITL  LEWIS"), std::string::npos);
    EXPECT_TRUE(shown_in_viewer(t));
}

TEST(LewisCommand, FerroceneBuiltWithTheCpToolIsOneMolecule) {
    TestSession t;
    std::filesystem::current_path(t.dir.path());
    // Fe with two hydrogens on a line, a Cp ring on each, back to Display
    // mode, Lewis.
    t.tk.load_script("key B\ndialog 102 ok 1021=Fe 1052=1\n"
                     "press atom 2\ndialog 102 ok 1077=1\n"
                     "press atom 3\ndialog 102 ok 1077=1\n"
                     "menu 40056\nmenu 40081\nclose\n");
    run_program(t.s, {"zentol"});
    ASSERT_EQ(t.s.store.natoms, 23);
    EXPECT_TRUE(messages_but_ptest_question(t).empty());
    const std::string geo = read_file(t.s.job.scratch_dir + "/" + t.s.job.name + ".geo");
    EXPECT_NE(geo.find("Covalent Bond Classification FeL4X2  OS  2\n"), std::string::npos) << geo;
    EXPECT_TRUE(shown_in_viewer(t));
}

TEST(LewisCommand, RefusesWhatItCannotTakeWithAMessage) {
    TestSession t;
    run_on_job_text(t, "chain", carbon_chain(301), "menu 40081\n");
    ASSERT_EQ(t.tk.message_boxes(), std::vector<std::string>{"Lewis analysis needs one molecule of at most 300 atoms"});
    EXPECT_FALSE(file_present(t.scratch() + "/lewis.brt"));

    TestSession apart;
    run_on_job_text(apart, "pair",
                    "     2 pair\n"
                    "     1  O      0.000000    0.000000    0.000000     6\n"
                    "     2  O      5.000000    0.000000    0.000000     6\n",
                    "menu 40081\n");
    EXPECT_EQ(apart.tk.message_boxes(),
              std::vector<std::string>{"Lewis analysis needs one connected molecule; this one falls apart"});
}
