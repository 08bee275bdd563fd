// The Firefly deck, job.inp: one $-group a record, settled by the input
// dialog, then the atoms of the molecule. The writers here are pure; the
// dialog and the Z-matrix run live in firefly_input.cpp and
// firefly_zmatrix.cpp.
#pragma once

#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

struct FireflySettings;

// The method names of the dialog's order; 6 and above are ab initio.
std::string firefly_method_name(int method);
bool firefly_ab_initio(const FireflySettings& o);
// "RHF", "UHF", "GVB".
std::string firefly_scf_name(int scf_type);
// "ENERGY", "OPTIMIZE", "HESSIAN", "RAMAN".
std::string firefly_run_keyword(int run_type);

// The deck's records from $CONTRL to "C1": the head of every deck, and
// the first half (pppgamet.tmp) of a rotation profile.
std::vector<std::string> firefly_header(const FireflySettings& o, const std::string& job, int natoms);

// One atom: label A4, nuclear charge F5.1, x y z 3F12.5.
std::string firefly_atom_record(const std::string& label, int nuclear_charge, float x, float y, float z);

// The atoms in Cartesian form and " $END".
std::vector<std::string> firefly_cartesian_atoms(const Store& st);

// The atomic number of a label's element; 0 for a dummy or unknown symbol.
int atomic_number(const Store& st, const std::string& label);

// The $STATPT record with " IFREEZ(1)=" and the coordinate number (I4)
// put in before its " $END".
std::string freeze_coordinate(const std::string& statpt_record, int coordinate);

// The index of the $STATPT record in a header; -1 when there is none.
int statpt_record_index(const std::vector<std::string>& header);

// job.KEW: the two plot numbers and the grid steps, one free-format record.
std::vector<std::string> firefly_kew(int first, int second, int grid_steps);

}  // namespace zentol
