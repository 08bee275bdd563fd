// Charges of the side log into the .key file, and comments into the .GEO log.
#include "engines/tinker/atom_charges.h"

#include <gtest/gtest.h>

#include "structure_files/geo_log.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

using Lines = std::vector<std::string>;

struct ChargeSession {
    ChargeSession() {
        t.s.job.name = "ptest";
        t.s.store.natoms = 3;
    }
    Lines key() const { return files::read_lines("ptest.key").value_or(Lines{}); }
    TestSession t;
};

}  // namespace

TEST(AtomCharges, ChargeLinesSelectOneAtomEach) {
    EXPECT_EQ(charge_key_line(1234, 1.5), "CHARGE -1234    1.5000");
    // The label's four columns are skipped, whatever they hold.
    EXPECT_EQ(charge_key_lines({"#Orca hirshfeld charges", "C1   -0.25", "H123 0.125", "O    0.5 9"}, 3),
              (Lines{"CHARGE    -1   -0.2500", "CHARGE    -2    0.1250", "CHARGE    -3    0.5000"}));
    // A short log or a line without a number ends the list.
    EXPECT_EQ(charge_key_lines({"#x", "C1   -0.25"}, 3).size(), 1u);
    EXPECT_EQ(charge_key_lines({"#x", "C1   -0.25", "H2   abc", "H3  0.1"}, 3).size(), 1u);
}

TEST(AtomCharges, TheSideLogIsAddedToTheKeyOnce) {
    ChargeSession c;
    write_file("ptest.key", "parameters /opt/tinker/params/mm3\n#verbose\n");
    add_atom_charges(c.t.s);   // no side log yet: nothing happens
    EXPECT_EQ(c.key(), (Lines{"parameters /opt/tinker/params/mm3", "#verbose"}));

    write_file("ptest_chg.log", "#Orca hirshfeld charges\nO1   -0.6\nH2    0.3\nH3    0.3\n");
    add_atom_charges(c.t.s);
    const Lines with = {"parameters /opt/tinker/params/mm3", "#verbose", "CHARGE    -1   -0.6000",
                        "CHARGE    -2    0.3000", "CHARGE    -3    0.3000"};
    EXPECT_EQ(c.key(), with);
    // New charges do not replace the ones there.
    write_file("ptest_chg.log", "#Orca hirshfeld charges\nO1   -0.9\nH2    0.45\nH3    0.45\n");
    add_atom_charges(c.t.s);
    EXPECT_EQ(c.key(), with);

    // Without a key file nothing is made up.
    c.t.s.job.name = "other";
    write_file("other_chg.log", "#x\nO1   -0.6\n");
    add_atom_charges(c.t.s);
    EXPECT_FALSE(file_present("other.key"));
}

TEST(AtomCharges, ACommentGoesToTheLogAfterABlankLine) {
    ChargeSession c;
    open_job_log(c.t.s, false, " Zentol ptest");
    c.t.tk.load_script("dialog 122 ok \"1001=before the anneal\"\ndialog 122 cancel 1001=dropped\n");
    add_comment(c.t.s);
    add_comment(c.t.s);
    EXPECT_EQ(files::read_lines("ptest.geo").value_or(Lines{}), (Lines{" Zentol ptest", "", " before the anneal"}));
}
