// Spectra of the Orca front end drawn as charts: a stick list (job_ir.lst,
// job_ra.lst, job_uv.lst) put on a fixed grid and spread into a band
// shape, shown in the chart window, saved as a PNG picture and written out
// as a table.
//
// The IR and Raman spread is a fixed table of fractions that overwrites
// the neighbours of each stick (a later stick erases the tail of an
// earlier one where they overlap); the UV band is a Gaussian in the
// wavelength that accumulates.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "text/text_lines.h"
#include "toolkit/chart.h"

namespace zentol {

struct Session;

inline constexpr int kIrGridPoints = 1900;   // 202 .. 4000 cm-1 in steps of 2
inline constexpr int kUvGridPoints = 350;    // 102 .. 800 nm in steps of 2

inline double ir_grid_wave(int i) { return 200.0 + 2.0 * i; }
inline double uv_grid_wave(int i) { return 100.0 + 2.0 * i; }

// The grid point nearest to a wave number (the lowest on a tie).
int nearest_ir_point(double wave);
int nearest_uv_point(double wavelength);

// The IR or Raman band shape of a stick list. `band` and the other grids
// are 1-based (element 0 unused).
struct StickSpectrum {
    std::vector<double> band = std::vector<double>(kIrGridPoints + 1, 0.0);
    int strongest = 1;                  // the index of the greatest stick: the plot's scale
    std::vector<std::string> geo_lines; // what the GEO log receives
    bool abandoned = false;             // a negative frequency: no plot at all
};

// Adds a stick at grid point i and overwrites its six neighbours on each
// side with fractions of the centre (only from point 8 to 1893).
void add_stick(std::vector<double>& band, int i, double intensity);

// Reads a stick file (three heading records, then frequency and intensity
// a record, ended by a short record such as "  END" or by the end of the
// file), scaling each frequency. kind 1 IR, 2 Raman.
StickSpectrum spread_sticks(const text::TextLines& sticks, float scale, int kind);

// The Gaussian band of one UV transition: 40 weights over -38..+40 nm.
const std::array<double, 41>& uv_band_shape();

struct UvSpectrum {
    std::vector<double> absorbance = std::vector<double>(kUvGridPoints + 1, 0.0);
    int strongest = 1;                  // the greatest absorbance, the first on a tie
};

// Reads job_uv.lst (wavelength and intensity a record, up to "  END").
UvSpectrum spread_transitions(const text::TextLines& transitions);

// job_irspec.lst / job_raspec.lst and job_uvvis.lst.
std::vector<std::string> band_table(const StickSpectrum& spectrum);
std::vector<std::string> absorbance_table(const UvSpectrum& spectrum);

// The charts as the window and the picture show them.
Chart stick_chart(const StickSpectrum& spectrum, const std::string& job, int kind, float scale);
Chart uv_chart(const UvSpectrum& spectrum, const std::string& job);

// The commands of Orca mode: nothing happens without the stick file.
void plot_spectrum(Session& s, float scale, int kind);
void plot_uv(Session& s);

}  // namespace zentol
