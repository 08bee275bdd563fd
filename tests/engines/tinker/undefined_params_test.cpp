// Undefined force-field parameters: the blocks of real Tinker 26.2 logs read
// into table rows, and the command that turns them into key-file lines.
#include "engines/tinker/undefined_params.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "text/fixed_format.h"
#include "tinker_test_util.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// An entry as "section kind: atoms / classes", the unused places left out.
std::string show(const UndefEntry& e) {
    static const char* names[] = {"bond", "angle", "opbend", "torsion"};
    const int n = e.section == UndefSection::Bond ? 2 : e.section == UndefSection::Angle ? 3 : 4;
    std::string s = std::string(names[static_cast<int>(e.section)]) + " " + std::to_string(e.kind) + ":";
    for (int k = 0; k < n; ++k) s += " " + std::to_string(e.row[k]);
    s += " /";
    for (int k = 0; k < n; ++k) s += " " + std::to_string(e.row[4 + k]);
    return s;
}

Lines shown(const UndefScan& scan) {
    Lines out;
    for (const auto& e : scan.entries) out.push_back(show(e));
    return out;
}

// A log of the banner's first lines (which decide the shift) and a body.
Lines log_with(const Lines& body) {
    Lines log = {"", "     ####", "   ######", "  ###   ###", " ###  Tinker  ###"};
    log.insert(log.end(), body.begin(), body.end());
    return log;
}

// The job of a case folder, loaded, with its log in the job directory.
struct UndefinedJob {
    UndefinedJob(const std::string& folder, const std::string& job) {
        for (const std::string& name : {job + ".xyz", job + ".key", std::string("ZENTOL.LOG")})
            std::filesystem::copy_file(test_data("tinker/" + folder + "/" + name), t.scratch() + "/" + name);
        t.s.job.name = job;
        t.s.store = *store_of(tinker_lines(folder + "/" + job + ".xyz"));
    }
    Lines key() const { return files::read_lines(t.s.job.name + ".key").value_or(Lines{}); }
    TestSession t;
};

}  // namespace

// The four-membered ring's log is read by UndefinedCommand below: one bond
// row of two, five angles of ten, the first out-of-plane row, the torsions
// up to the next ring row.
TEST(UndefinedScan, RecordedLogsInBothForms) {
    const Lines log = tinker_lines("undef5ring_analyze_E/ZENTOL.LOG");
    for (const Lines& form : {log, unshifted(log)}) {
        const UndefScan scan = scan_undefined(form);
        EXPECT_EQ(shown(scan), (Lines{"bond 3: 1 2 / 1 26", "angle 3: 2 1 5 / 1 26 1", "angle 3: 1 2 3 / 1 1 26",
                                      "torsion 3: 5 1 2 3 / 1 26 1 1", "torsion 3: 5 1 2 7 / 1 26 1 5"}));
        EXPECT_TRUE(scan.announce() && !scan.ended_in_block);
    }
    // A log the engine broke off in its banner holds nothing.
    EXPECT_FALSE(scan_undefined(Lines(4, " ###")).announce());
}

TEST(UndefinedScan, BlockEndsAndLogEnds) {
    const Lines heading = {" Undefined Bond Stretching Parameters :", "", " Type   Atom Names   Atom Classes", ""};
    auto body = [&](Lines rows) {
        Lines b = heading;
        b.insert(b.end(), rows.begin(), rows.end());
        return log_with(b);
    };
    // Plain rows go on until a ring row; the ring row is not read. Classes
    // in order, the atoms as they stand; a duplicate and a row that does
    // not read are left out.
    const UndefScan mixed = scan_undefined(body({" Bond            3-C       4-C             2    1",
                                                 " Bond     cut off",
                                                 " Bond            4-C       5-C             1    2",
                                                 " Bond            5-C       6-C             1    3",
                                                 " 4-Ring          1-B       2-C            26   56", ""}));
    EXPECT_EQ(shown(mixed), (Lines{"bond 1: 3 4 / 1 2", "bond 1: 5 6 / 1 3"}));
    EXPECT_FALSE(mixed.announce());

    // The log ends inside the block: its rows are lost, the key message stands.
    const UndefScan cut = scan_undefined(body({" Bond            3-C       4-C             1    1"}));
    EXPECT_TRUE(cut.entries.empty() && cut.ended_in_block && cut.announce());
}

TEST(UndefinedTable, TwentyRowsThenTheLastOverwritten) {
    Lines body = {" Undefined Angle Bending Parameters :", "", " Type   Atom Names   Atom Classes", ""};
    for (int i = 1; i <= 25; ++i)
        body.push_back(" Angle " + text::format_i(i, 14) + "-C" + text::format_i(i + 1, 8) + "-C" +
                       text::format_i(i + 2, 8) + "-C" + text::format_i(i, 14) + "  100  200");
    body.push_back("");
    const Lines rows = shown(scan_undefined(log_with(body)));
    ASSERT_EQ(rows.size(), 20u);
    EXPECT_EQ(rows[18], "angle 1: 19 20 21 / 19 100 200");
    EXPECT_EQ(rows[19], "angle 1: 25 26 27 / 25 100 200");
}

TEST(UndefinedTable, RowsOfTheOlderColumnLayout) {
    // Atom numbers in columns 13-17 and 23-27 with no "-name" after them,
    // the classes 11 columns further on.
    auto row = [](const std::string& second_atom) {
        return text::pad_right("Bond", 12) + text::format_i(3, 5) + "  C  " + second_atom + "  C" + text::blanks(8) +
               text::format_i(1, 5) + text::format_i(2, 5);
    };
    UndefRow r{};
    ASSERT_TRUE(read_undefined_row(row("    4"), 2, r));
    EXPECT_EQ(r, (UndefRow{3, 4, 0, 0, 1, 2, 0, 0}));
    EXPECT_FALSE(read_undefined_row(row("   x4"), 2, r));   // a number that does not fit its field
}

TEST(UndefinedKeyLines, DescriptionsAndTitles) {
    const auto st = store_of(tinker_lines("undef_analyze_E/ivboret.xyz"));
    const UndefScan scan = scan_undefined(tinker_lines("undef_analyze_E/ZENTOL.LOG"));
    ASSERT_EQ(scan.entries.size(), 11u);
    EXPECT_EQ(undefined_description(*st, scan.entries[0]), "B1   (  26)   C2   (  56)");
    EXPECT_EQ(undefined_description(*st, scan.entries[5]), "B1   (  26)   C5   (   2)   H14  (   5)");
    EXPECT_EQ(undefined_description(*st, scan.entries[6]), "C4   (  56) B1   (  26) C2  (   56) C5   (   2)");
    EXPECT_EQ(undefined_title(scan.entries[0]), "4-Bond-Stretch");
    EXPECT_EQ(bond_key_line(3, 1, 26, 4.25, 1.6), "bond5         1   26         4.2500     1.6000");
}

TEST(UndefinedCommand, DialogAnswersBecomeKeyLines) {
    UndefinedJob j("undef_analyze_E", "ivboret");
    // The bond, five angles (the second cancelled), then the out-of-plane bend.
    j.t.tk.load_script("dialog 118 ok 1008=4.0\ndialog 118 ok 1071=95.5 1008=0.5\ndialog 118 cancel\n"
                       "dialog 118 ok\ndialog 118 ok\ndialog 118 ok 1008=2.0\ndialog 118 ok\nmsgbox ok\n");
    undefined_parameters_command(j.t.s);
    EXPECT_EQ(j.t.tk.dialogs_shown().size(), 7u);

    const Lines key = j.key();
    ASSERT_EQ(key.size(), 2u + 1 + 4 + 1 + 4);
    EXPECT_EQ(key[0], "parameters PARAMS_DIR/mm3");
    EXPECT_EQ(key[2], "bond4        26   56         4.0000     1.5800");   // B1-C2 as built
    EXPECT_EQ(key[3], "angle4       56   26   56     0.500     95.500");
    // The others keep the angle of the current geometry: B1-C2-C3 is 88.0.
    EXPECT_EQ(key[4].substr(0, 35), "angle4       26   56   56     1.000");
    EXPECT_NEAR(text::read_f(key[4].substr(35)).value_or(0), 88.0, 0.01);
    EXPECT_EQ(key[6].substr(0, 35), "angle4       26    2    5     2.000");   // B1-C5-H14
    EXPECT_EQ(key[7], "opbend      56   26   56    2  2.00");   // offered the force constant of the dialog before
    EXPECT_EQ(key[8], "torsion4    56   26   56   56      0.000 0.0 1    0.000 180.0 2    0.000 0.0");
    // Torsion classes in the lower of their two orders.
    EXPECT_EQ((Lines{key[9].substr(0, 29), key[10].substr(0, 29), key[11].substr(0, 29)}),
              (Lines{"torsion4     5   56   26   56", "torsion4     2   26   56   56", "torsion4     2   26   56    5"}));
    ASSERT_EQ(j.t.tk.message_boxes().size(), 1u);
    EXPECT_EQ(j.t.tk.message_boxes()[0], kUndefinedKeyUpdated);
}

TEST(UndefinedCommand, UndefinedAtomOrNoLog) {
    UndefinedJob j("badtype_analyze_E", "badtype");
    const Lines before = j.key();
    undefined_parameters_command(j.t.s);
    EXPECT_TRUE(j.t.tk.dialogs_shown().empty());
    EXPECT_EQ(j.key(), before);
    ASSERT_EQ(j.t.tk.message_boxes().size(), 1u);
    EXPECT_EQ(j.t.tk.message_boxes()[0],
              "The Structure contains Undefined Atom(s)\rUse Edit.LOG to Examine the Undefined items\r"
              "You may be able to copy from an existing type\ror create a suitable new type");

    std::filesystem::remove(j.t.scratch() + "/ZENTOL.LOG");
    undefined_parameters_command(j.t.s);
    EXPECT_EQ(j.t.tk.message_boxes().size(), 1u);
    EXPECT_EQ(j.key(), before);
}

TEST(UndefinedCommand, ThreeMemberedRingRowsBecomeBond3AndAngle3) {
    UndefinedJob j("undef3ring_minimize", "cyclopropane");
    j.t.tk.load_script("dialog 118 ok 1008=5.0\ndialog 118 ok 1008=0.85 1071=60\n");
    undefined_parameters_command(j.t.s);
    const Lines key = j.key();
    ASSERT_EQ(key.size(), 4u);
    EXPECT_EQ(key[2].substr(0, 35), "bond3         1    1         5.0000");
    EXPECT_NEAR(text::read_f(key[2].substr(35)).value_or(0), 1.5008, 1e-3);   // C1-C2 as built
    EXPECT_EQ(key[3], "angle3        1    1    1     0.850     60.000");
}

TEST(UndefinedCommand, AnOutOfPlaneBendAloneStartsAtTheAngleDefault) {
    // A second pass, after bonds and angles were added: only the
    // out-of-plane block is left in the log.
    UndefinedJob j("undef_analyze_E", "ivboret");
    const Lines log = tinker_lines("undef_analyze_E/ZENTOL.LOG");
    Lines second(log.begin(), log.begin() + 16);
    const auto from = std::find(log.begin(), log.end(), " Undefined Out-of-Plane Bend Parameters :");
    const auto to = std::find(log.begin(), log.end(), " Undefined Torsional Parameters :");
    ASSERT_TRUE(from != log.end() && to != log.end());
    second.insert(second.end(), from, to);
    second.insert(second.end(), log.end() - 3, log.end());
    files::write_lines(j.t.scratch() + "/ZENTOL.LOG", second);
    j.t.tk.load_script("dialog 118 ok\nmsgbox ok\n");
    undefined_parameters_command(j.t.s);
    const Lines key = j.key();
    ASSERT_EQ(key.size(), 3u);
    EXPECT_EQ(key[2], "opbend      56   26   56    2  1.00");
}
