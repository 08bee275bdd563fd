// Helpers shared by the session tests.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "session/startup.h"
#include "support/test_support.h"

namespace zentol::testing {

// Some message box held the text.
inline bool said(const TestSession& t, const std::string& text) {
    for (const auto& m : t.tk.message_boxes())
        if (m.find(text) != std::string::npos) return true;
    return false;
}

// The status bar's field was set to the text at some time.
inline bool status_was(const TestSession& t, int field, const std::string& text) {
    for (const auto& [f, written] : t.tk.status_writes())
        if (f == field && written == text) return true;
    return false;
}

// A shell script in the installation's bin folder, its path.
inline std::string fake_program(TestSession& t, const std::string& name, const std::string& body) {
    const std::string path = t.s.inst.bin + "/" + name;
    write_file(path, "#!/bin/sh\n" + body + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

// Runs `zentol WORDS...` on the script.
inline int run_words(TestSession& t, std::vector<std::string> words, const std::string& script = "") {
    t.tk.load_script(script);
    words.insert(words.begin(), "zentol");
    return run_program(t.s, words);
}

// The folder a start without a path opens in.
inline void start_in(TestSession& t, const std::string& dir) { write_file(t.s.inst.cfgset + "/dir1.def", dir + "\n"); }

}  // namespace zentol::testing
