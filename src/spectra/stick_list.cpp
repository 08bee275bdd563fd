#include "spectra/stick_list.h"

#include "text/fixed_format.h"

namespace zentol {

std::vector<std::string> stick_file(const std::vector<VibrationMode>& modes, bool raman) {
    std::vector<std::string> out{"", raman ? " Raman Spectrum" : " IR Spectrum", "  freq.cm**-1  Int.  No."};
    int number = 0;
    for (const VibrationMode& m : modes)
        out.push_back(text::format_f(m.frequency, 9, 2) + text::format_f(m.intensity, 10, 5) +
                      text::format_i(++number, 5));
    out.emplace_back("  END");
    return out;
}

std::optional<std::vector<Stick>> read_stick_file(const text::TextLines& lines) {
    std::size_t at = 0;
    while (at < lines.size() && lines[at].substr(0, 6) != "  freq") ++at;
    if (at == lines.size()) return std::nullopt;
    std::vector<Stick> sticks;
    for (++at; at < lines.size() && lines[at].substr(0, 5) != "  END"; ++at) {
        auto v = text::read_reals(lines[at], 2);
        if (!v || v->size() < 2) continue;   // a damaged row is passed over
        sticks.push_back({(*v)[0], (*v)[1]});
    }
    return sticks;
}

}  // namespace zentol
