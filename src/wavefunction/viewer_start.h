// How the orbital viewer orbview is started and how it hands the job back:
// the command-line words Zentol gives it, the cube file they mean, and the
// words that start Zentol again. Headless, for the viewer and its tests.
//
//   orbview JOB N MOPAC nn [IMX]   a Mopac orbital plot (MOPAS spin, MOPAD
//                                  density); leaving starts
//                                  zentol JOB N MOPA nn [IMX]
//   orbview pppmap FIREFLY         a Firefly map; Zentol is still running
//   orbview JOB N [IMPX]           the job's last map, if any
//   orbview FILE.cube              any cube file
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct ViewerStart {
    std::string cube;          // the map to show; empty when none was found
    std::string job;           // the job to hand back; empty for a plain file
    std::string instance = "1";
    std::string kind;          // "MOPAC", "MOPAS", "MOPAD", "FIREFLY" or ""
    int orbital = 0;
    bool imx = false;
    std::string error;         // a word that makes no sense
};

// Reads the words (without the program) in the current directory: the
// map's name comes from pppmap.atl, which the map program writes, else
// from the job's name.
ViewerStart read_viewer_words(const std::vector<std::string>& words);

// True when leaving the viewer goes back to Zentol.
bool returns_to_zentol(const ViewerStart& v);

// The words that start Zentol again after a Mopac plot: JOB N MOPA nn,
// with MOPAS or MOPAD for a spin or density map and IMX when the viewer
// was given it; `orbital` is the orbital to offer next (nn two digits).
std::vector<std::string> zentol_return_words(const ViewerStart& v, int orbital);

}  // namespace zentol
