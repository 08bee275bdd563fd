// One frame of the real window through the Qt renderer: building the scene,
// drawing it with OpenGL and putting it on the screen, up to glFinish.
// Run under a display, e.g. xvfb-run -a ./frame_bench; the medians are the
// numbers to read, the CPU column being the main thread's alone (the GL
// driver rasterises in threads of its own).
#include <benchmark/benchmark.h>

#include <QApplication>

#include "bench_session.h"
#include "gl_bench_main.h"
#include "toolkit/qt/qt_renderer.h"
#include "toolkit/qt/qt_toolkit.h"

namespace {

using namespace zentol;
using namespace zentol::bench_molecules;

struct Bench {
    QtToolkit tk;
    QtRenderer renderer{tk};
    Session s{tk, renderer};
    TempInstallation inst{s, "frame-bench"};

    Bench() {
        tk.set_ui_dir(s.inst.data_dir + "/ui");
        tk.window_open(800, 600, "Zentol frame bench");
        tk.menu_load(30001);
        tk.wait_hundredths(20);
    }
    ~Bench() { tk.close_all(); }

    void load(int n_atoms) { show_comb(s, n_atoms); }

    void frames(benchmark::State& state) {
        s.flags.view_action = 2;   // every frame turns the molecule one step about y
        const long faults = thread_minor_faults();
        const double work = process_cpu_seconds();
        for (auto _ : state) {
            draw_scene(s);
            renderer.finish();
        }
        s.flags.view_action = 0;
        state.counters["all_threads_ms"] = benchmark::Counter(1e3 * (process_cpu_seconds() - work),
                                                              benchmark::Counter::kAvgIterations);
        state.counters["faults"] = benchmark::Counter(static_cast<double>(thread_minor_faults() - faults),
                                                      benchmark::Counter::kAvgIterations);
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

void BM_Frame2500Atoms(benchmark::State& state) {
    bench->load(2500);
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
BENCHMARK(BM_Frame2500Atoms)->Apply(frame_args);
BENCHMARK(BM_Frame2500AtomsBondsOnly)->Apply(frame_args);
BENCHMARK(BM_DragFrame1000Atoms)->Apply(frame_args);
BENCHMARK(BM_DragFrame2500Atoms)->Apply(frame_args);

}  // namespace

int main(int argc, char** argv) { return run_gl_benchmarks(argc, argv, bench); }
