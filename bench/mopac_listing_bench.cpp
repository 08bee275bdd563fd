// Reading a big MOPAC listing from disk: the file read, split into lines and
// parsed, as Mopac mode does after a run or an UpDate. The listing is made
// by joining the recorded listings of closed-shell runs until it is about
// 18 MB. Read as a closed shell, the reader finds its keys in the first
// listing; read as a triplet, it looks for a spin table down to the end of
// the file, which is the longest a scan can take.
//
// Besides the time (bytes_per_second), each run reports the peak of the
// heap during one read and parse, as a multiple of the file's size: every
// allocation of the process goes through the counting operator new below.
#include <benchmark/benchmark.h>

#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>
#include <vector>

#include "engines/mopac/mopac_input.h"
#include "engines/mopac/mopac_listing.h"
#include "toolkit/files.h"

namespace {

std::atomic<long long> g_heap_now{0};
std::atomic<long long> g_heap_peak{0};

void* counted_alloc(std::size_t n) {
    void* p = std::malloc(n == 0 ? 1 : n);
    if (!p) throw std::bad_alloc();
    const long long now = g_heap_now += static_cast<long long>(malloc_usable_size(p));
    long long peak = g_heap_peak.load(std::memory_order_relaxed);
    while (now > peak && !g_heap_peak.compare_exchange_weak(peak, now)) {
    }
    return p;
}

void counted_free(void* p) {
    if (!p) return;
    g_heap_now -= static_cast<long long>(malloc_usable_size(p));
    std::free(p);
}

}  // namespace

void* operator new(std::size_t n) { return counted_alloc(n); }
void* operator new[](std::size_t n) { return counted_alloc(n); }
void operator delete(void* p) noexcept { counted_free(p); }
void operator delete[](void* p) noexcept { counted_free(p); }
void operator delete(void* p, std::size_t) noexcept { counted_free(p); }
void operator delete[](void* p, std::size_t) noexcept { counted_free(p); }

namespace {

constexpr std::size_t kTargetBytes = 18u * 1024u * 1024u;

// The recorded closed-shell listings, joined again and again.
std::string make_listing(const std::filesystem::path& dir) {
    const char* parts[] = {"m22_water_E_DISP.out", "m22_ethanol_E.out", "m2016_benzene.out", "m22_water_optF.out",
                           "m2012_benzene_polar.out", "m21_propane_vectors.out"};
    std::string one;
    for (const char* name : parts) {
        std::ifstream in(std::string(ZENTOL_TEST_DATA) + "/mopac/" + name, std::ios::binary);
        one.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    if (one.empty()) return "";
    const std::string path = (dir / "joined.lst").string();
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    for (std::size_t written = 0; written < kTargetBytes; written += one.size()) out << one;
    return path;
}

struct Listing {
    std::filesystem::path dir;
    std::string path;
    long long bytes = 0;
    Listing() {
        dir = std::filesystem::temp_directory_path() / ("zentol-mopac-bench-" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir);
        path = make_listing(dir);
        bytes = zentol::files::size(path);
    }
    ~Listing() { std::filesystem::remove_all(dir); }
};

const Listing& listing() {
    static const Listing l;
    return l;
}

// One read and parse, as update_from_listing does it.
bool read_and_parse(const std::string& path, int multiplicity) {
    const auto lines = zentol::files::read_text_lines(path);
    if (!lines) return false;
    const zentol::MopacListing r = zentol::read_mopac_listing(lines->views(), zentol::kMopac2016, multiplicity, 12);
    return r.energy_found;
}

void BM_ReadListing(benchmark::State& state) {
    const Listing& l = listing();
    if (l.bytes <= 0) {
        state.SkipWithError("no recorded listings");
        return;
    }
    const int multiplicity = static_cast<int>(state.range(0));
    double peak_ratio = 0;
    for (auto _ : state) {
        const long long base = g_heap_now.load();
        g_heap_peak.store(base);
        benchmark::DoNotOptimize(read_and_parse(l.path, multiplicity));
        peak_ratio = std::max(peak_ratio, static_cast<double>(g_heap_peak.load() - base) / static_cast<double>(l.bytes));
    }
    state.SetBytesProcessed(state.iterations() * l.bytes);
    state.counters["MB"] = static_cast<double>(l.bytes) / 1e6;
    state.counters["peak_x_file"] = peak_ratio;
}
BENCHMARK(BM_ReadListing)
    ->ArgName("multiplicity")
    ->Arg(1)
    ->Arg(3)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

}  // namespace

BENCHMARK_MAIN();
