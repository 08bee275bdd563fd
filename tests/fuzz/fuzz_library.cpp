// Library and substituent files (and any .xyz the user adds): the file is
// appended behind an empty molecule, a small one, or one a few atoms short
// of the limit. A refused file leaves the molecule as it was; an accepted
// one leaves a molecule whose neighbours are its own atoms, and that the
// job's file, once written, reads back to.
#include <cstring>

#include "building/library.h"
#include "fuzz_support.h"
#include "structure_files/xyz_file.h"

using namespace zentol;

namespace {

void check_molecule(const Store& st) {
    fuzz::check_neighbours(st);
    for (int b = 1; b <= st.nbonds; ++b) FUZZ_CHECK(st.bond_a[b] >= 1 && st.bond_b[b] <= st.natoms);
}

// The molecules the file is added to: none, the shipped benzene, and a
// crowd of carbons three atoms short of the limit.
const Store& base(unsigned which) {
    static const auto bases = [] {
        std::array<std::unique_ptr<Store>, 3> b;
        for (auto& one : b) one = std::make_unique<Store>(*fuzz::fresh_store());
        auto benzene = files::read_lines(std::string(ZENTOL_DATA_DIR) + "/library/aromatics/benzene.xyz");
        FUZZ_CHECK(benzene.has_value());
        int charge = 0, multiplicity = 1;
        FUZZ_CHECK(parse_xyz(*benzene, *b[1], nullptr, charge, multiplicity) == kXyzRead);
        Store& crowd = *b[2];
        crowd.natoms = kMaxAtoms - 3;
        for (int i = 1; i <= crowd.natoms; ++i) {
            crowd.atom_label[i] = make_label("C");
            crowd.atom_rec[i] = {static_cast<float>(i % 50) * 1.5f, static_cast<float>(i / 50) * 1.5f, 0, 0.77f, 0, 0};
        }
        return b;
    }();
    return *bases[which % 3];
}

bool same_atoms(const Store& a, const Store& b) {
    if (a.natoms != b.natoms) return false;
    const auto rows = static_cast<std::size_t>(a.natoms + 1);
    return std::memcmp(a.atom_rec.data(), b.atom_rec.data(), rows * sizeof a.atom_rec[0]) == 0 &&
           std::memcmp(a.atom_label.data(), b.atom_label.data(), rows * sizeof a.atom_label[0]) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> lines = fuzz::input_lines(data, size);
    const Store& before = base(fuzz::input_hash(data, size));
    Store* st = fuzz::fresh_store(0);
    *st = before;
    const int result = append_molecule_lines(*st, nullptr, lines);
    if (result == kAppendFailed) {
        FUZZ_CHECK(same_atoms(*st, before));
        return 0;
    }
    FUZZ_CHECK(result == (before.natoms == 0 ? kAppendStarted : kAppendJoined));
    FUZZ_CHECK(st->natoms > before.natoms || before.natoms == kMaxAtoms);
    check_molecule(*st);
    // Atoms already there are not moved.
    for (int i = 1; i <= before.natoms; ++i) FUZZ_CHECK(st->atom_rec[i] == before.atom_rec[i]);

    // Saved, the joined molecule reads back (one that does not fit the
    // file is never saved).
    if (unwritable_atom(*st) != 0) return 0;
    const std::string saved = format_xyz(*st, "fuzz", 0, 1);
    Store* again = fuzz::fresh_store(1);
    int charge = 0, multiplicity = 1;
    FUZZ_CHECK(parse_xyz(files::split_lines(saved), *again, nullptr, charge, multiplicity) == kXyzRead);
    FUZZ_CHECK(again->natoms == st->natoms);
    FUZZ_CHECK(format_xyz(*again, "fuzz", charge, multiplicity) == saved);
    return 0;
}
