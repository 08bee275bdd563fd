#include "engines/mopac/mopac_plot.h"

#include <algorithm>

#include "engines/mopac/mopac_mode.h"
#include "engines/runner.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kHomoRadio = 1051;   // 1051 "HOMO", 1052 "LUMO"
constexpr int kOrbitalField = 1101;
constexpr int kGridField = 1102;

std::string xyz(double x, double y, double z, int w, int d) {
    return text::format_f(x, w, d) + text::format_f(y, w, d) + text::format_f(z, w, d);
}

}  // namespace

std::vector<std::string> graph_file_from_mgf(const Mop2016Vectors& v) {
    std::vector<std::string> lines{text::format_i(v.natoms, 6) + text::format_i(v.nbasis, 6) +
                                   text::format_i(v.norbitals, 6) + text::format_i(v.homo, 6)};
    for (const MgfAtom& a : v.atoms) lines.push_back(text::format_i(a.atomic_number, 4) + xyz(a.x, a.y, a.z, 12, 6));
    for (int i = 1; i <= v.norbitals && i <= static_cast<int>(v.orbitals.size()); ++i) {
        const MgfOrbital& o = v.orbitals[static_cast<std::size_t>(i - 1)];
        lines.push_back(" ORBITAL" + text::format_i(v.first_orbital + i - 1, 5) + text::format_i(o.occupancy, 3) +
                        text::format_f(o.energy, 12, 5));
        std::string row;
        for (std::size_t k = 0; k < o.coefficients.size(); ++k) {
            row += text::format_f(o.coefficients[k], 14, 8);
            if (k % 5 == 4 || k + 1 == o.coefficients.size()) {
                lines.push_back(row);
                row.clear();
            }
        }
    }
    return lines;
}

std::vector<std::string> graph_file_with_density(const std::vector<std::string>& graph,
                                                 const std::vector<std::string>& density) {
    std::vector<std::string> lines = graph;
    lines.insert(lines.end(), density.begin(), density.end());
    return lines;
}

std::vector<std::string> plot_atoms_file(const Store& st) {
    std::vector<std::string> lines{text::format_i(st.natoms, 5)};
    for (int i = 1; i <= st.natoms; ++i) {
        const auto& r = st.atom_rec[i];
        lines.push_back(text::format_a(label_text(st.atom_label[i]), 4) + xyz(r[kX], r[kY], r[kZ], 12, 6));
    }
    return lines;
}

std::vector<std::string> plot_control_file(const PlotRequest& r) {
    return {"graph.dat",
            text::format_i(r.orbital, 5) + "  M.O.",
            text::format_i(r.grid_steps, 5) + "  Grid Steps",
            text::format_i(r.kind, 5) + "  0 M.O., 1 Spin Density, 2 Density",
            text::format_i(r.homo_index, 5) + "  H.O.M.O"};
}

std::vector<std::string> plot_pdb(const Store& st) {
    std::vector<std::string> lines{"CRYST1    1.000    1.000    1.000  90.00  90.00  90.00",
                                   "SCALE1      1.000000  0.000000  0.000000",
                                   "SCALE2      0.000000  1.000000  0.000000",
                                   "SCALE3      0.000000  0.000000  1.000000"};
    for (int i = 1; i <= st.natoms; ++i) {
        const auto& r = st.atom_rec[i];
        const std::string label = text::format_a(label_text(st.atom_label[i]), 4);
        const std::string symbol(text::trim(element_symbol(label_text(st.atom_label[i]))));
        lines.push_back("HETATM" + text::format_i(i, 5) + " " + label + " UNK     0    " + xyz(r[kX], r[kY], r[kZ], 8, 3) +
                        "  1.00  0.00          " + text::format_a(symbol, 2));
    }
    for (int k = 1; k <= st.nbonds; ++k)
        lines.push_back("CONECT" + text::format_i(st.bond_a[k], 5) + text::format_i(st.bond_b[k], 5));
    lines.push_back("END");
    return lines;
}

void make_mopac6_graph(int plot_kind) {
    files::copy("for013", "graph.dat");
    if (plot_kind < 1 || !files::exists("graph.dat")) return;
    files::copy("graph.dat", "graph.tmp");
    auto graph = files::read_lines("graph.tmp");
    auto density = files::read_lines(plot_kind == 1 ? "spn.dat" : "dens.dat");
    files::write_lines("graph.dat", graph_file_with_density(graph.value_or(std::vector<std::string>{}),
                                                            density.value_or(std::vector<std::string>{})));
}

void make_mopac2016_graph(Session& s, int listing_homo) {
    const auto mgf = files::read_text_lines(job_file(s, ".mgf"));
    if (!mgf) return;
    const LineViews head = mgf_head(mgf->views());
    std::string copy;
    for (std::string_view line : head) copy.append(line).push_back('\n');
    files::write_atomic("mgf.tmp", copy);
    const Mop2016Vectors v = read_mop2016_vectors(head, listing_homo);
    for (const std::string& l : v.geo_lines) log_line(s, l);
    files::write_lines("graph.dat", graph_file_from_mgf(v));
    files::remove("mgf.tmp");
}

namespace {

// Dialog 110 until a plot is asked for with an orbital of the table, or
// cancelled.
std::optional<PlotRequest> ask_plot(Session& s, const MopacState& m) {
    Toolkit& tk = s.tk;
    const int first = std::max(m.first_orbital, 1), last = static_cast<int>(m.mo_energy.size());
    while (true) {
        tk.WDialogLoad(110);
        tk.WDialogPutRadioButton(kHomoRadio);
        tk.WDialogPutInteger(kOrbitalField, m.homo_index);
        tk.WDialogPutInteger(kGridField, 64);
        tk.WDialogShow(1);
        const int button = tk.last_button();
        PlotRequest r;
        r.orbital = static_cast<int>(tk.WDialogGetInteger(kOrbitalField));
        r.grid_steps = static_cast<int>(tk.WDialogGetInteger(kGridField));
        const bool lumo = tk.WDialogGetRadioButton(kHomoRadio) == 2;
        tk.WDialogUnload();
        if (button != 1) return std::nullopt;
        // LUMO with the number left at the H.O.M.O means the next one up.
        if (lumo && r.orbital == m.homo_index) ++r.orbital;
        r.kind = std::clamp(s.flags.plot_kind, 0, 2);
        r.homo_index = m.homo_index;
        // Orbitals the listing did not print have no coefficients to map.
        if (r.orbital >= first && r.orbital <= last) return r;
        tk.WindowOutStatusBar(status_message_field,
                              "M.O. # from " + std::to_string(first) + " to " + std::to_string(last));
    }
}

}  // namespace

void mopac_plot(Session& s, MopacState& m) {
    if (!m.energy_run) {
        s.tk.WindowOutStatusBar(status_message_field, "Run an Energy Calculation");
        return;
    }
    const std::optional<PlotRequest> r = ask_plot(s, m);
    if (!r) return;
    files::write_lines("pppele.dat", plot_atoms_file(s.store));
    files::write_lines("pppmap.KEW", plot_control_file(*r));
    s.tk.WindowOutStatusBar(status_message_field, "Plotting Orbital");
    const std::string key = r->kind == 0 ? "orbgrid" : "orbgrids";
    const std::string map_program = configured_program(s, key);
    if (map_program.empty()) return tell_missing(s, r->kind == 0 ? "The orbital map program" : "The density map program", key);
    s.tk.WindowOutStatusBar(status_message_field, "Calculating Map");
    run_blocking(s, shell_line(map_program, {}));
    files::write_lines(job_file(s, "_mo.pdb"), plot_pdb(s.store));
    if (!sibling_installed(s, "orbview")) return tell_missing(s, "The orbital viewer", "orbview");
    // The session ends and orbview shows the map; it starts us again with
    // MOPA nn when the user leaves it.
    s.flags.plot_number = static_cast<float>(r->orbital);
    s.flags.plot_kind = r->kind;
    s.flags.plot_exit = true;
}

}  // namespace zentol
