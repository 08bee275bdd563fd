// The side files written with the .xyz: .ins, SYMMOL.INP, mol_al.lst, the
// key file, the emphasis file and the logs.
#include <gtest/gtest.h>

#include "session/store_ops.h"
#include "structure_files/emphasis_file.h"
#include "structure_files/geo_log.h"
#include "structure_files/ins_file.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

void put_atom(Store& st, int i, const char* label, float x, float y, float z, float radius) {
    st.atom_label[i] = make_label(label);
    st.atom_rec[i] = {x, y, z, radius, 0, 0};
}

void methanol_like(Store& st) {
    st.natoms = 3;
    put_atom(st, 1, "C1", 0.0f, 0.0f, 0.0f, 0.76f);
    put_atom(st, 2, "O2", 1.43f, 0.0f, 0.0f, 0.66f);
    put_atom(st, 3, "Cn3", -0.5f, 0.25f, -1.125f, 0.0f);
}

}  // namespace

TEST(JobFiles, InsSymmolAndAlignmentLayouts) {
    Store st;
    methanol_like(st);
    EXPECT_EQ(format_ins(st, "meth"),
              "TITL  meth\n"
              "CELL 0.71069 1. 1. 1. 90. 90. 90.\n"
              "LATT -1\n"
              "SFAC  C   O   Cn\n"
              "FVAR\n"
              "C1    1     0.0000   0.0000   0.0000 11.0   0.038\n"
              "O2    1     1.4300   0.0000   0.0000 11.0   0.033\n"
              "CEN   1    -0.5000   0.2500  -1.1250 11.0   0.000\n"
              "HKLF 4\n");
    EXPECT_EQ(format_symmol_inp(st),
              "  1.  1.  1.  90.  90.  90.\n"
              " 1 1 .300000 .300000\n"
              "C1   1  0.00000  0.00000  0.00000\n"
              "O2   1  1.43000  0.00000  0.00000\n"
              "Cn3  1 -0.50000  0.25000 -1.12500\n");
    EXPECT_EQ(format_mol_al(st),
              "C1      0.0000    0.0000    0.0000\n"
              "O2      1.4300    0.0000    0.0000\n"
              "Cn3    -0.5000    0.2500   -1.1250\n"
              "A1      1.0000    0.0000    0.0000\n"
              "B1      0.0000    1.0000    0.0000\n"
              "C1      0.0000    0.0000    1.0000\n");
    st.atom_label[2] = make_label("Cl2");
    st.atom_label[3] = make_label("C3");
    EXPECT_EQ(sfac_line(st), "SFAC  C   Cl");
}

TEST(JobFiles, WriteJobFilesFollowsTheAtomCount) {
    TestSession t;
    t.s.job.name = "Meth";
    methanol_like(t.s.store);
    t.s.store.natoms = 2;
    write_job_files(t.s);
    EXPECT_TRUE(file_present("Meth.ins"));
    EXPECT_FALSE(file_present("SYMMOL.INP"));   // only above two atoms
    t.s.store.natoms = 1;
    write_job_files(t.s);
    EXPECT_FALSE(file_present("Meth.ins"));     // a one-atom job has no .ins
    // A file of another spelling is the same file: no second copy appears.
    files::write_atomic("MYJOB.XYZ", "old\n");
    t.s.job.name = "myjob";
    write_job_files(t.s);
    EXPECT_FALSE(file_present("myjob.xyz"));
    EXPECT_EQ(read_file("MYJOB.XYZ").substr(0, 13), "     1 myjob ");
}

TEST(JobFiles, EmphasisLines) {
    Store st;
    methanol_like(st);
    EXPECT_EQ(apply_emphasis_lines(st, {"REM first", " o2", "", "o2", "c1"}), 2);
    EXPECT_FLOAT_EQ(st.atom_emph[2], 1.0f);
    EXPECT_EQ(apply_emphasis_lines(st, {"Emphasise the first 2", "O2"}), 2);   // reading stops
    EXPECT_EQ(apply_emphasis_lines(st, {"EMPHASISE THE FIRST 3"}), 0);         // n equal to the count
    EXPECT_EQ(apply_emphasis_lines(st, {"CEN3"}), 0);                          // CEN keeps its case
    // A damaged count (nothing, repeated 2e17 times) once hung the reader.
    EXPECT_EQ(apply_emphasis_lines(st, {"EMPHASISE THE FiRST\r\r\r\r\r222222222222222222*", "222", "CEN "}), 0);
}

TEST(JobFiles, TypeListLayout) {
    Store st;
    methanol_like(st);
    st.conn_type(1) = 1;
    st.conn_type(2) = 6;
    EXPECT_EQ(format_type_list(st), "Atom type list\nC1           1\nO2           6\nCn3          0\n");
}

TEST(JobFiles, ANewLogReplacesTheOldAndLinesLoseTrailingBlanks) {
    TestSession t;
    t.s.job.name = "g";
    write_file("g.geo", " an old run\n");
    open_job_log(t.s, false, " Zentol g");
    log_line(t.s, " Energy   -12.5   ");
    close_job_log(t.s);
    EXPECT_EQ(read_file("g.geo"), " Zentol g\n Energy   -12.5\n");
}
