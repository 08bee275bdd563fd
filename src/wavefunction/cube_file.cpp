#include "wavefunction/cube_file.h"

#include <charconv>
#include <cmath>

#include "text/fixed_format.h"

namespace zentol {

namespace {

constexpr long long kMostPoints = 400LL * 400 * 400;

std::string header_line(int count, const std::array<double, 3>& v) {
    return text::format_i(count, 5) + text::format_f(v[0], 12, 6) + text::format_f(v[1], 12, 6) +
           text::format_f(v[2], 12, 6) + "\n";
}

// Numbers of a line, list-directed; nullopt on a word that is no number.
std::optional<std::vector<double>> numbers(std::string_view line) {
    std::vector<double> out;
    for (std::string_view w : text::split_words(line)) {
        double v = 0;
        auto r = std::from_chars(w.data(), w.data() + w.size(), v);
        if (r.ec != std::errc() || r.ptr != w.data() + w.size()) return std::nullopt;
        out.push_back(v);
    }
    return out;
}

std::string_view next_line(std::string_view text, std::size_t& at) {
    if (at >= text.size()) return {};
    std::size_t end = text.find('\n', at);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = text.substr(at, end - at);
    at = end + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return line;
}

}  // namespace

std::array<double, 3> CubeGrid::point(double i, double j, double k) const {
    std::array<double, 3> p = origin;
    for (int c = 0; c < 3; ++c) p[static_cast<std::size_t>(c)] += i * axes[0][static_cast<std::size_t>(c)] +
                                                                   j * axes[1][static_cast<std::size_t>(c)] +
                                                                   k * axes[2][static_cast<std::size_t>(c)];
    return p;
}

double CubeGrid::voxel_volume() const {
    const auto& a = axes[0];
    const auto& b = axes[1];
    const auto& c = axes[2];
    return std::abs(a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
                    a[2] * (b[0] * c[1] - b[1] * c[0]));
}

std::string cube_text(const CubeGrid& g) {
    std::string out = g.title + "\n" + g.comment + "\n";
    out.reserve(out.size() + g.values.size() * 14 + 1024);
    out += header_line(static_cast<int>(g.atoms.size()), g.origin);
    for (std::size_t a = 0; a < 3; ++a) out += header_line(g.n[a], g.axes[a]);
    for (const MapAtom& a : g.atoms)
        out += text::format_i(a.atomic_number, 5) + text::format_f(a.atomic_number, 12, 6) + text::format_f(a.x, 12, 6) +
               text::format_f(a.y, 12, 6) + text::format_f(a.z, 12, 6) + "\n";
    for (int i = 0; i < g.n[0]; ++i) {
        for (int j = 0; j < g.n[1]; ++j) {
            for (int k = 0; k < g.n[2]; ++k) {
                out += text::format_es(g.at(i, j, k), 13, 5);   // as Gaussian writes cubes
                if (k % 6 == 5 || k + 1 == g.n[2]) out += '\n';
            }
        }
    }
    return out;
}

std::optional<CubeGrid> read_cube(std::string_view text, std::string& error) {
    CubeGrid g;
    std::size_t at = 0;
    g.title = std::string(next_line(text, at));
    g.comment = std::string(next_line(text, at));
    auto head = numbers(next_line(text, at));
    if (!head || head->size() < 4) {
        error = "not a cube file: no atom count and origin on line 3";
        return std::nullopt;
    }
    const long long natoms = std::llabs(std::llround((*head)[0]));
    const bool orbital_list = (*head)[0] < 0;  // a line of orbital numbers follows the atoms
    g.origin = {(*head)[1], (*head)[2], (*head)[3]};
    long long points = 1;
    bool angstrom = false;
    for (std::size_t a = 0; a < 3; ++a) {
        auto axis = numbers(next_line(text, at));
        if (!axis || axis->size() < 4 || std::llround((*axis)[0]) == 0) {
            error = "not a cube file: axis line " + std::to_string(a + 1) + " is damaged";
            return std::nullopt;
        }
        const long long count = std::llround((*axis)[0]);
        angstrom = angstrom || count < 0;
        g.n[a] = static_cast<int>(std::min(std::llabs(count), kMostPoints));
        g.axes[a] = {(*axis)[1], (*axis)[2], (*axis)[3]};
        points *= g.n[a];
    }
    if (natoms > 100000 || points > kMostPoints) {
        error = "the cube file's grid is too large";
        return std::nullopt;
    }
    for (long long k = 0; k < natoms; ++k) {
        auto a = numbers(next_line(text, at));
        if (!a || a->size() < 5) {
            error = "the cube file's atom " + std::to_string(k + 1) + " is damaged";
            return std::nullopt;
        }
        g.atoms.push_back({static_cast<int>(std::lround((*a)[0])), (*a)[2], (*a)[3], (*a)[4]});
    }
    std::size_t per_point = 1;
    if (orbital_list) {
        auto ids = numbers(next_line(text, at));
        if (ids && !ids->empty() && (*ids)[0] >= 1) per_point = static_cast<std::size_t>(std::llround((*ids)[0]));
    }
    g.values.reserve(static_cast<std::size_t>(points));
    std::size_t seen = 0;
    while (at < text.size() && g.values.size() < static_cast<std::size_t>(points)) {
        auto row = numbers(next_line(text, at));
        if (!row) {
            error = "the cube file's values are damaged";
            return std::nullopt;
        }
        // With several orbitals in one file the first one is taken.
        for (double v : *row)
            if (seen++ % per_point == 0 && g.values.size() < static_cast<std::size_t>(points))
                g.values.push_back(static_cast<float>(v));
    }
    if (g.values.size() != static_cast<std::size_t>(points)) {
        error = "the cube file is cut short: " + std::to_string(g.values.size()) + " of " + std::to_string(points) +
                " values";
        return std::nullopt;
    }
    if (angstrom) {
        const double f = kBohrPerAngstrom;
        for (auto& c : g.origin) c *= f;
        for (auto& axis : g.axes)
            for (auto& c : axis) c *= f;
        for (MapAtom& a : g.atoms) {
            a.x *= f;
            a.y *= f;
            a.z *= f;
        }
    }
    return g;
}

}  // namespace zentol
