// zentol [job [instance [IMX|IMPX|MOPA|MOPAS|MOPAD|M9 [n|TIF [IMX|TIF]]]]]
// zentol path/to/molecule.xyz
// zentol --headless --script FILE [the same words]   runs with no display and
//                                                    prints the transcript
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

struct Arguments {
    bool headless = false;
    std::string script;
    std::vector<std::string> words;   // words[0] is the program
};

Arguments parse_arguments(int argc, char** argv) {
    Arguments a;
    a.words.emplace_back(argv[0]);
    for (int i = 1; i < argc; ++i) {
        std::string w = argv[i];
        if (w == "--headless") a.headless = true;
        else if (w == "--script" && i + 1 < argc) a.script = argv[++i];
        else a.words.push_back(w);
    }
    return a;
}

void prepare_session(zentol::Session& s, zentol::Toolkit& tk) {
    s.inst = zentol::locate_installation();
    zentol::prepare_installation(s.inst);
    std::error_code ec;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (!ec) zentol::install_programs(s.inst, self.parent_path().string());
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
