// The files the map programs read: Zentol's control file pppmap.KEW and
// graph file graph.dat of a MOPAC plot, Firefly's job.KEW (copied to
// pppmap.kew) with the punch file PUNCH. Layouts in docs/map-files.md.
#pragma once

#include <optional>
#include <string>

#include "engines/mopac/mopac_mgf.h"
#include "text/text_lines.h"

namespace zentol {

// pppmap.KEW of a MOPAC plot.
struct MapControl {
    std::string graph_file = "graph.dat";
    int orbital = 0;
    int steps = 64;
    int kind = 0;       // 0 orbital, 1 spin density, 2 density
    int homo = 0;
    std::string job = "pppmap";
};

// nullopt when the orbital or the grid steps cannot be read.
std::optional<MapControl> read_map_control(const text::TextLines& kew);

// Firefly's job.KEW: one free-format record, the orbital, the H.O.M.O and
// the grid steps.
std::optional<MapControl> read_firefly_kew(const text::TextLines& kew);

// graph.dat as Zentol writes it (graph_file_from_mgf): the same vectors the
// MOPAC graph file gave, orbitals numbered as the listing numbers them.
// nullopt and `error` when it is not such a file.
std::optional<Mop2016Vectors> read_graph_file(const text::TextLines& graph, std::string& error);

}  // namespace zentol
