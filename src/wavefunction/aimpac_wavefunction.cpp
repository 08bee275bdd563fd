// The AIMPAC (Bader) section of a GAMESS-US or Firefly punch file:
//   GAUSSIAN             35 MOL ORBITALS    180 PRIMITIVES       20 NUCLEI
//     C    1    (CENTRE  1)   2.67749101 -0.44248045 -0.00000000  CHARGE =  6.0
//   CENTRE ASSIGNMENTS    1  1  1 ...        (20 a line, I3 from column 21)
//   TYPE ASSIGNMENTS      1  1  1 ...
//   EXPONENTS  7.1616837E+01 1.3045096E+01 ...   (5 a line, E14.7 from column 11)
//   MO  1                     OCC NO =   2.00000000 ORB. ENERGY = -10.01619900
//     1.89353916E+00  1.83134864E+00 ...    (5 a line, E16.8)
//   END DATA
// Coordinates are in bohr; the primitives are not normalised, their
// coefficients carry the normalisation and the contraction (so cartesian d
// functions xx and xy need no factors of their own here).
#include <algorithm>
#include <cmath>

#include "text/fixed_format.h"
#include "wavefunction/map_wavefunction.h"

namespace zentol {

namespace {

using Line = std::string_view;

std::size_t find_section(const text::TextLines& punch) {
    for (std::size_t i = 0; i < punch.size(); ++i)
        if (punch[i].starts_with("----- TOP OF INPUT FILE FOR BADER")) return i;
    return punch.size();
}

// The numbers after the key of a record such as "CENTRE ASSIGNMENTS" or
// "EXPONENTS", read as list-directed values.
bool read_after(Line line, std::size_t key_length, std::vector<double>& out) {
    if (line.size() <= key_length) return true;
    auto values = text::read_reals(line.substr(key_length), 40);
    if (!values) return false;
    out.insert(out.end(), values->begin(), values->end());
    return true;
}

// Consecutive records that start with `key`; returns the place after them.
std::size_t read_records(const text::TextLines& p, std::size_t at, Line key, std::vector<double>& out, bool& ok) {
    for (; at < p.size() && p[at].starts_with(key); ++at) ok = ok && read_after(p[at], key.size(), out);
    return at;
}

// The assignments are I3 fields from column 21, which run together from
// centre 100 on ("  99100101").
std::size_t read_assignments(const text::TextLines& p, std::size_t at, Line key, std::vector<double>& out, bool& ok) {
    for (; at < p.size() && p[at].starts_with(key); ++at) {
        for (std::size_t from = 20; from < text::trimmed_length(p[at]); from += 3) {
            auto v = text::read_i(text::trim(p[at].substr(from, 3)));
            ok = ok && v.has_value();
            out.push_back(static_cast<double>(v.value_or(0)));
        }
    }
    return at;
}

bool read_atom(Line line, MapAtom& a) {
    const std::size_t close = line.find(')'), equals = line.find('=');
    if (close == Line::npos || equals == Line::npos || equals < close) return false;
    auto xyz = text::read_reals(line.substr(close + 1, line.find("CHARGE") - close - 1), 3);
    auto charge = text::read_f(line.substr(equals + 1));
    if (!xyz || xyz->size() != 3 || !charge) return false;
    a.x = (*xyz)[0];
    a.y = (*xyz)[1];
    a.z = (*xyz)[2];
    a.atomic_number = static_cast<int>(std::lround(*charge));
    return true;
}

// "MO  1   OCC NO =   2.00000000 ORB. ENERGY = -10.01619900" and its rows.
std::size_t read_orbital(const text::TextLines& p, std::size_t at, std::size_t nprim, MapWavefunction& w, bool& ok) {
    MapOrbital o;
    const Line head = p[at];
    o.number = static_cast<int>(text::read_i(text::trim(head.substr(2, 4))).value_or(0));
    const std::size_t occ = head.find("OCC NO ="), energy = head.find("ENERGY =");
    if (occ != Line::npos) o.occupancy = text::read_f(head.substr(occ + 8, energy == Line::npos ? Line::npos : energy - occ - 14)).value_or(0);
    if (energy != Line::npos) o.energy = text::read_f(head.substr(energy + 8)).value_or(0);
    for (++at; at < p.size() && o.c.size() < nprim && !p[at].starts_with("MO ") && !p[at].starts_with("END DATA"); ++at) {
        auto values = text::read_reals(p[at], 5);
        if (!values) break;
        o.c.insert(o.c.end(), values->begin(), values->end());
    }
    ok = ok && o.c.size() == nprim;
    w.orbitals.push_back(std::move(o));
    return at;
}

}  // namespace

MapWavefunction aimpac_wavefunction(const text::TextLines& p, std::string& error) {
    MapWavefunction w;
    std::size_t at = find_section(p) + 2;
    if (at >= p.size() || !p[at].starts_with("GAUSSIAN")) {
        error = "the punch file holds no wavefunction for AIMPAC: run the job with the WFN option";
        return w;
    }
    const auto words = text::split_words(p[at]);
    const long long norb = words.size() >= 8 ? text::read_i(words[1]).value_or(-1) : -1;
    const long long nprim = words.size() >= 8 ? text::read_i(words[4]).value_or(-1) : -1;
    const long long natoms = words.size() >= 8 ? text::read_i(words[6]).value_or(-1) : -1;
    if (norb < 1 || nprim < 1 || natoms < 1 || nprim > 1000000 || natoms > 100000) {
        error = "the punch file's wavefunction has no orbitals or no primitives";
        return w;
    }
    for (++at; at < p.size() && static_cast<long long>(w.atoms.size()) < natoms; ++at) {
        MapAtom a;
        if (!read_atom(p[at], a)) break;
        w.atoms.push_back(a);
    }
    std::vector<double> centres, types, exponents;
    bool ok = static_cast<long long>(w.atoms.size()) == natoms;
    at = read_assignments(p, at, "CENTRE ASSIGNMENTS", centres, ok);
    at = read_assignments(p, at, "TYPE ASSIGNMENTS", types, ok);
    at = read_records(p, at, "EXPONENTS", exponents, ok);
    const auto n = static_cast<std::size_t>(nprim);
    ok = ok && centres.size() == n && types.size() == n && exponents.size() == n;
    for (std::size_t k = 0; ok && k < n; ++k) {
        const int c = static_cast<int>(centres[k]), t = static_cast<int>(types[k]);
        ok = c >= 1 && c <= natoms && t >= 1 && t <= 20 && exponents[k] > 0;
        w.gauss.push_back({c - 1, t, exponents[k]});
    }
    while (ok && at < p.size() && p[at].starts_with("MO ")) at = read_orbital(p, at, n, w, ok);
    if (!ok || static_cast<long long>(w.orbitals.size()) != norb) {
        error = "the punch file's wavefunction is cut short or damaged";
        return MapWavefunction{};
    }
    w.nbasis = static_cast<int>(n);
    for (const MapOrbital& o : w.orbitals)
        if (o.occupancy > 0) w.homo = std::max(w.homo, o.number);
    return w;
}

}  // namespace zentol
