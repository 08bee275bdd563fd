#include "wavefunction/orbital_map.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "text/fixed_format.h"

namespace zentol {

namespace {

// An orbital and how it enters the map: its value (weight 0), or its
// square times the weight.
struct Term {
    const MapOrbital* orbital;
    double weight;
};

const MapOrbital* find_orbital(const MapWavefunction& w, int number, bool beta) {
    for (const MapOrbital& o : w.orbitals)
        if (o.number == number && o.beta == beta) return &o;
    return nullptr;
}

bool unrestricted(const MapWavefunction& w) {
    return std::any_of(w.orbitals.begin(), w.orbitals.end(), [](const MapOrbital& o) { return o.beta; });
}

std::string orbital_range(const MapWavefunction& w) {
    int lo = 0, hi = 0;
    for (const MapOrbital& o : w.orbitals) {
        if (o.beta) continue;
        lo = lo == 0 ? o.number : std::min(lo, o.number);
        hi = std::max(hi, o.number);
    }
    return std::to_string(lo) + " to " + std::to_string(hi);
}

std::vector<Term> map_terms(const MapWavefunction& w, const MapRequest& r, std::string& error) {
    std::vector<Term> terms;
    if (r.kind == MapKind::Orbital) {
        const MapOrbital* o = find_orbital(w, r.orbital, r.beta);
        if (o) terms.push_back({o, 0.0});
        else error = "orbital " + std::to_string(r.orbital) + " is not in the file (it holds orbitals " + orbital_range(w) + ")";
        return terms;
    }
    const bool open = unrestricted(w);
    if (!w.complete && (r.kind == MapKind::Density || open)) {
        error = "the file lacks the lowest occupied orbitals: run MOPAC with ALLVEC for this map";
        return terms;
    }
    for (const MapOrbital& o : w.orbitals) {
        if (o.occupancy <= 0) continue;
        if (r.kind == MapKind::Density) terms.push_back({&o, o.occupancy});
        // Spin: alpha less beta; a restricted open shell's singly filled levels.
        else if (open) terms.push_back({&o, o.beta ? -o.occupancy : o.occupancy});
        else if (o.occupancy < 1.5) terms.push_back({&o, o.occupancy});
    }
    if (terms.empty()) error = r.kind == MapKind::Spin ? "a closed shell has no spin density" : "no occupied orbitals";
    return terms;
}

void fill_slabs(const MapWavefunction& w, const std::vector<Term>& terms, CubeGrid& g, int first, int step) {
    std::vector<double> phi(static_cast<std::size_t>(std::max(w.nbasis, 1)));
    const std::size_t nb = static_cast<std::size_t>(w.nbasis);
    for (int i = first; i < g.n[0]; i += step) {
        for (int j = 0; j < g.n[1]; ++j) {
            for (int k = 0; k < g.n[2]; ++k) {
                const auto p = g.point(i, j, k);
                basis_values(w, p[0], p[1], p[2], phi.data());
                double value = 0;
                for (const Term& t : terms) {
                    const double* c = t.orbital->c.data();
                    double psi = 0;
                    for (std::size_t b = 0; b < nb; ++b) psi += c[b] * phi[b];
                    value += t.weight == 0 ? psi : t.weight * psi * psi;
                }
                g.values[g.index(i, j, k)] = static_cast<float>(value);
            }
        }
    }
}

}  // namespace

CubeGrid map_layout(const MapWavefunction& w, int steps, double margin_angstrom, bool cubic) {
    CubeGrid g;
    g.atoms = w.atoms;
    std::array<double, 3> lo{0, 0, 0}, hi{0, 0, 0};
    for (std::size_t a = 0; a < w.atoms.size(); ++a) {
        const std::array<double, 3> p{w.atoms[a].x, w.atoms[a].y, w.atoms[a].z};
        for (std::size_t c = 0; c < 3; ++c) {
            lo[c] = a == 0 ? p[c] : std::min(lo[c], p[c]);
            hi[c] = a == 0 ? p[c] : std::max(hi[c], p[c]);
        }
    }
    const double margin = margin_angstrom * kBohrPerAngstrom;
    double longest = 0;
    for (std::size_t c = 0; c < 3; ++c) longest = std::max(longest, hi[c] - lo[c] + 2 * margin);
    const int n = std::max(steps, 2);
    const double h = longest / (n - 1);
    for (std::size_t c = 0; c < 3; ++c) {
        const double side = cubic ? longest : hi[c] - lo[c] + 2 * margin;
        g.n[c] = std::clamp(static_cast<int>(std::ceil(side / h - 1e-9)) + 1, 2, n);
        // The box is centred on the molecule.
        g.origin[c] = (lo[c] + hi[c]) / 2 - h * (g.n[c] - 1) / 2;
        g.axes[c][c] = h;
    }
    return g;
}

std::optional<CubeGrid> make_map(const MapWavefunction& w, const MapRequest& r, std::string& error) {
    const std::vector<Term> terms = map_terms(w, r, error);
    if (terms.empty()) return std::nullopt;
    CubeGrid g = map_layout(w, r.steps, r.margin, r.cubic);
    g.title = map_title(r);
    g.comment = "Zentol map, " + std::to_string(g.n[0]) + " x " + std::to_string(g.n[1]) + " x " +
                std::to_string(g.n[2]) + " points, values in atomic units";
    g.values.assign(static_cast<std::size_t>(g.n[0]) * static_cast<std::size_t>(g.n[1]) * static_cast<std::size_t>(g.n[2]),
                    0.0f);
    const int threads = std::clamp(r.threads > 0 ? r.threads : static_cast<int>(std::thread::hardware_concurrency()), 1, 16);
    std::vector<std::thread> pool;
    for (int t = 1; t < threads; ++t) pool.emplace_back(fill_slabs, std::cref(w), std::cref(terms), std::ref(g), t, threads);
    fill_slabs(w, terms, g, 0, threads);
    for (auto& t : pool) t.join();
    return g;
}

std::string map_file_name(const std::string& job, const MapRequest& r) {
    if (r.kind == MapKind::Density) return job + "_density.cube";
    if (r.kind == MapKind::Spin) return job + "_spin.cube";
    std::string number = std::to_string(std::max(r.orbital, 0));
    if (number.size() < 3) number.insert(0, 3 - number.size(), '0');
    return job + "_MO" + number + (r.beta ? "b" : "") + ".cube";
}

std::string map_title(const MapRequest& r) {
    if (r.kind == MapKind::Density) return "Total electron density";
    if (r.kind == MapKind::Spin) return "Spin density";
    return std::string(r.beta ? "Beta m" : "M") + "olecular orbital " + std::to_string(r.orbital);
}

}  // namespace zentol
