// The session: the molecule store plus the job's identity, the switches every
// mode reads and sets, the options of Setup, the colour table, the
// installation's paths, and the toolkit and renderer the logic talks through.
#pragma once

#include <array>
#include <map>
#include <string>

#include "session/molecule_store.h"

namespace zentol {

class Toolkit;
class Renderer;

// Where the installation lives: <root>/bin for siblings and helpers,
// <root>/cfgset for the configuration files, and the shipped data.
struct Installation {
    std::string root;
    std::string bin;
    std::string cfgset;
    std::string data_dir;           // shipped data: ui/, cfgset/ defaults
    std::string default_library;    // working trees
    std::string default_scratch;
};

// cfgset/engines.def: one "key value" a line.
struct EngineConfig {
    std::map<std::string, std::string> values;
    std::string get(const std::string& key) const {
        auto it = values.find(key);
        return it == values.end() ? std::string() : it->second;
    }
};

// The options of Setup; they last for the session.
struct Options {
    float atom_size = 0.25f;
    float bond_width = 0.2f;
    bool keep_dyn_files = false;
    bool labels_on = false;
    // Setup shows five times this (0.50), inside the dialog's 0.2 to 0.9: an
    // em of a tenth of the molecule's half width.
    float label_size = 0.1f;
    float label_offset = 0.1f;
    bool charge_labels = false;
    bool charge_colours = false;
    bool colour_by_molecule = false;
    float bond_rot_step = 20.0f;
    float view_distance = 30.0f;
    float cov_tolerance = 0.25f;
    int palette_choice = 1;
    bool fast_draw = false;         // 8-slice spheres at every draw
    bool hide_bonds = false;
    float deemphasis_alpha = 0.0f;
};

// Tinker settings: the Tinker page of Setup and the Dynamics dialog share
// them (the dialog's pressure and the Setup cooling curve are one cell,
// tk_curve).
struct TinkerSettings {
    float tk_optimize = 0;
    float tk_min_rms = 0.01f;
    float tk_anneal_t0 = 1000.0f;
    float tk_anneal_t1 = 0.0f;
    float tk_anneal_equil = 0.0f;
    float tk_anneal_cool = 4000.0f;
    float tk_anneal_step = 1.0f;
    float tk_anneal_dump = 0.1f;
    float tk_anneal_mass = 0.0f;
    float tk_curve = 1.0f;          // 1 L, 2 S, 3 E; also the Dynamics pressure
    float tk_qualifier = 69.0f;     // character code of the ANALYZE qualifier
    float tk_auto_cycles = 1;
    float tk_movie_delay = 10;
    float tk_dyn_steps = 3000;
    float tk_dyn_step = 1.0f;
    float tk_dyn_dump = 0.1f;
    float tk_dyn_type = 1;
    float tk_dyn_temp = 300.0f;
    float tk_dyn_stale = 1.0f;
    float tk_dyn_done = 0.0f;
    float tk_vib_number = 0.0f;
};

// Firefly mode's choices: the input dialog's values, the orbital-plot
// numbers and the number of cores, kept for the session so that the next
// visit starts from the last deck's settings.
struct FireflySettings {
    int scf_type = 1;               // 1 RHF, 2 UHF, 3 GVB
    int run_type = 1;               // 1 Ener, 2 Opt, 3 Hessian, 4 Raman
    int method = 6;                 // 1..5 MINI MIDI MNDO AM1 PM3, 6 3-21G, 7 6-31G
    int nd = 0, np = 0;             // d and p polarisation sets
    float opt_tol = 0.0001f;
    int maxit = 500;
    int max_steps = 500;
    int time_limit = 60000;
    int memory_mwords = 5;          // shown in the dialog only: the deck's memory is fixed
    int charge = 0;
    int multiplicity = 1;
    bool chelpg = false;
    bool bond_rotation = false;
    int plot = 0;                   // 0 none, 1 density, 2 orbital
    bool dft = false;
    bool disp = false;
    bool nbo = false;
    bool wfn = false;
    bool zmat = false;
    bool lpun = false;
    bool gq2 = false;
    bool charges_box = false;       // shown in the dialog only
    float cores = 1.0f;             // physical cores, rounded when read
    int plot_orbital = 0;           // the two numbers of an orbital plot
    int plot_homo = 0;
    int grid_steps = 64;
};

// 48 colour entries (1-based) and the 32 steps of the charge scale.
struct Palette {
    std::array<float, 49> r{}, g{}, b{};
    std::array<float, 33> map_value{};
};

struct Flags {
    int session_running = 10;
    bool exit_requested = false;
    int view_action = 0;            // 0 none, 1..3 rotate about that axis, 10 write back
    int view_rot_sign = 0;
    float rot_step = 2.0f;
    float zoom = 1.0f;
    bool mouse_rotating = false;
    int sphere_slices = 32, sphere_stacks = 32;
    int user_level = 1;             // 1 Entry, 2 Advanced, 3 Expert; 0 unknown
    int total_charge = 0;
    int spin_multiplicity = 1;
    bool plot_exit = false;
    bool start_in_mopac = false;
    float plot_number = 0;
    int plot_kind = 0;              // 0 MOPAC, 1 MOPAS, 2 MOPAD
    bool switch_to_sibling = false;
    bool run_orbview_at_exit = false;
    bool type_list_flag = false;
    bool charges_stale = false;
    bool bgl_written = false;
    bool movie_made = false;
    bool iconc_available = false;
    int os_version = 0;
    int hardcopy_counter = 1;
    bool xyz_damaged = false;       // the job's .xyz could not be read: leave its files alone
    bool symmetry_found = false;    // the last Point Group found more than C1
    bool pg_aligned = false;        // the molecule stands aligned to its point group
    bool quit_requested = false;    // the window was closed inside a mode
    // The job's .xyz could not be written (a read-only folder, a full
    // disk): the molecule lives only in memory until it is saved elsewhere,
    // and nothing of the job's on disk may be deleted or read over it.
    bool save_failed = false;
    // The file held more atoms than the store takes and the molecule was
    // cut: 1 asks before the first write over the original, 2 the user said
    // no (nothing is written over it until the molecule is saved elsewhere).
    int cut_on_load = 0;
};

// How this instance was started.
struct StartWords {
    bool imx = false, impx = false, mopa = false, m9 = false;
    bool no_words = false;          // no job word at all
    bool file_path = false;         // word 1 was a path to a structure file
};

struct Job {
    std::string name;               // without directory and extension
    char instance_digit = '1';
    std::string start_dir, library_dir, scratch_dir;
    std::array<std::string, kRecentJobs + 1> mru;   // 1..10, newest first
    std::string log_path;           // the open .geo log; empty when closed
};

// Up to two stored bonds of the bond and dihedral commands: kind 1 shows
// the first, 2 the second; a count above 0 colours a bond between two
// picked atoms.
struct BondMarks {
    int count = 0;
    int kind = 0;
    int first_low = 0, first_high = 0;
    int second_low = 0, second_high = 0;
};

// The view state the draw and the picking share.
struct ViewState {
    float pick_tolerance = 0.05f;   // set by every draw
    float last_x = 0, last_y = 0;   // pointer position of the drag so far
    bool turned = false;            // the drag since the press turned the molecule
    int pick_list[5] = {0, 0, 0, 0, 0};
    int pick_count = 0;
    // Atoms that carry a pick circle until the command that picked them ends.
    int circle_list[5] = {0, 0, 0, 0, 0};
    int circle_count = 0;
    BondMarks marks;
};

// What Build mode keeps between its turns and between its visits.
struct BuildState {
    Label current_element{'C', ' ', ' ', ' '};   // offered in the Build dialog
    float last_geometry = 6.0f;                   // the last geometry choice
    bool molecule_empty = false;
    bool add_mol_used = false;                    // since Build was entered
    bool close_requested = false;
    int extra_conn_count = 0;                     // bonds made by Mk.Conn, at most 9
    int extra_conn[10][2] = {};
};

// What the MultiWFN actions dialog keeps between its uses in a session.
struct MultiwfnSettings {
    int action = 1;
    std::string orbital_list;
    float mloba_threshold = 50.0f;
};

struct Session {
    Session(Toolkit& toolkit, Renderer& renderer) : tk(toolkit), renderer(renderer) {}

    Store store;
    Installation inst;
    EngineConfig engines;
    Options opt;
    TinkerSettings tinker;
    FireflySettings firefly;
    Palette palette;
    Flags flags;
    StartWords words;
    Job job;
    ViewState view;
    BuildState build;
    MultiwfnSettings multiwfn;
    Toolkit& tk;
    Renderer& renderer;
};

// The job's file with a lower-case extension: job_file(s, ".xyz").
std::string job_file(const Session& s, const std::string& extension);

}  // namespace zentol
