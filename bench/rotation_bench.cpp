// Turning a large molecule in the real window: 100 presses of the Right key
// go through Qt's event delivery to the view, the message queue and the
// display loop's key handling, and each turns the molecule one step and
// puts the frame on the screen. Reports frames a second (wall clock) and
// the main thread's CPU a frame.
// Run under a display: xvfb-run -a ./rotation_bench.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>

#include <QApplication>
#include <QKeyEvent>

#include "bench_session.h"
#include "gl_bench_main.h"
#include "display/view.h"
#include "session/display_loop.h"
#include "toolkit/qt/main_window.h"
#include "toolkit/qt/qt_renderer.h"
#include "toolkit/qt/qt_toolkit.h"
#include "toolkit/qt/view_widget.h"

namespace {

using namespace zentol;
using namespace zentol::bench_molecules;

constexpr int kTurns = 100;

struct Bench {
    QtToolkit tk;
    QtRenderer renderer{tk};
    Session s{tk, renderer};
    TempInstallation inst{s, "rotation-bench"};

    Bench() {
        tk.set_ui_dir(s.inst.data_dir + "/ui");
        tk.window_open(800, 600, "Zentol rotation bench");
        tk.menu_load(30001);
        tk.wait_hundredths(20);
    }
    ~Bench() { tk.close_all(); }

    // One turn as the display loop takes it: the idle status, the key from
    // the window, the rotation step and its frame.
    void turn() {
        QCoreApplication::postEvent(tk.main_window()->view(),
                                    new QKeyEvent(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier));
        s.tk.WindowOutStatusBar(10, "Display Idle");
        const Event e = read_event(s);
        if (!rotate_by_key(s, e.key)) s.flags.view_action = 0;
    }

    void run(benchmark::State& state, int n_atoms, bool bonds_only = false) {
        show_comb(s, n_atoms);
        s.store.hide_atoms = bonds_only;   // as for a large Tinker file
        draw_scene(s);
        renderer.finish();
        while (tk.pending_messages()) tk.next_message();
        double cpu_total = 0, wall_total = 0;
        const long faults = thread_minor_faults();
        for (auto _ : state) {
            const auto t0 = std::chrono::steady_clock::now();
            const double c0 = thread_cpu_seconds();
            for (int k = 0; k < kTurns; ++k) turn();
            renderer.finish();   // the last frame is on the screen
            const double cpu = thread_cpu_seconds() - c0;
            const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
            state.SetIterationTime(wall);
            cpu_total += cpu;
            wall_total += wall;
        }
        s.flags.view_action = 0;
        const double turns = static_cast<double>(state.iterations()) * kTurns;
        state.counters["frames_per_s"] = wall_total > 0 ? turns / wall_total : 0;
        state.counters["faults_per_frame"] = static_cast<double>(thread_minor_faults() - faults) / std::max(turns, 1.0);
        state.counters["cpu_ms_per_frame"] = 1e3 * cpu_total / std::max(turns, 1.0);
        state.counters["atoms"] = s.store.disp_natoms;
        state.counters["bonds"] = s.store.nbonds;
    }
};

Bench* bench = nullptr;

void BM_Rotate2500Atoms(benchmark::State& state) { bench->run(state, 2500); }

void BM_Rotate2500AtomsBondsOnly(benchmark::State& state) { bench->run(state, 2500, true); }

void BM_Rotate1000Atoms(benchmark::State& state) { bench->run(state, 1000); }

// One iteration is 100 turns; the medians of the repetitions are the numbers.
void rotation_args(benchmark::internal::Benchmark* b) {
    b->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1)->Repetitions(7)->ReportAggregatesOnly(true);
}

BENCHMARK(BM_Rotate2500Atoms)->Apply(rotation_args);
BENCHMARK(BM_Rotate2500AtomsBondsOnly)->Apply(rotation_args);
BENCHMARK(BM_Rotate1000Atoms)->Apply(rotation_args);

}  // namespace

int main(int argc, char** argv) { return run_gl_benchmarks(argc, argv, bench); }
