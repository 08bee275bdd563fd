// The Lewis button on whole sessions: the log, lewis.brt and the viewer on
// the shipped carbonyl example, and a molecule the analysis refuses.
#include "analysis/lewis_command.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "session/startup.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

TEST(LewisCommand, ShippedChromiumCarbonylIsZeroValent) {
    TestSession t;
    run_on_molecule(t, "../../examples/chromium-carbonyl.xyz", "menu 40081\n");
    const std::string geo = read_file(t.scratch() + "/chromium-carbonyl.geo");
    EXPECT_NE(geo.find("Covalent Bond Classification CrL6  OS  0\n"), std::string::npos) << geo;
    EXPECT_NE(geo.find("Cr1    1  24  12  18   6   0  -6   6   0\n"), std::string::npos) << geo;
    EXPECT_NE(geo.find(" B.ord    3\n"), std::string::npos);
    EXPECT_NE(read_file(t.scratch() + "/lewis.brt").find("TITL  LEWIS"), std::string::npos);
    const auto& said = t.tk.transcript();
    EXPECT_NE(std::find(said.begin(), said.end(), "viewer: Lewis Structure and Oxidation States"), said.end());
}

TEST(LewisCommand, RefusesTwoMoleculesWithAMessage) {
    TestSession t;
    write_file(t.scratch() + "/pair.xyz", "     2 pair\n"
                                          "     1  O      0.000000    0.000000    0.000000     6\n"
                                          "     2  O      5.000000    0.000000    0.000000     6\n");
    write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
    write_file(t.s.inst.cfgset + "/zentol.def", t.s.inst.default_library + "\n" + t.scratch() + "\n1\n");
    t.tk.load_script("menu 40081\n");
    run_program(t.s, {"zentol", "pair", "1"});
    EXPECT_EQ(t.tk.message_boxes(),
              std::vector<std::string>{"Lewis analysis needs one connected molecule; this one falls apart"});
    EXPECT_FALSE(file_present(t.scratch() + "/lewis.brt"));
}
