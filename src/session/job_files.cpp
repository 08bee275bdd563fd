#include "session/job_files.h"

#include <algorithm>

#include "session/molecule_store.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

const std::vector<std::string>& job_file_endings() {
    // Keep in step with docs/file-names.md (a test compares the two).
    static const std::vector<std::string> endings = {
        // the job itself and its journal
        ".xyz", ".ins", ".key", ".geo", ".bgl", ".agl", "_chg.log", "_spn.log", "_aty.lst",
        // Tinker
        ".xyz_2", ".arc", ".dyn", ".bak",
        // MOPAC
        ".inp", ".mop", ".out", ".lst", ".mgf", ".mpf", ".rat", ".mat", "_mo.pdb", "_ir.lst",
        // Firefly and the drawn spectra
        ".pun", ".kew", ".wfn", "_d.bat", "_d.inp", "_ra.lst", "_ir.hgl", "_ir.png", "_ra.hgl", "_ra.png",
        // ORCA, its spectra and Multiwfn
        "_uv.lst", "_summary.lst", "_property.txt", ".hess", "_irspec.lst", "_raspec.lst", "_uvvis.lst",
        "_raman.png", "_uvvis.png", ".chg",
        // left by engines the Purge command clears
        ".engrad", ".gbw", ".ino", ".opt", "_trj.xyz", ".molden.input", "_orca.pdb"};
    return endings;
}

namespace {

bool all_digits(std::string_view s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

bool is_job_file(const std::string& job, const std::string& leaf) {
    if (job.empty() || leaf.size() <= job.size() || !text::equals_nocase(leaf.substr(0, job.size()), job)) return false;
    std::string_view rest = std::string_view(leaf).substr(job.size());
    if (rest.size() > 1 && rest[0] == '.' && all_digits(rest.substr(1))) return true;
    // Tinker's numbered structures: .xyz_2, .xyz_3 ... (it never overwrites).
    if (rest.size() > 5 && text::equals_nocase(rest.substr(0, 5), ".xyz_") && all_digits(rest.substr(5))) return true;
    for (const auto& ending : job_file_endings())
        if (text::equals_nocase(rest, ending)) return true;
    return false;
}

void remove_own_job_files(const std::string& dir, const std::string& job) {
    // Listed with the job's name as a literal prefix, then each name judged.
    for (const auto& leaf : files::list(dir, files::escape_pattern(job) + "*"))
        if (is_job_file(job, leaf)) files::remove_file(dir + "/" + leaf);
}

void remove_frame_files(const std::string& job) {
    for (const auto& leaf : files::list(".", files::escape_pattern(job) + ".*")) {
        std::string_view rest = std::string_view(leaf).substr(job.size() + 1);
        if (all_digits(rest)) files::remove_file(leaf);
    }
}

bool valid_job_name(const std::string& name, std::string* why) {
    auto refuse = [&](const std::string& text) {
        if (why) *why = text;
        return false;
    };
    if (text::trim(name).empty()) return refuse("A job name may not be empty");
    if (static_cast<int>(name.size()) > kMaxJobName) return refuse("A job name has at most 50 characters");
    for (char c : name) {
        if (c == '*' || c == '?' || c == '[') return refuse(std::string("A job name may not hold \"") + c + "\"");
        if (c == '/') return refuse("A job name may not hold a \"/\"");
        if (static_cast<unsigned char>(c) < 32 || c == 127) return refuse("A job name may not hold a line break or a control character");
    }
    if (name == "." || name == "..") return refuse("\"" + name + "\" is not a job name");
    return true;
}

}  // namespace zentol
