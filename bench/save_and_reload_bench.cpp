// save_and_reload of a 2500-atom molecule: the round trip every mode makes
// before an edit or an engine run (write .xyz/.ins/side files, read the .xyz
// back, prepare the display, rebuild the bonds, project).
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "comb_molecule.h"
#include "display/renderer.h"
#include "session/config.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "toolkit/scripted_toolkit.h"

namespace {

void BM_SaveAndReload2500(benchmark::State& state) {
    namespace fs = std::filesystem;
    fs::path root = fs::temp_directory_path() / ("zentol-bench-" + std::to_string(::getpid()));
    zentol::ScriptedToolkit tk;
    zentol::NullRenderer renderer;
    zentol::Session s(tk, renderer);
    s.inst = zentol::installation_at((root / "inst").string(), (root / "work").string(), ZENTOL_DATA_DIR);
    zentol::prepare_installation(s.inst);
    fs::current_path(s.inst.default_scratch);
    s.job.name = "lattice";
    zentol::element_lookup(s.store, nullptr, "", zentol::kLookupConfirmAll);
    zentol::bench_molecules::build_comb(s.store, 2500, 10, 10, 25);
    for (auto _ : state) {
        zentol::save_and_reload(s);
        benchmark::DoNotOptimize(s.store.nbonds);
    }
    state.counters["atoms"] = s.store.natoms;
    state.counters["bonds"] = s.store.nbonds;
    fs::current_path(fs::temp_directory_path());
    fs::remove_all(root);
}

}  // namespace

BENCHMARK(BM_SaveAndReload2500)->Unit(benchmark::kMillisecond)->Repetitions(9)->ReportAggregatesOnly(true);
BENCHMARK_MAIN();
