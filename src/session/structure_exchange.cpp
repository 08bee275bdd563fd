#include "session/structure_exchange.h"

#include <filesystem>
#include <memory>

#include "session/job_files.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace fs = std::filesystem;

namespace {

std::string leaf_of(const std::string& path) { return fs::path(path).filename().string(); }

bool ends_with_xyz(const std::string& path) { return structure_extension(path) == "xyz"; }

// The job's layout: the first atom row begins with its number and a label
// ("     1  C1  ..."); a standard XYZ file has a free comment there and rows
// that begin with the element.
bool job_layout(const std::vector<std::string>& lines) {
    if (lines.size() < 2) return true;
    auto words = text::split_words(lines[1]);
    if (words.size() < 2 || !text::read_i(words[0])) return false;
    const char c = words[1].front();
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

void tell_unreadable(Session& s, const std::string& path, const std::string& why) {
    tell(s, {input_error_line(path).c_str(), why.c_str(), "The file is left as it is."});
}

// The job name for the file: its base name, "_z" added when the job would
// write over the file itself (its own .xyz, or a listing Zentol writes
// under the job's name, as water.out).
std::string job_name_for(const std::string& path) {
    fs::path p(path);
    std::string name = p.stem().string();
    if (is_job_file(name, p.filename().string())) name += "_z";
    return name;
}

// The job of that name is there already: replace its molecule, or open it.
ImportChoice settle_existing(Session& s, PendingImport& out, std::string* existing_name) {
    const bool has_xyz = files::exists(out.name + ".xyz");
    if (!has_xyz && !files::exists(out.name + ".ins")) return ImportChoice::Import;
    const std::string leaf = leaf_of(out.source);
    std::string question = "The job " + out.name + " already exists beside " + leaf + ".\rReplace its molecule with the one in " +
                           leaf + "?";
    if (has_xyz) question += "\r(No opens the job as it is.)";
    if (ask_yes_no(s, question)) {
        out.replaces_job = true;
        return ImportChoice::Import;
    }
    if (!has_xyz) return ImportChoice::Refused;
    if (existing_name) *existing_name = out.name;
    return ImportChoice::OpenExisting;
}

}  // namespace

std::string input_error_line(const std::string& path) { return "Input " + leaf_of(path) + " file error"; }

FileKind classify_structure_file(const std::string& path, XyzProblem* problem) {
    if (!ends_with_xyz(path)) return FileKind::Foreign;
    auto lines = files::read_lines(path);
    if (!lines) return FileKind::JobXyz;   // a new, empty job
    auto probe = std::make_unique<Store>();
    element_lookup(*probe, nullptr, "", kLookupConfirmAll);
    int q = 0, m = 1;
    if (parse_xyz(*lines, *probe, nullptr, q, m, problem) != kXyzDamaged) return FileKind::JobXyz;
    return job_layout(*lines) ? FileKind::DamagedJobXyz : FileKind::Foreign;
}

ImportChoice prepare_import(Session& s, const std::string& path, PendingImport& out, std::string* existing_name) {
    out = {};
    out.source = fs::absolute(path).lexically_normal().string();
    std::string why;
    auto molecule = read_foreign_structure(out.source, &why);
    if (!molecule) {
        tell_unreadable(s, out.source, why);
        return ImportChoice::Refused;
    }
    auto probe = std::make_unique<Store>();
    probe->elements = s.store.elements;   // the radii as this session has them
    store_from_foreign(*molecule, *probe, nullptr, s.opt.cov_tolerance, &out.notes);
    XyzProblem problem;
    if (unwritable_atom(*probe, &problem)) {
        tell_unreadable(s, out.source, problem.why);
        return ImportChoice::Refused;
    }
    out.name = job_name_for(out.source);
    if (!valid_job_name(out.name, &why)) {
        tell(s, {("\"" + out.name + "\" cannot name a job:").c_str(), why.c_str()});
        return ImportChoice::Refused;
    }
    const int status = job_status(s, out.name);
    if (status >= 10 && s.flags.user_level < 3) {
        tell(s, {"Zentol will not open files in the Library", "Choose a folder outside the Library path and",
                 "and Load from the library using Build Mode"});
        return ImportChoice::Refused;
    }
    out.xyz_text = format_xyz(*probe, out.name, molecule->total_charge, molecule->multiplicity);
    return settle_existing(s, out, existing_name);
}

void clear_replaced_job(const PendingImport& p) {
    if (p.replaces_job) remove_own_job_files(".", p.name);
}

void install_import(Session& s, const PendingImport& p) { reload_from_text(s, p.xyz_text); }

void report_import(Session& s, const PendingImport& p) {
    const ImportNotes& n = p.notes;
    if (n.atoms_in_file > kMaxAtoms)
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         leaf_of(p.source) + " holds " + std::to_string(n.atoms_in_file) +
                             " atoms; the job keeps the first " + std::to_string(kMaxAtoms) + ".",
                         "Zentol");
    std::string note = "Imported " + leaf_of(p.source);
    if (n.bonds_left_out > 0)
        note += "; " + std::to_string(n.bonds_left_out) + " bonds beyond 7 an atom left out";
    s.tk.WindowOutStatusBar(9, note);
    log_line(s, (text::FreeRecord() << "Imported from " + p.source).str());
}

namespace {

// The name chosen for an export, refused with a message when its extension
// names no format Open Babel writes, when it is one of the job's own files
// (a standard XYZ over the job's .xyz would lose the job), or when the user
// keeps a file that is there.
bool export_target_ok(Session& s, const std::string& path) {
    const std::string ext = structure_extension(path);
    if (ext.empty() || !openbabel_writes(ext)) {
        std::string what = ext.empty() ? "The name " + leaf_of(path) + " has no extension to tell the format."
                                       : "Open Babel writes no format with the extension ." + ext + ".";
        tell(s, {what.c_str(), "Give a name ending .sdf, .mol, .pdb, .mol2, .cml or .xyz, for example."});
        return false;
    }
    std::error_code ec;
    const fs::path dir = fs::path(path).parent_path();
    if (fs::equivalent(dir, fs::current_path(), ec) && is_job_file(s.job.name, leaf_of(path))) {
        tell(s, {(leaf_of(path) + " is a file of the job " + s.job.name + " itself.").c_str(),
                 "Choose another name or folder for the export."});
        return false;
    }
    if (files::exists(path) && !ask_yes_no(s, leaf_of(path) + " exists.\rReplace it?")) return false;
    return true;
}

// The job's partial charges, when its charge log has one for every atom.
std::vector<double> job_partial_charges(const Session& s) {
    auto values = read_value_log(job_file(s, "_chg.log"));
    if (!values || static_cast<int>(values->size()) < s.store.natoms) return {};
    return *values;
}

}  // namespace

void export_structure(Session& s) {
    if (s.store.natoms < 1) {
        tell(s, {"There is no molecule to export."});
        return;
    }
    // The molecule goes out as it is seen: the turn on screen is taken into
    // the coordinates (and the job saved) first.
    reload_keeping_turn(s);
    std::string path = files::current_dir() + "/" + s.job.name + ".sdf";
    while (true) {
        if (!s.tk.select_file(kFilterStructureExport, kChooseNew, path, "Export the Molecule")) return;
        if (!export_target_ok(s, path)) continue;
        std::string why;
        const ForeignMolecule m = foreign_from_store(s.store, s.job.name, s.flags.total_charge,
                                                     s.flags.spin_multiplicity, job_partial_charges(s));
        auto content = format_foreign_structure(m, structure_extension(path), &why);
        if (content && files::write_atomic(path, *content, &why)) {
            s.tk.WindowOutStatusBar(9, "Exported " + leaf_of(path));
            log_line(s, (text::FreeRecord() << "Exported to " + path).str());
            return;
        }
        tell(s, {("Cannot export " + leaf_of(path)).c_str(), why.c_str()});
    }
}

}  // namespace zentol
