// The movie of a vibration after a good Vibrate run: VIBRATE writes the
// frames of one normal mode, which are shown and kept as MVnn.INS.
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct Session;

// "butane.007": the frame file of vibration n.
std::string vibration_frame_file(const std::string& job, int vibration);

// The lines of the movie's command file: the Tinker directory put on PATH
// twice, the VIBRATE line, a blank line.
std::vector<std::string> movie_batch(const Session& s);

// Dialog 105, the run, the frames shown and written, the job's structure
// put back.
void tinker_movie(Session& s);

}  // namespace zentol
