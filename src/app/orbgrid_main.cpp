// zentol-orbgrid: the map programs orbgrid, orbgrids and gridmap (installed
// under those names). See --help.
#include <iostream>
#include <string>
#include <vector>

#include "wavefunction/map_maker.h"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv, argv + argc);
    return zentol::run_map_maker(args, std::cout, std::cerr);
}
