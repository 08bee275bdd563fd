#include "wavefunction/dgrid.h"

#include "engines/runner.h"
#include "engines/firefly/firefly_programs.h"
#include "session/openers.h"
#include "session/session.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

// The two stages of the Firefly wavefunction converter: elf_input_gen
// writes DGrid's input and the script run_<job>, which dos2unix then gives
// Unix line ends.
void run_wavefunction_converters(Session& s, const std::string& job) {
    const std::string elf = helper_or_message(s, "elf_input_gen", "The wavefunction converter elf_input_gen");
    if (!elf.empty()) run_blocking(s, shell_line(elf, {job}));
    const std::string dos2unix = helper_or_message(s, "dos2unix", "dos2unix");
    if (!dos2unix.empty()) run_blocking(s, shell_line(dos2unix, {"run_" + job}));
}

}  // namespace

std::vector<std::string> dgrid_batch(const std::string& program, const std::string& job) {
    return {shell_line(program, {job + ".wfn"})};
}

std::vector<std::string> dgrid_deck(const std::string& job) {
    return {"::" + job,
            ":--------------------------------------------------|",
            "wfn_1=" + job + ".gwf",
            "compute",
            ":-----------------------------------------",
            "using wfn_1",
            "rho",
            "save field_1",
            "mesh=0.10 rho=0.001 parallel",
            "compute_end",
            "basin",
            ":---------------------",
            "using field_1",
            "save basin_1",
            "crop using field_1 0.0001",
            ":---------------------",
            "basin_end",
            "overlap",
            ":--------------",
            "using wfn_1",
            "over basin_1",
            "save sij_1",
            ":--------------",
            "overlap_end",
            "DI",
            ":--------------",
            "using sij_1",
            ":--------------",
            "DI_end"};
}

std::string dgrid_program(const Session& s) {
    const std::string v51 = helper_program(s, "dgrid51");
    return v51.empty() ? helper_program(s, "dgrid50") : v51;
}

bool dgrid_prepare(Session& s, const std::string& job) {
    if (!files::exists(job + ".wfn")) return false;
    const std::string program = dgrid_program(s);
    if (program.empty()) {
        tell_missing(s, "DGrid", "dgrid51");
    } else {
        files::write_lines(job + "_D.bat", dgrid_batch(program, job));
        files::write_lines(job + "_D.inp", dgrid_deck(job));
    }
    run_wavefunction_converters(s, job);
    return true;
}

}  // namespace zentol
