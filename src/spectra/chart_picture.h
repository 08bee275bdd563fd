// A chart drawn as a plot, for the picture files of the spectra: the same
// axes, captions, title and trace as the chart window shows, drawn with no
// display and saved as PNG.
#pragma once

#include "display/image.h"
#include "toolkit/chart.h"
#include "toolkit/plot.h"

namespace zentol {

// The drawing is 14 by 10.5 units, the graph area from 0.1 to 0.9 of the
// width and of the height.
inline constexpr double kChartUnitsWide = 14.0;
inline constexpr double kChartUnitsHigh = 10.5;
// The picture files are 80 pixels a unit.
inline constexpr int kChartPictureWidth = 1120;
inline constexpr int kChartPictureHeight = 840;

// Colour index of the axes and texts (black), and of the trace.
inline constexpr int kChartInk = 208;
inline constexpr int kChartTrace = 10 * 16 + 8;

Plot chart_plot(const Chart& chart);
Image chart_picture(const Chart& chart);

// Where a data point lands in the plot's units.
double chart_plot_x(const Chart& chart, double x);
double chart_plot_y(const Chart& chart, double y);

}  // namespace zentol
