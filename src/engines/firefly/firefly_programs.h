// The programs around Firefly: the engine, the map maker gridmap and the
// viewer orbview (siblings in the installation's bin/), the wavefunction
// converter elf_input_gen, Debian's dos2unix and DGrid. Each is named in
// cfgset/engines.def; a key that an older engines.def does not have yet
// falls back to its usual place.
#pragma once

#include <string>

namespace zentol {

struct Session;

// The program of a key, "" when it is not installed. Keys: firefly,
// gridmap, orbview, elf_input_gen, dos2unix, dgrid50, dgrid51.
std::string helper_program(const Session& s, const std::string& key);

// The program, or a message naming it and its key and "".
std::string helper_or_message(Session& s, const std::string& key, const std::string& what);

}  // namespace zentol
