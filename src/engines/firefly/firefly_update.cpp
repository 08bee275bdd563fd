// The results of a Firefly run taken back into the job: the summary
// job.txt, job_chg.log, the .GEO log and the new geometry; and a molecule
// loaded into an empty job from the listing or the punch file.
#include <cmath>
#include <optional>

#include "building/connectivity.h"
#include "engines/firefly/firefly_deck.h"
#include "engines/firefly/firefly_listing.h"
#include "engines/firefly/firefly_mode.h"
#include "engines/firefly/firefly_punch.h"
#include "engines/runner.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"
#include "wavefunction/dgrid.h"

namespace zentol {

namespace {

constexpr char kConvergenceFault[] = "Convergence Fault or NO parameters/file";

void message(Session& s, const std::string& text) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, "Firefly");
}

std::vector<std::string> store_labels(const Store& st) {
    std::vector<std::string> labels;
    for (int i = 1; i <= st.natoms; ++i) labels.push_back(label_text(st.atom_label[i]));
    return labels;
}

// The label of a loaded atom: the deck's label when its element agrees
// with the nuclear charge (C1, H12), else the element of the charge
// (CARBON, HYDROGEN as typed in other decks).
Label loaded_label(const Store& st, const ListingAtom& a) {
    const int z = static_cast<int>(std::lround(a.nuclear_charge));
    const std::string typed = a.label.substr(0, 4);
    if (z >= 1 && z < kElementRows && atomic_number(st, typed) == z) return normalise_symbol(typed);
    if (z >= 1 && z < kElementRows) return normalise_symbol(std::string(st.elements[z].symbol, 2));
    return normalise_symbol(typed);
}

bool load_atoms(Session& s, const std::vector<ListingAtom>& atoms) {
    if (atoms.empty()) return false;
    Store& st = s.store;
    st.clear_molecule();
    for (std::size_t i = 0; i < atoms.size() && st.natoms < kMaxAtoms; ++i) {
        const Label label = loaded_label(st, atoms[i]);
        const std::string text = label_text(label);
        append_atom(st, label, static_cast<float>(atoms[i].x), static_cast<float>(atoms[i].y),
                    static_cast<float>(atoms[i].z), element_lookup(st, nullptr, text, kLookupRadius),
                    atom_type_of(st, text));
    }
    perceive_bonds(st, &s.tk, s.opt.cov_tolerance);
    save_and_reload(s);
    return true;
}

// New coordinates for the atoms of the job; a block of another size is
// refused, so that nothing of the molecule is lost.
bool apply_coordinates(Session& s, const std::vector<ListingAtom>& atoms, const std::string& source) {
    Store& st = s.store;
    if (static_cast<int>(atoms.size()) != st.natoms) {
        message(s, source + " holds " + std::to_string(atoms.size()) + " atoms, the job " + std::to_string(st.natoms) +
                       ":\rthe structure was not changed.");
        return false;
    }
    for (int i = 1; i <= st.natoms; ++i) {
        const ListingAtom& a = atoms[static_cast<std::size_t>(i - 1)];
        st.atom_rec[i][kX] = static_cast<float>(a.x);
        st.atom_rec[i][kY] = static_cast<float>(a.y);
        st.atom_rec[i][kZ] = static_cast<float>(a.z);
    }
    save_and_reload(s);
    return true;
}

// The geometry of the punch file, with the report of which block it was.
bool apply_punch_geometry(Session& s) {
    auto punch = files::read_text_lines(job_file(s, ".pun"));
    if (!punch) return false;
    log_line(s, " Goemetry Loaded from PUNCH file");
    const PunchGeometry g = read_punch_geometry(*punch, s.store.natoms);
    if (!apply_coordinates(s, g.atoms, job_file(s, ".pun"))) return false;
    if (g.converged) {
        message(s, "Equilibrium Geometry Loaded from PUNCH");
    } else {
        text::FreeRecord r;
        r << "Geometry Loaded from PUNCH after " << g.cycles << "cycles";
        message(s, r.str());
    }
    return true;
}

void write_charges(Session& s, const text::TextLines& listing, bool chelpg_run) {
    const int kind = charge_kind(listing, chelpg_run);
    if (kind == kNoCharges) return;
    const std::vector<double> charges = read_charges(listing, kind, s.store.natoms);
    const std::string method = firefly_method_name(s.firefly.method);
    files::write_lines(job_file(s, "_chg.log"), firefly_charge_log(kind, method, store_labels(s.store), charges));
    for (std::size_t i = 0; i < charges.size() && i + 1 < s.store.atom_charge.size(); ++i)
        s.store.atom_charge[i + 1] = static_cast<float>(charges[i]);
}

// With WFN on, job.txt becomes the converter's list of atoms: their number
// (I4), then x y z of each in free format.
void write_wavefunction_atoms(Session& s, const std::vector<ListingAtom>& atoms) {
    std::vector<std::string> lines{text::format_i(static_cast<long long>(atoms.size()), 4)};
    for (const ListingAtom& a : atoms) {
        text::FreeRecord r;
        r << a.x << a.y << a.z;
        lines.push_back(r.str());
    }
    files::remove(job_file(s, ".txt"));
    files::write_lines(job_file(s, ".txt"), lines);
}

void log_geometry_and_orbitals(Session& s, const text::TextLines& listing, const std::vector<std::string>& cards,
                               const ListingGeometry& g) {
    for (const std::string& card : cards) log_line(s, card);
    if (g.equilibrium) log_line(s, g.equilibrium_record);
    const ListingOrbitals orbitals = read_listing_orbitals(listing);
    if (s.flags.spin_multiplicity > 1) {
        log_line(s, "Only alpha orbitals have been used");
        log_line(s, "you may need to check the HOMO no.");
    }
    if (orbitals.found)
        for (const std::string& line : firefly_orbital_table(orbitals)) log_line(s, line);
    if (auto e = listing_total_energy(listing)) log_line(s, total_energy_geo_line(*e));
}

void optimisation_verdict(Session& s, const ListingGeometry& g) {
    // An equilibrium record without the geometry after it is a listing cut short.
    if (!g.equilibrium || !g.final_block) {
        message(s, kConvergenceFault);
        files::remove(job_file(s, "_chg.log"));
        return;
    }
    const bool applied = s.firefly.lpun ? apply_punch_geometry(s) : apply_coordinates(s, g.last, job_file(s, ".lst"));
    if (!applied) return;
    log_line(s, "Structure updated");
    s.tk.WindowOutStatusBar(status_message_field, "Firefly finished structure updated");
    // A molecule without bonds (one loaded from an engine file that bonds
    // could not be found for) is best rebuilt from its .ins file.
    if (s.store.nbonds == 0 && s.store.natoms > 1)
        message(s, "To add bonds exit Zentol and use\rFormats INS >>> XYZ conversion\r"
                   "the new XYZ file will have bond information");
}

void energy_report(Session& s, const text::TextLines& listing) {
    const auto e = listing_final_energy(listing, false);
    if (!e) {
        message(s, kConvergenceFault);
        return;
    }
    log_line(s, "Firefly Energy calculation");
    log_line(s, final_energy_geo_line(*e));
    s.tk.WindowOutStatusBar(status_message_field, final_energy_status(*e));
}

}  // namespace

void ff_update(Session& s, int run_type) {
    files::remove("for01*");
    files::remove("shutdown");
    auto listing = files::read_text_lines(job_file(s, ".lst"));
    if (!listing) return;
    log_line(s, "Firefly run for " + s.job.name);
    s.tk.WindowOutStatusBar(status_message_field, "Calculating");
    const std::vector<std::string> cards = input_cards(*listing);
    files::write_lines(job_file(s, ".txt"), firefly_summary(*listing));
    const ListingGeometry g = read_listing_geometry(*listing);
    if (s.store.natoms == 0 && !load_atoms(s, g.first)) return;
    write_charges(s, *listing, chelpg_requested(cards));
    if (s.firefly.wfn && !g.last.empty()) write_wavefunction_atoms(s, g.last);
    log_geometry_and_orbitals(s, *listing, cards, g);
    draw_scene(s);
    s.tk.WindowOutStatusBar(status_message_field, "Firefly finished");
    if (run_type == 2) optimisation_verdict(s, g);
    else energy_report(s, *listing);
}

bool load_molecule_from_listing(Session& s) {
    auto listing = files::read_text_lines(job_file(s, ".lst"));
    return listing && load_atoms(s, read_listing_geometry(*listing).first);
}

bool load_molecule_from_punch(Session& s) {
    auto punch = files::read_text_lines(job_file(s, ".pun"));
    if (!punch) return false;
    log_line(s, " Goemetry Loaded from PUNCH file");
    return load_atoms(s, read_punch_geometry(*punch, 0).atoms);
}

void make_wavefunction_file(Session& s) {
    auto punch = files::read_text_lines(job_file(s, ".pun"));
    auto section = punch ? bader_section(*punch) : std::nullopt;
    if (!section) {
        message(s, "The punch file " + job_file(s, ".pun") +
                       " has no wavefunction for AIMPAC:\rno " + job_file(s, ".wfn") + " was written.");
        return;
    }
    if (!files::write_lines(job_file(s, ".wfn"), *section)) {
        message(s, "Cannot write " + job_file(s, ".wfn"));
        return;
    }
    dgrid_prepare(s, s.job.name);
}

}  // namespace zentol
