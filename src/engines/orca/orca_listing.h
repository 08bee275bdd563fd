// Reading what ORCA leaves behind: the listing job.lst (banners, Mulliken
// charges, the IR, Raman and UV tables, the thermochemistry summary), the
// property file's geometry blocks and the engine's own .xyz. Pure
// functions over decoded lines; the mode writes the files they return.
//
// Listings of ORCA 4.0 to 6.0 are read alike: the keys are compared as
// text at the columns the engine prints them, and where a version moved a
// key or a column both forms are read (see the comments at each table).
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "text/text_lines.h"

namespace zentol {

// What one stay in Orca mode has learnt from the listings read so far.
struct OrcaFlags {
    bool version5 = false;        // ORCA 5 or later wrote the listing; reset by every scan
    bool terminated = false;      // the normal-termination banner was seen; stays set
    bool geom_converged = false;  // the listing shows an optimisation; stays set until a run
    bool opt_requested = false;   // a deck asked for an optimisation, or one converged
};

// A stick file's lines: a table cut short by the end of the listing has
// its rows but no "  END" record.
using StickLines = std::vector<std::string>;

struct OrcaScan {
    std::optional<std::vector<std::string>> charges;   // job_chg.log, first Mulliken block
    std::optional<StickLines> ir, raman, uv;           // job_ir.lst, job_ra.lst, job_uv.lst (last table)
    bool ir_seen = false, raman_seen = false;          // a whole table was read
    std::optional<std::vector<std::string>> summary;   // job_summary.lst, after a converged optimisation
};

// The three passes over a listing. `natoms` charge rows are taken.
OrcaScan scan_orca_listing(const text::TextLines& listing, int natoms, const std::string& job, OrcaFlags& flags);

// The major version of a "Program Version N.m.k" banner at column 26.
std::optional<int> orca_program_version(std::string_view record);

// Hartree to kJ/mol as the summary converts it (32-bit arithmetic).
float hartree_to_kj(float hartree);

// One atom of a geometry the engine wrote.
struct OrcaAtom {
    std::string symbol;                 // as the engine wrote it: "H", "Cl"
    std::array<double, 3> xyz{};
};

// The last "    Coordinates:" block of job_property.txt with `natoms` rows:
// nullopt when there is no block; an empty vector when the last block is
// cut short or holds fewer rows.
std::optional<std::vector<OrcaAtom>> property_geometry(const text::TextLines& property, int natoms);

// The engine's own job.xyz (count, comment, one "El x y z" record an atom);
// nullopt unless it holds exactly `natoms` readable atoms.
std::optional<std::vector<OrcaAtom>> orca_xyz_geometry(const text::TextLines& xyz, int natoms);

// orca1.pdb: the cell records, then one HETATM record an atom.
std::vector<std::string> orca_pdb_records(const std::vector<OrcaAtom>& atoms);

// job.ino after a converged optimisation: the records of the old deck up to
// and including the first "* xyz" record (at most 60), then, for ORCA 5 or
// later, the new coordinates under the molecule's labels, then " *".
std::vector<std::string> orca_deck_with_geometry(const std::vector<std::string>& old_deck,
                                                 const std::vector<std::string>& labels,
                                                 const std::vector<OrcaAtom>& atoms, bool write_atoms);

}  // namespace zentol
