// save_and_reload of a 2500-atom molecule: the round trip every mode makes
// before an edit or an engine run (write .xyz/.ins/side files, read the .xyz
// back, prepare the display, rebuild the bonds, project).
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "display/renderer.h"
#include "session/config.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "toolkit/scripted_toolkit.h"

namespace {

// A 2500-atom carbon comb, 10 x 10 x 25 at 1.54 Angstrom: chains along x,
// joined along y and z at their first atom, about one bond per atom as in a
// real molecule.
void build_lattice(zentol::Store& st) {
    using namespace zentol;
    const int nx = 10, ny = 10, nz = 25;
    auto index = [&](int x, int y, int z) { return 1 + x + nx * (y + ny * z); };
    st.natoms = nx * ny * nz;
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                int i = index(x, y, z);
                st.atom_label[i] = make_label("C" + std::to_string(i));
                st.atom_rec[i] = {1.54f * x, 1.54f * y, 1.54f * z, 0.76f, 0, 0};
                st.conn_type(i) = 1;
                int n = 0;
                auto link = [&](int j) { st.nbr(i, ++n) = j; };
                if (x > 0) link(index(x - 1, y, z));
                if (x < nx - 1) link(index(x + 1, y, z));
                if (x == 0 && y > 0) link(index(x, y - 1, z));
                if (x == 0 && y < ny - 1) link(index(x, y + 1, z));
                if (x == 0 && y == 0 && z > 0) link(index(x, y, z - 1));
                if (x == 0 && y == 0 && z < nz - 1) link(index(x, y, z + 1));
                st.conn_count(i) = n;
            }
}

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
    build_lattice(s.store);
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
