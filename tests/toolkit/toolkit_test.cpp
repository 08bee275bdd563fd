// The toolkit seam without a display: dialog descriptions, menus, the
// scripted toolkit, the case-insensitive file operations and plots.
#include <cmath>
#include <filesystem>

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

TEST(Dialogs, DescriptionsCarryTheirCompanionDataAndBadOnesAreRefused) {
    std::string error;
    auto d = parse_dialog_desc(
        "title Setup\n"
        "field 1023 real \"Bond Rotation Step\"\n"
        "field 1054 radio 1054 Entry\n"
        "field 1055 radio 1054 Advanced\n"
        "field 1031 check CBMN\n"
        "field 1014 trackbar \"Atom Size\"\n"
        "field 1011 menu L|S|E\n"
        "[Checks]\n1031 1\n1055 1\n"
        "[Ranges]\n1023 2 90\n"
        "[Trackbars]\n1014 100 1 10 0 0\n"
        "[Formats]\n1023 (F6.1)\n",
        106, &error);
    ASSERT_TRUE(d) << error;
    EXPECT_EQ(d->title, "Setup");
    EXPECT_EQ(d->field(1011)->items, (std::vector<std::string>{"L", "S", "E"}));
    EXPECT_EQ(d->trackbars.at(1014).max, 100);
    DialogModel m(*d);
    EXPECT_EQ(m.get_radio(1054), 2);            // [Checks] selects a radio button
    EXPECT_EQ(m.value(1031).state, 1);
    m.put_real(1023, 20.0);
    EXPECT_EQ(m.value(1023).text, "20.0");       // shown in its format
    std::string why;
    EXPECT_FALSE(m.set_from_text(1023, "91", &why));
    EXPECT_DOUBLE_EQ(m.value(1023).real, 20.0);  // refused: the old value stays
    EXPECT_FALSE(m.set_from_text(1023, "abc", &why));
    EXPECT_TRUE(m.set_from_text(1023, "45.5", &why));
    EXPECT_DOUBLE_EQ(m.value(1023).real, 45.5);
    m.put_radio(1054);
    EXPECT_EQ(m.get_radio(1054), 1);

    EXPECT_FALSE(parse_dialog_desc("field 1 gizmo x\n", 1, &error));
    EXPECT_FALSE(parse_dialog_desc("[Ranges]\n1023 2\n", 1, &error));
    EXPECT_FALSE(parse_menu_desc("popup \"&File\"\nitem 40005 Open\n", 1, &error));   // popup not closed
}

TEST(ScriptedToolkit, ReplaysMessagesAndAnswersAndRecordsWhatWasShown) {
    ScriptedToolkit tk;
    tk.set_ui_dir(std::string(ZENTOL_DATA_DIR) + "/ui");
    tk.load_script(
        "# a comment\n"
        "key R\nkey 27\nmenu 40039\npress 0.25 0.75\nmove 0.3 0.7\nrelease 0.3 0.7\npress atom 2\n"
        "dialog 101 ok 1001=\"my job\"\nmsgbox no\nfile /tmp/x.xyz\n");
    tk.set_atom_locator([](int atom) -> std::optional<std::pair<float, float>> {
        if (atom == 2) return std::make_pair(0.5f, 0.25f);
        return std::nullopt;
    });
    EXPECT_EQ(tk.next_message().value, 'R');
    EXPECT_EQ(tk.next_message().value, 27);
    Message m = tk.next_message();
    EXPECT_EQ(m.type, MessageType::Menu);
    EXPECT_EQ(m.value, 40039);
    m = tk.next_message();
    EXPECT_EQ(m.type, MessageType::MouseDown);
    EXPECT_FLOAT_EQ(m.fy, 0.75f);
    EXPECT_EQ(tk.next_message().type, MessageType::MouseUp);   // moves only while enabled
    m = tk.next_message();
    EXPECT_FLOAT_EQ(m.fx, 0.5f);
    EXPECT_FLOAT_EQ(m.fy, 0.75f);   // window y runs upwards, view fractions downwards
    EXPECT_EQ(tk.next_message().type, MessageType::Close);     // the script has run out

    tk.WDialogLoad(101);
    tk.WDialogShow(1);
    EXPECT_EQ(tk.last_button(), 1);
    EXPECT_EQ(tk.WDialogGetString(1001), "my job");
    tk.WDialogUnload();
    tk.WDialogLoad(103);
    tk.WDialogShow(1);   // no answer: cancelled, never waited for
    EXPECT_EQ(tk.last_button(), 0);
    EXPECT_EQ(tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, "Overwrite ?", "t"), 0);
    std::string path;
    EXPECT_TRUE(tk.select_file(20001, 8, path, "Find"));
    EXPECT_EQ(path, "/tmp/x.xyz");
    EXPECT_FALSE(tk.select_file(20001, 8, path, "Find"));
    tk.WindowOutStatusBar(9, "hello");
    tk.WindowOutStatusBar(9, "hello");
    EXPECT_EQ(tk.status(9), "hello");
    int noted = 0;
    for (const auto& line : tk.transcript()) noted += line == "status 9: hello";
    EXPECT_EQ(noted, 1);

    EXPECT_THROW(tk.add_line("jump 3"), ScriptError);
    EXPECT_THROW(tk.add_line("press 2.0 0.5"), ScriptError);
    EXPECT_THROW(tk.add_line("dialog 101 maybe"), ScriptError);
}

TEST(ScriptedToolkit, AMessageAfterRunsComesToThePollOnceThoseRunsWereMade) {
    ScriptedToolkit tk;
    tk.load_script("menu 40006\nafter 2 runs key 27\nmenu 40001\n");
    EXPECT_FALSE(tk.poll_message());           // a plain message waits for the loop
    EXPECT_EQ(tk.next_message().value, 40006);
    tk.IOsCommand("true", true);
    tk.IOsCommand("true", false);              // not waited for: not counted
    EXPECT_FALSE(tk.poll_message());
    tk.IOsCommand("true", true);
    auto m = tk.poll_message();
    ASSERT_TRUE(m);
    EXPECT_EQ(m->type, MessageType::Key);
    EXPECT_EQ(m->value, 27);
    tk.IOsCommand("true", true);
    EXPECT_FALSE(tk.poll_message());
    EXPECT_EQ(tk.next_message().value, 40001);
    EXPECT_THROW(tk.add_line("after runs key 27"), ScriptError);
    EXPECT_THROW(tk.add_line("after 2 runs dialog 101 ok"), ScriptError);
}

TEST(Files, NamesMeetWhateverTheirCaseAndWritesAreWhole) {
    TempDir dir;
    std::string d = dir.path();
    write_file(d + "/PTEST.XYZ", "a\n");
    EXPECT_TRUE(files::exists(d + "/ptest.xyz"));
    EXPECT_EQ(files::resolve(d + "/ptest.xyz"), d + "/PTEST.XYZ");
    EXPECT_EQ(files::size(d + "/Ptest.Xyz"), 2);
    EXPECT_EQ(files::size(d + "/none"), -1);
    EXPECT_TRUE(files::write_atomic(d + "/ptest.xyz", "b\r\nc\n"));
    EXPECT_EQ(*files::read_lines(d + "/PTEST.XYZ"), (std::vector<std::string>{"b", "c"}));
    EXPECT_EQ(files::list(d, "*"), (std::vector<std::string>{"PTEST.XYZ"}));   // no temporary left
    write_file(d + "/ptest.key", "");
    write_file(d + "/ptest_chg.log", "");
    write_file(d + "/other.xyz", "");
    files::remove(d + "/PTEST.*");
    EXPECT_EQ(files::list(d, "*"), (std::vector<std::string>{"other.xyz", "ptest_chg.log"}));
    files::remove(d + "/nothing.*");
    EXPECT_TRUE(files::matches("job.012", "job.0*"));
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
    EXPECT_EQ(read_file(d + "/copy.xyz"), "new\n");

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

TEST(PlotWindow, CallsBuildThePictureInUserUnits) {
    ScriptedToolkit tk;
    tk.WindowOpenChild("water IR spectrum", 700, 500);
    tk.IGrUnits(0, 0, 14, 10.5);
    tk.IGrColourN(24);
    tk.IGrMoveTo(1, 1);
    tk.IGrLineTo(13, 1);
    tk.IGrLineTo(13, 9);
    tk.IGrCircle(7, 5, 0.5);
    tk.IGrCharOut(1, 10, "Wavenumber 1/cm");
    const Plot& p = tk.plot();
    ASSERT_EQ(p.items.size(), 4u);
    EXPECT_DOUBLE_EQ(p.items[1].x1, 13);   // the second line starts where the first ended
    EXPECT_DOUBLE_EQ(p.items[1].y1, 1);
    EXPECT_EQ(p.items[0].colour, 24);
    EXPECT_DOUBLE_EQ(p.right, 14);
    tk.WindowCloseChild();
    EXPECT_FALSE(tk.child_open());
    EXPECT_EQ(tk.transcript().back(), "plot window \"water IR spectrum\" closed with 4 items");
    EXPECT_EQ(colour_number(208), (std::array<std::uint8_t, 3>{0, 0, 0}));
    EXPECT_EQ(colour_number(24), (std::array<std::uint8_t, 3>{255, 0, 0}));
    EXPECT_EQ(colour_number(152), (std::array<std::uint8_t, 3>{255, 0, 255}));
}

TEST(PlotRaster, ItemsLandWhereTheirUnitsSay) {
    Plot plot;
    plot.left = 0, plot.right = 10, plot.bottom = 0, plot.top = 10;
    plot.items.push_back({PlotItem::Line, 0, 5, 10, 5, 16 + 8, ""});     // red, across the middle
    plot.items.push_back({PlotItem::Line, -1e9, 1, 1e300, 1, 208, ""});  // far ends: clipped, still drawn
    plot.items.push_back({PlotItem::Text, 1, 9, 0, 0, 208, "8"});
    plot.items.push_back({PlotItem::Line, 0, 0, 0, NAN, 208, ""});        // ignored
    Image image = render_plot(plot, 101, 101);
    EXPECT_EQ(pixel(image, 50, 50), (std::array<std::uint8_t, 3>{255, 0, 0}));
    EXPECT_EQ(pixel(image, 50, 49), (std::array<std::uint8_t, 3>{255, 255, 255}));
    EXPECT_EQ(pixel(image, 70, 90), (std::array<std::uint8_t, 3>{0, 0, 0}));
    // The "8" stands above its point, 7 rows high: its top bar is black.
    int dark = 0;
    for (int y = 0; y < 10; ++y)
        for (int x = 10; x < 16; ++x) dark += pixel(image, x, y)[0] == 0;
    EXPECT_GT(dark, 8);
}
