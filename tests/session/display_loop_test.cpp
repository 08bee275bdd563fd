// The display loop driven by scripted messages.
#include "session/display_loop.h"

#include <gtest/gtest.h>

#include <cmath>
#include <unistd.h>

#include "display/view.h"
#include "session_helpers.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

std::string repeat(const std::string& line, int n) {
    std::string out;
    for (int i = 0; i < n; ++i) out += line + "\n";
    return out;
}

}  // namespace

// The menu and the wheel zoom within the same limits.
TEST(DisplayLoop, ZoomStaysWithinItsLimits) {
    const struct { std::string script; float zoom; } cases[] = {
        {repeat("menu 40039", 30), 3.8f}, {repeat("menu 40041", 12), 0.2f}, {"wheel 3\nwheel -1\n", 1.2f}};
    for (const auto& c : cases) {
        TestSession t;
        run_on_water(t, c.script);
        EXPECT_FLOAT_EQ(t.s.flags.zoom, c.zoom) << c.script;
    }
}

TEST(DisplayLoop, KeysAndDragsTurnTheMoleculeAndTheCloseSavesWhatIsSeen) {
    // Water lies in the yz plane; 18 Step-5 turns about y lay it in the xy
    // plane, and zoom, an uncovered window and Setup leave the turn alone.
    TestSession keys;
    run_on_water(keys, "menu 40011\n" + repeat("key 260", 18) + "menu 40039\nexpose\nmenu 40004\ndialog 106 ok 1053=1\nkey R\n");
    auto lines = *files::read_lines(keys.scratch() + "/water.xyz");
    EXPECT_NEAR(std::stod(lines[2].substr(35, 12)), 0.0, 1e-3);
    EXPECT_GT(std::fabs(std::stod(lines[2].substr(12, 11))), 0.1);

    // The same turn by a drag to the right across half the view; moves only
    // count while the button is down.
    TestSession drag;
    std::string script = "move 0.9 0.5\npress 0.1 0.5\n";
    for (int i = 1; i <= 50; ++i) script += "move " + std::to_string(0.1 + i * 0.01) + " 0.5\n";
    script += "move 0.6 0.5\nrelease 0.6 0.5\nmove 0.1 0.1\n";   // after the release a move turns nothing
    run_on_water(drag, script);
    auto dragged = *files::read_lines(drag.scratch() + "/water.xyz");
    ASSERT_EQ(dragged.size(), lines.size());
    for (std::size_t k = 1; k < lines.size(); ++k)
        for (auto [at, width] : {std::pair{12, 11}, {23, 12}, {35, 12}})
            EXPECT_NEAR(std::stod(dragged[k].substr(at, width)), std::stod(lines[k].substr(at, width)), 2e-5) << k;
    EXPECT_TRUE(status_was(drag, 10, "Rotating"));
    EXPECT_EQ(drag.s.flags.sphere_slices, 32);   // full detail again after the drag
}

// Field 9's answer stands through turns, zooms and an uncovered window.
TEST(DisplayLoop, AnAnswerStandsUntilTheNextCommand) {
    TestSession t;
    run_on_water(t, "menu 40044\nkey 258\nexpose\nresize\nwheel 1\nmenu 40009\n");
    const auto& seen = t.tk.field9_when_asked();
    ASSERT_GE(seen.size(), 7u);
    for (int k = 1; k <= 5; ++k) EXPECT_EQ(seen[k], "O   1 H   2 ") << k;
    EXPECT_NE(seen[6], seen[1]);   // Step-1 is a command of its own
}

// One frame and one write of the job's files before the window waits.
TEST(DisplayLoop, StartUpDrawsOnceBeforeGoingIdle) {
    TestSession t;
    int frames = -1, writes = 0;
    t.tk.set_ask_hook([&](int asked) {
        if (asked != 1) return;
        frames = t.renderer.frames;
        for (const auto& [field, text] : t.tk.status_writes()) writes += field == 4;   // the atom count
    });
    run_on_water(t, "close\n");
    EXPECT_EQ(frames, 1);
    EXPECT_EQ(writes, 1);
}

TEST(DisplayLoop, MissingSiblingIsToldAndTheSessionGoesOn) {
    TestSession t;
    run_on_water(t, "menu 40040\nmenu 40065\nmenu 40039\n");
    ASSERT_EQ(t.tk.message_boxes().size(), 2u);
    EXPECT_EQ(t.tk.message_boxes()[0].substr(0, 27), "Zentol-9 is not installed.\r");
    EXPECT_FLOAT_EQ(t.s.flags.zoom, 1.1f);   // the session went on

    TestSession u;   // an installed sibling is started at exit with the job
    u.s.engines.values["zentol9"] = fake_program(u, "zentol9", "echo \"$@\" > " + u.scratch() + "/handed.txt");
    run_on_water(u, "menu 40040\nmenu 40039\n");
    EXPECT_FLOAT_EQ(u.s.flags.zoom, 1.0f);   // the loop ended at once
    // The sibling runs on its own: wait for its whole line, not just the file.
    for (int i = 0; i < 250 && read_file(u.scratch() + "/handed.txt").find('\n') == std::string::npos; ++i)
        usleep(20000);
    EXPECT_EQ(read_file(u.scratch() + "/handed.txt"), "water 1 MX\n");
}

TEST(View, PickingAndDragRules) {
    TestSession t;
    Store& st = t.s.store;
    st.disp_natoms = 3;
    st.screen_x[1] = 0.5f, st.screen_y[1] = 0.5f;
    st.screen_x[2] = 0.5f, st.screen_y[2] = 0.5f;   // the same point: the lower number wins
    st.screen_x[3] = 0.7f, st.screen_y[3] = 0.5f;
    t.s.view.pick_tolerance = pick_tolerance_for(st.disp_natoms);
    bool found = false;
    EXPECT_EQ(nearest_atom(t.s, 0.51f, 0.5f, found), 1);
    EXPECT_TRUE(found);
    nearest_atom(t.s, 0.75f, 0.5f, found);   // exactly at the tolerance: not picked
    EXPECT_FALSE(found);
}

// 5 or 50 move events of the same drag end at the same angle.
TEST(View, ADragTurnsByTheDistanceNotByTheEvents) {
    auto drag = [](int moves, float to_x, float to_y) {
        auto t = std::make_unique<TestSession>();
        Store& st = t->s.store;
        st.disp_natoms = 1;
        st.disp_x[1] = 1, st.disp_y[1] = 0, st.disp_z[1] = 0;
        drag_rotation(t->s, Event{.x = 0.2f, .y = 0.5f, .command = kCommandPress});
        for (int k = 1; k <= moves; ++k) {
            float f = static_cast<float>(k) / moves;
            drag_rotation(t->s, Event{.x = 0.2f + (to_x - 0.2f) * f, .y = 0.5f + (to_y - 0.5f) * f, .moved = true});
        }
        drag_rotation(t->s, Event{.x = to_x, .y = to_y, .command = kCommandRelease});
        return std::array<float, 3>{st.disp_x[1], st.disp_y[1], st.disp_z[1]};
    };
    auto five = drag(5, 0.325f, 0.5f), fifty = drag(50, 0.325f, 0.5f);
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(five[c], fifty[c], 1e-5f);
    EXPECT_NEAR(five[0], std::cos(22.5f / 57.29578f), 1e-5f);   // 0.125 of the view: 22.5 degrees
    auto across = drag(20, 1.2f, 0.5f);
    EXPECT_NEAR(across[0], -1.0f, 1e-4f);
    auto up = drag(7, 0.2f, 0.6f);                                // upwards turns about x
    EXPECT_NEAR(up[0], 1.0f, 1e-6f);
}

TEST(DisplayLoop, AClickPicksTheAtomUnderThePointer) {
    TestSession t;
    run_on_water(t, "press atom 2\nrelease atom 2\n");
    EXPECT_EQ(t.s.view.pick_count, 1);
    EXPECT_EQ(t.s.view.pick_list[1], 2);
    EXPECT_TRUE(status_was(t, 9, "H"));

    TestSession miss;   // a click on empty space picks nothing
    run_on_water(miss, "press 0.02 0.02\nrelease 0.02 0.02\n");
    EXPECT_EQ(miss.s.view.pick_count, 0);
}
