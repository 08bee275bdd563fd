// Orbital and density plots of a MOPAC run: the graph file the map programs
// read, the plot files written from dialog 110, and the hand-over to orbview.
// The file builders are pure; mopac_plot drives them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engines/mopac/mopac_mgf.h"
#include "session/molecule_store.h"

namespace zentol {

struct Session;
struct MopacState;

// What dialog 110 gave.
struct PlotRequest {
    int orbital = 0;       // M.O. number
    int grid_steps = 64;   // 27..128
    int kind = 0;          // 0 M.O., 1 spin density, 2 density
    int homo_index = 0;
    std::string job;       // names the map files; written when known
};

// graph.dat of a 2016-generation run: a head line (atoms, basis functions,
// orbitals in the file, the H.O.M.O's number, 4I6), one line an atom
// (atomic number I4, x y z 3F12.6), and for each orbital " ORBITAL", its
// number as the listing numbers it I5, occupancy I3 and energy F12.5, then
// its coefficients five a line (5F14.8); then what the map programs need
// to evaluate them: " EXPONENTS" and the Slater exponents s p d of each
// atom (3F12.7), a UHF run's beta set as " BETA ORBITAL" records, and
// " INVERSE_MATRIX" (I6 basis functions) with the lower triangle of the
// matrix, each row from a new line (docs/map-files.md).
std::vector<std::string> graph_file_from_mgf(const Mop2016Vectors& v);

// graph.dat of a Mopac 6 density or spin plot: the orbital graph file with
// the density (dens.dat) or the spin (spn.dat) behind it.
std::vector<std::string> graph_file_with_density(const std::vector<std::string>& graph,
                                                 const std::vector<std::string>& density);

// pppele.dat: the number of atoms (I5), then label A4 and x y z (3F12.6).
std::vector<std::string> plot_atoms_file(const Store& st);

// pppmap.KEW, the map program's control file: graph file, orbital, grid
// steps, plot kind, H.O.M.O, then the job (which names the map), each value
// with its name behind it.
std::vector<std::string> plot_control_file(const PlotRequest& r);

// job_mo.pdb for the viewer: the fixed cell and scale lines, one HETATM
// line an atom (residue "UNK     0") and one CONECT line a bond.
std::vector<std::string> plot_pdb(const Store& st);

// Plot MO / Spin Density: dialog 110, the plot files, the map program, and
// orbview through plot_exit when it is installed.
void mopac_plot(Session& s, MopacState& m);

// After a Mopac 6 run: for013 to graph.dat, with the density or spin of a
// density plot added.
void make_mopac6_graph(int plot_kind);

// After a 2016-generation run: job.mgf cut at " Keywords" into mgf.tmp, its
// orbital table to the .GEO log and graph.dat built from it, the orbitals
// numbered from the listing's highest occupied level (0: from 1).
void make_mopac2016_graph(Session& s, int listing_homo);

}  // namespace zentol
