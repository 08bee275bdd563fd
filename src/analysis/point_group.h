// Zentol's point-group program: finds the Schoenflies group of a molecule,
// symmetrises it and turns it onto its principal axes. Everything here is a
// pure function; the program zentol-symmol only reads and writes the files.
//
// Files, all in the job directory:
//   SYMMOL.INP   input: cell line, switches line, then label(4) " 1" x y z (3F9.5)
//   mol_al.lst   input: label(4) x y z (3F10.4), closed by the A1/B1/C1 axis rows
//   SYMMOL.OUT   first line: group in columns 1-7, then the deviation (F9.4)
//   SYMMOL.LST   readable listing of the search
//   MOL_AL.TXT   first line "  The molecule has been aligned ..." on success
//   SYMMETRZ.OUT one line per atom: label(6) x y z (3F12.6), aligned frame
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "analysis/symmetry_ops.h"

namespace zentol {

inline constexpr double kDefaultSymmetryTolerance = 0.1;   // Angstrom

struct SymAtom {
    std::string label;
    std::string element;   // "C", "Cl"
    symmetry::Vec pos{};
};

// A symmetry element of the found group, its direction in the aligned frame.
struct SymmetryElement {
    enum class Kind { identity, rotation, reflection, inversion, improper };
    Kind kind = Kind::identity;
    int order = 1;              // n of Cn or Sn; 0 for the infinite axis of a linear molecule
    symmetry::Vec direction{};  // axis, or normal of a plane
};

struct PointGroupResult {
    std::string group = "C1";   // Schoenflies symbol, "C*v" / "D*h" for linear molecules
    double tolerance = kDefaultSymmetryTolerance;
    // Largest distance (Angstrom) between an atom, moved by a symmetry
    // operation of the group, and the atom it is carried onto; the input
    // geometry, each operation its best fit.
    double deviation = 0;
    int order = 1;              // 0 for the infinite groups
    std::vector<SymmetryElement> elements;
    std::vector<std::vector<int>> equivalent_sets;   // atoms carried into each other
    symmetry::Vec centre{};     // centre of mass in the input frame
    symmetry::Mat axes = symmetry::identity();   // rows: the aligned x, y, z in the input frame
    symmetry::Vec moments{};    // principal moments of inertia, amu A^2, ascending
    std::vector<symmetry::Vec> symmetrised;   // aligned frame, centred, input order
    bool aligned = false;       // false when there was nothing to work on
};

// Element symbol of an atom label ("Cl12" -> "Cl", "C12" -> "C").
std::string element_of_label(std::string_view label);
// Standard atomic mass; 12 for symbols the table doesn't know.
double atomic_mass(std::string_view element);

PointGroupResult find_point_group(const std::vector<SymAtom>& atoms,
                                  double tolerance = kDefaultSymmetryTolerance);

// The input files, as lines.
std::vector<SymAtom> parse_symmol_inp(const std::vector<std::string>& lines);
std::vector<SymAtom> parse_mol_al_list(const std::vector<std::string>& lines);

// The output files, whole.
std::string format_symmol_out(const PointGroupResult& r);
std::string format_symmol_lst(const std::vector<SymAtom>& atoms, const PointGroupResult& r);
std::string format_mol_al_txt(const PointGroupResult& r);
std::string format_symmetrz_out(const std::vector<SymAtom>& atoms, const PointGroupResult& r);

}  // namespace zentol
