#include "wavefunction/map_files.h"

#include <algorithm>

#include "text/fixed_format.h"

namespace zentol {

namespace {

using Line = std::string_view;

std::optional<int> leading_int(Line line) {
    const auto words = text::split_words(line);
    if (words.empty()) return std::nullopt;
    auto v = text::read_i(words[0]);
    if (!v || *v < -1000000 || *v > 1000000) return std::nullopt;
    return static_cast<int>(*v);
}

bool is_key(Line line) {
    return line.starts_with(" ORBITAL") || line.starts_with(" BETA ORBITAL") || line.starts_with(" EXPONENTS") ||
           line.starts_with(" INVERSE_MATRIX");
}

// Values of the lines from `at` up to the next key; returns the place of it.
std::size_t read_values(LineViews g, std::size_t at, std::vector<double>& out, bool& ok) {
    for (; at < g.size() && !is_key(g[at]); ++at) {
        if (text::trim(g[at]).empty()) continue;
        auto v = text::read_reals(g[at], 5);
        if (!v) ok = false;
        else out.insert(out.end(), v->begin(), v->end());
    }
    return at;
}

// " ORBITAL   12  2   -20.50000" or " BETA ORBITAL   12 ...": number,
// occupancy, energy.
std::size_t read_orbital(LineViews g, std::size_t at, Mop2016Vectors& v, bool& ok) {
    const bool beta = g[at].starts_with(" BETA");
    const auto words = text::split_words(g[at]);
    const std::size_t first = beta ? 2 : 1;
    MgfOrbital o;
    std::optional<long long> number;
    if (words.size() >= first + 3) {
        number = text::read_i(words[first]);
        o.occupancy = static_cast<int>(text::read_i(words[first + 1]).value_or(0));
        o.energy = text::read_f(words[first + 2]).value_or(0.0);
    }
    ok = ok && number.has_value();
    if (!beta && v.orbitals.empty() && number) v.first_orbital = static_cast<int>(std::clamp(*number, 1LL, 1000000LL));
    if (beta && v.beta_from == std::string::npos) v.beta_from = v.orbitals.size();
    at = read_values(g, at + 1, o.coefficients, ok);
    v.orbitals.push_back(std::move(o));
    return at;
}

}  // namespace

std::optional<MapControl> read_map_control(const text::TextLines& kew) {
    if (kew.size() < 3) return std::nullopt;
    MapControl c;
    c.graph_file = std::string(text::trim(kew[0]));
    const auto orbital = leading_int(kew[1]), steps = leading_int(kew[2]);
    if (c.graph_file.empty() || !orbital || !steps) return std::nullopt;
    c.orbital = *orbital;
    c.steps = *steps;
    if (kew.size() > 3) c.kind = std::clamp(leading_int(kew[3]).value_or(0), 0, 2);
    if (kew.size() > 4) c.homo = leading_int(kew[4]).value_or(0);
    if (kew.size() > 5) {
        const auto words = text::split_words(kew[5]);
        if (!words.empty()) c.job = std::string(words[0]);
    }
    return c;
}

std::optional<MapControl> read_firefly_kew(const text::TextLines& kew) {
    if (kew.empty()) return std::nullopt;
    auto v = text::read_ints(kew[0], 3);
    if (!v || v->size() < 3) return std::nullopt;
    MapControl c;
    c.graph_file = "PUNCH";
    c.orbital = static_cast<int>(std::clamp((*v)[0], -1000000LL, 1000000LL));
    c.homo = static_cast<int>(std::clamp((*v)[1], -1000000LL, 1000000LL));
    c.steps = static_cast<int>(std::clamp((*v)[2], -1000000LL, 1000000LL));
    return c;
}

std::optional<Mop2016Vectors> read_graph_file(const text::TextLines& graph, std::string& error) {
    const LineViews g(graph.views());
    Mop2016Vectors v;
    auto head = g.empty() ? std::nullopt : text::read_ints(g[0], 4);
    if (!head || head->size() < 4 || (*head)[0] < 1 || (*head)[0] > 100000) {
        error = "graph.dat has no head line of atoms and orbitals (a Mopac 6 graph file cannot be mapped)";
        return std::nullopt;
    }
    v.natoms = static_cast<int>((*head)[0]);
    v.nbasis = static_cast<int>(std::clamp((*head)[1], 0LL, 100000LL));
    v.homo = static_cast<int>(std::clamp((*head)[3], 0LL, 1000000LL));
    std::size_t at = 1;
    for (; at < g.size() && static_cast<int>(v.atoms.size()) < v.natoms; ++at) {
        auto a = text::read_reals(g[at], 4);
        if (!a || a->size() < 4) break;
        v.atoms.push_back({static_cast<int>((*a)[0]), (*a)[1], (*a)[2], (*a)[3], 0.0});
    }
    bool ok = static_cast<int>(v.atoms.size()) == v.natoms;
    v.beta_from = std::string::npos;
    while (ok && at < g.size()) {
        if (g[at].starts_with(" ORBITAL") || g[at].starts_with(" BETA ORBITAL")) {
            at = read_orbital(g, at, v, ok);
        } else if (g[at].starts_with(" EXPONENTS")) {
            std::vector<double> e;
            at = read_values(g, at + 1, e, ok);
            for (std::size_t k = 0; k + 2 < e.size(); k += 3) v.exponents.push_back({e[k], e[k + 1], e[k + 2]});
        } else if (g[at].starts_with(" INVERSE_MATRIX")) {
            at = read_values(g, at + 1, v.inverse, ok);
        } else {
            ++at;
        }
    }
    if (v.beta_from == std::string::npos) v.beta_from = v.orbitals.size();
    v.norbitals = static_cast<int>(v.beta_from);
    if (!ok) {
        error = "graph.dat is damaged near line " + std::to_string(at + 1);
        return std::nullopt;
    }
    return v;
}

}  // namespace zentol
