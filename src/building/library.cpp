#include "building/library.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "building/connectivity.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/ins_file.h"
#include "structure_files/key_file.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

std::string library_path(const std::string& library_dir, int code, const std::string& name) {
    static const char* const kFiles[] = {"aromatics/benzene.xyz",          "alkanes/c_hexane.xyz",
                                         "alkanes/i_butane.xyz",           "alcohols/methanol.xyz",
                                         "alkanes/c_pentane.xyz",          "carboxylic_acids/formic_acid.xyz",
                                         "groups/nitro.xyz",               "groups/acetyl.xyz",
                                         "alkanes/neo-pentane.xyz"};
    if (code < 1 || code > 9) return name;
    return library_dir + "/" + kFiles[code - 1];
}

namespace {

// 1.05 times the largest x of the atoms there, 0 with none.
float running_max_x(const Store& st) {
    if (st.natoms == 0) return 0;
    float hi = st.atom_rec[1][kX];
    for (int i = 2; i <= st.natoms; ++i) hi = std::max(hi, st.atom_rec[i][kX]);
    return hi * 1.05f;
}

void append_atoms(Store& st, Toolkit* tk, const Store& added) {
    const int n0 = st.natoms;
    const float lowest = [&] {
        float lo = added.atom_rec[1][kX];
        for (int i = 2; i <= added.natoms; ++i) lo = std::min(lo, added.atom_rec[i][kX]);
        return lo;
    }();
    float shift = (running_max_x(st) + 0.5f) - lowest;
    if (std::fabs(shift) > 900.0f) shift = 0;
    const int n = std::min(added.natoms, kMaxAtoms - n0);
    for (int k = 1; k <= n; ++k) {
        const int i = n0 + k;
        st.atom_label[i] = normalise_symbol(label_text(added.atom_label[k]));
        st.atom_rec[i] = added.atom_rec[k];
        st.atom_rec[i][kX] += shift;
        st.atom_rec[i][kRadius] = element_lookup(st, tk, label_text(st.atom_label[i]), kLookupRadius);
        for (int c = 0; c <= kConnMark2; ++c) st.conn[c][i] = 0;
        st.conn_type(i) = added.conn_type(k);
        int count = 0;
        for (int slot = 1; slot <= kMaxNeighbours; ++slot) {
            int j = added.nbr(k, slot);
            j = j > 0 ? j + n0 : 0;
            if (j > kMaxAtoms) j = 0;
            st.nbr(i, slot) = j;
            count += j != 0;
        }
        st.conn_count(i) = count;
        st.conn[kConnMark2][i] = 2;
    }
    st.natoms = n0 + n;
}

}  // namespace

int append_molecule_lines(Store& st, Toolkit* tk, const std::vector<std::string>& lines) {
    auto added = std::make_unique<Store>();
    int charge = 0, multiplicity = 1;
    if (parse_xyz(lines, *added, nullptr, charge, multiplicity) != kXyzRead || added->natoms == 0)
        return kAppendFailed;
    const bool was_empty = st.natoms == 0;
    append_atoms(st, tk, *added);
    rebuild_bond_list(st);
    return was_empty ? kAppendStarted : kAppendJoined;
}

int append_molecule_file(Session& s, const std::string& path) {
    auto lines = files::read_lines(path);
    if (!lines) return kAppendFailed;
    const int result = append_molecule_lines(s.store, &s.tk, *lines);
    if (result != kAppendFailed) write_job_files(s);
    return result;
}

int append_library_file(Session& s, int code, const std::string& name) {
    return append_molecule_file(s, library_path(s.job.library_dir, code, name));
}

std::vector<std::string> shifted_key_lines(const std::vector<std::string>& added, int n0) {
    std::vector<std::string> out;
    for (const std::string& raw : added) {
        // Tinker reads a keyword behind leading blanks too.
        const std::string line(text::trim(raw));
        const std::string upper = text::upper_case(line);
        if (upper.rfind("PARAMETER", 0) == 0) continue;
        if (upper.rfind("CHARGE", 0) == 0) {
            auto values = text::read_reals(std::string(6, ' ') + line.substr(std::min<std::size_t>(6, line.size())), 2);
            // An atom number out of all reach is left as it stands.
            if (values && values->size() == 2 && std::fabs((*values)[0]) < 1e9) {
                long long atom = std::llround((*values)[0]);
                atom = atom < 0 ? atom - n0 : atom + n0;
                out.push_back("CHARGE" + text::format_i(atom, 6) + text::format_f((*values)[1], 10, 4));
                continue;
            }
        }
        out.push_back(line);
    }
    return out;
}

namespace {

std::string stem_of(const std::string& xyz_path) {
    const std::size_t dot = xyz_path.find_last_of('.');
    const std::size_t slash = xyz_path.find_last_of('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return xyz_path;
    return xyz_path.substr(0, dot);
}

void merge_charge_logs(Session& s, const std::string& stem, int n_added) {
    const std::string job_log = job_file(s, "_chg.log");
    auto added = files::read_lines(stem + "_chg.log");
    auto own = files::read_lines(job_log);
    if (!added || !own) return;
    for (int k = 1; k <= n_added && k < static_cast<int>(added->size()); ++k)
        own->push_back((*added)[static_cast<std::size_t>(k)]);
    files::write_lines(job_log, *own);
}

}  // namespace

void merge_added_molecule(Session& s, const std::string& added_xyz, int n0) {
    create_key_if_missing(s);
    const std::string stem = stem_of(added_xyz);
    merge_charge_logs(s, stem, s.store.natoms - n0);
    auto added_key = files::read_lines(stem + ".key");
    if (!added_key) return;
    const std::string key = job_file(s, ".key");
    std::vector<std::string> lines = files::read_lines(key).value_or(std::vector<std::string>{});
    for (std::string& l : shifted_key_lines(*added_key, n0)) lines.push_back(std::move(l));
    files::write_lines(key, lines);
}

int add_molecule_from_file(Session& s) {
    std::string path = s.job.library_dir + "/";
    if (!s.tk.select_file(20001, kChooseExisting, path, "Load a Molecule from Library")) return kAppendFailed;
    const int n0 = s.store.natoms;
    const int result = append_molecule_file(s, path);
    if (result == kAppendFailed) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Cannot read the molecule in " + path, "Add.Mol");
        return result;
    }
    merge_added_molecule(s, path, n0);
    return result;
}

}  // namespace zentol
