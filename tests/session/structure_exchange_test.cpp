// Other programs' structure files in whole sessions: opened from File > Open, the command line
// and a drop; exported from File > Export; one round through the real MOPAC and obabel.
#include "session/structure_exchange.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "session/openers.h"
#include "session_helpers.h"
#include "structure_files/openbabel_import.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;
namespace fs = std::filesystem;

namespace {

const char* const kStandardWater =
    "3\n"
    "water from another program\n"
    "O    0.000000    0.000000    0.117300\n"
    "H    0.000000    0.757200   -0.469200\n"
    "H    0.000000   -0.757200   -0.469200\n";

// A folder of the user's beside the scratch folder, with the file in it.
std::string users_file(const TestSession& t, const std::string& name, const std::string& content) {
    const std::string path = t.dir / ("molecules/" + name);
    write_file(path, content);
    return path;
}

std::string users_copy(const TestSession& t, const std::string& data_file) {
    return users_file(t, fs::path(data_file).filename().string(), read_file(test_data(data_file)));
}

// A session started on a path, as `zentol PATH` does.
void run_on_path(TestSession& t, const std::string& path, const std::string& script) {
    write_file(t.s.inst.cfgset + "/zentol.def", t.s.inst.default_library + "\n" + t.scratch() + "\n1\n");
    t.tk.load_script(script);
    run_program(t.s, {"zentol", path});
}

}  // namespace

// water_z, since the job water would write over the file itself.
TEST(StructureExchange, StandardXyzBecomesANewJobBesideIt) {
    TestSession t;
    const std::string path = users_file(t, "water.xyz", kStandardWater);
    run_on_water(t, "menu 40005\nfile " + path + "\nkey R\n");
    EXPECT_TRUE(messages_but_ptest_question(t).empty()) << t.tk.message_boxes()[0];
    EXPECT_EQ(t.s.job.name, "water_z");
    EXPECT_EQ(read_file(path), kStandardWater);
    // Build mode's types; bonds by the distance rule (the file has none).
    const auto rows = files::split_lines(read_file(t.dir / "molecules/water_z.xyz"));
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[1].substr(0, 12), "     1  O1  ");
    EXPECT_EQ(rows[1].substr(47), "     6     2     3");
    EXPECT_EQ(rows[3].substr(0, 12), "     3  H2  ");
    EXPECT_EQ(rows[3].substr(47), "    21     1");
    EXPECT_NE(read_file(t.dir / "molecules/water_z.geo").find("Imported from " + path), std::string::npos);
}

// water.out is the job water's own MOPAC listing, so the job is water_z.
TEST(StructureExchange, AnEngineListingOpensAsAJobThatLeavesItAlone) {
    TestSession t;
    const std::string listing = users_file(t, "water.out", read_file(test_data("mopac/m22_water_E.out")));
    run_on_water(t, "menu 40005\nfile " + listing + "\n");
    EXPECT_EQ(t.s.job.name, "water_z");
    EXPECT_EQ(t.s.store.natoms, 3);
    EXPECT_EQ(read_file(listing), read_file(test_data("mopac/m22_water_E.out")));
}

TEST(StructureExchange, GarbageFileIsNamedAndTheJobStays) {
    TestSession t;
    const std::string junk = users_file(t, "junk.pdb", "%PDF-1.4 this is no molecule\n");
    const std::string bad_xyz = users_file(t, "bad.xyz", "3\ncomment\nO 0 0 zero\n");
    run_on_water(t, "menu 40005\nfile " + junk + "\nfile " + bad_xyz + "\nfile cancel\n");
    EXPECT_TRUE(said(t, "Input junk.pdb file error"));
    EXPECT_TRUE(said(t, "Input bad.xyz file error"));
    EXPECT_FALSE(said(t, "jobname"));
    EXPECT_EQ(t.s.job.name, "water");
    EXPECT_EQ(files::current_dir(), fs::canonical(t.scratch()).string());
    EXPECT_FALSE(file_present(t.dir / "molecules/junk.xyz"));
    EXPECT_FALSE(file_present(t.dir / "molecules/bad_z.xyz"));

    TestSession u;   // on the command line: named, and the session goes on in ptest
    const std::string junk_mol2 = users_file(u, "junk.mol2", "no molecule at all\n");
    run_on_path(u, junk_mol2, "");
    EXPECT_TRUE(said(u, "Input junk.mol2 file error"));
    EXPECT_EQ(u.s.job.name, "ptest");
    EXPECT_EQ(read_file(junk_mol2), "no molecule at all\n");
}

TEST(StructureExchange, AnExistingJobIsReplacedOnlyWhenTheUserSaysSo) {
    for (bool replace : {false, true}) {
        SCOPED_TRACE(replace);
        TestSession t;
        const std::string sdf = users_copy(t, "structure_files/zn_propanoate.sdf");
        const std::string old_job = read_file(test_data("water.xyz"));
        write_file(t.dir / "molecules/zn_propanoate.xyz", old_job);
        run_on_water(t, "menu 40005\nfile " + sdf + "\nmsgbox " + (replace ? "yes" : "no") + "\n");
        EXPECT_TRUE(said(t, "The job zn_propanoate already exists beside zn_propanoate.sdf."));
        EXPECT_EQ(t.s.job.name, "zn_propanoate");
        EXPECT_EQ(t.s.store.natoms, replace ? 15 : 3);
        EXPECT_EQ(t.s.flags.total_charge, replace ? 1 : 0);
    }
}

TEST(StructureExchange, ADroppedFileOpens) {
    TestSession t;
    const std::string mol2 = users_copy(t, "structure_files/zn_propanoate.mol2");
    run_on_water(t, "drop " + mol2 + "\n");
    EXPECT_EQ(t.s.job.name, "zn_propanoate");
    EXPECT_EQ(t.tk.status(9), "Imported zn_propanoate.mol2");

    // In Build the drop is not taken, and the status bar says so.
    TestSession b;
    const std::string sdf = users_copy(b, "structure_files/zn_propanoate.sdf");
    run_on_water(b, "menu 40003\ndrop " + sdf + "\n");
    EXPECT_EQ(b.s.job.name, "water");
    EXPECT_TRUE(status_was(b, 9, "Leave this mode to open a dropped file: " + sdf + " was not opened"));
}

TEST(StructureExchange, ExportWritesTheTurnedMoleculeInTheChosenFormat) {
    TestSession t;
    const std::string own = t.scratch() + "/water.xyz";
    const std::string pdb = t.dir / "out/water.pdb";
    fs::create_directories(t.dir / "out");
    run_on_water(t, "key 258\nkey 258\nmenu 40120\nfile " + own + "\nfile " + pdb + "\n");
    EXPECT_TRUE(said(t, "water.xyz is a file of the job water itself."));
    std::string why;
    auto m = read_foreign_structure(pdb, &why);
    ASSERT_TRUE(m.has_value()) << why;
    ASSERT_EQ(m->atoms.size(), 3u);
    EXPECT_GT(std::abs(m->atoms[1].x), 0.01);   // turned: the file's water lies in the yz plane
    for (int i = 1; i <= 3; ++i) {
        EXPECT_NEAR(m->atoms[i - 1].x, t.s.store.atom_rec[i][kX], 1e-3);
        EXPECT_NEAR(m->atoms[i - 1].z, t.s.store.atom_rec[i][kZ], 1e-3);
    }
    EXPECT_NE(read_file(pdb).find("HETATM    1  O   MOL"), std::string::npos) << read_file(pdb);
}

TEST(StructureExchange, PdbThroughMopacToAnSdfThatObabelReads) {
    if (on_path("mopac").empty() || on_path("obabel").empty()) GTEST_SKIP() << "needs mopac and obabel";
    TestSession t;
    t.s.engines.values["mopac2016"] = "mopac";
    const std::string pdb = users_copy(t, "structure_files/zn_propanoate.pdb");
    const std::string sdf = t.dir / "molecules/result.sdf";
    run_on_path(t, pdb, "menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1054=1\nmenu 40001\nmenu 40120\nfile " + sdf + "\n");
    EXPECT_TRUE(messages_but_ptest_question(t).empty()) << t.tk.message_boxes()[0];
    EXPECT_EQ(t.s.flags.total_charge, 1);
    EXPECT_TRUE(file_present(t.dir / "molecules/zn_propanoate.out"));
    EXPECT_NE(read_file(t.dir / "molecules/zn_propanoate.inp").find("CHARGE=  1"), std::string::npos);
    const std::string count = t.dir / "molecules/count.txt";
    const std::string cmd = "obabel '" + sdf + "' -oxyz 2>/dev/null | head -1 > '" + count + "'";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    EXPECT_EQ(read_file(count), "15\n");
    EXPECT_NE(read_file(sdf).find("M  CHG  1   1   1"), std::string::npos) << read_file(sdf);
}
