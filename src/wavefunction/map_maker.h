// The map programs orbgrid, orbgrids and gridmap (one program, zentol-orbgrid,
// installed under the three names): from Zentol's hand-over files in the
// current directory, or from a file named on the command line, a cube file
// of an orbital, the total density or the spin density.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace zentol {

// `args[0]` is the program as it was called: "gridmap" reads Firefly's
// pppmap.kew and PUNCH, any other name Zentol's pppmap.KEW and graph.dat.
// With a file named, the options choose the map. Writes the cube file and
// pppmap.atl (the cube's name, for the viewer); messages go to `err` and,
// in the hand-over form, to pppmap.log too. Returns the exit status: 0
// done, 1 no map, 2 a bad command line.
int run_map_maker(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace zentol
