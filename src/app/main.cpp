// zentol [job [instance [IMX|IMPX|MOPA|MOPAS|MOPAD|M9 [n|TIF [IMX|TIF]]]]]
// zentol path/to/molecule.xyz
// zentol --example NAME                               a copy of a shipped example
// zentol --headless --script FILE [the same words]   runs with no display and
//                                                    prints the transcript
// zentol --help | --version
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "display/renderer.h"
#include "session/config.h"
#include "session/session.h"
#include "session/startup.h"
#include "toolkit/scripted_toolkit.h"

#ifndef ZENTOL_NO_QT
#include <QApplication>

#include "toolkit/qt/qt_renderer.h"
#include "toolkit/qt/qt_toolkit.h"
#endif

namespace {

const char* const kUsage =
    "Usage: zentol [JOB [INSTANCE [WORDS...]]]\n"
    "       zentol PATH/TO/MOLECULE.xyz\n"
    "       zentol --example NAME\n"
    "       zentol --headless --script FILE [the same words]\n"
    "\n"
    "Starts the Zentol molecular-modelling workbench on a job: a name in the\n"
    "folder of the last session (a new name is a new, empty job), or a .xyz\n"
    "file whose folder becomes the job's. With no words it opens the job\n"
    "ptest in the scratch folder.\n"
    "\n"
    "  --example NAME     open a copy of a shipped example (benzene, butane,\n"
    "                     chromium-carbonyl) in the scratch folder\n"
    "  --headless         run with no display, answering from --script FILE,\n"
    "                     and print what the session showed\n"
    "  --help             show this text\n"
    "  --version          show the version\n"
    "\n"
    "Engines and viewers are named in $ZENTOL_ROOT/cfgset/engines.def\n"
    "(default ~/.local/share/zentol); working folders under $ZENTOL_WORK\n"
    "(default ~/zentol).\n";

struct Arguments {
    bool headless = false;
    bool help = false, version = false;
    std::string script, example;
    std::string error;                // an option that is not known
    std::vector<std::string> words;   // words[0] is the program
};

Arguments parse_arguments(int argc, char** argv) {
    Arguments a;
    a.words.emplace_back(argv[0]);
    for (int i = 1; i < argc; ++i) {
        std::string w = argv[i];
        if (w == "--headless") a.headless = true;
        else if (w == "--script" && i + 1 < argc) a.script = argv[++i];
        else if (w == "--example" && i + 1 < argc) a.example = argv[++i];
        else if (w == "--help" || w == "-h") a.help = true;
        else if (w == "--version") a.version = true;
        else if (w.size() > 1 && w[0] == '-' && a.error.empty()) a.error = w;
        else a.words.push_back(w);
    }
    return a;
}

// The shipped example NAME copied into the scratch folder (a copy already
// there is the user's and is kept), given as a path word.
bool take_example(Arguments& a, const zentol::Installation& inst) {
    namespace fs = std::filesystem;
    const fs::path from = fs::path(inst.data_dir).parent_path() / "examples" / (a.example + ".xyz");
    const fs::path to = fs::path(inst.default_scratch) / (a.example + ".xyz");
    std::error_code ec;
    if (!fs::exists(from, ec)) {
        std::cerr << "zentol: there is no example \"" << a.example << "\" in " << from.parent_path().string() << "\n";
        return false;
    }
    fs::create_directories(to.parent_path(), ec);
    if (!fs::exists(to, ec)) fs::copy_file(from, to, ec);
    if (ec) {
        std::cerr << "zentol: cannot copy " << from.string() << " to " << to.string() << ": " << ec.message() << "\n";
        return false;
    }
    a.words.resize(1);
    a.words.push_back(to.string());
    return true;
}

void prepare_session(zentol::Session& s, zentol::Toolkit& tk) {
    s.inst = zentol::locate_installation();
    zentol::prepare_installation(s.inst);
    std::error_code ec;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        zentol::install_programs(s.inst, self.parent_path().string());
        // The orbital viewer starts this program again after a plot.
        setenv("ZENTOL_PROGRAM", self.c_str(), 1);
    }
    s.engines = zentol::read_engines_def(s.inst);
    tk.set_ui_dir(s.inst.data_dir + "/ui");
}

int run_headless(const Arguments& a) {
    zentol::ScriptedToolkit tk;
    std::string script;
    if (!a.script.empty()) {
        std::ifstream in(a.script);
        if (!in) {
            std::cerr << "zentol: cannot read the script " << a.script << "\n";
            return 2;
        }
        std::ostringstream all;
        all << in.rdbuf();
        script = all.str();
    }
    zentol::NullRenderer renderer;
    zentol::Session s(tk, renderer);
    try {
        tk.load_script(script);
        tk.set_atom_locator([&s](int atom) -> std::optional<std::pair<float, float>> {
            if (atom < 1 || atom > s.store.disp_natoms) return std::nullopt;
            return std::make_pair(s.store.screen_x[atom], s.store.screen_y[atom]);
        });
        prepare_session(s, tk);
        zentol::run_program(s, a.words);
    } catch (const zentol::ScriptError& e) {
        for (const auto& line : tk.transcript()) std::cout << line << "\n";
        std::cerr << "zentol: " << e.what() << "\n";
        return 2;
    }
    for (const auto& line : tk.transcript()) std::cout << line << "\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Arguments a = parse_arguments(argc, argv);
    if (a.help) {
        std::cout << kUsage;
        return 0;
    }
    if (a.version) {
        std::cout << "zentol " << ZENTOL_VERSION << "\n";
        return 0;
    }
    if (!a.error.empty()) {
        std::cerr << "zentol: unknown option " << a.error << "\n" << kUsage;
        return 2;
    }
    if (!a.example.empty() && !take_example(a, zentol::locate_installation())) return 2;
    if (a.headless) return run_headless(a);
#ifdef ZENTOL_NO_QT
    std::cerr << "zentol: built without a display toolkit; use --headless --script FILE\n";
    return 2;
#else
    QApplication app(argc, argv);
    zentol::QtToolkit tk;
    zentol::QtRenderer renderer(tk);
    zentol::Session s(tk, renderer);
    prepare_session(s, tk);
    return zentol::run_program(s, a.words);
#endif
}
