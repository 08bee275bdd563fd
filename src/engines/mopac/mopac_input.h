// The MOPAC deck: a three-line header from the New Input dialog and the
// atom table of the molecule. Two engine generations are served: Mopac 6
// and the MOPAC 2016 generation, which on Linux is the open-source MOPAC
// (22.x) that the distribution installs as `mopac`.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

struct Session;

inline constexpr int kMopac6 = 0;
inline constexpr int kMopac2016 = 1;

// The highest multiplicity the 2016 generation has a word for (NONET).
inline constexpr int kMaxModernMultiplicity = 9;
// The method dialog 107 offers the first time: PM7.
inline constexpr int kDefaultMethod = 7;

// What dialog 107 holds.
struct MopacOptions {
    int method = 0;          // 1..10 of the method table; 0 none chosen
    int scf = 1;             // 1 RHF, 2 UHF
    int charge = 0;
    int multiplicity = 1;
    int run_type = 2;        // 1 Energy, 2 Optimize, 3 IR-Hessian
    bool geo_ok = false;
    bool mm_ok = false;
    bool bond_rotation = false;
    bool mass_weighted = false;
    bool mopac2016 = false;
    int plot_type = 0;       // 0 M.O., 1 spin density, 2 density: the dialog's choice less 1
};

// The keyword of a method index 1..10, "" for none.
std::string mopac_method(int index);
// Methods only the 2016 generation knows (PM6 and later).
bool method_needs_2016(int index);
// Methods the open-source MOPAC no longer takes (PDG, MDG).
bool method_dropped_by_modern_mopac(int index);
// The index of a keyword ("PM7" -> 7), 0 when it is none of the table.
int mopac_method_index(std::string_view keyword);

// Why the engine generation `version` cannot run these options, as the
// user is told; "" when it can. `mopac2016_checked`: the user asked for the
// 2016 generation (and `version` 0 means it is not installed).
std::string mopac_refusal(const MopacOptions& o, int version, bool mopac2016_checked);

// The three header lines. A FORCE run resets run_type to 2, as the deck
// asks for the Hessian itself.
std::vector<std::string> mopac_header(MopacOptions& o, int version, const std::string& job);

// The atoms with their optimisation flags: internal coordinates for fewer
// than four atoms under Mopac 6, Cartesian lines otherwise. `dihedral`
// holds the four atoms of a stored dihedral for a bond rotation (else 0s).
std::vector<std::string> mopac_atom_table(const Store& st, const MopacOptions& o, int version,
                                          const int dihedral[4]);

// The open-source MOPAC only computes force constants at a stationary
// point: the deck then carries a second job on the optimised geometry.
std::vector<std::string> mopac_force_job(const MopacOptions& o, const std::string& method);

}  // namespace zentol
