#include "structure_files/emphasis_file.h"

#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

int apply_emphasis_lines(Store& st, const std::vector<std::string>& lines) {
    for (int i = 1; i <= st.natoms; ++i) st.atom_emph[i] = 0.0f;
    int marks = 0;
    for (const auto& raw : lines) {
        std::string line = text::upper_case(raw.substr(0, std::min<std::size_t>(raw.size(), 160)));
        if (line.empty() || line[0] == ' ' || text::starts_with_nocase(line, "REM")) continue;
        if (line.rfind("EMPHASISE THE FIRST", 0) == 0) {
            auto n = text::read_ints(std::string_view(line).substr(19), 1);
            if (n && !n->empty() && (*n)[0] < st.natoms) {
                for (int i = 1; i <= (*n)[0]; ++i) st.atom_emph[i] = 1.0f, ++marks;
            }
            break;
        }
        Label l = make_label(text::column_field(line, 1, 4));
        bool keep_upper = text::starts_with_nocase(line, "BX") || text::starts_with_nocase(line, "CEN");
        if (!keep_upper && l[1] >= 'A' && l[1] <= 'Z') l[1] = char(l[1] + 32);
        for (int i = 1; i <= st.natoms; ++i)
            if (st.atom_label[i] == l) st.atom_emph[i] = 1.0f, ++marks;
    }
    st.emphasis_count = marks;
    return marks;
}

void read_emphasis_file(Store& st, const std::string& name) {
    auto lines = files::read_lines(name);
    apply_emphasis_lines(st, lines ? *lines : std::vector<std::string>{});
}

}  // namespace zentol
