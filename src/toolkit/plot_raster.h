// Plots drawn into a picture with no display: the plot window's lines,
// circles and texts, for the image files of the spectrum plots.
#pragma once

#include "display/image.h"
#include "toolkit/plot.h"

namespace zentol {

// The items of `plot` on a white picture of the given size, the plot's user
// units stretched over the whole picture (y upwards). Texts stand with their
// lower left corner at their point, in a built-in 5x7 font scaled with the
// picture's height.
Image render_plot(const Plot& plot, int width, int height);

}  // namespace zentol
