// The graph file (job.mgf) of a MOPAC 2016-generation run: the part that
// goes to mgf.tmp, the atoms, the orbitals and their numbering against the
// listing's highest filled level, the .GEO table and the graph.dat that the
// map programs read.
#include "engines/mopac/mopac_mgf.h"
#include "engines/mopac/mopac_plot.h"
#include "fuzz_support.h"

using namespace zentol;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const text::TextLines mgf = text::TextLines::from_bytes(fuzz::input_text(data, size));
    const unsigned h = fuzz::input_hash(data, size);
    const LineViews head = mgf_head(mgf.views());
    FUZZ_CHECK(head.size() <= mgf.size());

    for (int listing_homo : {0, static_cast<int>(h % 600)}) {
        const Mop2016Vectors v = read_mop2016_vectors(mgf.views(), listing_homo);
        FUZZ_CHECK(v.atoms.size() <= static_cast<std::size_t>(std::max(v.natoms, 0)));
        FUZZ_CHECK(v.norbitals >= 0 && static_cast<std::size_t>(v.norbitals) <= v.orbitals.size());
        FUZZ_CHECK(v.first_orbital >= 1);
        FUZZ_CHECK(v.homo == 0 || (v.homo >= v.first_orbital && v.homo < v.first_orbital + v.norbitals));
        FUZZ_CHECK(v.geo_lines.size() == static_cast<std::size_t>(v.norbitals) + 2 || v.geo_lines.size() == 1);
        (void)graph_file_from_mgf(v);
    }
    return 0;
}
