// The second window for plots: a 2-D picture in user units, built by the
// plotting calls and shown by the toolkit.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace zentol {

struct PlotItem {
    enum Kind { Line, Circle, Text } kind = Line;
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;   // a line's ends; a circle's centre and radius in x2
    int colour = 0;
    std::string text;
};

struct Plot {
    std::string title;
    int width = 640, height = 480;
    double left = 0, bottom = 0, right = 1, top = 1;   // user units of the window
    std::vector<PlotItem> items;
    double pen_x = 0, pen_y = 0;
    int colour = 208;
};

// The toolkit's 256 colour numbers: sixteen families of sixteen shades,
// shade 8 the family's full colour, family 13 the greys from black (208).
std::array<std::uint8_t, 3> colour_number(int n);

}  // namespace zentol
