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

namespace {

// Values five a line (5F14.8), the last line short.
void add_rows(std::vector<std::string>& lines, const std::vector<double>& values, std::size_t from, std::size_t count) {
    std::string row;
    for (std::size_t k = 0; k < count; ++k) {
        row += text::format_f(values[from + k], 14, 8);
        if (k % 5 == 4 || k + 1 == count) {
            lines.push_back(row);
            row.clear();
        }
    }
}

void add_orbital(std::vector<std::string>& lines, const char* key, int number, const MgfOrbital& o) {
    lines.push_back(key + text::format_i(number, 5) + text::format_i(o.occupancy, 3) + text::format_f(o.energy, 12, 5));
    add_rows(lines, o.coefficients, 0, o.coefficients.size());
}

}  // namespace

std::vector<std::string> graph_file_from_mgf(const Mop2016Vectors& v) {
    std::vector<std::string> lines{text::format_i(v.natoms, 6) + text::format_i(v.nbasis, 6) +
                                   text::format_i(v.norbitals, 6) + text::format_i(v.homo, 6)};
    for (const MgfAtom& a : v.atoms) lines.push_back(text::format_i(a.atomic_number, 4) + xyz(a.x, a.y, a.z, 12, 6));
    for (int i = 1; i <= v.norbitals && i <= static_cast<int>(v.orbitals.size()); ++i)
        add_orbital(lines, " ORBITAL", v.first_orbital + i - 1, v.orbitals[static_cast<std::size_t>(i - 1)]);
    if (!v.exponents.empty()) {
        lines.push_back(" EXPONENTS");
        for (const auto& e : v.exponents) lines.push_back(xyz(e[0], e[1], e[2], 12, 7));
    }
    for (std::size_t i = v.beta_from; i < v.orbitals.size(); ++i)
        add_orbital(lines, " BETA ORBITAL", v.first_orbital + static_cast<int>(i - v.beta_from), v.orbitals[i]);
    if (!v.inverse.empty()) {
        lines.push_back(" INVERSE_MATRIX" + text::format_i(v.nbasis, 6));
        // Row r of the lower triangle holds r values; each row starts a line.
        for (std::size_t r = 1, from = 0; from + r <= v.inverse.size(); from += r, ++r) add_rows(lines, v.inverse, from, r);
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
    std::vector<std::string> lines{"graph.dat",
                                   text::format_i(r.orbital, 5) + "  M.O.",
                                   text::format_i(r.grid_steps, 5) + "  Grid Steps",
                                   text::format_i(r.kind, 5) + "  0 M.O., 1 Spin Density, 2 Density",
                                   text::format_i(r.homo_index, 5) + "  H.O.M.O"};
    if (!r.job.empty()) lines.push_back(r.job + "  Job");
    return lines;
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
    // The whole file: a UHF run's beta set stands behind " Keywords".
    const Mop2016Vectors v = read_mop2016_vectors(mgf->views(), listing_homo);
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

namespace {

// The map program names its map in pppmap.atl; without it no map came,
// and pppmap.log says why.
bool map_made(Session& s) {
    const auto atl = files::read_lines("pppmap.atl");
    if (atl && !atl->empty() && files::exists(std::string(text::trim((*atl)[0])))) return true;
    const auto log = files::read_lines("pppmap.log");
    std::string why = "The map program made no map.";
    if (log)
        for (const std::string& line : *log) why += "\r" + line;
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, why, "Mopac");
    s.tk.WindowOutStatusBar(status_message_field, "No map made");
    return false;
}

}  // namespace

void mopac_plot(Session& s, MopacState& m) {
    if (!m.energy_run) {
        s.tk.WindowOutStatusBar(status_message_field, "Run an Energy Calculation");
        return;
    }
    std::optional<PlotRequest> r = ask_plot(s, m);
    if (!r) return;
    r->job = s.job.name;
    files::write_lines("pppele.dat", plot_atoms_file(s.store));
    files::write_lines("pppmap.KEW", plot_control_file(*r));
    s.tk.WindowOutStatusBar(status_message_field, "Plotting Orbital");
    const std::string key = r->kind == 0 ? "orbgrid" : "orbgrids";
    const std::string map_program = configured_program(s, key);
    if (map_program.empty()) return tell_missing(s, r->kind == 0 ? "The orbital map program" : "The density map program", key);
    s.tk.WindowOutStatusBar(status_message_field, "Calculating Map");
    files::remove("pppmap.atl");
    run_blocking(s, shell_line(map_program, {}));
    if (!map_made(s)) return;
    files::write_lines(job_file(s, "_mo.pdb"), plot_pdb(s.store));
    if (!sibling_installed(s, "orbview")) return tell_missing(s, "The orbital viewer", "orbview");
    // The session ends and orbview shows the map; it starts us again with
    // MOPA nn when the user leaves it.
    s.flags.plot_number = static_cast<float>(r->orbital);
    s.flags.plot_kind = r->kind;
    s.flags.plot_exit = true;
}

}  // namespace zentol
