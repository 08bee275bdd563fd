#include "engines/queue_file.h"

#include <filesystem>

#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

std::string queue_directory(const std::string& scratch_dir, const std::string& name) {
    std::filesystem::path scratch(scratch_dir);
    if (!scratch.has_filename()) scratch = scratch.parent_path();   // "…/scratch/"
    return (scratch.parent_path() / name).string();
}

int add_to_queue(const std::string& queue_file, const std::string& deck) {
    std::string entry(text::trim(deck));
    std::size_t compared = entry.empty() ? 0 : entry.size() - 1;
    std::string wanted = text::upper_case(entry.substr(0, compared));
    auto records = files::read_lines(queue_file).value_or(std::vector<std::string>{});
    for (const auto& record : records) {
        if (text::upper_case(record.substr(0, compared)) == wanted) return 0;
    }
    files::make_dirs(std::filesystem::path(queue_file).parent_path().string());
    records.push_back(entry);
    return files::write_lines(queue_file, records) ? 1 : -1;
}

}  // namespace zentol
