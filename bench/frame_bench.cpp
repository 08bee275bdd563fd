// One frame of the real window through the Qt renderer: building the scene,
// drawing it with OpenGL and putting it on the screen, up to glFinish.
// Run under a display, e.g. xvfb-run -a ./frame_bench; the medians are the
// numbers to read.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>

#include <QApplication>

#include "comb_molecule.h"
#include "session/config.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "toolkit/qt/qt_renderer.h"
#include "toolkit/qt/qt_toolkit.h"

namespace {

using namespace zentol;
using zentol::bench_molecules::build_comb;

struct Bench {
    QtToolkit tk;
    QtRenderer renderer{tk};
    Session s{tk, renderer};
    std::filesystem::path root;

    Bench() {
        namespace fs = std::filesystem;
        root = fs::temp_directory_path() / ("zentol-frame-bench-" + std::to_string(::getpid()));
        s.inst = installation_at((root / "inst").string(), (root / "work").string(), ZENTOL_DATA_DIR);
        prepare_installation(s.inst);
        fs::current_path(s.inst.default_scratch);
        tk.set_ui_dir(s.inst.data_dir + "/ui");
        tk.window_open(800, 600, "Zentol frame bench");
        tk.menu_load(30001);
        tk.wait_hundredths(20);
    }
    ~Bench() {
        tk.close_all();
        std::error_code ec;
        std::filesystem::current_path("/", ec);
        std::filesystem::remove_all(root, ec);
    }

    // The molecule on the screen the way a job is opened: display copy,
    // colours, bonds, projection.
    void load(int n_atoms) {
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

    void frames(benchmark::State& state) {
        s.flags.view_action = 2;   // every frame turns the molecule one step about y
        for (auto _ : state) {
            draw_scene(s);
            renderer.finish();
        }
        s.flags.view_action = 0;
        state.counters["atoms"] = s.store.disp_natoms;
        state.counters["bonds"] = s.store.nbonds;
        state.counters["view_w"] = tk.window_size(1);
        state.counters["view_h"] = tk.window_size(2);
    }
};

Bench* bench = nullptr;

void BM_Frame1000Atoms(benchmark::State& state) {
    bench->load(1000);
    bench->frames(state);
}

void BM_Frame2500AtomsBondsOnly(benchmark::State& state) {
    bench->load(2500);
    bench->s.store.hide_atoms = true;   // as for a large Tinker file
    bench->frames(state);
}

void BM_DragFrame1000Atoms(benchmark::State& state) {
    bench->load(1000);
    bench->s.flags.mouse_rotating = true;
    bench->s.flags.sphere_slices = bench->s.flags.sphere_stacks = 8;
    bench->frames(state);
}

void BM_DragFrame2500Atoms(benchmark::State& state) {
    bench->load(2500);
    bench->s.flags.mouse_rotating = true;
    bench->s.flags.sphere_slices = bench->s.flags.sphere_stacks = 8;
    bench->frames(state);
}

void BM_EmptyFrame(benchmark::State& state) {
    bench->load(1);
    bench->s.store.disp_natoms = 0;
    bench->s.store.nbonds = 0;
    bench->frames(state);
}
BENCHMARK(BM_EmptyFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

void frame_args(benchmark::internal::Benchmark* b) {
    b->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);
}

BENCHMARK(BM_Frame1000Atoms)->Apply(frame_args);
BENCHMARK(BM_Frame2500AtomsBondsOnly)->Apply(frame_args);
BENCHMARK(BM_DragFrame1000Atoms)->Apply(frame_args);
BENCHMARK(BM_DragFrame2500Atoms)->Apply(frame_args);

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    Bench b;
    bench = &b;
    benchmark::RunSpecifiedBenchmarks();
    bench = nullptr;
    benchmark::Shutdown();
    return 0;
}
