// Nothing of the user's is lost: files beside a job that are not the job's,
// a file that cannot be read, a folder that cannot be written or a disk
// that is full. Grouped by the harm each guards against.
#include <sys/mount.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "session/job_commands.h"
#include "session/job_files.h"
#include "session/store_ops.h"
#include "session_helpers.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;
namespace fs = std::filesystem;

namespace {

const std::map<std::string, std::string> kTheUsersFiles = {
    {"formald.pdb", "HETATM    1  C   UNK     1       0.000   0.000   0.000\n"},
    {"chapter.tex", "\\chapter{Results}\n"},
    {"water.pdb", "HETATM    1  O   HOH     1\n"},
    {"ptest.txt", "notes\n"},
    {"ptest.0notes", "more notes\n"},
};

void put_users_files(const std::string& dir) {
    for (const auto& [name, content] : kTheUsersFiles) write_file(dir + "/" + name, content);
}

void expect_users_files(const std::string& dir, const std::string& after) {
    for (const auto& [name, content] : kTheUsersFiles) EXPECT_EQ(read_file(dir + "/" + name), content) << name << " after " << after;
}

void run_from(TestSession& t, const std::string& start_dir, std::vector<std::string> words, const std::string& script) {
    start_in(t, start_dir);
    write_file(t.s.inst.cfgset + "/DIR.DEF", start_dir + "\n");
    run_words(t, words, script);
}

}  // namespace

TEST(UsersFiles, FilesThatAreNotTheJobsSurviveEveryExitAndEveryOddName) {
    TempDir papers;
    put_users_files(papers.path());
    fs::copy_file(test_data("water.xyz"), papers / "water.xyz");
    const std::string water = read_file(papers / "water.xyz");

    {   // A structure file of another kind names an empty job beside it.
        TestSession t;
        run_from(t, papers.path(), {papers / "formald.pdb"}, "close\n");
        EXPECT_EQ(t.s.job.name, "formald");
    }
    expect_users_files(papers.path(), "formald.pdb");
    {   // A new, empty job of a name that other files share.
        TestSession t;
        run_from(t, papers.path(), {"chapter", "1"}, "menu 40039\nclose\n");
    }
    expect_users_files(papers.path(), "an empty job");
    EXPECT_FALSE(file_present(papers / "chapter.xyz"));
    EXPECT_FALSE(file_present(papers / "chapter.geo"));
    for (const std::string odd : {"w?ter", "two\nlines"}) {
        TestSession t;
        run_from(t, papers.path(), {odd, "1"}, "close\n");
        EXPECT_TRUE(said(t, "cannot name a job")) << odd;
        EXPECT_EQ(t.s.job.name, "ptest");
        expect_users_files(papers.path(), odd);
        EXPECT_EQ(read_file(papers / "water.xyz"), water) << odd;
    }
    {   // ptest is cleared at the start, but only of its own files.
        TestSession t;
        put_users_files(t.scratch());
        write_file(t.scratch() + "/ptest.xyz", "stale\n");
        write_file(t.scratch() + "/ptest.003", "frame\n");
        run_from(t, t.scratch(), {}, "close\n");
        expect_users_files(t.scratch(), "a start on ptest");
        EXPECT_FALSE(file_present(t.scratch() + "/ptest.003"));
    }
}

TEST(UsersFiles, OnlyTheNamesZentolWritesAreTheJobsAndTheTableSaysSo) {
    EXPECT_TRUE(is_job_file("Water", "water.XYZ"));
    EXPECT_FALSE(is_job_file("water", "water2.xyz"));
    std::string why;
    EXPECT_TRUE(valid_job_name("Benzene-2 (opt)", &why));
    EXPECT_FALSE(valid_job_name(std::string(51, 'a'), &why));

    // Every ending the program deletes stands in the file-name table.
    std::string table = text::lower_case(read_file(std::string(ZENTOL_TEST_DATA) + "/../../docs/file-names.md"));
    for (const auto& ending : job_file_endings())
        EXPECT_NE(table.find("`<job>" + ending + "`"), std::string::npos) << ending << " is missing from docs/file-names.md";
}

TEST(UsersFiles, SaveAsOntoTheJobsOwnNameInOtherCapitalsKeepsItsFiles) {
    TestSession t;
    write_file(t.scratch() + "/water.key", "parameters mm3\n#verbose\nmyown\n");
    write_file(t.scratch() + "/water.lst", "a listing\n");
    run_on_water(t, "menu 40007\nfile " + t.scratch() + "/WATER.xyz\nclose\n");
    EXPECT_NE(read_file(t.scratch() + "/water.key").find("myown"), std::string::npos);
    EXPECT_EQ(read_file(t.scratch() + "/water.lst"), "a listing\n");
    EXPECT_TRUE(file_present(t.scratch() + "/water.xyz"));
}

TEST(UsersFiles, AMoleculeCutOnLoadingIsNotWrittenOverItsFile) {
    TestSession t;
    std::string big = "  2600 big\n";
    for (int i = 1; i <= 2600; ++i)
        big += text::format_i(i, 6) + "  C   " + text::format_f(i * 1.6, 11, 6) + "    0.000000    0.000000     1\n";
    write_file(t.scratch() + "/big.xyz", big);
    run_from(t, t.scratch(), {"big", "1"}, "menu 40039\nmsgbox ok\nmsgbox no\nmsgbox no\nclose\n");
    EXPECT_EQ(t.s.store.natoms, 2500);
    ASSERT_GE(t.tk.message_boxes().size(), 2u);
    EXPECT_EQ(t.tk.message_boxes()[0],
              "big.xyz holds 2600 atoms; Zentol keeps the first 2500.\rThe file is not written over until you say so.");
    EXPECT_EQ(read_file(t.scratch() + "/big.xyz"), big);
}

// A read-only folder (as root, a read-only mount) or a full disk (a small tmpfs filled
// up, as root): saving says why once, keeps the molecule, never tears the file, and
// leaving offers Save As.
void edit_where_nothing_can_be_written(bool full) {
    TempDir folder;
    const std::string job_dir = folder.path();
    const bool root = ::geteuid() == 0;
    if (!root && full) GTEST_SKIP() << "a full disk needs a tmpfs mount, which needs root";
    if (root && ::mount("tmpfs", job_dir.c_str(), "tmpfs", 0, "size=256k") != 0) GTEST_SKIP() << "no tmpfs here";
    struct Unmount {
        std::string dir;
        bool mounted;
        ~Unmount() {
            if (mounted) ::umount2(dir.c_str(), MNT_DETACH);
            fs::permissions(dir, fs::perms::owner_all, fs::perm_options::add);
        }
    } unmount{job_dir, root};
    fs::copy_file(test_data("water.xyz"), job_dir + "/water.xyz");
    TestSession t;
    files::change_dir(job_dir);
    t.s.job.name = "water";
    int status = 0;
    read_job_xyz(t.s, status);
    ASSERT_EQ(status, kXyzRead);
    const std::string before = read_file(job_dir + "/water.xyz");
    if (full) {
        std::ofstream filler(job_dir + "/filler", std::ios::binary);
        const std::string block(4096, 'x');
        while (filler.write(block.data(), static_cast<std::streamsize>(block.size()))) {}
    } else if (root) {
        ASSERT_EQ(::mount("tmpfs", job_dir.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "size=256k"), 0);
    } else {
        fs::permissions(job_dir, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);
    }
    t.s.store.atom_rec[1][kZ] = 0.5f;
    save_and_reload(t.s);
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    const std::string& said = t.tk.message_boxes()[0];
    EXPECT_EQ(said.rfind("Cannot write " + job_dir + "/water.xyz:", 0), 0u) << said;
    EXPECT_NE(said.find(full ? "No space left on device" : "ead-only"), std::string::npos) << said;
    EXPECT_FLOAT_EQ(t.s.store.atom_rec[1][kZ], 0.5f);
    save_and_reload(t.s);                                  // said once, then on the status bar
    EXPECT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_EQ(t.tk.status(9).rfind("Not saved: water.xyz", 0), 0u);
    EXPECT_EQ(read_file(job_dir + "/water.xyz"), before);
    EXPECT_TRUE(files::list(job_dir, "*zentol-tmp*").empty());

    TempDir elsewhere;
    t.tk.load_script("msgbox yes\nfile " + elsewhere / "kept.xyz" + "\n");
    exit_sequence(t.s);
    auto lines = files::read_lines(elsewhere / "kept.xyz");
    ASSERT_TRUE(lines);
    EXPECT_NE((*lines)[1].find("    0.500000"), std::string::npos) << (*lines)[1];
    EXPECT_EQ(read_file(job_dir + "/water.xyz"), before);
}

TEST(UsersFiles, AReadOnlyFolderSaysSoAndKeepsTheMolecule) { edit_where_nothing_can_be_written(false); }

TEST(UsersFiles, AFullDiskSaysSoAndKeepsTheMolecule) { edit_where_nothing_can_be_written(true); }
