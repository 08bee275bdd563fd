// The molecule store: one set of fixed tables that every mode shares.
// All indices are 1-based; row 0 is never an atom and a 0 neighbour is "none".
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace zentol {

inline constexpr int kMaxAtoms = 2500;
inline constexpr int kAtomRows = 2622;      // 2600-2603 axes, 2611-2618 box corners
inline constexpr int kMaxNeighbours = 8;    // in memory; 7 are written to a .xyz file
inline constexpr int kMaxBonds = 4000;
inline constexpr int kMaxMarkedBonds = 9;
inline constexpr int kMaxJobName = 50;
inline constexpr int kMaxColourElements = 20;
inline constexpr int kRecentJobs = 10;
inline constexpr int kBigMolecule = 1000;
inline constexpr int kElementRows = 93;     // row = atomic number, row 93 is D
inline constexpr int kAxisOriginRow = 2600;
inline constexpr int kBoxCornerBase = 2610; // BXk goes to row 2610+k

// Columns of atom_rec.
enum AtomField { kX = 0, kY = 1, kZ = 2, kRadius = 3, kMark = 4, kMolecule = 5 };

// Columns of the connectivity table (stored column by column).
inline constexpr int kConnType = 1;
inline constexpr int kConnFirstNbr = 2;     // columns 2..9 hold the neighbours
inline constexpr int kConnCount = 10;
inline constexpr int kConnMark = 11;
inline constexpr int kConnMark2 = 12;

using Label = std::array<char, 4>;          // exactly 4 characters, blank padded

Label make_label(std::string_view text);
std::string label_text(const Label& l);     // the 4 characters as a string

struct ElementRow {
    char symbol[3];
    float radius;
    float electronegativity;
    int mm3_type;
    bool confirmed;
};

struct Store {
    // Atom table.
    int natoms = 0;
    int natoms_file = 0;
    std::array<Label, kAtomRows + 1> atom_label{};
    std::array<std::array<float, 6>, kAtomRows + 1> atom_rec{};
    std::array<float, kAtomRows + 1> atom_colour{};
    std::array<float, kAtomRows + 1> atom_emph{};
    std::array<float, 251> atom_charge{};
    float box_corner_count = 0;
    bool big_molecule = false;
    bool hide_atoms = false;
    int emphasis_count = 0;

    // Connectivity, column-major: conn[column][atom].
    std::array<std::array<int, kMaxAtoms + 1>, 13> conn{};
    int& nbr(int atom, int slot) { return conn[kConnFirstNbr + slot - 1][atom]; }  // slot 1..8
    int nbr(int atom, int slot) const { return conn[kConnFirstNbr + slot - 1][atom]; }
    int& conn_count(int atom) { return conn[kConnCount][atom]; }
    int conn_count(int atom) const { return conn[kConnCount][atom]; }
    int& conn_type(int atom) { return conn[kConnType][atom]; }
    int conn_type(int atom) const { return conn[kConnType][atom]; }

    // Bond list, derived from the connectivity table.
    int nbonds = 0;
    std::array<int, kMaxBonds + 1> bond_a{};
    std::array<int, kMaxBonds + 1> bond_b{};

    // Marked bonds of Build mode.
    int marked_bond_count = 0;
    std::array<std::array<int, 2>, kMaxMarkedBonds + 1> marked_bonds{};

    // Display copy.
    int disp_natoms = 0;
    std::array<Label, kAtomRows + 1> disp_label{};
    std::array<float, kAtomRows + 1> disp_x{}, disp_y{}, disp_z{}, disp_w{};
    std::array<float, kAtomRows + 1> screen_x{}, screen_y{};
    float disp_scale = 1.0f;

    // Element table (radius column editable during a session).
    std::array<ElementRow, kElementRows + 1> elements{};

    // Element list for colouring.
    int element_count = 0;
    std::array<Label, kMaxColourElements + 1> element_list{};
    std::array<int, kMaxColourElements + 1> element_index{};

    // Unit cell used by the symmetry side files.
    std::array<float, 6> cell{1, 1, 1, 90, 90, 90};

    Store();
    void clear_molecule();
};

}  // namespace zentol
