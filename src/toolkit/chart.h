// A chart: points joined by a line inside titled axes of fixed ranges. The
// toolkit shows it in a window of its own and can send it to the system
// printer. A profile of a few points shows a marker on each; a spectrum of
// many points shows the line alone, on axes that may run backwards (wave
// numbers falling to the right, bands hanging down from the top).
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct ChartPoint {
    double x = 0, y = 0;
    bool operator==(const ChartPoint&) const = default;
};

struct Chart {
    std::string title;       // above the chart and on its window
    std::string caption;     // a smaller line under the title; none when empty
    std::string x_title, y_title;
    double x_min = 0, x_max = 1;
    double y_min = 0, y_max = 1;
    bool x_reversed = false; // x_max on the left
    bool y_reversed = false; // y_max at the bottom
    double x_tick = 0;       // spacing of the x ticks, from 0; 0 lets the toolkit choose
    bool markers = true;     // a marker on each point
    std::vector<ChartPoint> points;   // drawn in this order
};

}  // namespace zentol
