// What the drawing benchmarks share: an installation in a temporary root,
// the comb molecule put on display the way a job is opened, and the main
// thread's CPU clock and page faults.
#pragma once

#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "comb_molecule.h"
#include "session/config.h"
#include "session/session.h"
#include "session/store_ops.h"

namespace zentol::bench_molecules {

// A throw-away installation; the working directory is its scratch tree
// while it lives.
struct TempInstallation {
    std::filesystem::path root;

    TempInstallation(Session& s, const std::string& name) {
        namespace fs = std::filesystem;
        root = fs::temp_directory_path() / ("zentol-" + name + "-" + std::to_string(::getpid()));
        s.inst = installation_at((root / "inst").string(), (root / "work").string(), ZENTOL_DATA_DIR);
        prepare_installation(s.inst);
        fs::current_path(s.inst.default_scratch);
    }
    ~TempInstallation() {
        std::error_code ec;
        std::filesystem::current_path("/", ec);
        std::filesystem::remove_all(root, ec);
    }
    TempInstallation(const TempInstallation&) = delete;
    TempInstallation& operator=(const TempInstallation&) = delete;
};

// The comb on display: display copy, colours, bonds, projection, idle
// full-quality drawing.
inline void show_comb(Session& s, int n_atoms) {
    if (n_atoms <= 1000) build_comb(s.store, n_atoms, 10, 10, 10);
    else build_comb(s.store, n_atoms, 14, 14, 13);
    s.flags.view_action = 0;
    prepare_display(s);
    rebuild_bond_list(s.store);
    project_atoms(s);
    s.store.hide_atoms = false;
    s.flags.mouse_rotating = false;
    s.flags.sphere_slices = s.flags.sphere_stacks = 32;
}

// CPU seconds of the calling thread: the GL driver's own threads (the
// rasteriser's) are not in it.
inline double thread_cpu_seconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// CPU seconds of the whole process, the GL driver's threads included: the
// work a frame costs, steadier than its wall time on a busy machine.
inline double process_cpu_seconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Minor page faults of the calling thread so far: memory the process gave
// back and takes again shows up here.
inline long thread_minor_faults() {
    rusage u{};
    getrusage(RUSAGE_THREAD, &u);
    return u.ru_minflt;
}

}  // namespace zentol::bench_molecules
