// The vibration movie of the Firefly and Mopac front ends: the molecule
// is moved along one normal mode for four cycles, and the first cycle is
// kept as 40 structure files MV01.INS to MV40.INS.
#pragma once

#include <string>
#include <vector>

#include "spectra/frame_alignment.h"
#include "spectra/stick_list.h"

namespace zentol {

struct Session;

inline constexpr int kMovieAtomLimit = 35;
inline constexpr int kMovieListRows = 100;
inline constexpr int kMovieFrames = 40;

// "The atom limit for animation is 35" for a larger molecule; true when the
// molecule may be animated.
bool movie_atom_limit_ok(Session& s);

// The rows of the mode list: frequency F9.2, intensity F10.5, row number
// I5, for at most 100 modes.
std::vector<std::string> movie_rows(const std::vector<VibrationMode>& modes);

// D = 155 - 8 A for the amplitude A (1..10): a frame moves every atom by
// k * d / D.
int movie_divisor(int amplitude);

// The signed k of each frame of one cycle: four quarters of k = 1..10,
// the first added, the second and third taken away, the fourth added.
std::vector<int> cycle_steps();

// "MV01.INS" .. "MV40.INS".
std::string movie_frame_name(int frame);

// The modes' displacements turned from the engine's frame (the atoms at
// `engine_atoms`) into the molecule's as it stands; unchanged when the
// engine's atoms do not match the molecule.
std::vector<VibrationMode> modes_in_molecule_frame(const Session& s, std::vector<VibrationMode> modes,
                                                   const std::vector<Point3>& engine_atoms);

// Dialog 117, the four cycles, the frames written, "Save movie files to
// another folder?", and the molecule put back as it was. `engine_atoms`
// are the atoms in the engine's frame (empty when it is the molecule's).
void play_vibration_movie(Session& s, const std::vector<VibrationMode>& modes, const std::vector<Point3>& engine_atoms);

}  // namespace zentol
