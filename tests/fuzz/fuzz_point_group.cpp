// The point-group files. The input is read as each of the program's inputs
// (SYMMOL.INP, mol_al.lst) and as each answer the command reads back
// (SYMMOL.OUT, SYMMETRZ.OUT). When it reads as a job's .xyz, the whole
// round goes as the command runs it: the store writes both inputs, the
// program picks one as it does, finds the group and writes its answers, and
// the command must get back the group and a row for every atom.
#include <cmath>

#include "analysis/point_group.h"
#include "analysis/point_group_command.h"
#include "fuzz_support.h"
#include "text/fixed_format.h"
#include "structure_files/ins_file.h"
#include "structure_files/xyz_file.h"

using namespace zentol;

namespace {

// Larger molecules only slow the search down; the files are the same.
constexpr std::size_t kMaxSearched = 64;

PointGroupResult search_and_read_back(const std::vector<SymAtom>& atoms) {
    const PointGroupResult r = find_point_group(atoms);
    (void)format_symmol_lst(atoms, r);
    (void)format_mol_al_txt(r);
    const auto answer = read_point_group_answer(files::split_lines(format_symmol_out(r)));
    FUZZ_CHECK(answer.has_value());
    FUZZ_CHECK(answer->group == text::pad_right(r.group, 7).substr(0, 7));
    FUZZ_CHECK(answer->deviation >= 0 && answer->deviation <= 0.91);
    return r;
}

// What zentol-symmol reads: SYMMOL.INP, or mol_al.lst when that holds
// another number of atoms.
std::vector<SymAtom> program_atoms(const Store& st) {
    std::vector<SymAtom> atoms = parse_symmol_inp(files::split_lines(format_symmol_inp(st)));
    std::vector<SymAtom> listed = parse_mol_al_list(files::split_lines(format_mol_al(st)));
    if (atoms.empty() || (!listed.empty() && listed.size() != atoms.size())) return listed;
    return atoms;
}

void whole_round(const Store& st) {
    const std::vector<SymAtom> atoms = program_atoms(st);
    FUZZ_CHECK(atoms.size() == static_cast<std::size_t>(st.natoms));
    for (std::size_t i = 0; i < atoms.size(); ++i)
        for (int c = 0; c < 3; ++c)
            FUZZ_CHECK(std::fabs(atoms[i].pos[static_cast<std::size_t>(c)] - st.atom_rec[i + 1][c]) < 1e-3);
    if (atoms.size() > kMaxSearched) return;
    const PointGroupResult r = search_and_read_back(atoms);
    // Every row comes back, unless a coordinate of the aligned frame does
    // not fit its column (Align then leaves the molecule alone).
    const auto rows = read_symmetrised(files::split_lines(format_symmetrz_out(atoms, r)), st.natoms);
    bool fits = true;
    for (const symmetry::Vec& p : r.symmetrised)
        for (double c : p) fits = fits && text::format_f(c, 12, 6).find('*') == std::string::npos;
    FUZZ_CHECK(rows.size() == atoms.size() || !fits);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> lines = fuzz::input_lines(data, size);
    const int natoms = static_cast<int>(fuzz::input_hash(data, size) % 100);

    for (const auto& atoms : {parse_symmol_inp(lines), parse_mol_al_list(lines)}) {
        for (const SymAtom& a : atoms) FUZZ_CHECK(a.label.size() <= 4);
        if (!atoms.empty() && atoms.size() <= kMaxSearched) search_and_read_back(atoms);
    }
    (void)read_point_group_answer(lines);
    FUZZ_CHECK(read_symmetrised(lines, natoms).size() <= static_cast<std::size_t>(natoms));

    Store* st = fuzz::fresh_store();
    int charge = 0, multiplicity = 1;
    if (parse_xyz(lines, *st, nullptr, charge, multiplicity) == kXyzRead && st->natoms > 2) whole_round(*st);
    return 0;
}
