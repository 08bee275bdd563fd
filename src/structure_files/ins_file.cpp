#include "structure_files/ins_file.h"

#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/key_file.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

using text::format_f;

std::string sfac_line(const Store& st) {
    std::string line = "SFAC  ";
    std::vector<std::string> seen;
    for (int i = 1; i <= st.natoms; ++i) {
        std::string sym = {st.atom_label[i][0], label_is_one_letter(label_text(st.atom_label[i])) ? ' ' : st.atom_label[i][1]};
        bool known = false;
        for (const auto& s : seen) known = known || s == sym;
        if (known) continue;
        seen.push_back(sym);
        line += sym + "  ";
    }
    return std::string(text::trim_right(line));
}

std::string format_ins(const Store& st, const std::string& job_name) {
    std::string out = std::string(text::trim_right("TITL  " + job_name)) + "\n";
    out += "CELL 0.71069 1. 1. 1. 90. 90. 90.\nLATT -1\n" + sfac_line(st) + "\nFVAR\n";
    for (int i = 1; i <= st.natoms; ++i) {
        Label l = st.atom_label[i];
        // A centroid "Cn.." goes to the sibling programs as "CEN" plus the fourth character.
        if (l[0] == 'C' && l[1] == 'n') l = {'C', 'E', 'N', l[3]};
        const auto& r = st.atom_rec[i];
        std::string line = label_text(l) + "  1  " + format_f(r[kX], 9, 4) + format_f(r[kY], 9, 4) +
                           format_f(r[kZ], 9, 4) + " 11.0 " + format_f(r[kRadius] * 0.05, 7, 3);
        out += std::string(text::trim_right(line)) + "\n";
    }
    return out + "HKLF 4\n";
}

std::string format_symmol_inp(const Store& st) {
    std::string out = "  1.  1.  1.  90.  90.  90.\n 1 1 .300000 .300000\n";
    for (int i = 1; i <= st.natoms; ++i) {
        const auto& r = st.atom_rec[i];
        std::string line = label_text(st.atom_label[i]) + " 1" + format_f(r[kX], 9, 5) + format_f(r[kY], 9, 5) +
                           format_f(r[kZ], 9, 5);
        out += std::string(text::trim_right(line)) + "\n";
    }
    return out;
}

std::string format_mol_al(const Store& st) {
    auto row = [](const std::string& label, double x, double y, double z) {
        std::string line = text::pad_right(label, 4) + format_f(x, 10, 4) + format_f(y, 10, 4) + format_f(z, 10, 4);
        return std::string(text::trim_right(line)) + "\n";
    };
    std::string out;
    for (int i = 1; i <= st.natoms; ++i) {
        const auto& r = st.atom_rec[i];
        out += row(label_text(st.atom_label[i]), r[kX], r[kY], r[kZ]);
    }
    return out + row("A1", 1, 0, 0) + row("B1", 0, 1, 0) + row("C1", 0, 0, 1);
}

namespace {

void tell_unwritable(Session& s, const XyzProblem& p) {
    std::string file = files::current_dir() + "/" + job_file(s, ".xyz");
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                     "The molecule cannot be saved:\r" + p.why + ".\r" + file + " keeps its last good molecule.",
                     "Zentol");
}

void tell_save_failed(Session& s, const std::string& name, const std::string& why) {
    std::string file = files::current_dir() + "/" + name;
    if (!s.flags.save_failed) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Stop, 1,
                         "Cannot write " + file + ":\r" + why +
                             ".\rThe molecule stays in memory: save it elsewhere with File > Save As.",
                         "Zentol");
    }
    s.flags.save_failed = true;
    s.tk.WindowOutStatusBar(9, "Not saved: " + name + ": " + why);
}

// A molecule cut on loading goes over its original only when the user says so.
bool may_write_cut_molecule(Session& s) {
    if (s.flags.cut_on_load == 1) {
        bool yes = s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 2,
                                    "The molecule was cut to " + std::to_string(kMaxAtoms) + " atoms.\rWrite it over " +
                                        job_file(s, ".xyz") + "? (No keeps the file as it is;\rsave the cut molecule "
                                        "under a new name with File > Save As.)",
                                    "Zentol") == 1;
        s.flags.cut_on_load = yes ? 0 : 2;
    }
    if (s.flags.cut_on_load == 2) {
        s.tk.WindowOutStatusBar(9, "Not saved over " + job_file(s, ".xyz") + ": use File > Save As");
        return false;
    }
    return true;
}

}  // namespace

SaveResult write_job_files(Session& s) {
    const Store& st = s.store;
    XyzProblem problem;
    if (unwritable_atom(st, &problem)) {
        tell_unwritable(s, problem);
        return SaveResult::Unwritable;
    }
    if (!may_write_cut_molecule(s)) return SaveResult::Held;
    create_key_if_missing(s);
    std::string why;
    if (!files::write_atomic(job_file(s, ".xyz"), format_xyz(st, s.job.name, s.flags.total_charge,
                                                              s.flags.spin_multiplicity), &why)) {
        tell_save_failed(s, job_file(s, ".xyz"), why);
        return SaveResult::Failed;
    }
    s.flags.save_failed = false;
    // A one-atom job has no .ins.
    if (st.natoms == 1) files::remove_file(job_file(s, ".ins"));
    else if (!files::write_atomic(job_file(s, ".ins"), format_ins(st, s.job.name), &why))
        tell_save_failed(s, job_file(s, ".ins"), why);
    if (st.natoms > 2) files::write_atomic("SYMMOL.INP", format_symmol_inp(st));
    files::write_atomic("mol_al.lst", format_mol_al(st));
    s.tk.WindowOutStatusBar(4, text::format_i(st.natoms, 4));
    s.tk.WindowOutStatusBar(6, text::format_i(st.nbonds, 4));
    return SaveResult::Written;
}

}  // namespace zentol
