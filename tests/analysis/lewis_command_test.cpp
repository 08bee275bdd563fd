// The Lewis button on a whole session.
#include "analysis/lewis_command.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

using namespace zentol::testing;

TEST(LewisCommand, WaterIsLoggedWrittenAndShownInTheViewer) {
    TestSession t;
    run_on_water(t, "menu 40081\n");
    const std::string geo = read_file(t.scratch() + "/water.geo");
    EXPECT_NE(geo.find(" B.ord "), std::string::npos);
    EXPECT_NE(geo.find("At. no. ATN V.e  TEC  nbe  Chg    FC   B.e OS"), std::string::npos);
    EXPECT_NE(read_file(t.scratch() + "/lewis.brt").find("TITL  LEWIS"), std::string::npos);
    bool shown = false;
    for (const auto& line : t.tk.transcript()) shown = shown || line == "viewer: Lewis Structure and Oxidation States";
    EXPECT_TRUE(shown);
}
