// Lewis structure and oxidation states: from atoms, bonds and the total
// charge, every atom gets its lone-pair electrons, ionic and formal charge and
// oxidation state, every bond an integer order; donor bonds are marked. The
// results go to the job's .geo log and to lewis.brt; a metal atom also gets
// its Covalent Bond Classification line.
//
// A metal's ligands are taken as neutral and the charge of a complex as the
// metal's: each ligand gets its own Lewis structure with its metal bonds cut,
// then bonds to the metal by its odd electrons (covalent) or by a lone pair
// (dative), as the Covalent Bond Classification counts them.
//
// The analysis is pure: it takes numbers and gives tables. Per-atom tables
// are 1-based like the store's (slot 0 unused), so atom i of the input is
// slot i; bond k of the input is slot k of `order`.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

inline constexpr int kLewisMaxAtoms = 300;   // what the command takes on
inline constexpr int kLewisSlots = 300;      // table size for atoms and bonds

struct LewisAtom {
    std::string label;       // 4 characters, blank padded
    int atn = 0;             // atomic number, 0 for dummies and centroids
    float en = 0;            // Allen electronegativity, 0 where none is held
    double x = 0, y = 0, z = 0;
};

struct LewisInput {
    std::vector<LewisAtom> atoms;           // atom i is atoms[i - 1]
    std::vector<std::array<int, 2>> bonds;  // atom numbers, lower first
    int total_charge = 0;
    // The atom the user marked as the anion; its element takes a negative
    // charge first. 0 when none is marked: the analysis then chooses one.
    int anion_atom = 0;
};

// Ligands of one metal by kind: l dative pairs, x covalent electrons (kind 2
// counts 1, kind 3 counts 2), z the charge of the complex.
struct LigandCounts {
    int l = 0;
    int x = 0;
    int z = 0;
};

// How a bond to a metal is made. A covalent bond shares one electron of each
// end per order (a methyl, a chloride, an oxo); a dative one is a pair of the
// ligand's (CO, NH3); a contact ties a side-on ligand (an eta-5 ring, or its
// centroid) whose electrons are counted per ligand and not per contact.
enum class MetalBond { none, covalent, dative, contact, metal_metal };

struct LewisDonorBond {
    int bond = 0;            // 1-based bond number
    // The end that was negative and the end that was positive; for a
    // ligand's dative bond to its metal, the ligand and the metal.
    int donor = 0;
    int acceptor = 0;
    int donor_net = 0;       // what is left of each end's net charge
    int acceptor_net = 0;
};

struct LewisResult {
    int ierr = 0;            // 0 good; 1 a positive, 2 a negative charge not placed
    bool exception = false;  // As or Te bonded to carbon: no hypervalence test
    std::vector<std::string> messages;   // to be shown to the user

    // Per atom, slots 1..natoms. be sums the orders of an atom's bonds,
    // except that a side-on ligand's contacts count the electron pairs it
    // shares with its metal (one per pi bond and per odd electron): such
    // a pair adds one to the metal's ve and be, so tec counts it and the
    // metal's lone electrons (ve - be) stay its own.
    std::vector<int> atn, group_e, ve, be, tec, chg, fc, coor, os;
    std::vector<float> en;
    std::vector<int> net;    // chg + fc after the donor bonds took their share
    // Per bond, slots 1..nbonds.
    std::vector<int> order;
    std::vector<MetalBond> metal_bond;   // MetalBond::none for bonds without a metal
    // Per atom: for a metal, its ligands by kind and its share of the charge.
    std::vector<LigandCounts> ligands;

    std::vector<LewisDonorBond> donors;
    std::vector<int> radicals;           // atoms left at 7 electrons

    int natoms() const { return static_cast<int>(atn.size()) - 1; }
    int lone_electrons(int i) const { return ve[i] - be[i]; }
};

// Valence electrons of the free atom by its column of the periodic table:
// 1 to 8 for the main groups, 3 to 12 for the transition metals, 3 for the
// lanthanides and actinides.
int lewis_group_electrons(int atn);

// Metals for the Covalent Bond Classification: the alkali and alkaline-earth
// metals, Al, Ga, In, Sn, Tl, Pb, Bi and every transition and f-block metal.
bool lewis_is_metal(int atn);

// One- or two-letter symbol, "" when unknown.
std::string lewis_element_symbol(int atn);

// Empty when the analysis can take the molecule, else the reason to show:
// at most 300 atoms, at most 300 bonds, one connected molecule (a ring
// centroid joins the ring around it).
std::string lewis_refusal(const LewisInput& in);

// The current molecule of the store with atomic numbers and electronegativi-
// ties from its element table; deuterium counts as hydrogen. The bonds are
// those of the bond list, plus any pair that only the later atom's row names
// (a metal's row holds eight neighbours, a ring of ten carbons may name it).
LewisInput lewis_input_from(Store& st, int total_charge);

LewisResult lewis_analysis(const LewisInput& in);

// The .geo log lines: "Lewis IERR =" alone when ierr is not 0; otherwise the
// donor bonds as step 11 finds them, the bond orders, the header and the atom
// table.
std::vector<std::string> lewis_log_lines(const LewisInput& in, const LewisResult& r);

// The whole of lewis.brt, line by line.
std::vector<std::string> lewis_brt_lines(const LewisInput& in, const LewisResult& r);

// The atom, bond and donor tables of lewis.brt as plain text for the
// toolkit's text viewer.
std::vector<std::string> lewis_table_text(const LewisInput& in, const LewisResult& r);

// The ligands of one metal as the analysis bonded them; see lewis_metals.cpp.
LigandCounts classify_ligands(const LewisInput& in, const LewisResult& r, int metal);

// "Covalent Bond Classification NiL4  OS  0",
// "Covalent Bond Classification  [ML2X1]1+  OS  2".
std::string cbc_line(const std::string& symbol, const LigandCounts& c);

// One line for every metal atom, in atom order; none when ierr is not 0.
std::vector<std::string> cbc_lines(const LewisInput& in, const LewisResult& r);

}  // namespace zentol
