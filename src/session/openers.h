// Documents, viewers, the terminal, the editor and sibling programs: each is
// a configured program (cfgset/engines.def). One the user asked for that is
// not there gets a message, never a silent nothing.
#pragma once

#include <string>

namespace zentol {

struct Session;

// The configured program for a key: a bare name found on PATH, or a path
// that exists and can be run; "" when there is none.
std::string configured_program(const Session& s, const std::string& key);

// Opens a document with the configured opener (default xdg-open), not waiting.
void open_document(Session& s, const std::string& path);

// A shipped help page: <data>/help/<name>.
std::string help_page(const Session& s, const std::string& name);

// Edits a file: the configured editor, blocking until it is closed, or the
// toolkit's own editor.
void edit_file(Session& s, const std::string& path);

// An executable file; a bare program name looked up on PATH ("" when absent).
bool runnable(const std::string& path);
std::string on_path(const std::string& name);

// A sibling program (zentol9, orbview, ...) that is configured and present.
bool sibling_installed(const Session& s, const std::string& key);
void tell_missing(Session& s, const std::string& what, const std::string& key);

}  // namespace zentol
