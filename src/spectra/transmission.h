// The drawn spectrum of the Firefly and Mopac front ends: a stick list
// spread over a 2 cm-1 grid, turned into transmission and drawn in a child
// window with its own rules and captions; the same picture goes to an
// HP-GL file, a PNG file and the clipboard.
#pragma once

#include <string>
#include <vector>

#include "spectra/stick_list.h"

namespace zentol {

struct Session;
class Toolkit;

inline constexpr int kTransmissionPoints = 1900;

// The band array: y(j) for j = nint(f / 2), 2 cm-1 a point. A stick adds
// to its centre and overwrites the six neighbours on each side with the
// spread fractions of the centre; sticks whose spread leaves the array are
// passed over.
inline constexpr int kBandArraySize = 2010;
std::vector<double> transmission_bands(const std::vector<Stick>& sticks, double scale);

// The plotted heights of points 100..1999 of the band array (200 to 3998
// cm-1): transmission exp(-2.303 * 0.7 * y / ymax), drawn as
// 1.1 - (0.8 * t / tmax + 0.1). A flat line at 0.2 without bands.
std::vector<double> transmission_heights(const std::vector<double>& bands);

// x of point n (1..1900): 0.86 - 0.72 * n / 1800, 200 cm-1 at the right.
double transmission_x(int n);

// The picture in unit-square coordinates: rules, captions, job name, scale
// factor and the curve, drawn through the toolkit's plot calls.
void draw_transmission(Toolkit& tk, const std::vector<double>& heights, const std::string& job, double scale);

// The file names of a kind (1 IR, 2 Raman): job_IR.lst, job_ir.hgl,
// job_ir.png; job_RA.lst, job_ra.hgl, job_ra.png.
std::string stick_file_name(const std::string& job, int kind);
std::string hpgl_file_name(const std::string& job, int kind);
std::string png_file_name(const std::string& job, int kind);

// Dialog 119 for the scale factor, the .GEO log, the child window, the
// HP-GL and PNG files, the clipboard and the closing message. A missing
// stick list gets a message.
void plot_transmission(Session& s, const std::string& job, int kind);

}  // namespace zentol
