#include "session/config.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

std::string env_or(const char* name, const std::string& fallback) {
    const char* v = std::getenv(name);
    return (v && *v) ? std::string(v) : fallback;
}

}  // namespace

Installation installation_at(const std::string& root, const std::string& work, const std::string& data_dir) {
    Installation inst;
    inst.root = root;
    inst.bin = root + "/bin";
    inst.cfgset = root + "/cfgset";
    inst.data_dir = data_dir;
    inst.default_library = work + "/library";
    inst.default_scratch = work + "/scratch";
    return inst;
}

Installation locate_installation() {
    std::string home = env_or("HOME", "/tmp");
    return installation_at(env_or("ZENTOL_ROOT", home + "/.local/share/zentol"), env_or("ZENTOL_WORK", home + "/zentol"),
                            env_or("ZENTOL_DATA", ZENTOL_DATA_DIR));
}

std::string default_engines_def(const Installation& inst) {
    const std::string b = inst.bin + "/";
    return "# Engines and helpers: one \"key value\" a line. A bare program name is looked\n"
           "# up on PATH; an empty value means not installed. mopac6 names a Mopac 6\n"
           "# program (reads INPUT, writes output); mopac2016 the MOPAC of today.\n"
           "tinker_dir " + inst.root + "/exem\n"
           "mm3_params " + inst.root + "/exem/mm3\n"
           "mopac6\nmopac2016 mopac\n"
           "# orca names ORCA by its full path (parallel runs need it); orca_pltvib and\n"
           "# orca_2mkl default to the programs beside it. The manuals are documents.\n"
           "orca orca\norca_pltvib\norca_2mkl\norca_manual\n"
           "firefly firefly\niconc iconc\nmultiwfn Multiwfn\nmultiwfn_manual\nvmd\nchimerax\n"
           "symmol " + b + "symmol\nzmatgen " + b + "zmatgen\n"
           "zentol9 " + b + "zentol9\norbview " + b + "orbview\norbgrid " + b + "orbgrid\norbgrids " + b + "orbgrids\n"
           "tabview " + b + "tabview\nlauncher " + b + "brevan\n"
           "editor\nterminal x-terminal-emulator\nopener xdg-open\nupdate_url\n"
           "# The queue runner zentol-queue runs queued jobs here (queue_backend local)\n"
           "# or hands them to Slurm's sbatch (queue_backend slurm) with the partition\n"
           "# and time limit given; queue_cores is the -np of a Firefly job queued by hand.\n"
           "queue_backend local\nqueue_partition\nqueue_time_limit\nqueue_cores 1\n";
}

EngineConfig parse_engines_def(const std::vector<std::string>& lines) {
    EngineConfig c;
    for (const auto& raw : lines) {
        std::string_view line = text::trim(raw);
        if (line.empty() || line[0] == '#') continue;
        std::size_t blank = line.find_first_of(" \t");
        std::string key(line.substr(0, blank));
        std::string value = blank == std::string_view::npos ? "" : std::string(text::trim(line.substr(blank)));
        c.values[key] = value;
    }
    return c;
}

EngineConfig read_engines_def(const Installation& inst) {
    auto lines = files::read_lines(inst.cfgset + "/engines.def");
    return parse_engines_def(lines ? *lines : std::vector<std::string>{});
}

void prepare_installation(const Installation& inst) {
    for (const auto& dir : {inst.bin, inst.cfgset, inst.default_library, inst.default_scratch}) files::make_dirs(dir);
    // Shipped files the user may change: copied only when missing.
    for (const auto& [from, to] : {std::pair{inst.data_dir + "/cfgset", inst.cfgset}, std::pair{inst.data_dir + "/bin", inst.bin}}) {
        for (const auto& name : files::list(from, "*"))
            if (!files::exists(to + "/" + name)) files::copy(from + "/" + name, to + "/" + name);
    }
    std::string def = inst.cfgset + "/zentol.def";
    if (!files::exists(def)) files::write_atomic(def, zentol_def_text(inst.default_library, inst.default_scratch, 1));
    std::string engines = inst.cfgset + "/engines.def";
    if (!files::exists(engines)) files::write_atomic(engines, default_engines_def(inst));
}

std::string cfg_path(const Session& s, const std::string& name) { return s.inst.cfgset + "/" + name; }

std::string zentol_def_text(const std::string& library, const std::string& scratch, int level) {
    return library + "\n" + scratch + "\n" + text::format_i(level, 4) + "\n";
}

static void read_zentol_lines(Session& s, const std::string& path,
                              const std::optional<std::vector<std::string>>& lines);

void install_programs(const Installation& inst, const std::string& program_dir) {
    namespace fs = std::filesystem;
    // Helper programs built with Zentol, under the names engines.def gives them.
    static const std::pair<const char*, const char*> kPrograms[] = {
        {"zentol-symmol", "symmol"},   {"zentol-orbgrid", "orbgrid"}, {"zentol-orbgrid", "orbgrids"},
        {"zentol-orbgrid", "gridmap"}, {"zentol-orbview", "orbview"}, {"zentol-queue", "zentol-queue"}};
    for (const auto& [built, installed] : kPrograms) {
        std::error_code ec;
        const fs::path from = fs::path(program_dir) / built, to = fs::path(inst.bin) / installed;
        if (!fs::exists(from, ec)) continue;
        if (fs::exists(to, ec) && fs::last_write_time(to, ec) >= fs::last_write_time(from, ec)) continue;
        fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec);
    }
}

void install_library(const std::string& shipped, const std::string& library_dir) {
    std::error_code ec;
    for (auto it = std::filesystem::recursive_directory_iterator(shipped, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        if (!it->is_regular_file(ec)) continue;
        const std::string relative = std::filesystem::relative(it->path(), shipped, ec).generic_string();
        const std::string target = library_dir + "/" + relative;
        if (files::exists(target)) continue;
        files::make_dirs(std::filesystem::path(target).parent_path().string());
        files::copy(it->path().string(), target);
    }
}

void read_zentol_def(Session& s) {
    std::string path = cfg_path(s, "zentol.def");
    auto lines = files::read_lines(path);
    s.job.library_dir = s.inst.default_library;
    s.job.scratch_dir = s.inst.default_scratch;
    read_zentol_lines(s, path, lines);
    install_library(s.inst.data_dir + "/library", s.job.library_dir);
}

namespace {

// A folder of zentol.def must be a full path of printable characters: a
// relative or garbled one would make folders inside the job's folder.
bool usable_folder(std::string_view dir) {
    if (dir.empty() || dir[0] != '/') return false;
    return std::none_of(dir.begin(), dir.end(), [](char c) { return static_cast<unsigned char>(c) < 32 || c == 127; });
}

// Line n of the file as the folder it names; a line that is there but
// unusable keeps the folder given and is listed as refused.
bool read_folder_line(const std::vector<std::string>& lines, std::size_t n, std::string& dir, const char* what,
                      ZentolDef& def) {
    if (lines.size() <= n || text::trim(lines[n]).empty()) return false;
    std::string_view named = text::trim(lines[n]);
    if (usable_folder(named)) {
        dir = std::string(named);
        return true;
    }
    def.refused.emplace_back(what, std::string(named));
    return false;
}

}  // namespace

ZentolDef parse_zentol_def(const std::vector<std::string>& lines, const std::string& library,
                           const std::string& scratch) {
    ZentolDef def;
    def.library = library;
    def.scratch = scratch;
    bool ok = lines.size() >= 3;
    ok = read_folder_line(lines, 0, def.library, "library", def) && ok;
    ok = read_folder_line(lines, 1, def.scratch, "scratch", def) && ok;
    if (ok) {
        auto level = text::read_ints(lines[2], 1);
        if (level && !level->empty()) def.level = static_cast<int>(std::clamp((*level)[0], 1LL, 3LL));
        else ok = false;
    }
    def.complete = ok;
    return def;
}

static void read_zentol_lines(Session& s, const std::string& path,
                              const std::optional<std::vector<std::string>>& lines) {
    if (!lines) {
        s.flags.user_level = 0;   // treated as Entry; field 7 stays empty
        files::write_atomic(path, zentol_def_text(s.job.library_dir, s.job.scratch_dir, 1));
        return;
    }
    const ZentolDef def = parse_zentol_def(*lines, s.job.library_dir, s.job.scratch_dir);
    for (const auto& [what, named] : def.refused)
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         path + " named the " + what + " folder \"" + text::sanitise_text(named) +
                             "\",\rwhich is not a full path. It is set back to " +
                             (what == "library" ? def.library : def.scratch) + ".",
                         "Zentol");
    s.job.library_dir = def.library;
    s.job.scratch_dir = def.scratch;
    s.flags.user_level = def.level;
    // A mended file keeps the directories that were read; the level goes back to Entry.
    if (!def.complete) files::write_atomic(path, zentol_def_text(s.job.library_dir, s.job.scratch_dir, 1));
}

void write_user_level(Session& s) {
    std::string path = cfg_path(s, "zentol.def");
    auto lines = files::read_lines(path);
    std::string library = lines && lines->size() >= 1 ? (*lines)[0] : s.job.library_dir;
    std::string scratch = lines && lines->size() >= 2 ? (*lines)[1] : s.job.scratch_dir;
    files::write_atomic(path, library + "\n" + scratch + "\n" + (text::FreeRecord() << s.flags.user_level).str() + "\n");
}

std::string dir_def_name(const Session& s) { return std::string("dir") + s.job.instance_digit + ".def"; }

std::string dir_from_lines(const std::vector<std::string>& lines) {
    if (lines.empty()) return "";
    std::string_view dir = text::trim(lines[0]);
    return usable_folder(dir) ? std::string(dir) : "";   // a damaged file names no folder
}

std::string read_dir_file(const Session& s, const std::string& name) {
    auto lines = files::read_lines(cfg_path(s, name));
    return lines ? dir_from_lines(*lines) : "";
}

void write_dir_file(const Session& s, const std::string& name, const std::string& dir) {
    files::write_atomic(cfg_path(s, name), dir + "\n");
}

std::array<std::string, kRecentJobs + 1> parse_mru(const std::vector<std::string>& lines) {
    std::array<std::string, kRecentJobs + 1> mru;
    for (int k = 1; k <= kRecentJobs && k <= static_cast<int>(lines.size()); ++k)
        mru[k] = std::string(text::trim(lines[k - 1]));
    return mru;
}

void read_mru(Session& s) {
    auto lines = files::read_lines(cfg_path(s, "mrul.def"));
    s.job.mru = parse_mru(lines ? *lines : std::vector<std::string>{});
}

void write_mru(const Session& s) {
    std::vector<std::string> lines;
    for (int k = 1; k <= kRecentJobs; ++k) {
        std::string e(text::trim(s.job.mru[k]));
        lines.push_back(e.size() < 3 ? " " : e);
    }
    files::write_lines(cfg_path(s, "mrul.def"), lines);
}

std::string short_directory(const std::string& dir) {
    if (dir.size() <= 34) return dir;
    return dir.substr(0, 16) + "/../" + dir.substr(dir.size() - 17);
}

std::string level_name(int level) {
    switch (level) {
        case 1: return "Ent";
        case 2: return "Adv";
        case 3: return "Exp";
        default: return "";
    }
}

}  // namespace zentol
