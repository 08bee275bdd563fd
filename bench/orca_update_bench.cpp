// orca_update on a 10 MB listing: the real ORCA 4.0 to 6.0 listings of the
// tests joined until the file passes 10 MB, read, decoded and scanned in
// its three passes, the side files written. Reported as bytes a second.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "display/renderer.h"
#include "engines/orca/orca_mode.h"
#include "session/config.h"
#include "session/session.h"
#include "toolkit/scripted_toolkit.h"

namespace {

namespace fs = std::filesystem;

std::string joined_listing(std::size_t at_least) {
    const fs::path dir = fs::path(ZENTOL_DATA_DIR) / ".." / "tests" / "data" / "orca";
    std::string one;
    for (const char* name : {"orca4.0_dvb_raman.out", "orca4.0_dvb_td.out", "orca4.2_dvb_uhf_sp.out",
                             "orca5.0_cl2_opt_numfreq_crlf.out", "orca5.0_irme_freq_imaginary.out",
                             "orca6.0_dvb_td.out", "orca6.0_dihedral_optts_freq.out", "orca6.0_dvb_raman.out"}) {
        std::ifstream in(dir / name, std::ios::binary);
        std::ostringstream all;
        all << in.rdbuf();
        one += all.str();
    }
    std::string listing;
    while (!one.empty() && listing.size() < at_least) listing += one;
    return listing;
}

void BM_OrcaUpdate10MB(benchmark::State& state) {
    const fs::path root = fs::temp_directory_path() / ("zentol-orca-bench-" + std::to_string(::getpid()));
    zentol::ScriptedToolkit tk;
    zentol::NullRenderer renderer;
    zentol::Session s(tk, renderer);
    s.inst = zentol::installation_at((root / "inst").string(), (root / "work").string(), ZENTOL_DATA_DIR);
    zentol::prepare_installation(s.inst);
    fs::current_path(s.inst.default_scratch);
    s.job.name = "dvb";
    s.store.natoms = 20;
    const std::string listing = joined_listing(10u << 20);
    std::ofstream("dvb.lst", std::ios::binary) << listing;
    for (auto _ : state) {
        zentol::OrcaState m;
        zentol::orca_update(s, m);
        benchmark::DoNotOptimize(m.flags.terminated);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * listing.size()));
    state.counters["MB"] = static_cast<double>(listing.size()) / (1 << 20);
    fs::current_path(fs::temp_directory_path());
    fs::remove_all(root);
}

}  // namespace

BENCHMARK(BM_OrcaUpdate10MB)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK_MAIN();
