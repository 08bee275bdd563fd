#include "wavefunction/map_wavefunction.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zentol {

namespace {

constexpr double kPi = std::numbers::pi;
// exp(-28) is 7e-13: a function this far out adds nothing a map can show.
constexpr double kSlaterReach = 28.0;
constexpr double kGaussReach = 36.0;

int period(int z) {
    if (z <= 2) return 1;
    if (z <= 10) return 2;
    if (z <= 18) return 3;
    if (z <= 36) return 4;
    if (z <= 54) return 5;
    if (z <= 86) return 6;
    return 7;
}

bool transition_metal(int z) {
    return (z >= 21 && z <= 30) || (z >= 39 && z <= 48) || (z >= 57 && z <= 80) || z >= 89;
}

double factorial(int n) {
    double f = 1;
    for (int k = 2; k <= n; ++k) f *= k;
    return f;
}

double radial_norm(int n, double zeta) { return std::pow(2 * zeta, n + 0.5) / std::sqrt(factorial(2 * n)); }

// r^k for small whole k >= 0.
double power(double r, int k) {
    double p = 1;
    for (int i = 0; i < k; ++i) p *= r;
    return p;
}

void slater_atom(const SlaterAtom& a, double dx, double dy, double dz, double* out) {
    const double r = std::sqrt(dx * dx + dy * dy + dz * dz);
    static const double ys = std::sqrt(1 / (4 * kPi)), yp = std::sqrt(3 / (4 * kPi));
    static const double yd = std::sqrt(15 / (4 * kPi)), yd2 = std::sqrt(15 / (16 * kPi)),
                        yz2 = std::sqrt(5 / (16 * kPi));
    if (a.zeta_s * r < kSlaterReach)
        out[0] = radial_norm(a.n_s, a.zeta_s) * power(r, a.n_s - 1) * std::exp(-a.zeta_s * r) * ys;
    if (a.functions < 4) return;
    if (a.zeta_p * r < kSlaterReach && a.zeta_p > 0) {
        // r^(n-1) Y_1m = r^(n-2) (x/r ...) r: the 1/r of the harmonic taken in.
        const double f = radial_norm(a.n_p, a.zeta_p) * power(r, a.n_p - 2) * std::exp(-a.zeta_p * r) * yp;
        out[1] = f * dx;
        out[2] = f * dy;
        out[3] = f * dz;
    }
    if (a.functions < 9 || a.zeta_d <= 0 || a.zeta_d * r >= kSlaterReach) return;
    const double f = radial_norm(a.n_d, a.zeta_d) * power(r, a.n_d - 3) * std::exp(-a.zeta_d * r);
    out[4] = f * yd2 * (dx * dx - dy * dy);
    out[5] = f * yd * dx * dz;
    out[6] = f * yz2 * (2 * dz * dz - dx * dx - dy * dy);
    out[7] = f * yd * dy * dz;
    out[8] = f * yd * dx * dy;
}

// The powers of x, y, z of AIMPAC's types 1 to 20.
constexpr std::array<std::array<int, 3>, 21> kGaussPowers{{{0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1},
                                                           {2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {1, 1, 0}, {1, 0, 1},
                                                           {0, 1, 1}, {3, 0, 0}, {0, 3, 0}, {0, 0, 3}, {2, 1, 0},
                                                           {2, 0, 1}, {0, 2, 1}, {1, 2, 0}, {1, 0, 2}, {0, 1, 2},
                                                           {1, 1, 1}}};

}  // namespace

int slater_n_sp(int atomic_number) { return period(atomic_number); }

int slater_n_d(int atomic_number) {
    const int p = period(atomic_number);
    return transition_metal(atomic_number) ? p - 1 : std::max(p, 3);
}

void basis_values(const MapWavefunction& w, double x, double y, double z, double* out) {
    std::fill(out, out + w.nbasis, 0.0);
    for (std::size_t i = 0; i < w.slater.size(); ++i) {
        const SlaterAtom& a = w.slater[i];
        if (a.functions == 0) continue;
        slater_atom(a, x - w.atoms[i].x, y - w.atoms[i].y, z - w.atoms[i].z, out + a.first);
    }
    for (std::size_t k = 0; k < w.gauss.size(); ++k) {
        const GaussPrimitive& g = w.gauss[k];
        const MapAtom& c = w.atoms[static_cast<std::size_t>(g.centre)];
        const double dx = x - c.x, dy = y - c.y, dz = z - c.z;
        const double e = g.alpha * (dx * dx + dy * dy + dz * dz);
        if (e > kGaussReach) continue;
        const auto& p = kGaussPowers[static_cast<std::size_t>(g.type)];
        out[k] = power(dx, p[0]) * power(dy, p[1]) * power(dz, p[2]) * std::exp(-e);
    }
}

namespace {

// MOPAC's atoms: s only (hydrogen), s and p, or s, p and d; an atom with
// no exponents (a sparkle) has no functions.
std::vector<SlaterAtom> slater_atoms(const Mop2016Vectors& v, int& nbasis) {
    std::vector<SlaterAtom> atoms;
    nbasis = 0;
    for (std::size_t i = 0; i < v.atoms.size(); ++i) {
        const auto& e = v.exponents[i];
        SlaterAtom a;
        const int z = v.atoms[i].atomic_number;
        a.n_s = a.n_p = slater_n_sp(z);
        a.n_d = slater_n_d(z);
        a.zeta_s = e[0];
        a.zeta_p = e[1];
        a.zeta_d = e[2];
        a.functions = e[0] <= 0 ? 0 : e[2] > 0 ? 9 : e[1] > 0 ? 4 : 1;
        a.first = nbasis;
        nbasis += a.functions;
        atoms.push_back(a);
    }
    return atoms;
}

// c' = M c with M symmetric, given as its lower triangle.
std::vector<double> back_transform(const std::vector<double>& lower, const std::vector<double>& c) {
    const std::size_t n = c.size();
    std::vector<double> out(n, 0.0);
    for (std::size_t r = 0, at = 0; r < n; ++r) {
        for (std::size_t k = 0; k <= r; ++k, ++at) {
            out[r] += lower[at] * c[k];
            if (k != r) out[k] += lower[at] * c[r];
        }
    }
    return out;
}

}  // namespace

MapWavefunction mopac_wavefunction(const Mop2016Vectors& v, std::string& error) {
    MapWavefunction w;
    if (v.atoms.empty() || v.orbitals.empty()) {
        error = "the graph file holds no atoms or no orbitals";
        return w;
    }
    if (v.exponents.size() != v.atoms.size()) {
        error = "the graph file holds no Slater exponents for its atoms";
        return w;
    }
    std::vector<SlaterAtom> slater = slater_atoms(v, w.nbasis);
    const std::size_t n = static_cast<std::size_t>(w.nbasis);
    if (v.inverse.size() != n * (n + 1) / 2) {
        error = "the graph file's inverse matrix does not fit its " + std::to_string(n) + " basis functions";
        return w;
    }
    for (const MgfAtom& a : v.atoms)
        w.atoms.push_back({a.atomic_number, a.x * kBohrPerAngstrom, a.y * kBohrPerAngstrom, a.z * kBohrPerAngstrom});
    w.slater = std::move(slater);
    w.homo = v.homo;
    // Without ALLVEC MOPAC writes only the orbitals about the H.O.M.O. of a
    // larger molecule: fewer orbitals than basis functions.
    w.complete = v.first_orbital <= 1 && std::min(v.beta_from, v.orbitals.size()) >= n;
    for (std::size_t i = 0; i < v.orbitals.size(); ++i) {
        const MgfOrbital& o = v.orbitals[i];
        if (o.coefficients.size() != n) {
            error = "an orbital of the graph file has " + std::to_string(o.coefficients.size()) + " coefficients, not " +
                    std::to_string(n);
            return MapWavefunction{};
        }
        const bool beta = i >= v.beta_from;
        const int place = static_cast<int>(beta ? i - v.beta_from : i);
        w.orbitals.push_back({v.first_orbital + place, static_cast<double>(o.occupancy), beta, o.energy,
                              back_transform(v.inverse, o.coefficients)});
    }
    return w;
}

}  // namespace zentol
