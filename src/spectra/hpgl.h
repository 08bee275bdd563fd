// HP-GL, the vector format of pen plotters that drawing programs still
// read: a Plot written as pen-up and pen-down moves, circles and labels.
#pragma once

#include <string>

#include "toolkit/plot.h"

namespace zentol {

// The plot's user units stretched over 10000 x 7500 plotter units (y up).
inline constexpr int kHpglWidth = 10000;
inline constexpr int kHpglHeight = 7500;

// One command a line: "IN;" and the character size first, then the items
// in order: "SPn;" when the pen changes (1 black, 2 red, 3 green, 4 blue,
// 5 the other colours), "PUx,y;" to a line's start unless the pen is
// there, "PDx,y;" to its end, "PUx,y;CIr;" for a circle, "PUx,y;LBtext"
// closed by character 3 for a text; "PU;SP0;" at the end.
std::string hpgl_from_plot(const Plot& plot);

}  // namespace zentol
