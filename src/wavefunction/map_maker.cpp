#include "wavefunction/map_maker.h"

#include <filesystem>
#include <ostream>

#include "engines/mopac/mopac_listing.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "wavefunction/map_files.h"
#include "wavefunction/orbital_map.h"

namespace zentol {

namespace {

const char* const kUsage =
    "usage: orbgrid | orbgrids | gridmap\n"
    "       zentol-orbgrid [--mo N | --homo | --lumo | --density | --spin] [--beta]\n"
    "                      [--steps N] [--margin A] [-o FILE.cube] FILE\n"
    "\n"
    "Makes a Gaussian cube file of a molecular orbital, the total electron density\n"
    "or the spin density on a grid around the molecule.\n"
    "\n"
    "Called as orbgrid or orbgrids it reads Zentol's plot files pppmap.KEW and\n"
    "graph.dat in the current folder (a Mopac plot); called as gridmap, pppmap.kew\n"
    "and the punch file PUNCH (a Firefly plot). The map is written as\n"
    "JOB_MOnnn.cube, JOB_density.cube or JOB_spin.cube, and its name to pppmap.atl.\n"
    "\n"
    "FILE may be a MOPAC graph file (GRAPHF: job.mgf), Zentol's graph.dat, or a\n"
    "GAMESS/Firefly punch file with the AIMPAC wavefunction (job.pun, job.dat).\n"
    "  --mo N       orbital N, numbered as the engine numbers it (default: HOMO;\n"
    "               a MOPAC run without ALLVEC is numbered from job.out beside job.mgf)\n"
    "  --homo, --lumo, --density, --spin, --beta (the beta orbital of N)\n"
    "  --steps N    points along the longest side of the box, 32 to 128 (64)\n"
    "  --margin A   Angstrom of room around the atoms (3.5)\n"
    "  --cubic      N points on every side (the box a cube), not only the longest\n"
    "  -o FILE      the cube file (default: FILE's name with the map's ending)\n";

struct Options {
    std::string program, input, output;
    MapRequest request;
    bool orbital_given = false, lumo = false;
    bool help = false;
};

bool read_number(const std::string& word, double& value) {
    auto v = text::read_reals(word, 1);
    if (!v || v->size() != 1) return false;
    value = (*v)[0];
    return true;
}

bool parse(const std::vector<std::string>& args, Options& o) {
    o.program = std::filesystem::path(args.empty() ? "orbgrid" : args[0]).filename().string();
    for (std::size_t k = 1; k < args.size(); ++k) {
        const std::string& w = args[k];
        const bool has_value = k + 1 < args.size();
        double v = 0;
        if (w == "-h" || w == "--help") o.help = true;
        else if (w == "--mo" && has_value && read_number(args[++k], v)) {
            o.request.orbital = static_cast<int>(v);
            o.orbital_given = true;
        } else if (w == "--homo") o.orbital_given = false;
        else if (w == "--lumo") o.lumo = true;
        else if (w == "--density") o.request.kind = MapKind::Density;
        else if (w == "--spin") o.request.kind = MapKind::Spin;
        else if (w == "--beta") o.request.beta = true;
        else if (w == "--cubic") o.request.cubic = true;
        else if (w == "--steps" && has_value && read_number(args[++k], v)) o.request.steps = static_cast<int>(v);
        else if (w == "--margin" && has_value && read_number(args[++k], v) && v >= 0 && v < 50) o.request.margin = v;
        else if (w == "-o" && has_value) o.output = args[++k];
        else if (!w.empty() && w[0] != '-' && o.input.empty()) o.input = w;
        else return false;
    }
    return true;
}

bool steps_ok(int steps, std::ostream& err) {
    if (steps >= 27 && steps <= 128) return true;
    err << "grid steps " << steps << ": give 32 to 128\n";
    return false;
}

// The highest filled level the run's listing (job.out beside job.mgf)
// gives, which numbers the orbitals of a file that holds only those about
// it; 0 without a listing.
int listing_homo(const std::string& mgf) {
    std::filesystem::path out(mgf);
    out.replace_extension(".out");
    const auto listing = files::read_text_lines(out.string());
    if (!listing) return 0;
    const MopacListing l = read_mopac_listing(listing->views(), 1, 1, 0);
    return l.alpha_electrons > 0 ? l.alpha_electrons : l.homo_index;
}

// A file named on the command line: a MOPAC graph file, Zentol's graph.dat
// or a punch file, told apart by their content.
MapWavefunction read_any(const std::string& name, std::string& error) {
    auto lines = files::read_text_lines(name);
    if (!lines) {
        error = "cannot read " + name;
        return {};
    }
    for (std::size_t i = 0; i < lines->size() && i < 200000; ++i)
        if ((*lines)[i].starts_with("----- TOP OF INPUT FILE FOR BADER")) return aimpac_wavefunction(*lines, error);
    if (!lines->empty() && (*lines)[0].find("MOPAC-Graphical") != std::string_view::npos)
        return mopac_wavefunction(read_mop2016_vectors(lines->views(), listing_homo(name)), error);
    if (auto v = read_graph_file(*lines, error)) return mopac_wavefunction(*v, error);
    error = name + ": " + error;
    return {};
}

bool write_map(const MapWavefunction& w, const MapRequest& r, const std::string& output, std::ostream& out,
               std::ostream& err) {
    std::string error;
    const auto grid = make_map(w, r, error);
    if (!grid) {
        err << "no map: " << error << "\n";
        return false;
    }
    std::string why;
    if (!files::write_atomic(output, cube_text(*grid), &why)) {
        err << "cannot write " << output << ": " << why << "\n";
        return false;
    }
    out << output << ": " << grid->title << ", " << grid->n[0] << " x " << grid->n[1] << " x " << grid->n[2]
        << " points\n";
    return true;
}

// The lowest empty orbital above the highest filled one.
int lumo_of(const MapWavefunction& w) { return w.homo + 1; }

int from_file(Options& o, std::ostream& out, std::ostream& err) {
    if (!steps_ok(o.request.steps, err)) return 2;
    std::string error;
    const MapWavefunction w = read_any(o.input, error);
    if (w.orbitals.empty()) {
        err << "no map: " << error << "\n";
        return 1;
    }
    if (!o.orbital_given) o.request.orbital = o.lumo ? lumo_of(w) : w.homo;
    if (o.output.empty()) {
        const std::filesystem::path in(o.input);
        o.output = (in.parent_path() / map_file_name(in.stem().string(), o.request)).string();
    }
    return write_map(w, o.request, o.output, out, err) ? 0 : 1;
}

// Zentol's hand-over: pppmap.KEW with graph.dat, or for gridmap pppmap.kew
// with PUNCH. The map's name goes to pppmap.atl for the viewer.
int from_hand_over(const Options& o, std::ostream& out, std::ostream& err) {
    const bool firefly = o.program.find("gridmap") != std::string::npos;
    const auto kew = files::read_text_lines("pppmap.KEW");
    const auto control = !kew ? std::nullopt : firefly ? read_firefly_kew(*kew) : read_map_control(*kew);
    if (!control) {
        err << "no map: pppmap.KEW is missing or damaged in " << files::current_dir() << "\n";
        return 1;
    }
    MapRequest r = o.request;
    r.steps = control->steps;
    r.orbital = control->orbital;
    r.kind = control->kind == 2 ? MapKind::Density : control->kind == 1 ? MapKind::Spin : MapKind::Orbital;
    if (!steps_ok(r.steps, err)) return 1;
    std::string error;
    MapWavefunction w;
    if (firefly) {
        const auto punch = files::read_text_lines(control->graph_file);
        if (punch) w = aimpac_wavefunction(*punch, error);
        else error = "there is no punch file PUNCH";
    } else {
        const auto graph = files::read_text_lines(control->graph_file);
        const auto v = graph ? read_graph_file(*graph, error) : std::nullopt;
        if (!graph) error = "there is no graph file " + control->graph_file + ": run an Energy calculation first";
        if (v) w = mopac_wavefunction(*v, error);
    }
    if (w.orbitals.empty()) {
        err << "no map: " << error << "\n";
        return 1;
    }
    const std::string output = map_file_name(control->job, r);
    files::remove("pppmap.atl");
    if (!write_map(w, r, output, out, err)) return 1;
    return files::write_lines("pppmap.atl", {output, map_title(r)}) ? 0 : 1;
}

// Messages of the hand-over form also go to pppmap.log: Zentol shows them
// when no map came.
struct Tee : std::streambuf {
    std::streambuf* a;
    std::string copy;
    explicit Tee(std::streambuf* first) : a(first) {}
    int overflow(int c) override {
        if (c != EOF) copy.push_back(static_cast<char>(c));
        return a->sputc(static_cast<char>(c));
    }
};

}  // namespace

int run_map_maker(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    Options o;
    if (!parse(args, o)) {
        err << kUsage;
        return 2;
    }
    if (o.help) {
        out << kUsage;
        return 0;
    }
    if (!o.input.empty()) return from_file(o, out, err);
    Tee tee(err.rdbuf());
    std::ostream both(&tee);
    files::remove("pppmap.log");
    const int status = from_hand_over(o, out, both);
    if (!tee.copy.empty()) files::write_atomic("pppmap.log", tee.copy);
    return status;
}

}  // namespace zentol
