#include "support/test_support.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "session/config.h"
#include "session/startup.h"
#include "toolkit/files.h"

namespace zentol::testing {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zentol-test-XXXXXX").string();
    char* made = mkdtemp(pattern.data());
    path_ = made ? made : "/tmp";
    old_cwd_ = std::filesystem::current_path().string();
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::current_path(old_cwd_, ec);
    std::filesystem::remove_all(path_, ec);
}

TestSession::TestSession() : s(tk, renderer) {
    s.inst = installation_at(dir / "inst", dir / "work", ZENTOL_DATA_DIR);
    prepare_installation(s.inst);
    s.engines = read_engines_def(s.inst);
    tk.set_ui_dir(s.inst.data_dir + "/ui");
    tk.set_atom_locator([this](int atom) -> std::optional<std::pair<float, float>> {
        if (atom < 1 || atom > s.store.disp_natoms) return std::nullopt;
        return std::make_pair(s.store.screen_x[atom], s.store.screen_y[atom]);
    });
    s.job.scratch_dir = s.inst.default_scratch;
    s.job.library_dir = s.inst.default_library;
    std::filesystem::current_path(s.inst.default_scratch);
}

void run_on_water(TestSession& t, const std::string& script, int level) {
    run_on_molecule(t, "water.xyz", script, {}, level);
}

void run_on_molecule(TestSession& t, const std::string& data_file, const std::string& script,
                     const std::vector<std::string>& more_words, int level) {
    write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
    write_file(t.s.inst.cfgset + "/zentol.def",
               t.s.inst.default_library + "\n" + t.scratch() + "\n" + std::to_string(level) + "\n");
    const std::string file = std::filesystem::path(data_file).filename().string();
    std::filesystem::copy_file(test_data(data_file), t.scratch() + "/" + file,
                               std::filesystem::copy_options::overwrite_existing);
    t.tk.load_script(script);
    std::vector<std::string> words{"zentol", file.substr(0, file.rfind('.')), "1"};
    words.insert(words.end(), more_words.begin(), more_words.end());
    run_program(t.s, words);
}

void two_carbons(Store& st, float distance) {
    st.natoms = 2;
    st.atom_label[1] = make_label("C1");
    st.atom_label[2] = make_label("C2");
    st.atom_rec[1] = {0, 0, 0, 0.76f, 0, 0};
    st.atom_rec[2] = {distance, 0, 0, 0.76f, 0, 0};
}

std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

void write_file(const std::string& path, const std::string& content) {
    auto parent = std::filesystem::path(path).parent_path();
    if (!parent.empty()) std::filesystem::create_directories(parent);
    std::ofstream(path, std::ios::binary) << content;
}

bool file_present(const std::string& path) { return std::filesystem::exists(path); }

std::string test_data(const std::string& name) { return std::string(ZENTOL_TEST_DATA) + "/" + name; }

std::vector<std::string> test_data_lines(const std::string& name) {
    auto lines = files::read_lines(test_data(name));
    EXPECT_TRUE(lines.has_value()) << name;
    return lines.value_or(std::vector<std::string>{});
}

std::vector<std::string> messages_but_ptest_question(const TestSession& t) {
    std::vector<std::string> out;
    for (const auto& m : t.tk.message_boxes())
        if (m.rfind("ptest is cleared at the next start", 0) != 0) out.push_back(m);
    return out;
}

}  // namespace zentol::testing
