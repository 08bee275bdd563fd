// Reading the Firefly punch file (job.pun): the geometry, the wavefunction
// for Bader's AIMPAC programs and the Hessian that a Raman run takes over.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engines/firefly/firefly_listing.h"
#include "text/text_lines.h"

namespace zentol {

// The geometry: the block after "----- RESULTS FROM SUCCESSFUL" when the
// search converged, else the last of the " COORDINATES OF" blocks, whose
// number is the count of cycles.
struct PunchGeometry {
    bool converged = false;
    int cycles = 0;
    std::vector<ListingAtom> atoms;
};

// Reads `natoms` rows of the block (all of it when natoms is 0, at most
// 3000); fewer when the file is cut short or the block holds fewer.
PunchGeometry read_punch_geometry(const text::TextLines& punch, int natoms);

// Every record after "----- TOP OF INPUT FILE FOR BADER"; nullopt without it.
std::optional<std::vector<std::string>> bader_section(const text::TextLines& punch);

// The " $HESS" group through its " $END"; nullopt when the file has none or
// ends inside it.
std::optional<std::vector<std::string>> hessian_group(const text::TextLines& punch);

}  // namespace zentol
