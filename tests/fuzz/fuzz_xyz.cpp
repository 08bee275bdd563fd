// The job's .xyz reader. Whatever parse_xyz accepts must be a molecule the
// rest of the program can trust (neighbours among its atoms, bonds between
// them) and one the writer can write; what format_xyz writes of it must
// read back to the same text. The session's in-memory path
// (reload_from_text) reads the same files.
#include "display/renderer.h"
#include "fuzz_support.h"
#include "session/session.h"
#include "structure_files/xyz_file.h"
#include "toolkit/scripted_toolkit.h"

using namespace zentol;

namespace {

void check_molecule(const Store& st) {
    fuzz::check_neighbours(st);
    FUZZ_CHECK(st.nbonds >= 0 && st.nbonds <= kMaxBonds);
    for (int b = 1; b <= st.nbonds; ++b) {
        FUZZ_CHECK(st.bond_a[b] >= 1 && st.bond_a[b] < st.bond_b[b]);
        FUZZ_CHECK(st.bond_b[b] <= st.natoms);
    }
}

bool has_eight_neighbours(const Store& st) {
    for (int i = 1; i <= st.natoms; ++i) {
        int filled = 0;
        for (int slot = 1; slot <= kMaxNeighbours; ++slot) filled += st.nbr(i, slot) > 0;
        if (filled == kMaxNeighbours) return true;
    }
    return false;
}

Session& session() {
    static ScriptedToolkit tk;
    static NullRenderer renderer;
    static auto* s = [] {
        auto* made = new Session(tk, renderer);
        element_lookup(made->store, nullptr, "", kLookupConfirmAll);
        return made;
    }();
    return *s;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> lines = fuzz::input_lines(data, size);
    Store* st = fuzz::fresh_store(0);
    int charge = 0, multiplicity = 1;
    XyzProblem problem;
    const int status = parse_xyz(lines, *st, nullptr, charge, multiplicity, &problem);
    if (status != kXyzRead) {
        FUZZ_CHECK(status == kXyzDamaged);
        FUZZ_CHECK(!problem.why.empty());
        FUZZ_CHECK(problem.line >= 1 && problem.line <= static_cast<int>(lines.size()) + 1);
        FUZZ_CHECK(st->natoms >= 0 && st->natoms < problem.line);
    } else {
        check_molecule(*st);
        FUZZ_CHECK(unwritable_atom(*st) == 0);

        // The read-back: written, read and written again, the same text.
        const std::string saved = format_xyz(*st, "fuzz", charge, multiplicity);
        Store* again = fuzz::fresh_store(1);
        int charge2 = 0, multiplicity2 = 1;
        FUZZ_CHECK(parse_xyz(files::split_lines(saved), *again, nullptr, charge2, multiplicity2) == kXyzRead);
        FUZZ_CHECK(again->natoms == st->natoms);
        // An eighth neighbour is read but never written: only then may a
        // bond go.
        FUZZ_CHECK(again->nbonds == st->nbonds || (again->nbonds < st->nbonds && has_eight_neighbours(*st)));
        FUZZ_CHECK(charge2 == charge && multiplicity2 == multiplicity);
        FUZZ_CHECK(format_xyz(*again, "fuzz", charge2, multiplicity2) == saved);

        Session& s = session();
        s.flags.xyz_damaged = false;
        reload_from_text(s, saved);
        FUZZ_CHECK(!s.flags.xyz_damaged && s.store.natoms == st->natoms);
    }

    // The raw text through the session's path: damaged or not, the store
    // is left consistent.
    Session& s = session();
    s.flags.xyz_damaged = false;
    reload_from_text(s, fuzz::input_text(data, size));
    check_molecule(s.store);
    return 0;
}
