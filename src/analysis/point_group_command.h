// The Point Group and Align commands: the point-group program is run on the
// job's SYMMOL.INP and mol_al.lst, its answer read back, and the symmetrised
// coordinates taken over on request.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace zentol {

struct Session;

// The answer line of SYMMOL.OUT: the group in its first seven characters,
// the deviation behind them (absolute, above 0.91 shown as 0.9).
struct PointGroupAnswer {
    std::string group;
    double deviation = 0;
};
std::optional<PointGroupAnswer> read_point_group_answer(const std::vector<std::string>& lines);

// "Point Group = D6h     0.0012"
std::string point_group_text(const PointGroupAnswer& a);

// The rows of SYMMETRZ.OUT, at most natoms: x y z behind the six columns of
// the label. Reading stops at a row without three numbers.
std::vector<std::array<double, 3>> read_symmetrised(const std::vector<std::string>& lines, int natoms);

void point_group_command(Session& s);   // command 31
void align_to_symmetry(Session& s);     // command 29

}  // namespace zentol
