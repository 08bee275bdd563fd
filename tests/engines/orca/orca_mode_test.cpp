// Orca mode in whole headless sessions, with fake orca, orca_pltvib and
// orca_2mkl programs replaying real ORCA 4.0 to 6.0 runs.
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "engines/orca/orca_mode.h"
#include "engines/session_checks.h"
#include "session/session.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

std::string tool(const std::string& name) { return std::string(ZENTOL_TEST_DATA) + "/../engines/orca/" + name; }

// The recorded files the fakes hand out, for one test: FAKE_* names with
// their values.
struct FakeOrca {
    explicit FakeOrca(TestSession& t, std::initializer_list<std::pair<const char*, std::string>> env = {}) {
        // ORCA's converters are found beside the program.
        const std::string bin = t.dir / "orca-bin";
        std::filesystem::create_directories(bin);
        std::filesystem::create_symlink(tool("fake_orca.sh"), bin + "/orca");
        std::filesystem::create_symlink(tool("fake_orca_pltvib.sh"), bin + "/orca_pltvib");
        std::filesystem::create_symlink(tool("fake_orca_2mkl.sh"), bin + "/orca_2mkl");
        t.s.engines.values["orca"] = bin + "/orca";
        t.s.engines.values["opener"] = "true";
        write_file(t.s.inst.bin + "/orca.txt", "    1\n");
        setenv("FAKE_PLTVIB_XYZ", test_data("orca/orca6.0_dihedral.v006.xyz").c_str(), 1);
        for (const auto& [name, value] : env) setenv(name, value.c_str(), 1);
    }
    ~FakeOrca() {
        for (const char* name : {"FAKE_ORCA_LST", "FAKE_ORCA_XYZ", "FAKE_ORCA_PROPERTY", "FAKE_PLTVIB_MODES",
                                 "FAKE_PLTVIB_XYZ", "FAKE_MOLDEN"})
            unsetenv(name);
    }
};

const std::vector<std::string>& boxes(const TestSession& t) { return t.tk.message_boxes(); }

}  // namespace

// ORCA 5.0.4 optimises Cl2 (a CRLF listing with three frequency runs) and
// leaves its geometry in job_property.txt.
TEST(OrcaMode, AnOptimisationWithThePropertyFileReturnsItsGeometry) {
    TestSession t;
    FakeOrca fake(t, {{"FAKE_ORCA_LST", test_data("orca/orca5.0_cl2_opt_numfreq_crlf.out")},
                      {"FAKE_ORCA_PROPERTY", test_data("orca/cl2_property.txt")}});
    std::filesystem::remove(t.s.inst.bin + "/orca.txt");
    run_on_molecule(t, "orca/chlorine.xyz",
                    "menu 40085\ndialog 104 ok 1101=2\nmenu 40002\ndialog 125 button:3 1049=1 1051=1\n"
                    "msgbox yes\nmenu 40001\n");
    const std::string job = t.scratch() + "/chlorine";
    // The cores asked once and kept in the installation.
    EXPECT_EQ(read_file(t.s.inst.bin + "/orca.txt"), "    2\n");
    const auto seen = lines_of(t.scratch() + "/deck.seen");
    EXPECT_EQ(seen.at(2), " ! RHF B3LYP def2-TZVP");
    EXPECT_EQ(seen.at(5), " %PAL NPROC            2");
    EXPECT_EQ(boxes(t), (std::vector<std::string>{"Do you really want to run Orca?", "Geometry converged"}));
    // The geometry, in the molecule, in the job's structure file and in the deck.
    EXPECT_FLOAT_EQ(t.s.store.atom_rec[1][kX] - t.s.store.atom_rec[2][kX], -2.914677f + 0.944263f);
    const auto deck = lines_of(job + ".ino");
    ASSERT_GE(deck.size(), 3u);
    EXPECT_EQ(std::vector<std::string>(deck.end() - 3, deck.end()),
              (std::vector<std::string>{"Cl      -2.914677  2.481221  0.000000",
                                        "Cl      -0.944263  2.605249  0.000000", " *"}));
    EXPECT_EQ(lines_of(job + ".xyz").at(0), "     2 chlorine chamul   0   1");
    EXPECT_FALSE(file_present(t.scratch() + "/old_chlorine.xyz"));
    EXPECT_EQ(lines_of(job + "_chg.log"),
              (std::vector<std::string>{"#Orca mulliken charges", "Cl      0.000000", "Cl     -0.000000"}));
    EXPECT_EQ(lines_of(job + "_ir.lst").size(), 5u);
    // The summary: the last of three thermochemistry blocks, the job, its run time.
    const auto summary = lines_of(job + "_summary.lst");
    ASSERT_GE(summary.size(), 4u);
    EXPECT_EQ(std::count(summary.begin(), summary.end(), "Summary of contributions to the inner energy U:"), 3);
    EXPECT_EQ(summary[1], "Electronic energy                ...   -920.37140806 Eh");
    EXPECT_EQ(summary[summary.size() - 4], "chlorine");
    EXPECT_EQ(summary.back(), "TOTAL RUN TIME: 0 days 0 hours 1 minutes 4 seconds 310 msec");
    EXPECT_EQ(read_file(t.scratch() + "/pltvib.seen"), "chlorine.hess ALL\n");
    EXPECT_EQ(read_file(t.scratch() + "/2mkl.seen"), "chlorine -molden\n");
    // Leaving the mode turns orca1.pdb into job_orca.pdb with the bonds.
    EXPECT_FALSE(file_present(t.scratch() + "/orca1.pdb"));
    const auto pdb = lines_of(job + "_orca.pdb");
    ASSERT_EQ(pdb.size(), 8u);
    EXPECT_EQ(pdb[4], "HETATM    1 Cl   UNK     0      -2.915   2.481   0.000");
    EXPECT_EQ(pdb[6], "CONECT    1    2");
    EXPECT_EQ(pdb[7], "CONECT    2    1");
}

// ORCA 6.0.1 writes no geometry block in the old layout: its own xyz file
// (kept as job.out) gives the geometry. Then the spectrum and the replay.
TEST(OrcaMode, AnOrcaSixOptimisationPlotsAndReplaysItsModes) {
    TestSession t;
    FakeOrca fake(t, {{"FAKE_ORCA_LST", test_data("orca/orca6.0_dihedral_optts_freq.out")},
                      {"FAKE_ORCA_XYZ", test_data("orca/orca6.0_dihedral_final.xyz")}, {"FAKE_PLTVIB_MODES", "6 7 8"}});
    run_on_molecule(t, "orca/difluoroethane.xyz",
                    "menu 40085\nmenu 40002\ndialog 125 ok 1016=1\nmenu 40003\nmsgbox yes\n"
                    "menu 40013\nmenu 40014\ndialog 117 ok 1085=1\ndialog 117 cancel\nmenu 40001\n");
    const std::string job = t.scratch() + "/difluoroethane";
    EXPECT_EQ(boxes(t), (std::vector<std::string>{"Do you really want to run Orca?", "Geometry converged"}));
    const auto& r = t.s.store.atom_rec;
    EXPECT_NEAR(r[8][kZ] - r[1][kZ], 1.017364 + 0.001735, 1e-5);
    EXPECT_EQ(lines_of(job + ".out"), lines_of(test_data("orca/orca6.0_dihedral_final.xyz")));
    const auto deck = lines_of(job + ".ino");
    EXPECT_EQ(deck.at(deck.size() - 2), "F        0.407215 -0.235418  1.017364");
    // Plot IR: the last table, scaled by the dialog's 0.97.
    EXPECT_TRUE(t.tk.last_chart().has_value());
    EXPECT_NE(read_file(job + ".geo").find("   262.76   0.31000"), std::string::npos);
    // Animate IR: the first row is mode 7, whose trajectory the converter
    // wrote (a missing one would say so); the dialog comes back until Cancel.
    EXPECT_EQ(std::count(t.tk.dialogs_shown().begin(), t.tk.dialogs_shown().end(), 117), 2);
}

TEST(OrcaMode, FailedCutAndOtherEncodedListingsOnUpdate) {
    // UpDate on a session of its own, the listing's lines as water.lst.
    auto update = [](TestSession& t, const std::vector<std::string>& listing) {
        FakeOrca fake(t);
        std::filesystem::create_directories(t.scratch());
        if (!listing.empty()) files::write_lines(t.scratch() + "/water.lst", listing);
        run_on_water(t, "menu 40085\nmenu 40017\nmenu 40001\n");
        return t.scratch() + "/water";
    };
    // A run cut after its charges: they are written, then the verdict.
    TestSession t;
    const auto full = lines_of(test_data("orca/orca4.2_dvb_uhf_sp.out"));
    std::string job = update(t, std::vector<std::string>(full.begin(), full.begin() + 3100));
    EXPECT_EQ(boxes(t), std::vector<std::string>{"Edit LST to troubleshoot"});
    EXPECT_EQ(lines_of(job + "_chg.log"),
              (std::vector<std::string>{"#Orca mulliken charges", "C       0.055876", "C       0.055876", "C      -0.038304"}));
    EXPECT_NEAR(t.s.store.atom_rec[2][kY] - t.s.store.atom_rec[1][kY], 0.763239f, 1e-5);
    // The aborted SCF: no charges at all.
    TestSession u;
    job = update(u, lines_of(test_data("orca/orca4.0_ircl6_sp_scf_unconverged.out")));
    EXPECT_EQ(boxes(u), std::vector<std::string>{"Edit LST to troubleshoot"});
    EXPECT_FALSE(file_present(job + "_chg.log"));
    // A UTF-16 single point: charges, no message.
    TestSession v;
    std::filesystem::create_directories(v.scratch());
    std::filesystem::copy_file(test_data("orca/orca5.0_h2_sp_utf16.out"), v.scratch() + "/water.lst");
    job = update(v, {});
    EXPECT_TRUE(boxes(v).empty());
    EXPECT_EQ(lines_of(job + "_chg.log"),
              (std::vector<std::string>{"#Orca mulliken charges", "H       0.000000", "H      -0.000000"}));
}

TEST(OrcaMode, TheQueueKeepsOneRecordAndSaysSoTwice) {
    auto queue_of = [](const TestSession& t) { return t.s.inst.default_scratch + "/../orca/qorca.txt"; };
    TestSession t;
    FakeOrca fake(t);
    run_on_water(t, "menu 40085\nmenu 40002\ndialog 125 ok\nmenu 40010\nmenu 40010\nmenu 40001\n");
    EXPECT_EQ(lines_of(queue_of(t)), std::vector<std::string>{t.scratch() + "/water.ino"});
    EXPECT_EQ(boxes(t), (std::vector<std::string>{"water.ino Added to Q", "water.ino Added to Q"}));
    // The structure file was kept safe as a run keeps it, and written again
    // on leaving.
    EXPECT_TRUE(file_present(t.scratch() + "/old_water.xyz"));
    EXPECT_TRUE(file_present(t.scratch() + "/water.xyz"));

    TestSession v;
    FakeOrca fake_v(v);
    write_file(queue_of(v), "/elsewhere/job.ino\n");
    run_on_water(v, "menu 40085\nmenu 40009\nmsgbox yes\nmenu 40001\n");
    EXPECT_FALSE(file_present(queue_of(v)));
    EXPECT_TRUE(transcript_has(v, "Delete Orca Queue?"));
}

TEST(OrcaMode, WithoutOrcaTheCommandSaysWhyAndChangesNothing) {
    TestSession t;
    t.s.engines.values["orca"] = t.dir / "no-orca";
    run_on_water(t, "menu 40085\n");
    EXPECT_TRUE(status_shows(t, "ORCA is not installed: set \"orca\" in " + t.s.inst.cfgset + "/engines.def"));
    EXPECT_FALSE(transcript_has(t, "menu 30008"));
    EXPECT_EQ(t.s.store.natoms, 3);
}

TEST(OrcaMode, EditorsHelpAndManualAndMissingFiles) {
    TestSession t;
    FakeOrca fake(t);
    run_on_water(t, "menu 40085\nmenu 40006\nmenu 40013\nmenu 41019\nmenu 40020\nmenu 40002\ndialog 125 cancel\n"
                    "menu 40005\nmenu 40001\n");
    // No listing and no stick file: the entries say so and do nothing.
    EXPECT_TRUE(transcript_has(t, "water.lst not found"));
    EXPECT_TRUE(transcript_has(t, "water_ir.lst not found"));
    EXPECT_FALSE(t.tk.last_chart().has_value());
    // HA_basis (41019) opens the shipped page; the manual is not configured.
    EXPECT_TRUE(transcript_has(t, "orca_ha_basis.htm"));
    ASSERT_EQ(boxes(t).size(), 1u);
    EXPECT_NE(boxes(t)[0].find("\"orca_manual\""), std::string::npos);
    // A cancelled dialog still writes the deck, which the editor then opens.
    EXPECT_TRUE(file_present(t.scratch() + "/water.ino"));
    EXPECT_TRUE(transcript_has(t, "editor: " + t.scratch() + "/water.ino"));
}
