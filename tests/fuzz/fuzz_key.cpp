// The .key file and the lines that come into it: the "parameters" line
// pointed at this installation's force field, an added molecule's key lines
// renumbered behind the job's atoms, and the CHARGE lines made from a side
// log of charges (the same input read as each of these files).
#include "building/library.h"
#include "engines/tinker/atom_charges.h"
#include "fuzz_support.h"
#include "structure_files/key_file.h"
#include "text/fixed_format.h"

using namespace zentol;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> lines = fuzz::input_lines(data, size);
    const unsigned h = fuzz::input_hash(data, size);

    // Patching changes only "parameters" lines, and patching twice is
    // patching once.
    const std::string path = "/home/chemist/.local/share/zentol/exem/mm3";
    const std::vector<std::string> patched = patch_key_lines(lines, path);
    FUZZ_CHECK(patched.size() == lines.size());
    for (std::size_t k = 0; k < lines.size(); ++k)
        FUZZ_CHECK(patched[k] == lines[k] || patched[k] == "parameters " + path);
    FUZZ_CHECK(patch_key_lines(patched, path) == patched);

    // An added molecule's key behind n0 atoms: its lines are renumbered
    // once; renumbering what came out by 0 changes nothing.
    const int n0 = static_cast<int>(h % (kMaxAtoms + 1));
    const std::vector<std::string> shifted = shifted_key_lines(lines, n0);
    FUZZ_CHECK(shifted.size() <= lines.size());
    for (const std::string& line : shifted) FUZZ_CHECK(!text::starts_with_nocase(line, "PARAMETER"));
    FUZZ_CHECK(shifted_key_lines(shifted, 0) == shifted);

    // The input as a side log of charges.
    const int natoms = static_cast<int>((h >> 12) % 300);
    const std::vector<std::string> charges = charge_key_lines(lines, natoms);
    FUZZ_CHECK(static_cast<int>(charges.size()) <= natoms);
    FUZZ_CHECK(charges.empty() || key_has_charges(charges));
    (void)key_has_charges(lines);
    return 0;
}
