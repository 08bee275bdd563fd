// Replay of ORCA trajectories on the molecule: which file a row opens, the
// frames drawn for IR and Raman, and the molecule given back unchanged.
#include <gtest/gtest.h>

#include <filesystem>

#include "session/session.h"
#include "spectra/orca_replay.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

text::TextLines trajectory() { return *files::read_text_lines(test_data("orca/orca6.0_dihedral.v006.xyz")); }

// The difluoroethane job of the ORCA 6 listing, with its IR bands.
struct ReplayJob {
    ReplayJob() {
        t.s.job.name = "dfe";
        int charge = 0, multiplicity = 1;
        parse_xyz(test_data_lines("orca/difluoroethane.xyz"), t.s.store, nullptr, charge, multiplicity);
        for (const char* name : {"dfe_ir.lst", "dfe_ra.lst"})
            files::write_lines(name, {"", "  IR Spectrum", "  freq.cm**-1  Int.", "   276.92        0.41000    6",
                                      "   458.00        1.20000    7", "  END"});
    }
    std::vector<std::array<float, 6>> coordinates() const {
        return {t.s.store.atom_rec.begin() + 1, t.s.store.atom_rec.begin() + 1 + t.s.store.natoms};
    }
    void trajectory_for_mode(int mode, std::size_t lines = 200) {
        const auto all = trajectory();
        std::vector<std::string> kept(all.begin(), all.begin() + static_cast<long>(std::min(lines, all.size())));
        files::write_lines(trajectory_file("dfe", mode), kept);
    }
    // Replays the dialog's first or second row; the frames drawn.
    int replay(int kind, int row = 1) {
        t.tk.load_script("dialog 117 ok 1085=" + std::to_string(row) + "\n");
        const int before = t.renderer.frames;
        orca_replay(t.s, kind);
        return t.renderer.frames - before;
    }
    TestSession t;
};

}  // namespace

TEST(OrcaReplay, RowsNameTheEnginesTrajectoryFiles) {
    const auto rows = read_vibration_rows(text::TextLines::from_lines(
        {"", "  IR Spectrum", "  freq.cm**-1  Int.", "   950.60       37.06000   10", "  2778.45     2425.16000", "  END",
         "   999.00        1.00000   12"}));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(vibration_row_text(rows[0], 1), "   950.60       37.06000    1");
    // The mode the listing printed, or the row plus 5 for a row without one.
    EXPECT_EQ(replay_mode(rows, 1), 10);
    EXPECT_EQ(replay_mode(rows, 2), 7);
    EXPECT_EQ(trajectory_file("dfe", 6), "dfe.hess.v006.xyz");
}

TEST(OrcaReplay, TrajectoriesHoldTwentyFramesAndADamagedOneIsIncomplete) {
    bool complete = false;
    auto frames = read_trajectory(trajectory(), 8, complete);
    EXPECT_TRUE(complete);
    ASSERT_EQ(frames.size(), 20u);
    EXPECT_FLOAT_EQ(frames[0][0][0], -1.332224f);
    EXPECT_FLOAT_EQ(frames[1][7][2], 1.010528f);
    // A damaged line ends the frames read (a cut file: the replay tests below).
    const auto all = trajectory();
    std::vector<std::string> cut(all.begin(), all.begin() + 105);
    cut[12] = "C not-a-number";
    frames = read_trajectory(text::TextLines::from_lines(cut), 8, complete);
    EXPECT_FALSE(complete);
    EXPECT_EQ(frames.size(), 1u);
}

TEST(OrcaReplay, IrPlaysTwiceRamanThriceAndTheMoleculeComesBack) {
    ReplayJob j;
    j.trajectory_for_mode(6);
    const auto before = j.coordinates();
    // Eight atoms: every frame of both plays is drawn, then the molecule.
    int drawn = j.replay(1);
    EXPECT_GE(drawn, 40);
    EXPECT_LE(drawn, 43);
    EXPECT_EQ(j.t.tk.dialogs_shown(), (std::vector<int>{117, 117}));
    EXPECT_TRUE(j.t.tk.message_boxes().empty());
    EXPECT_EQ(j.coordinates(), before);

    // Raman shows frames 5 to 16 of three plays, and plays a cut file.
    j.trajectory_for_mode(6, 155);
    drawn = j.replay(2);
    EXPECT_GE(drawn, 3 * 11);
    EXPECT_LE(drawn, 3 * 11 + 3);
    EXPECT_TRUE(j.t.tk.message_boxes().empty());
    EXPECT_EQ(j.coordinates(), before);
}

TEST(OrcaReplay, AMissingOrCutIrTrajectoryIsReportedAndChangesNothing) {
    ReplayJob j;
    const auto before = j.coordinates();
    // Row 2 asks for mode 7, which orca_pltvib did not write.
    j.trajectory_for_mode(6);
    j.replay(1, 2);
    ASSERT_EQ(j.t.tk.message_boxes().size(), 1u);
    EXPECT_EQ(j.t.tk.message_boxes()[0], "Check LST file to troubleshoot");
    j.trajectory_for_mode(7, 123);
    j.replay(1, 2);
    EXPECT_EQ(j.t.tk.message_boxes().size(), 2u);
    EXPECT_EQ(j.coordinates(), before);

    // A molecule above 15 atoms does not move in IR (the frames are read but
    // not drawn), and still comes back whole.
    for (int i = 9; i <= 20; ++i) j.t.s.store.atom_rec[i] = j.t.s.store.atom_rec[1];
    j.t.s.store.natoms = 20;
    std::vector<std::string> big;
    for (int f = 0; f < 20; ++f) big.insert(big.end(), {"20", "*"}), big.insert(big.end(), 20, "H 1.0 2.0 3.0");
    files::write_lines(trajectory_file("dfe", 6), big);
    EXPECT_LE(j.replay(1), 3);
    EXPECT_NE(j.t.s.store.atom_rec[20][kX], 1.0f);
}
