#include "session/openers.h"

#include <unistd.h>

#include <cstdlib>

#include "engines/runner.h"
#include "session/config.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

bool runnable(const std::string& path) { return access(path.c_str(), X_OK) == 0 && files::exists(path); }

std::string on_path(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "/usr/bin:/bin";
    std::size_t start = 0;
    while (start <= dirs.size()) {
        std::size_t colon = dirs.find(':', start);
        if (colon == std::string::npos) colon = dirs.size();
        std::string candidate = dirs.substr(start, colon - start) + "/" + name;
        if (colon > start && runnable(candidate)) return candidate;
        start = colon + 1;
    }
    return "";
}

std::string configured_program(const Session& s, const std::string& key) {
    std::string value(text::trim(s.engines.get(key)));
    if (value.empty()) return "";
    if (value.find('/') == std::string::npos) return on_path(value);
    return runnable(value) ? value : "";
}

void tell_missing(Session& s, const std::string& what, const std::string& key) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                     what + " is not installed.\rSet \"" + key + "\" in " + cfg_path(s, "engines.def"), "Zentol");
}

void open_document(Session& s, const std::string& path) {
    std::string opener = configured_program(s, "opener");
    if (opener.empty()) return tell_missing(s, "A program to open documents", "opener");
    if (!files::exists(path)) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Cannot find " + path, "Zentol");
        return;
    }
    run_detached(s, shell_line(opener, {path}));
}

std::string help_page(const Session& s, const std::string& name) { return s.inst.data_dir + "/help/" + name; }


void edit_file(Session& s, const std::string& path) {
    std::string editor = configured_program(s, "editor");
    if (editor.empty()) {
        s.tk.edit_text_file(path);
        return;
    }
    run_blocking(s, shell_line(editor, {path}));
}

bool sibling_installed(const Session& s, const std::string& key) { return !configured_program(s, key).empty(); }

}  // namespace zentol
