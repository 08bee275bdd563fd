// Shared helpers of the test programs: a temporary installation and working
// tree, and a session on the scripted toolkit.
#pragma once

#include <string>
#include <vector>

#include "display/renderer.h"
#include "session/session.h"
#include "toolkit/scripted_toolkit.h"

namespace zentol::testing {

// A fresh directory removed at the end; the process's current directory is
// restored too.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
    std::string old_cwd_;
};

// A session whose installation root and working trees live in a temporary
// directory (root/inst and root/work), with the shipped data of the source
// tree.
struct TestSession {
    TestSession();
    TempDir dir;
    ScriptedToolkit tk;
    NullRenderer renderer;
    Session s;
    std::string scratch() const { return s.inst.default_scratch; }
};

// Starts a whole session on tests/data/water.xyz copied into the scratch
// directory (instance 1, the given level) and runs the script to its end.
void run_on_water(TestSession& t, const std::string& script, int level = 1);
// The same on any molecule of tests/data ("mopac/ethanol.xyz"), the job
// named after the file; `more_words` follow the instance digit.
void run_on_molecule(TestSession& t, const std::string& data_file, const std::string& script,
                     const std::vector<std::string>& more_words = {}, int level = 1);

// Two carbon atoms on the x axis, the given distance apart.
void two_carbons(Store& st, float distance);

// The message boxes of a session, less the question that ptest asks at the
// end ("Save the molecule under a name?").
std::vector<std::string> messages_but_ptest_question(const TestSession& t);

std::string read_file(const std::string& path);
void write_file(const std::string& path, const std::string& content);
bool file_present(const std::string& path);
std::string test_data(const std::string& name);   // tests/data/<name>
// The lines of tests/data/<name>; a missing file fails the test and gives none.
std::vector<std::string> test_data_lines(const std::string& name);

}  // namespace zentol::testing
