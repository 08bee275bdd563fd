// The configuration files of cfgset/: engines.def, zentol.def, the dir
// files, mrul.def and the element colours of RASCOL.DEF (the same input
// read as each). What the program writes back of them (the mended
// zentol.def, a dir file) must read back to what was read.
#include "display/colours.h"
#include "fuzz_support.h"
#include "session/config.h"
#include "session/job_commands.h"
#include "session/job_files.h"
#include "text/fixed_format.h"

using namespace zentol;

namespace {

bool full_path(const std::string& dir) {
    if (dir.empty() || dir[0] != '/') return false;
    for (char c : dir)
        if (static_cast<unsigned char>(c) < 32 || c == 127) return false;
    return true;
}

void check_engines(const std::vector<std::string>& lines) {
    const EngineConfig c = parse_engines_def(lines);
    for (const auto& [key, value] : c.values) {
        FUZZ_CHECK(!key.empty() && key[0] != '#');
        FUZZ_CHECK(key.find_first_of(" \t") == std::string::npos);
        FUZZ_CHECK(text::trim(value).size() == value.size());
    }
}

void check_zentol_def(const std::vector<std::string>& lines) {
    const std::string library = "/home/chemist/zentol/library", scratch = "/home/chemist/zentol/scratch";
    const ZentolDef def = parse_zentol_def(lines, library, scratch);
    FUZZ_CHECK(full_path(def.library) && full_path(def.scratch));
    FUZZ_CHECK(def.level >= 1 && def.level <= 3);
    FUZZ_CHECK(def.refused.size() <= 2);
    FUZZ_CHECK(def.refused.empty() || !def.complete);
    // A damaged file is written again with what was read, at Entry level.
    const int level = def.complete ? def.level : 1;
    const ZentolDef again =
        parse_zentol_def(files::split_lines(zentol_def_text(def.library, def.scratch, level)), "/x", "/y");
    FUZZ_CHECK(again.complete && again.refused.empty());
    FUZZ_CHECK(again.library == def.library && again.scratch == def.scratch && again.level == level);
}

void check_dir_and_mru(const std::vector<std::string>& lines) {
    const std::string dir = dir_from_lines(lines);
    FUZZ_CHECK(dir.empty() || full_path(dir));
    if (!dir.empty()) FUZZ_CHECK(dir_from_lines(files::split_lines(dir + "\n")) == dir);
    const auto mru = parse_mru(lines);
    FUZZ_CHECK(mru[0].empty());
    for (const std::string& e : mru) {
        FUZZ_CHECK(text::trim(e).size() == e.size());
        // A recent job is opened by its folder and name; an odd name is
        // refused with the reason.
        const auto [dir, name] = split_job_path(e);
        std::string why;
        if (!valid_job_name(name, &why)) FUZZ_CHECK(!why.empty());
        else FUZZ_CHECK(name.find('/') == std::string::npos && !name.empty());
    }
}

void check_element_colours(const std::vector<std::string>& lines) {
    static const char* const kLabels[] = {"C1", "H1", "O2", "Fe", "Cl3", "Xx", "Q", "Na", "Pt", "Br"};
    Store* st = fuzz::fresh_store();
    st->natoms = 10;
    for (int i = 1; i <= st->natoms; ++i) st->atom_label[i] = make_label(kLabels[i - 1]);
    collect_elements(*st);
    FUZZ_CHECK(st->element_count >= 5 && st->element_count <= kMaxColourElements);
    apply_element_colour_lines(*st, lines);
    for (int k = 1; k <= kMaxColourElements; ++k) FUZZ_CHECK(st->element_index[k] != 0);
    assign_element_colours(*st);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> lines = fuzz::input_lines(data, size);
    check_engines(lines);
    check_zentol_def(lines);
    check_dir_and_mru(lines);
    check_element_colours(lines);
    return 0;
}
