// The MOPAC listing (job.LST / job.out) as every Mopac mode command reads
// it: the energy, orbitals, charges, spin and final structure (for Mopac 6
// and the 2016 generation, closed and open shells, a few atoms or more than
// the charge table keeps), the .GEO and side-log lines made of them, and
// the vibrations of a FORCE run with the stick list they become. The bytes
// go through text::TextLines as a file does (byte-order marks, UTF-16,
// carriage returns).
#include <algorithm>

#include "engines/mopac/mopac_listing.h"
#include "engines/mopac/mopac_vibrations.h"
#include "fuzz_support.h"
#include "spectra/stick_list.h"
#include "spectra/vibration_movie.h"
#include "text/fixed_format.h"

using namespace zentol;

namespace {

void read_listing(LineViews lines, int version, int multiplicity, int natoms) {
    const MopacListing r = read_mopac_listing(lines, version, multiplicity, natoms);
    FUZZ_CHECK(r.mo_energy.size() <= static_cast<std::size_t>(kMaxMoEnergies));
    FUZZ_CHECK(r.charges.size() <= static_cast<std::size_t>(std::min(natoms, kMaxChargeAtoms)));
    FUZZ_CHECK(r.spin_density.size() <= static_cast<std::size_t>(natoms));
    FUZZ_CHECK(r.coordinates.size() <= static_cast<std::size_t>(natoms));
    std::vector<std::string> labels(static_cast<std::size_t>(natoms), "C");
    (void)mopac_geo_lines(r, version == 0);
    (void)mopac_result_text(r, "PM7");
    (void)mopac_charge_log(r, labels);
    (void)mopac_spin_log(r, labels);
}

void read_vibrations(const text::TextLines& listing) {
    const MopacVibrations v = read_mopac_vibrations(listing);
    (void)movie_rows(v.modes);
    // The stick list written and read back: one stick a mode whose values
    // fit the list's columns.
    bool fits = true;
    for (const VibrationMode& m : v.modes)
        fits = fits && text::format_f(m.frequency, 9, 2).find('*') == std::string::npos &&
               text::format_f(m.intensity, 10, 5).find('*') == std::string::npos;
    const auto sticks = read_stick_file(text::TextLines::from_lines(stick_file(v.modes, false)));
    FUZZ_CHECK(sticks.has_value());
    if (fits) FUZZ_CHECK(sticks->size() == v.modes.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const text::TextLines listing = text::TextLines::from_bytes(fuzz::input_text(data, size));
    const unsigned h = fuzz::input_hash(data, size);
    const int few = 1 + static_cast<int>(h % 24), many = kMaxChargeAtoms - 5 + static_cast<int>((h >> 8) % 10);
    read_listing(listing.views(), 0, 1, few);
    read_listing(listing.views(), 22, 2 + static_cast<int>((h >> 16) % 2), few);
    read_listing(listing.views(), 22, 1, many);
    read_vibrations(listing);
    return 0;
}
