// Other programs' structure files through Open Babel: what a file becomes
// in the job's tables, and what the job's molecule becomes in each format.
#include "structure_files/structure_import.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <set>

#include "building/connectivity.h"
#include "building/placement.h"
#include "session/store_ops.h"
#include "structure_files/openbabel_import.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "text/fixed_format.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

using Bonds = std::set<std::pair<int, int>>;

Bonds bonds_of(const Store& st) {
    Bonds b;
    for (int k = 1; k <= st.nbonds; ++k) b.insert({st.bond_a[k], st.bond_b[k]});
    return b;
}

std::unique_ptr<Store> fresh_store() {
    auto st = std::make_unique<Store>();
    element_lookup(*st, nullptr, "", kLookupConfirmAll);
    return st;
}

// The file read and made into a store; a failure fails the test.
std::unique_ptr<Store> imported(const std::string& path, ForeignMolecule* read = nullptr) {
    std::string why;
    auto m = read_foreign_structure(path, &why);
    EXPECT_TRUE(m.has_value()) << path << ": " << why;
    auto st = fresh_store();
    if (!m) return st;
    store_from_foreign(*m, *st, nullptr, 0.25f, nullptr);
    if (read) *read = *m;
    return st;
}

// The store exported in the format of the extension into dir, the path.
std::string exported(const Store& st, const std::string& dir, const std::string& ext, int charge) {
    std::string why;
    auto text = format_foreign_structure(foreign_from_store(st, "zn_propanoate", charge, 1, {}), ext, &why);
    EXPECT_TRUE(text.has_value()) << ext << ": " << why;
    const std::string path = dir + "/again." + ext;
    write_file(path, text.value_or(""));
    return path;
}

void expect_same_molecule(const Store& a, const Store& b, double within = 1e-4) {
    ASSERT_EQ(a.natoms, b.natoms);
    for (int i = 1; i <= a.natoms; ++i) {
        EXPECT_EQ(element_symbol(label_text(a.atom_label[i])), element_symbol(label_text(b.atom_label[i]))) << i;
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(a.atom_rec[i][k], b.atom_rec[i][k], within) << "atom " << i;
    }
    EXPECT_EQ(bonds_of(a), bonds_of(b));
}

// One per layout Open Babel reads differently (.mol is .sdf's MDL layout).
const char* const kFormats[] = {"xyz", "pdb", "sdf", "mol2", "cml"};

}  // namespace

// A zinc complex with an ammonium group: the formats that carry charges keep its +1.
TEST(StructureImport, EveryFormatRoundTripsAMetalComplexWithACharge) {
    TempDir dir;
    auto reference = imported(test_data("structure_files/zn_propanoate.sdf"));
    ASSERT_EQ(reference->natoms, 15);
    EXPECT_EQ(bonds_of(*reference).size(), 14u);
    for (const char* ext : kFormats) {
        SCOPED_TRACE(ext);
        ForeignMolecule first_read;
        auto first = imported(test_data(std::string("structure_files/zn_propanoate.") + ext), &first_read);
        // The standard XYZ file has no bonds: Zentol's distance rule finds
        // the same ones the SDF file states. PDB holds 3 decimals.
        expect_same_molecule(*reference, *first, std::string(ext) == "pdb" ? 5.1e-4 : 1e-4);
        const int charge = first_read.total_charge;
        EXPECT_EQ(charge, std::string(ext) == "xyz" ? 0 : 1);
        ForeignMolecule second_read;
        auto second = imported(exported(*first, dir.path(), ext, charge), &second_read);
        expect_same_molecule(*first, *second);
        EXPECT_EQ(second_read.total_charge, charge);
    }
}

// A PDB file states bonds for its HETATM groups in CONECT records (here a
// zinc 2.55 and 2.4 Angstrom from its ligands, beyond the distance rule)
// and none for the residue: the residue is bonded by distance.
TEST(StructureImport, PdbTakesConectBondsAndBondsTheResidueByDistance) {
    ForeignMolecule m;
    auto st = imported(test_data("structure_files/glycine_zn.pdb"), &m);
    ASSERT_EQ(st->natoms, 9);
    const Bonds want = {{1, 2}, {2, 3}, {3, 4}, {3, 5}, {5, 6}, {6, 7}, {7, 8}, {7, 9}};
    EXPECT_EQ(bonds_of(*st), want);
    EXPECT_EQ(m.total_charge, 1);   // Zn2+ and the carboxylate's O1-
    EXPECT_EQ(label_text(st->atom_label[6]).substr(0, 2), "Zn");
    EXPECT_EQ(label_text(st->atom_label[8])[0], 'H');
}

// Build mode's rules: the carboxyl carbon and its terminal oxygen are typed as the
// trigonal template and the bare atom make them, unlike the chain and the bridging oxygen.
TEST(StructureImport, AtomTypesFollowBuildModesRules) {
    auto st = imported(test_data("structure_files/zn_propanoate.sdf"));
    const int chain_c = st->conn_type(2), carboxyl_c = st->conn_type(4);
    EXPECT_EQ(chain_c, atom_type_of(*st, "C"));
    EXPECT_NE(carboxyl_c, chain_c);
    EXPECT_EQ(carboxyl_c, correct_type(chain_c, 0, 4, 6));
    EXPECT_NE(st->conn_type(5), st->conn_type(6));   // C=O against C-O-Zn
    EXPECT_EQ(st->conn_type(9), hydrogen_type(st->conn_type(1)));   // a hydrogen by its parent
}

// Seven is what a row of the job's file holds.
TEST(StructureImport, AnAtomKeepsAtMostSevenBondsOnBothSides) {
    ForeignMolecule m;
    m.atoms.push_back({26, "Fe", 0, 0, 0, 0, 0, ""});
    for (int k = 0; k < 9; ++k) {
        const double a = 0.7 * k;
        m.atoms.push_back({6, "C", 2.0 * std::cos(a), 2.0 * std::sin(a), 0.3 * k, 0, 0, ""});
        m.bonds.push_back({1, k + 2, 1});
    }
    auto st = fresh_store();
    ImportNotes notes;
    store_from_foreign(m, *st, nullptr, 0.25f, &notes);
    EXPECT_EQ(notes.bonds_left_out, 2);
    EXPECT_EQ(st->conn_count(1), 7);
    EXPECT_EQ(st->nbonds, 7);
    for (int i = 2; i <= st->natoms; ++i) EXPECT_EQ(st->conn_count(i), i <= 8 ? 1 : 0) << i;
}

TEST(StructureImport, ExportLeavesOutCentroidsAndNamesAtomsByLabel) {
    auto st = fresh_store();
    int charge = 0, mult = 1;
    ASSERT_EQ(parse_xyz({"     3 t", "     1  C1     0.000000    0.000000    0.000000     1     3     2",
                         "     2  Cn     0.700000    1.000000    0.000000     0     1",
                         "     3  C2     1.500000    0.000000    0.000000     1     1"},
                        *st, nullptr, charge, mult),
              kXyzRead);
    const ForeignMolecule m = foreign_from_store(*st, "t", 0, 1, {});
    ASSERT_EQ(m.atoms.size(), 2u);
    EXPECT_EQ(m.atoms[1].name, "C2");
    EXPECT_EQ(m.atoms[1].atomic_number, 6);
    ASSERT_EQ(m.bonds.size(), 1u);
    EXPECT_EQ(std::pair(m.bonds[0].a, m.bonds[0].b), std::pair(1, 2));
}

// Damaged content is the session tests' (junk.pdb, junk.mol2).
TEST(StructureImport, AnUnknownFormatIsNamedReadingOrWriting) {
    TempDir dir;
    write_file(dir / "notes.qqq", "1\n\nO 0 0 0\n");
    std::string why;
    EXPECT_FALSE(read_foreign_structure(dir / "notes.qqq", &why).has_value());
    EXPECT_NE(why.find(".qqq"), std::string::npos) << why;
    EXPECT_FALSE(format_foreign_structure(ForeignMolecule{}, "qqq", &why).has_value());
}

namespace {

// A locale whose decimal mark is a comma: an installed one, or one built
// for the test into a folder of its own.
bool comma_locale(const std::string& dir) {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"})
        if (std::setlocale(LC_ALL, name)) return true;
    const std::string cmd = "localedef -i de_DE -f UTF-8 '" + dir + "/de_DE.UTF-8' >/dev/null 2>&1";
    if (std::system(cmd.c_str()) != 0) return false;
    setenv("LOCPATH", dir.c_str(), 1);
    return std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
}

}  // namespace

// An import leaves the process's locale as it was.
TEST(StructureImport, FixedColumnNumbersAreUnchangedByAnImportInACommaLocale) {
    TempDir dir;
    const std::string before = std::setlocale(LC_ALL, nullptr);
    if (!comma_locale(dir.path())) GTEST_SKIP() << "no comma-decimal locale here";
    const std::string in_test = std::setlocale(LC_ALL, nullptr);
    auto st = imported(test_data("structure_files/zn_propanoate.mol2"));
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), in_test);
    EXPECT_EQ(text::read_f("   2.500").value_or(0), 2.5);
    const std::string xyz = format_xyz(*st, "zn", 1, 1);   // Open Babel read the points too
    EXPECT_NE(xyz.find("     1  N1     1.089800    0.056300    0.063400"), std::string::npos) << xyz;
    std::setlocale(LC_ALL, before.c_str());
    unsetenv("LOCPATH");
}
