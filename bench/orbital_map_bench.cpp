// The map program and the viewer's surfaces: a 64-step map of an orbital of
// hexadecane (50 atoms, a real MOPAC PM7 run, tests/data/orbitals), as the
// map program lays it out and as a full 64^3 cube, with both cores and with
// one; and the isosurfaces (both lobes) of a 128-step map of the water
// H.O.M.O.
#include <benchmark/benchmark.h>

#include <string>

#include "toolkit/files.h"
#include "wavefunction/marching_cubes.h"
#include "wavefunction/orbital_map.h"

namespace {

using namespace zentol;

MapWavefunction wavefunction(const std::string& name) {
    const auto lines = files::read_text_lines(std::string(ZENTOL_TEST_DATA) + "/orbitals/" + name);
    std::string error;
    MapWavefunction w = lines ? mopac_wavefunction(read_mop2016_vectors(lines->views()), error) : MapWavefunction{};
    if (w.orbitals.empty()) std::abort();
    return w;
}

void map_64_steps_50_atoms(benchmark::State& state) {
    const MapWavefunction w = wavefunction("hexadecane.mgf");
    MapRequest r;
    r.orbital = w.homo;
    r.steps = 64;
    r.threads = static_cast<int>(state.range(0));
    r.cubic = state.range(1) != 0;
    std::string error;
    std::size_t points = 0;
    for (auto _ : state) {
        auto g = make_map(w, r, error);
        points = g->values.size();
        benchmark::DoNotOptimize(g->values.data());
    }
    state.counters["atoms"] = static_cast<double>(w.atoms.size());
    state.counters["points"] = static_cast<double>(points);
}
// Args: threads (0 all), and 1 for 64 points on every side (64^3) instead
// of 64 on the longest side of the molecule's box.
BENCHMARK(map_64_steps_50_atoms)->Args({0, 0})->Args({1, 0})->Args({0, 1})->Args({1, 1})->Unit(benchmark::kMillisecond)->UseRealTime();

void surfaces_128_steps(benchmark::State& state) {
    const MapWavefunction w = wavefunction("water.mgf");
    MapRequest r;
    r.orbital = 4;
    r.steps = 128;
    std::string error;
    const CubeGrid g = *make_map(w, r, error);
    std::size_t triangles = 0;
    for (auto _ : state) {
        const IsoMesh up = isosurface(g, 0.05f), down = isosurface(g, -0.05f);
        triangles = up.triangles() + down.triangles();
        benchmark::DoNotOptimize(up.vertices.data());
    }
    state.counters["cells"] = static_cast<double>(g.n[0] - 1) * (g.n[1] - 1) * (g.n[2] - 1);
    state.counters["triangles"] = static_cast<double>(triangles);
}
BENCHMARK(surfaces_128_steps)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
