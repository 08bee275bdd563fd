#include "structure_files/key_file.h"

#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

std::string mm3_parameter_path(const Session& s) {
    std::string p = s.engines.get("mm3_params");
    return p.empty() ? s.inst.root + "/exem/mm3" : p;
}

std::string fresh_key_text(const std::string& parameter_path) {
    return "parameters " + parameter_path + "\n#verbose\n";
}

std::vector<std::string> patch_key_lines(const std::vector<std::string>& lines, const std::string& parameter_path) {
    std::vector<std::string> out;
    out.reserve(lines.size());
    for (const auto& line : lines) {
        std::string_view head = std::string_view(line).substr(0, std::min<std::size_t>(line.size(), 10));
        bool is_parameters = text::equals_nocase(head, "parameters") &&
                             (line.size() == 10 || line[10] == ' ' || line[10] == '\t');
        out.push_back(is_parameters ? "parameters " + parameter_path : line);
    }
    return out;
}

void create_key_if_missing(Session& s) {
    std::string key = job_file(s, ".key");
    if (!files::exists(key)) files::write_atomic(key, fresh_key_text(mm3_parameter_path(s)));
}

void patch_key_drive(Session& s) {
    std::string key = job_file(s, ".key");
    auto lines = files::read_lines(key);
    if (!lines) {
        files::write_atomic(key, fresh_key_text(mm3_parameter_path(s)));
        return;
    }
    files::write_lines(key, patch_key_lines(*lines, mm3_parameter_path(s)));
}

}  // namespace zentol
