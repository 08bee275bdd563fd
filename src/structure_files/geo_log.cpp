#include "structure_files/geo_log.h"

#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

void open_job_log(Session& s, bool continue_log, const std::string& first_line) {
    s.job.log_path = files::current_dir() + "/" + job_file(s, ".geo");
    s.job.log_path = files::resolve(s.job.log_path);
    if (!continue_log) files::write_atomic(s.job.log_path, first_line + "\n");
}

void close_job_log(Session& s) { s.job.log_path.clear(); }

void log_line(Session& s, const std::string& record) {
    if (!s.job.log_path.empty()) files::append_line(s.job.log_path, std::string(text::trim_right(record)));
}

std::string format_bond_list(const Store& st) {
    std::string out;
    for (int k = 1; k <= st.nbonds; ++k) out += (text::FreeRecord() << st.bond_a[k] << st.bond_b[k]).str() + "\n";
    return out;
}

void write_bond_list(Session& s) { files::write_atomic(job_file(s, ".bgl"), format_bond_list(s.store)); }

std::string format_type_list(const Store& st) {
    std::string out = "Atom type list\n";
    for (int i = 1; i <= st.natoms; ++i)
        out += label_text(st.atom_label[i]) + text::format_i(st.conn_type(i), 10) + "\n";
    return out;
}

void write_type_list(Session& s) { files::write_atomic(job_file(s, "_aty.lst"), format_type_list(s.store)); }

std::vector<double> parse_value_log(const std::vector<std::string>& lines) {
    std::vector<double> values;
    for (std::size_t k = 1; k < lines.size(); ++k) {
        const std::string& line = lines[k];
        if (line.size() < 5) break;
        auto v = text::read_reals(std::string_view(line).substr(4), 1);
        if (!v || v->empty()) break;
        values.push_back((*v)[0]);
    }
    return values;
}

std::optional<std::vector<double>> read_value_log(const std::string& name) {
    auto lines = files::read_lines(name);
    if (!lines) return std::nullopt;
    return parse_value_log(*lines);
}

}  // namespace zentol
