// The graph file (job.mgf) of a MOPAC 2016-generation run (GRAPHF): atoms,
// basis functions and the orbitals with their coefficients, for the map
// programs of the orbital plots. Pure: the caller reads the file once
// (files::read_text_lines) and writes the .GEO log.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "engines/mopac/mopac_listing.h"

namespace zentol {

struct MgfAtom {
    int atomic_number = 0;
    double x = 0, y = 0, z = 0;
    double charge = 0;
};

struct MgfOrbital {
    int occupancy = 0;
    std::string symmetry;                 // "1a'", "10A", "1" ...
    double energy = 0;                    // eV
    std::vector<double> coefficients;     // one a basis function
};

// The orbitals are numbered as the listing numbers them: without ALLVEC
// the open-source MOPAC writes only HOMO-8 to HOMO+7 of a molecule with
// more than 16 orbitals, so the first one in the file need not be orbital 1.
struct Mop2016Vectors {
    int natoms = 0;
    int nbasis = 0;         // basis functions; 0 when the file does not say
    int norbitals = 0;      // orbitals of the table (the alpha set of a UHF file)
    int first_orbital = 1;  // the number of orbitals[0]
    int homo = 0;           // the highest filled level, by number
    std::vector<MgfAtom> atoms;
    std::vector<MgfOrbital> orbitals;    // as in the file
    // A UHF file holds the beta set after the " Keywords" line: orbitals
    // from this place on are beta orbitals (orbitals.size() when none).
    std::size_t beta_from = 0;
    // The Slater exponents of each atom (s, p, d; bohr^-1, 0 when the atom
    // has no such shell), one line an atom after the atoms.
    std::vector<std::array<double, 3>> exponents;
    // INVERSE_MATRIX: the lower triangle, row by row, of the matrix that takes
    // the orbitals from the orthogonal basis MOPAC works in back to its
    // Slater functions (S^-1/2); empty when the file has none.
    std::vector<double> inverse;
    std::vector<std::string> geo_lines;  // " Mopac 2016" and the orbital table
};

// The lines of job.mgf up to the " Keywords" line: what goes to mgf.tmp and
// what the plots read.
LineViews mgf_head(LineViews mgf);

// Reads the lines of job.mgf (the head only, or the whole file with the
// beta set of a UHF run behind " Keywords"). `listing_homo` is the highest occupied level
// of the run's listing (0 when there is none): the file's own highest
// filled orbital takes that number, and the others follow from it.
Mop2016Vectors read_mop2016_vectors(LineViews mgf, int listing_homo = 0);

}  // namespace zentol
