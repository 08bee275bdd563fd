#include "spectra/chart_spectrum.h"

#include <cmath>
#include <limits>

#include "engines/runner.h"
#include "session/session.h"
#include "spectra/chart_picture.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr double kSpread[6] = {0.9, 0.5, 0.3, 0.15, 0.1, 0.05};

// The smallest |grid(i) - value| over n points, the first on a tie.
template <typename Grid>
int nearest_point(double value, int n, Grid grid) {
    int best = 1;
    double best_distance = std::numeric_limits<double>::infinity();
    for (int i = 1; i <= n; ++i) {
        const double d = std::fabs(grid(i) - value);
        if (d < best_distance) best = i, best_distance = d;
    }
    return best;
}

const char* stick_title(int kind) { return kind == 2 ? "Raman Spectrum" : "IR Spectrum"; }

}  // namespace

int nearest_ir_point(double wave) { return nearest_point(wave, kIrGridPoints, ir_grid_wave); }
int nearest_uv_point(double wavelength) { return nearest_point(wavelength, kUvGridPoints, uv_grid_wave); }

void add_stick(std::vector<double>& band, int i, double intensity) {
    band[i] += intensity;
    if (i < 8 || i > kIrGridPoints - 7) return;
    // Overwrite, not add: the tail of an earlier stick gives way.
    for (int k = 1; k <= 6; ++k) band[i - k] = band[i + k] = kSpread[k - 1] * band[i];
}

StickSpectrum spread_sticks(const text::TextLines& sticks, float scale, int kind) {
    StickSpectrum out;
    out.geo_lines = {"", (text::FreeRecord() << stick_title(kind)).str(),
                     (text::FreeRecord() << "frequency scale factor" << scale).str(), " freq.cm**-1  Int."};
    double strongest = 0;
    for (std::size_t r = 3; r < sticks.size(); ++r) {
        if (text::trim(sticks[r]).size() < 18) break;
        const auto values = text::read_reals(sticks[r], 2);
        if (!values || values->size() < 2) break;
        const double frequency = (*values)[0], intensity = (*values)[1];
        // An imaginary mode: the structure is no minimum, and no spectrum is drawn.
        if (frequency < 0) {
            out.abandoned = true;
            return out;
        }
        const double scaled = frequency * scale;
        out.geo_lines.push_back(text::format_f(scaled, 9, 2) + text::format_f(intensity, 10, 5));
        const int i = nearest_ir_point(scaled);
        if (intensity > strongest) strongest = intensity, out.strongest = i;
        add_stick(out.band, i, intensity);
    }
    out.geo_lines.emplace_back("");
    return out;
}

const std::array<double, 41>& uv_band_shape() {
    static const std::array<double, 41> w = [] {
        std::array<double, 41> a{};
        for (int j = 1; j <= 40; ++j) a[j] = std::exp(-0.005 * (2.0 * j - 40) * (2.0 * j - 40));
        return a;
    }();
    return w;
}

UvSpectrum spread_transitions(const text::TextLines& transitions) {
    UvSpectrum out;
    for (std::string_view r : transitions) {
        if (r.substr(0, 5) == "  END") break;
        const auto values = text::read_reals(r, 2);
        if (!values || values->size() < 2) continue;
        const int k = nearest_uv_point((*values)[0]);
        // Unlike the IR spread this one accumulates; points off the grid are lost.
        for (int j = 1; j <= 40; ++j) {
            const int i = k - 20 + j;
            if (i >= 1 && i <= kUvGridPoints) out.absorbance[i] += uv_band_shape()[j] * (*values)[1];
        }
    }
    for (int i = 2; i <= kUvGridPoints; ++i)
        if (out.absorbance[i] > out.absorbance[out.strongest]) out.strongest = i;
    return out;
}

std::vector<std::string> band_table(const StickSpectrum& spectrum) {
    std::vector<std::string> lines;
    for (int i = 1; i <= kIrGridPoints; ++i)
        lines.push_back(text::format_f(ir_grid_wave(i), 8, 0) + text::format_f(spectrum.band[i], 12, 8));
    return lines;
}

std::vector<std::string> absorbance_table(const UvSpectrum& spectrum) {
    std::vector<std::string> lines;
    for (int i = 1; i <= kUvGridPoints; ++i)
        lines.push_back(text::format_f(uv_grid_wave(i), 7, 0) + text::format_f(spectrum.absorbance[i], 8, 4));
    return lines;
}

Chart stick_chart(const StickSpectrum& spectrum, const std::string& job, int kind, float scale) {
    Chart c;
    c.title = job + (kind == 2 ? " Raman spectrum" : " IR spectrum");
    c.caption = "Scale factor " + text::format_f(scale, 4, 2);
    c.x_title = "Wavenumber 1/cm";
    c.y_title = "Intensity";
    // 4000 cm-1 on the left, and the bands hang down from 0 at the top
    // like a transmission trace.
    c.x_min = ir_grid_wave(1), c.x_max = ir_grid_wave(kIrGridPoints);
    c.x_reversed = true;
    c.x_tick = 500;
    c.y_min = 0, c.y_max = spectrum.band[spectrum.strongest];
    c.y_reversed = true;
    c.markers = false;
    for (int i = 1; i <= kIrGridPoints; ++i) c.points.push_back({ir_grid_wave(i), spectrum.band[i]});
    return c;
}

Chart uv_chart(const UvSpectrum& spectrum, const std::string& job) {
    Chart c;
    c.title = job + " UV-visible spectrum";
    c.x_title = "Wavlength nm";
    c.y_title = "Absorbance";
    c.x_min = uv_grid_wave(1), c.x_max = uv_grid_wave(kUvGridPoints);
    c.x_tick = 100;
    c.y_min = 0, c.y_max = spectrum.absorbance[spectrum.strongest];
    c.markers = false;
    for (int i = 1; i <= kUvGridPoints; ++i) c.points.push_back({uv_grid_wave(i), spectrum.absorbance[i]});
    return c;
}

namespace {

// The picture first, then the window, then the table; field 9 names the
// files written.
void show_and_keep(Session& s, const Chart& chart, const std::string& picture, const std::string& table_name,
                   const std::vector<std::string>& table) {
    const bool saved = s.tk.save_image(chart_picture(chart), picture, -1);
    s.tk.show_chart(chart);
    const bool written = files::write_lines(table_name, table);
    s.tk.WindowOutStatusBar(status_message_field, saved && written ? picture + " and " + table_name + " written"
                                                                   : "Could not write " + (saved ? table_name : picture));
}

}  // namespace

void plot_spectrum(Session& s, float scale, int kind) {
    auto sticks = files::read_text_lines(job_file(s, kind == 2 ? "_ra.lst" : "_ir.lst"));
    if (!sticks) return;
    const StickSpectrum spectrum = spread_sticks(*sticks, scale, kind);
    for (const std::string& line : spectrum.geo_lines) log_line(s, line);
    if (spectrum.abandoned) {
        s.tk.WindowOutStatusBar(status_message_field, "Imaginary frequency: no spectrum plotted");
        return;
    }
    show_and_keep(s, stick_chart(spectrum, s.job.name, kind, scale), job_file(s, kind == 2 ? "_raman.png" : "_ir.png"),
                  job_file(s, kind == 2 ? "_raspec.lst" : "_irspec.lst"), band_table(spectrum));
}

void plot_uv(Session& s) {
    auto transitions = files::read_text_lines(job_file(s, "_uv.lst"));
    if (!transitions) return;
    const UvSpectrum spectrum = spread_transitions(*transitions);
    show_and_keep(s, uv_chart(spectrum, s.job.name), job_file(s, "_uvvis.png"), job_file(s, "_uvvis.lst"),
                  absorbance_table(spectrum));
}

}  // namespace zentol
