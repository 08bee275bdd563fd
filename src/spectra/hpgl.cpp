#include "spectra/hpgl.h"

#include <cmath>

#include "text/fixed_format.h"

namespace zentol {

namespace {

// The pen of a colour number: the greys are black, then the families of
// red, green and blue; the rest share a pen.
int pen_of(int colour) {
    switch (colour / 16) {
        case 0:
        case 13: return 1;
        case 1: return 2;
        case 5: return 3;
        case 10: return 4;
        default: return 5;
    }
}

struct Writer {
    const Plot& plot;
    std::string out = "IN;\nSI0.19,0.27;\n";
    int pen = 0;
    long px = -1, py = -1;
    bool pen_position_known = false;

    long x_of(double x) const {
        const double w = plot.right - plot.left;
        return w == 0 ? 0 : std::lround((x - plot.left) / w * kHpglWidth);
    }
    long y_of(double y) const {
        const double h = plot.top - plot.bottom;
        return h == 0 ? 0 : std::lround((y - plot.bottom) / h * kHpglHeight);
    }
    static std::string point(long x, long y) { return std::to_string(x) + "," + std::to_string(y); }

    void select_pen(int colour) {
        const int p = pen_of(colour);
        if (p == pen) return;
        pen = p;
        out += "SP" + std::to_string(p) + ";\n";
    }
    void move(long x, long y) {
        if (pen_position_known && x == px && y == py) return;
        out += "PU" + point(x, y) + ";\n";
        px = x, py = y;
        pen_position_known = true;
    }
    void item(const PlotItem& it) {
        select_pen(it.colour);
        const long x1 = x_of(it.x1), y1 = y_of(it.y1);
        switch (it.kind) {
            case PlotItem::Line: {
                move(x1, y1);
                const long x2 = x_of(it.x2), y2 = y_of(it.y2);
                out += "PD" + point(x2, y2) + ";\n";
                px = x2, py = y2;
                break;
            }
            case PlotItem::Circle:
                move(x1, y1);
                out += "CI" + std::to_string(std::labs(x_of(plot.left + it.x2) - x_of(plot.left))) + ";\n";
                break;
            case PlotItem::Text:
                move(x1, y1);
                // A label moves the pen along; the next item starts afresh.
                out += "LB" + text::sanitise_text(it.text) + '\x03' + "\n";
                pen_position_known = false;
                break;
        }
    }
};

}  // namespace

std::string hpgl_from_plot(const Plot& plot) {
    Writer w{plot};
    for (const PlotItem& it : plot.items) w.item(it);
    w.out += "PU;\nSP0;\n";
    return w.out;
}

}  // namespace zentol
