// What Tinker mode reads back from the engine: the log (ZENTOL.LOG) for the
// energies, the success of Vibrate and the blocks of undefined parameters
// with the key lines made of them, and an archive or frame file (job.arc,
// job.007) cut into frames, each read as a structure that is to become the
// job's (labels kept, the .ins written).
#include "engines/tinker/rotation_profile.h"
#include "engines/tinker/tinker_log.h"
#include "engines/tinker/tinker_runs.h"
#include "engines/tinker/undefined_params.h"
#include "fuzz_support.h"
#include "structure_files/ins_file.h"
#include "structure_files/xyz_file.h"

using namespace zentol;

namespace {

void read_log(const std::vector<std::string>& lines, const Store& molecule) {
    (void)log_shift(lines);
    const double final_value = final_function_value(lines);
    (void)energy_status_text(final_value);
    (void)energy_log_line(final_value);
    (void)capped_energy(final_value);
    if (auto total = total_potential_energy(lines)) (void)energy_log_line(*total);
    (void)has_undefined_block(lines);
    (void)vibrate_succeeded(lines);

    const UndefScan scan = scan_undefined(lines);
    for (const UndefEntry& e : scan.entries) {
        FUZZ_CHECK(e.kind >= 1 && e.kind <= 4);   // plain, 4-, 5- or 3-membered ring
        (void)undefined_title(e);
        (void)undefined_description(molecule, e);
        (void)(e.section == UndefSection::Torsion ? torsion_key_line(e.kind, e.row) : opbend_key_line(e.row, 1.0));
    }
}

// The frames of the input for a molecule of natoms atoms, as a dynamics
// replay reads them.
void read_frames(const std::vector<std::string>& lines, const Store& molecule) {
    const int natoms = molecule.natoms;
    const auto frames = archive_frames(lines, natoms);
    FUZZ_CHECK(frames.size() <= 500);
    if (natoms > 0) FUZZ_CHECK(frames.size() == std::min<std::size_t>(500, lines.size() / (natoms + 1)));
    const std::vector<Label> labels(molecule.atom_label.begin(), molecule.atom_label.begin() + natoms + 1);
    Store* st = fuzz::fresh_store(1);
    for (const auto& frame : frames) {
        FUZZ_CHECK(frame.size() == static_cast<std::size_t>(natoms) + 1);
        int charge = 0, multiplicity = 1;
        if (parse_xyz(frame, *st, nullptr, charge, multiplicity) != kXyzRead || st->natoms == 0) break;
        keep_job_labels(*st, natoms, labels);
        (void)format_ins(*st, "fuzz");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> lines = fuzz::input_lines(data, size);
    // The job's molecule: the input's own first frame when it has one, so
    // that archives cut as they would; otherwise a few atoms.
    Store* molecule = fuzz::fresh_store(0);
    int charge = 0, multiplicity = 1;
    if (parse_xyz(lines, *molecule, nullptr, charge, multiplicity) != kXyzRead) {
        molecule->natoms = 1 + static_cast<int>(fuzz::input_hash(data, size) % 12);
        for (int i = 1; i <= molecule->natoms; ++i) molecule->atom_label[i] = make_label(i % 3 ? "H" : "C");
    }
    read_log(lines, *molecule);
    read_frames(lines, *molecule);
    return 0;
}
