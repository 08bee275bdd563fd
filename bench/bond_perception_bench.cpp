// Bonds found from distances for the largest molecule: Setup runs this on
// every confirmation, so it has to stay well below a frame.
#include <benchmark/benchmark.h>

#include <memory>

#include "building/connectivity.h"
#include "comb_molecule.h"
#include "session/store_ops.h"

namespace {

void BM_PerceiveBonds(benchmark::State& state) {
    auto st = std::make_unique<zentol::Store>();
    zentol::element_lookup(*st, nullptr, "", zentol::kLookupConfirmAll);
    const int n = static_cast<int>(state.range(0));
    zentol::bench_molecules::build_comb(*st, n, 10, 10, (n + 99) / 100);
    for (auto _ : state) {
        zentol::perceive_bonds(*st, nullptr, 0.25f);
        benchmark::DoNotOptimize(st->nbonds);
    }
    state.counters["atoms"] = st->natoms;
    state.counters["bonds"] = st->nbonds;
}
BENCHMARK(BM_PerceiveBonds)->Arg(250)->Arg(1000)->Arg(2500)->Unit(benchmark::kMillisecond);

// The same molecule with its last atom moved 300 Angstrom away: the spread
// of the coordinates must not make the work grow.
void BM_PerceiveBondsFarAtom(benchmark::State& state) {
    auto st = std::make_unique<zentol::Store>();
    zentol::element_lookup(*st, nullptr, "", zentol::kLookupConfirmAll);
    const int n = static_cast<int>(state.range(0));
    zentol::bench_molecules::build_comb(*st, n, 10, 10, (n + 99) / 100);
    st->atom_rec[st->natoms][zentol::kX] += 300.0f;
    for (auto _ : state) {
        zentol::perceive_bonds(*st, nullptr, 0.25f);
        benchmark::DoNotOptimize(st->nbonds);
    }
    state.counters["atoms"] = st->natoms;
}
BENCHMARK(BM_PerceiveBondsFarAtom)->Arg(2500)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
