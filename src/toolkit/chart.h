// A chart: points joined by a line, with a marker on each point, inside
// titled axes of fixed ranges. The toolkit shows it in a window of its own
// and can send it to the system printer.
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
    std::string x_title, y_title;
    double x_min = 0, x_max = 1;
    double y_min = 0, y_max = 1;
    std::vector<ChartPoint> points;   // drawn in this order
};

}  // namespace zentol
