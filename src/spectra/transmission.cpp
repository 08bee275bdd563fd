#include "spectra/transmission.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "session/session.h"
#include "session/store_ops.h"
#include "spectra/hpgl.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/plot_raster.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kScaleDialog = 119;
constexpr int kScaleField = 1071;
constexpr double kSpread[6] = {0.9, 0.5, 0.3, 0.15, 0.1, 0.05};
constexpr int kFirstPoint = 100;             // 200 cm-1
constexpr int kPictureWidth = 1200, kPictureHeight = 900;
constexpr int kTextColour = 208, kCurveColour = 168;   // black, blue

bool in_array(long j) { return j >= 0 && j < kBandArraySize; }

void rule(Toolkit& tk, double x1, double y1, double x2, double y2) {
    tk.IGrMoveTo(x1, y1);
    tk.IGrLineTo(x2, y2);
}

void say(Session& s, const std::string& text) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1, text, "Spectrum");
}

// Dialog 119; nullopt when it was cancelled.
std::optional<double> ask_scale_factor(Toolkit& tk) {
    tk.WDialogLoad(kScaleDialog);
    tk.WDialogPutReal(kScaleField, 1.0);
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    const double scale = tk.WDialogGetReal(kScaleField);
    tk.WDialogUnload();
    if (!ok) return std::nullopt;
    return std::clamp(scale, 0.1, 1.0);
}

void log_sticks(Session& s, const std::vector<Stick>& sticks, double scale, bool raman) {
    log_line(s, "");
    log_line(s, raman ? "Raman Spectrum" : "IR Spectrum");
    text::FreeRecord factor;
    factor << "frequency scale factor" << static_cast<float>(scale);
    log_line(s, factor.str());
    log_line(s, "freq.cm**-1  Int.");
    for (const Stick& st : sticks)
        log_line(s, text::format_f(st.frequency * scale, 9, 2) + text::format_f(st.intensity, 10, 5));
}

// The HP-GL file, the PNG file and the clipboard from the plot on the
// screen; a file that could not be written is named.
std::vector<std::string> write_copies(Session& s, const std::string& job, int kind) {
    std::vector<std::string> failed;
    const Plot& plot = s.tk.plot();
    if (!files::write_atomic(hpgl_file_name(job, kind), hpgl_from_plot(plot))) failed.push_back(hpgl_file_name(job, kind));
    const Image picture = render_plot(plot, kPictureWidth, kPictureHeight);
    if (!s.tk.save_image(picture, png_file_name(job, kind), -1)) failed.push_back(png_file_name(job, kind));
    if (!s.tk.copy_image_to_clipboard(picture)) failed.emplace_back("the clipboard");
    return failed;
}

std::string closing_message(const std::string& job, int kind, const std::vector<std::string>& failed) {
    if (!failed.empty()) {
        std::string text = "The spectrum is shown, but could not be written to";
        for (const std::string& f : failed) text += "\r" + f;
        return text;
    }
    return "The spectrum has been copied to the clipboard\rand written to " + hpgl_file_name(job, kind) + " and " +
           png_file_name(job, kind) + (kind == 2 ? "" : ",") + "\r" + stick_file_name(job, kind) + " and " + job +
           ".geo contain original and corr. peaks.";
}

}  // namespace

std::vector<double> transmission_bands(const std::vector<Stick>& sticks, double scale) {
    std::vector<double> y(kBandArraySize, 0.0);
    for (const Stick& st : sticks) {
        const double f = st.frequency * scale;
        if (!std::isfinite(f) || !std::isfinite(st.intensity)) continue;
        const long j = std::lround(f / 2.0);
        if (!in_array(j)) continue;
        y[static_cast<std::size_t>(j)] += st.intensity;
        // Overwritten, not added: a later stick cuts the tail of an earlier one.
        for (int k = 1; k <= 6; ++k)
            for (long n : {j - k, j + k})
                if (in_array(n)) y[static_cast<std::size_t>(n)] = kSpread[k - 1] * y[static_cast<std::size_t>(j)];
    }
    return y;
}

std::vector<double> transmission_heights(const std::vector<double>& bands) {
    if (bands.size() < static_cast<std::size_t>(kFirstPoint + kTransmissionPoints))
        return std::vector<double>(kTransmissionPoints, 0.2);
    const auto first = bands.begin() + kFirstPoint, last = first + kTransmissionPoints;
    const double ymax = *std::max_element(first, last);
    std::vector<double> t;
    for (auto it = first; it != last; ++it) t.push_back(ymax > 0 ? std::exp(-2.303 * 0.7 * *it / ymax) : 1.0);
    const double tmax = *std::max_element(t.begin(), t.end());
    for (double& v : t) v = 1.1 - (0.8 * v / tmax + 0.1);
    return t;
}

double transmission_x(int n) { return 0.86 - 0.72 * n / 1800.0; }

void draw_transmission(Toolkit& tk, const std::vector<double>& heights, const std::string& job, double scale) {
    tk.IGrUnits(0, 0, 1, 1);
    tk.IGrColourN(kTextColour);
    rule(tk, 0.1, 0.15, 0.86, 0.15);
    rule(tk, 0.1, 0.94, 0.86, 0.94);
    for (int k = 0; k < 20; ++k) rule(tk, 0.10 + 0.04 * k, 0.15, 0.10 + 0.04 * k, 0.94);
    const std::pair<double, const char*> numbers[] = {{0.1, "4000"}, {0.3, "3000"}, {0.5, "2000"}, {0.7, "1000"},
                                                      {0.855, "200"}};
    for (const auto& [x, label] : numbers) tk.IGrCharOut(x, 0.1, label);
    tk.IGrCharOut(0.9, 0.1, "cm");
    tk.IGrCharOut(0.92, 0.12, "-1");
    tk.IGrCharOut(0.13, 0.03, job);
    tk.IGrCharOut(0.45, 0.03, "Scale factor " + text::format_f(scale, 4, 2));
    // The curve starts on the right-hand rule at (0.86, 0.9); its first
    // stroke, down that rule to the baseline, keeps the rules' colour so
    // that it does not read as a band at 200 cm-1.
    tk.IGrMoveTo(0.86, 0.9);
    for (int n = 1; n <= static_cast<int>(heights.size()); ++n) {
        tk.IGrLineTo(transmission_x(n), heights[static_cast<std::size_t>(n - 1)]);
        if (n == 1) tk.IGrColourN(kCurveColour);
    }
}

std::string stick_file_name(const std::string& job, int kind) { return job + (kind == 2 ? "_RA.lst" : "_IR.lst"); }
std::string hpgl_file_name(const std::string& job, int kind) { return job + (kind == 2 ? "_ra.hgl" : "_ir.hgl"); }
std::string png_file_name(const std::string& job, int kind) { return job + (kind == 2 ? "_ra.png" : "_ir.png"); }

void plot_transmission(Session& s, const std::string& job, int kind) {
    const bool raman = kind == 2;
    const std::string name = stick_file_name(job, kind);
    auto lines = files::read_text_lines(name);
    if (!lines) {
        say(s, "There is no " + std::string(raman ? "Raman" : "IR") + " stick list " + name +
                   "\rRead the vibrations from the listing first.");
        return;
    }
    auto sticks = read_stick_file(*lines);
    if (!sticks) {
        say(s, name + " is not a stick list:\rit has no \"  freq\" heading.");
        return;
    }
    const auto scale = ask_scale_factor(s.tk);
    if (!scale) return;
    log_sticks(s, *sticks, *scale, raman);
    const std::vector<double> heights = transmission_heights(transmission_bands(*sticks, *scale));
    s.tk.WindowOpenChild(job + (raman ? " Raman spectrum" : " IR spectrum"), 800, 600);
    draw_transmission(s.tk, heights, job, *scale);
    const auto failed = write_copies(s, job, kind);
    say(s, closing_message(job, kind, failed));
    draw_scene(s);
}

}  // namespace zentol
