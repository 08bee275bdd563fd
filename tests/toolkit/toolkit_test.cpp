// The toolkit seam without a display, and the shipped menu bars, tool bars
// and dialogs.
#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "display/image.h"
#include "support/test_support.h"
#include "toolkit/dialog_model.h"
#include "toolkit/files.h"
#include "toolkit/menu_desc.h"
#include "toolkit/plot_raster.h"
#include "toolkit/process.h"
#include "toolkit/scripted_toolkit.h"

using namespace zentol;
using namespace zentol::testing;

const std::string kUi = std::string(ZENTOL_DATA_DIR) + "/ui";
const std::string kMenus = kUi + "/menus";

// Shown and read back in the window's tests; here what only text can do.
TEST(Dialogs, BadDescriptionsAndValuesAreRefused) {
    std::string error;
    auto d = parse_dialog_desc("field 1023 real Step\n[Ranges]\n1023 2 90\n[Formats]\n1023 (F6.1)\n", 106, &error);
    ASSERT_TRUE(d) << error;
    DialogModel m(*d);
    m.put_real(1023, 20.0);
    std::string why;
    EXPECT_FALSE(m.set_from_text(1023, "abc", &why));
    EXPECT_DOUBLE_EQ(m.value(1023).real, 20.0);   // refused: the old value stays
    EXPECT_EQ(m.value(1023).text, "20.0");

    EXPECT_FALSE(parse_dialog_desc("field 1 gizmo x\n", 1, &error));
    EXPECT_FALSE(parse_dialog_desc("[Ranges]\n1023 2\n", 1, &error));
    EXPECT_FALSE(parse_menu_desc("popup \"&File\"\nitem 40005 Open\n", 1, &error));   // popup not closed
}

// A mistyped script line would leave a session test running on without
// it: it is refused. The script's end closes the window.
TEST(ScriptedToolkit, BadLinesAreRefusedAndTheEndCloses) {
    ScriptedToolkit tk;
    EXPECT_THROW(tk.add_line("jump 3"), ScriptError);
    EXPECT_THROW(tk.add_line("press 2.0 0.5"), ScriptError);
    EXPECT_THROW(tk.add_line("dialog 101 maybe"), ScriptError);
    EXPECT_THROW(tk.add_line("after 2 runs dialog 101 ok"), ScriptError);
    EXPECT_EQ(tk.next_message().type, MessageType::Close);
}

TEST(ScriptedToolkit, AMessageAfterRunsComesToThePollOnceThoseWaitedRunsWereMade) {
    ScriptedToolkit tk;
    tk.load_script("after 2 runs key 27\nmenu 40001\n");
    tk.IOsCommand("true", true);
    tk.IOsCommand("true", false);   // not waited for: not counted
    EXPECT_FALSE(tk.poll_message());
    tk.IOsCommand("true", true);
    auto m = tk.poll_message();
    ASSERT_TRUE(m);
    EXPECT_EQ(m->value, 27);
    EXPECT_FALSE(tk.poll_message());   // a plain message waits for the loop
    EXPECT_EQ(tk.next_message().value, 40001);
}

TEST(Files, NamesMeetWhateverTheirCaseAndWritesAreWhole) {
    TempDir dir;
    std::string d = dir.path();
    write_file(d + "/PTEST.XYZ", "a\n");
    EXPECT_EQ(files::resolve(d + "/ptest.xyz"), d + "/PTEST.XYZ");
    EXPECT_EQ(files::size(d + "/Ptest.Xyz"), 2);
    EXPECT_TRUE(files::write_atomic(d + "/ptest.xyz", "b\r\nc\n"));
    EXPECT_EQ(*files::read_lines(d + "/PTEST.XYZ"), (std::vector<std::string>{"b", "c"}));
    EXPECT_EQ(files::list(d, "*"), (std::vector<std::string>{"PTEST.XYZ"}));   // no temporary left
    for (const char* name : {"/ptest.key", "/ptest_chg.log", "/other.xyz"}) write_file(d + name, "");
    files::remove(d + "/PTEST.*");
    EXPECT_EQ(files::list(d, "*"), (std::vector<std::string>{"other.xyz", "ptest_chg.log"}));
    EXPECT_TRUE(files::matches("MV12.ins", "mv*.INS"));
    EXPECT_FALSE(files::matches("job.xyz", "job.?"));
    // A name is taken literally once escaped: "w?ter" and "*" mean themselves.
    EXPECT_FALSE(files::matches("water.xyz", files::escape_pattern("w?ter") + ".*"));
    EXPECT_TRUE(files::matches("w?ter.xyz", files::escape_pattern("w?ter") + ".*"));
    EXPECT_FALSE(files::matches("a.b", files::escape_pattern("*") + ".*"));
}

// A job file that is a link stays a link, the file it names is written, and
// a file keeps its permissions; a failed write leaves the old file whole.
TEST(Files, WritesGoThroughLinksAndKeepPermissions) {
    TempDir dir;
    const std::string d = dir.path();
    write_file(d + "/real.xyz", "old\n");
    std::filesystem::permissions(d + "/real.xyz", std::filesystem::perms(0640));
    std::filesystem::create_symlink("real.xyz", d + "/job.xyz");
    ASSERT_TRUE(files::write_atomic(d + "/job.xyz", "new\n"));
    EXPECT_TRUE(std::filesystem::is_symlink(d + "/job.xyz"));
    EXPECT_EQ(read_file(d + "/real.xyz"), "new\n");
    EXPECT_EQ(std::filesystem::status(d + "/real.xyz").permissions() & std::filesystem::perms::all,
              std::filesystem::perms(0640));
    ASSERT_TRUE(files::copy(d + "/real.xyz", d + "/copy.xyz"));

    std::string why;
    EXPECT_FALSE(files::write_atomic(d + "/no/such/folder/x.xyz", "x", &why));
    EXPECT_EQ(why, "No such file or directory");
    EXPECT_FALSE(files::copy(d + "/missing.xyz", d + "/copy.xyz", &why));
    EXPECT_EQ(read_file(d + "/copy.xyz"), "new\n");   // untouched by the failed copy
}

TEST(Process, HostileWordsStayOneWord) {
    TempDir dir;
    files::change_dir(dir.path());
    std::string hostile = "a b;$(touch pwned)'\"`x`";
    EXPECT_TRUE(process::run_shell("printf %s " + process::shell_quote(hostile) + " > out.txt", true));
    EXPECT_EQ(read_file("out.txt"), hostile);
    EXPECT_FALSE(file_present("pwned"));
    EXPECT_FALSE(process::spawn(dir.path() + "/no-such-program", {}));
}

// A line far outside the units is clipped, not lost; one with no number is
// skipped.
TEST(PlotRaster, ItemsLandWhereTheirUnitsSay) {
    Plot plot;
    plot.left = 0, plot.right = 10, plot.bottom = 0, plot.top = 10;
    plot.items.push_back({PlotItem::Line, -1e9, 1, 1e300, 1, 208, ""});
    plot.items.push_back({PlotItem::Text, 1, 9, 0, 0, 208, "8"});
    plot.items.push_back({PlotItem::Line, 0, 0, 0, NAN, 208, ""});
    Image image = render_plot(plot, 101, 101);
    EXPECT_EQ(pixel(image, 70, 90), (std::array<std::uint8_t, 3>{0, 0, 0}));
    EXPECT_EQ(pixel(image, 70, 89), (std::array<std::uint8_t, 3>{255, 255, 255}));
    // The "8" is 7 rows high: its top bar is black.
    int dark = 0;
    for (int y = 0; y < 10; ++y)
        for (int x = 10; x < 16; ++x) dark += pixel(image, x, y)[0] == 0;
    EXPECT_GT(dark, 8);
}

// Every file parses, and no menu offers a command twice.
TEST(ShippedMenus, EveryMenuToolBarAndDialogParses) {
    for (const auto& file : std::filesystem::directory_iterator(kMenus)) {
        const int id = std::stoi(file.path().stem().string());
        std::string error;
        if (file.path().extension() != ".menu") {
            EXPECT_TRUE(load_toolbar_desc(kMenus, id, &error)) << id << ": " << error;
            continue;
        }
        auto menu = load_menu_desc(kMenus, id, &error);
        ASSERT_TRUE(menu) << id << ": " << error;
        std::set<int> items;
        for (const auto& e : menu->entries)
            EXPECT_TRUE(e.kind != MenuEntry::Item || items.insert(e.id).second) << e.id << " twice in " << id;
    }
    int dialogs = 0;
    for (const auto& file : std::filesystem::directory_iterator(kUi + "/dialogs")) {
        std::string error;
        const int id = std::stoi(file.path().stem().string());
        EXPECT_TRUE(parse_dialog_desc(read_file(file.path().string()), id, &error)) << id << ": " << error;
        ++dialogs;
    }
    EXPECT_GE(dialogs, 12);
}

// A mode's tool-tips say what its menu says; Build's buttons keep their
// order and the second command of a two-state button, which its loop expects.
TEST(ShippedMenus, ModeToolBarsKeepTheMenuTextsAndBuildsPairs) {
    std::vector<std::pair<int, int>> build;   // (id, second state)
    for (auto [bar_id, menu_id] : {std::pair{30102, 30006}, {30103, 30003}}) {
        std::string error;
        auto bar = load_toolbar_desc(kMenus, bar_id, &error);
        ASSERT_TRUE(bar) << bar_id << ": " << error;
        auto menu = load_menu_desc(kMenus, menu_id, &error);
        ASSERT_TRUE(menu) << menu_id << ": " << error;
        std::map<int, std::string> menu_text;
        for (const auto& e : menu->entries)
            if (e.kind == MenuEntry::Item) menu_text[e.id] = e.text;
        for (const auto& b : bar->buttons) {
            EXPECT_EQ(b.tooltip, menu_text[b.id]) << "tool-tip of " << b.id << " in " << bar_id;
            if (bar_id == 30103) build.emplace_back(b.id, b.alternate);
        }
    }
    EXPECT_EQ(build, (std::vector<std::pair<int, int>>{{40056, 0}, {40007, 40063}, {40049, 40017}, {40041, 40043},
                                                       {40082, 0}}));
}
