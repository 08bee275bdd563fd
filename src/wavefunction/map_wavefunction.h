// The wavefunction the map programs evaluate on a grid: atoms, basis
// functions and orbitals, read from a MOPAC graph file (Slater functions)
// or from the AIMPAC section of a GAMESS/Firefly punch file (Gaussian
// primitives). Everything is in atomic units (bohr).
#pragma once

#include <array>
#include <string>
#include <vector>

#include "engines/mopac/mopac_mgf.h"
#include "text/text_lines.h"

namespace zentol {

constexpr double kBohrPerAngstrom = 1.0 / 0.52917721067;

struct MapAtom {
    int atomic_number = 0;
    double x = 0, y = 0, z = 0;  // bohr
};

// The Slater shells of one atom as MOPAC defines them: s, then px py pz,
// then the five d functions in MOPAC's order x2-y2, xz, z2, yz, xy; a
// shell with exponent 0 is absent. Radial part N r^(n-1) exp(-zeta r) with
// N = (2 zeta)^(n+1/2) / sqrt((2n)!), angular part a normalised real
// spherical harmonic.
struct SlaterAtom {
    int n_s = 0, n_p = 0, n_d = 0;  // principal quantum numbers
    double zeta_s = 0, zeta_p = 0, zeta_d = 0;
    int functions = 0;  // 0, 1, 4 or 9
    int first = 0;      // its first basis function
};

// One Gaussian primitive x^l y^m z^n exp(-alpha r^2), not normalised: the
// AIMPAC coefficients hold the normalisation and the contraction. `type`
// is AIMPAC's code: 1 s; 2-4 x y z; 5-10 xx yy zz xy xz yz; 11-20 xxx yyy
// zzz xxy xxz yyz xyy xzz yzz xyz.
struct GaussPrimitive {
    int centre = 0;  // 0-based atom
    int type = 1;
    double alpha = 0;
};

struct MapOrbital {
    int number = 0;          // as the engine numbers it
    double occupancy = 0;
    bool beta = false;       // of the beta set of an unrestricted run
    double energy = 0;       // as the engine gives it (eV for MOPAC, hartree)
    std::vector<double> c;   // one a basis function
};

struct MapWavefunction {
    std::vector<MapAtom> atoms;
    std::vector<SlaterAtom> slater;       // one an atom, or empty
    std::vector<GaussPrimitive> gauss;    // or the primitives
    int nbasis = 0;
    int homo = 0;                         // highest occupied (alpha) level, by number
    bool complete = true;                 // every occupied orbital is present
    std::vector<MapOrbital> orbitals;
};

// The principal quantum numbers MOPAC gives an element's s/p and d shells.
int slater_n_sp(int atomic_number);
int slater_n_d(int atomic_number);

// The values of every basis function at a point (bohr); `out` holds nbasis
// values. Functions far from the point are set to 0.
void basis_values(const MapWavefunction& w, double x, double y, double z, double* out);

// The orbitals of a MOPAC graph file in its Slater functions: the file's
// coefficients belong to MOPAC's orthogonal basis, and the inverse matrix
// takes them back. `error` says what is missing when the result is empty.
MapWavefunction mopac_wavefunction(const Mop2016Vectors& v, std::string& error);

// The AIMPAC section of a punch file ("----- TOP OF INPUT FILE FOR BADER'S
// AIMPAC PROGRAM -----"): atoms, primitives and the occupied orbitals.
MapWavefunction aimpac_wavefunction(const text::TextLines& punch, std::string& error);

}  // namespace zentol
