// The emphasis file (<job>.fsa) over a small molecule: only the molecule's
// atoms are marked, each fully or not at all, and the count said is the
// count made.
#include "fuzz_support.h"
#include "structure_files/emphasis_file.h"

using namespace zentol;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const char* const kLabels[] = {"C1", "H1", "H2", "O", "N12", "Cl3", "BX1", "CEN", "Fe", "C1"};
    constexpr int kLabelCount = sizeof kLabels / sizeof *kLabels;
    const std::vector<std::string> lines = fuzz::input_lines(data, size);
    Store* st = fuzz::fresh_store();
    st->natoms = static_cast<int>(fuzz::input_hash(data, size) % (kLabelCount + 1));
    for (int i = 1; i <= st->natoms; ++i) st->atom_label[i] = make_label(kLabels[i - 1]);
    // Rows past the molecule carry values that must stay as they are.
    for (int i = st->natoms + 1; i <= kAtomRows; ++i) st->atom_emph[i] = 0.5f;

    const int marks = apply_emphasis_lines(*st, lines);
    FUZZ_CHECK(marks == st->emphasis_count && marks >= 0);
    int marked = 0;
    for (int i = 1; i <= st->natoms; ++i) {
        FUZZ_CHECK(st->atom_emph[i] == 0.0f || st->atom_emph[i] == 1.0f);
        marked += st->atom_emph[i] == 1.0f;
    }
    FUZZ_CHECK(marked <= marks);
    FUZZ_CHECK(marks == 0 || marked > 0);
    for (int i = st->natoms + 1; i <= kAtomRows; ++i) FUZZ_CHECK(st->atom_emph[i] == 0.5f);
    return 0;
}
