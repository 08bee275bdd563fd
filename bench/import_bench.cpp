// Importing the largest molecule the store holds from a PDB file: Open
// Babel's read, the job's tables (bonds by distance for the residue atoms,
// Build mode's types, labels) and the job's .xyz text. The target is 100 ms.
// "first_ms" is the very first import of the process, which also loads Open
// Babel's format plugins.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

#include "comb_molecule.h"
#include "session/store_ops.h"
#include "structure_files/openbabel_import.h"
#include "structure_files/structure_import.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"

namespace {

using namespace zentol;

// The comb molecule as ATOM records, the way a PDB file of a protein
// states no bonds, its chains 3.5 Angstrom apart as strands of a protein
// lie, with the last 20 atoms a HETATM group bonded by CONECT.
constexpr float kSpread = 3.5f / 1.54f;

std::string write_pdb(int n) {
    auto st = std::make_unique<Store>();
    bench_molecules::build_comb(*st, n, 10, 10, (n + 99) / 100);
    const std::string path = (std::filesystem::temp_directory_path() / "zentol_import_bench.pdb").string();
    std::ofstream out(path);
    for (int i = 1; i <= n; ++i) {
        const std::string element(text::trim(label_text(st->atom_label[i])));
        const bool het = i > n - 20;
        out << (het ? "HETATM" : "ATOM  ") << text::format_i(i, 5) << "  " << text::format_a(element, 3) << " "
            << (het ? "LIG" : "ALA") << " A" << text::format_i(het ? 900 : 1 + i / 10, 4) << "    "
            << text::format_f(st->atom_rec[i][kX], 8, 3) << text::format_f(st->atom_rec[i][kY] * kSpread, 8, 3)
            << text::format_f(st->atom_rec[i][kZ] * kSpread, 8, 3) << "  1.00  0.00          " << text::format_a(element, 2)
            << "\n";
    }
    for (int i = n - 19; i <= n; ++i) {
        out << "CONECT" << text::format_i(i, 5);
        for (int slot = 1; slot <= st->conn_count(i); ++slot)
            if (st->nbr(i, slot) > n - 20) out << text::format_i(st->nbr(i, slot), 5);
        out << "\n";
    }
    out << "END\n";
    return path;
}

std::size_t import_once(const std::string& path, Store& st) {
    std::string why;
    auto m = read_foreign_structure(path, &why);
    if (!m) return 0;
    store_from_foreign(*m, st, nullptr, 0.25f, nullptr);
    return format_xyz(st, "bench", m->total_charge, m->multiplicity).size();
}

void BM_ImportPdb(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::string path = write_pdb(n);
    auto st = std::make_unique<Store>();
    element_lookup(*st, nullptr, "", kLookupConfirmAll);
    const auto t0 = std::chrono::steady_clock::now();
    import_once(path, *st);
    const std::chrono::duration<double, std::milli> first = std::chrono::steady_clock::now() - t0;
    for (auto _ : state) benchmark::DoNotOptimize(import_once(path, *st));
    state.counters["atoms"] = st->natoms;
    state.counters["bonds"] = st->nbonds;
    state.counters["first_ms"] = first.count();
    std::remove(path.c_str());
}
BENCHMARK(BM_ImportPdb)->Arg(2500)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
