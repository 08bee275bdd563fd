#include "engines/firefly/firefly_modes.h"

#include <algorithm>

#include "text/fixed_format.h"

namespace zentol {

namespace {

// The label of a row of values ("FREQUENCY:", "IR INTENSITY:") and the
// text behind its colon; an empty label for any other record.
std::string_view row_label(std::string_view line, std::string_view& rest) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || colon > 20) return {};
    rest = line.substr(colon + 1);
    return text::trim(line.substr(0, colon));
}

//  MODES 1 TO 6 ARE TAKEN AS ROTATIONS AND TRANSLATIONS.       (Firefly, PC GAMESS)
//  MODES    2 TO    7 ARE TAKEN AS ROTATIONS AND TRANSLATIONS. (GAMESS-US)
bool rigid_modes(std::string_view line, ListingModes& m) {
    if (line.find("ARE TAKEN AS ROTATIONS AND TRANSLATIONS") == std::string_view::npos) return false;
    const auto w = text::split_words(line);
    if (w.size() < 4 || w[0] != "MODES" || w[2] != "TO") return false;
    m.rigid_first = static_cast<int>(text::read_i(w[1]).value_or(0));
    m.rigid_last = static_cast<int>(text::read_i(w[3]).value_or(0));
    return true;
}

// An imaginary frequency is followed by " I":
//        FREQUENCY:      4805.54 I   1793.00 I   1317.42 I      2.28        2.09
std::vector<double> frequencies(std::string_view rest) {
    std::vector<double> out;
    for (std::string_view w : text::split_words(rest)) {
        if (w == "I" && !out.empty()) out.back() = -out.back();
        else if (auto v = text::read_f(w)) out.push_back(*v);
    }
    return out;
}

std::vector<double> values(std::string_view rest) {
    std::vector<double> out;
    for (std::string_view w : text::split_words(rest))
        if (auto v = text::read_f(w)) out.push_back(*v);
    return out;
}

struct Block {
    std::vector<int> numbers;
    std::vector<double> freq, ir, raman;
    std::vector<std::vector<std::array<double, 3>>> displacement;   // by column, then atom
};

// Displacements: the coordinate letter in column 20, then one field of 12
// a mode; the Y and Z rows leave the atom columns blank:
//   1   C            X  0.00000000 -0.00787483  0.03835139  0.07884702  0.00000000
//                    Y  0.00000000 -0.04844439 -0.07884692  0.03835145 -0.00000001
std::size_t read_displacements(const text::TextLines& listing, std::size_t at, Block& b) {
    const std::size_t n = b.numbers.size();
    b.displacement.assign(n, {});
    int axis = 0;
    for (; at < listing.size(); ++at) {
        const std::string_view line = listing[at];
        const char letter = line.size() >= 20 ? line[19] : ' ';
        if (letter != "XYZ"[axis]) break;
        if (axis == 0)
            for (auto& column : b.displacement) column.push_back({0, 0, 0});
        for (std::size_t k = 0; k < n; ++k) {
            auto v = text::read_f(text::column_field(line, 21 + 12 * static_cast<int>(k), 12));
            b.displacement[k].back()[static_cast<std::size_t>(axis)] = v.value_or(0.0);
        }
        axis = (axis + 1) % 3;
    }
    return at;
}

// One block of up to five modes: the mode numbers above "FREQUENCY:", the
// rows of values down to a blank record, then the displacements.
std::size_t read_block(const text::TextLines& listing, std::size_t freq_row, Block& b) {
    if (freq_row > 0) {
        auto numbers = text::read_ints(listing[freq_row - 1], 16);
        if (numbers) b.numbers.assign(numbers->begin(), numbers->end());
    }
    std::size_t at = freq_row;
    for (; at < listing.size() && !text::trim(listing[at]).empty(); ++at) {
        std::string_view rest;
        const std::string_view label = row_label(listing[at], rest);
        if (label == "FREQUENCY") b.freq = frequencies(rest);
        else if (label == "IR INTENSITY") b.ir = values(rest);
        else if (label == "RAMAN ACTIVITY" || label == "RAMAN INTENSITY") b.raman = values(rest);
    }
    const std::size_t n = std::min(b.numbers.size(), b.freq.size());
    b.numbers.resize(n);
    while (at < listing.size() && text::trim(listing[at]).empty()) ++at;
    return read_displacements(listing, at, b);
}

void add_block(const Block& b, bool raman, ListingModes& m) {
    const std::vector<double>& intensity = raman ? b.raman : b.ir;
    for (std::size_t k = 0; k < b.numbers.size(); ++k) {
        VibrationMode v;
        v.number = b.numbers[k];
        v.frequency = b.freq[k];
        v.intensity = k < intensity.size() ? intensity[k] : 0.0;
        if (k < b.displacement.size()) v.displacement = b.displacement[k];
        m.natoms = std::max(m.natoms, static_cast<int>(v.displacement.size()));
        if (v.number >= m.rigid_first && v.number <= m.rigid_last) continue;
        m.vibrations.push_back(std::move(v));
    }
}

}  // namespace

// Rigid-body modes are not always 1 to 6: a linear molecule has five, and
// imaginary modes sort before them ("MODES 4 TO 9" after three imaginary
// ones). Raman activities are "RAMAN ACTIVITY:" in Firefly 8 and "RAMAN
// INTENSITY:" in PC GAMESS; GAMESS-US puts a "SYMMETRY:" row in and shifts
// the mode numbers two columns right, so rows are read by their words.
ListingModes read_listing_modes(const text::TextLines& listing, bool raman) {
    ListingModes m;
    for (std::size_t at = 0; at < listing.size();) {
        const std::string_view line = listing[at];
        if (line.find("NORMAL COORDINATE ANALYSIS IN THE HARMONIC") != std::string_view::npos) {
            m = ListingModes{};
            ++at;
            continue;
        }
        if (rigid_modes(line, m)) {
            ++at;
            continue;
        }
        std::string_view rest;
        if (row_label(line, rest) != "FREQUENCY") {
            ++at;
            continue;
        }
        Block b;
        at = read_block(listing, at, b);
        m.found = true;
        add_block(b, raman, m);
    }
    return m;
}

}  // namespace zentol
