#include "spectra/chart_picture.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "text/fixed_format.h"
#include "toolkit/plot_raster.h"

namespace zentol {

namespace {

constexpr double kLeft = 0.1 * kChartUnitsWide, kRight = 0.9 * kChartUnitsWide;
constexpr double kBottom = 0.1 * kChartUnitsHigh, kTop = 0.9 * kChartUnitsHigh;
// One character of the picture's font, in units: 12 pixels of 80 a unit.
constexpr double kCharWide = 12.0 / 80.0;
constexpr double kTickLength = 0.12;

struct Range {
    double low, high;
};

// An empty range is widened so that the chart still has a scale.
Range usable(double low, double high) {
    if (high > low) return {low, high};
    return {low - 0.5, low + 0.5};
}

double nice_step(double span, int wanted) {
    const double raw = span / wanted;
    const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
    const double norm = raw / magnitude;
    return (norm < 1.5 ? 1 : norm < 3 ? 2 : norm < 7 ? 5 : 10) * magnitude;
}

std::string tick_label(double value, double step) {
    const int decimals = step >= 1 ? 0 : static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
    if (std::fabs(value) < step * 1e-6) value = 0;
    std::string label(text::trim(text::format_f(value, 20, decimals)));
    if (decimals == 0 && !label.empty() && label.back() == '.') label.pop_back();   // "4000", not "4000."
    return label;
}

void line(Plot& p, double x1, double y1, double x2, double y2, int colour) {
    p.items.push_back({PlotItem::Line, x1, y1, x2, y2, colour, {}});
}

void text_at(Plot& p, double x, double y, const std::string& s) {
    p.items.push_back({PlotItem::Text, x, y, 0, 0, kChartInk, s});
}

void centred(Plot& p, double x, double y, const std::string& s) {
    text_at(p, x - 0.5 * kCharWide * static_cast<double>(s.size()), y, s);
}

std::vector<double> ticks(const Range& r, double step) {
    std::vector<double> out;
    for (double v = std::ceil(r.low / step - 1e-9) * step; v <= r.high + step * 1e-9; v += step) out.push_back(v);
    return out;
}

void x_axis(Plot& p, const Chart& c) {
    const Range r = usable(c.x_min, c.x_max);
    const double step = c.x_tick > 0 ? c.x_tick : nice_step(r.high - r.low, 8);
    for (double v : ticks(r, step)) {
        const double x = chart_plot_x(c, v);
        line(p, x, kBottom, x, kBottom - kTickLength, kChartInk);
        centred(p, x, kBottom - 0.4, tick_label(v, step));
    }
    centred(p, 0.5 * (kLeft + kRight), kBottom - 0.8, c.x_title);
}

void y_axis(Plot& p, const Chart& c) {
    const Range r = usable(c.y_min, c.y_max);
    const double step = nice_step(r.high - r.low, 5);
    for (double v : ticks(r, step)) {
        const double y = chart_plot_y(c, v);
        line(p, kLeft, y, kLeft - kTickLength, y, kChartInk);
        const std::string label = tick_label(v, step);
        text_at(p, kLeft - 0.2 - kCharWide * static_cast<double>(label.size()), y - 0.08, label);
    }
    text_at(p, 0.2, kTop + 0.3, c.y_title);
}

void trace(Plot& p, const Chart& c) {
    const Range ry = usable(c.y_min, c.y_max);
    bool pen_down = false;
    double last_x = 0, last_y = 0;
    for (const ChartPoint& pt : c.points) {
        if (pt.x < std::min(c.x_min, c.x_max) || pt.x > std::max(c.x_min, c.x_max)) {
            pen_down = false;
            continue;
        }
        const double x = chart_plot_x(c, pt.x);
        const double y = chart_plot_y(c, std::clamp(pt.y, ry.low, ry.high));
        if (pen_down) line(p, last_x, last_y, x, y, kChartTrace);
        last_x = x, last_y = y, pen_down = true;
    }
}

}  // namespace

double chart_plot_x(const Chart& c, double x) {
    const Range r = usable(c.x_min, c.x_max);
    double t = (x - r.low) / (r.high - r.low);
    if (c.x_reversed) t = 1 - t;
    return kLeft + t * (kRight - kLeft);
}

double chart_plot_y(const Chart& c, double y) {
    const Range r = usable(c.y_min, c.y_max);
    double t = (y - r.low) / (r.high - r.low);
    if (c.y_reversed) t = 1 - t;
    return kBottom + t * (kTop - kBottom);
}

Plot chart_plot(const Chart& c) {
    Plot p;
    p.title = c.title;
    p.width = kChartPictureWidth;
    p.height = kChartPictureHeight;
    p.left = 0, p.bottom = 0, p.right = kChartUnitsWide, p.top = kChartUnitsHigh;
    line(p, kLeft, kBottom, kRight, kBottom, kChartInk);
    line(p, kRight, kBottom, kRight, kTop, kChartInk);
    line(p, kRight, kTop, kLeft, kTop, kChartInk);
    line(p, kLeft, kTop, kLeft, kBottom, kChartInk);
    x_axis(p, c);
    y_axis(p, c);
    trace(p, c);
    centred(p, 0.5 * kChartUnitsWide, kChartUnitsHigh - 0.35, c.title);
    if (!c.caption.empty()) centred(p, 0.5 * kChartUnitsWide, kTop + 0.3, c.caption);
    return p;
}

Image chart_picture(const Chart& chart) {
    return render_plot(chart_plot(chart), kChartPictureWidth, kChartPictureHeight);
}

}  // namespace zentol
