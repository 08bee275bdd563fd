#include "engines/firefly/firefly_deck.h"

#include <algorithm>

#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"

namespace zentol {

namespace {

const char* const kMethods[] = {"MINI", "MIDI", "MNDO", "AM1", "PM3", "3-21G", "6-31G"};
const char* const kScf[] = {"RHF", "UHF", "GVB"};
const char* const kRunTypes[] = {"ENERGY", "OPTIMIZE", "HESSIAN", "RAMAN"};

// The basis records of the two ab initio methods, 38 significant columns.
constexpr char kBasis321[] = "GBASIS=N21  NGAUSS=3 NDFUNC=0 NPFUNC=0";
constexpr char kBasis631[] = "GBASIS=N31  NGAUSS=6 NDFUNC=0 NPFUNC=0";

// A whole number of records 1 and 2: formatted in its field, written
// without the field's padding.
std::string bare(long long v, int w) { return std::string(text::trim(text::format_i(v, w))); }

// The digit behind "NDFUNC=" or "NPFUNC=" replaced by a count above 0.
void set_digit(std::string& basis, const char* key, int count) {
    if (count <= 0) return;
    const std::size_t at = basis.find(key);
    if (at != std::string::npos) basis[at + 7] = static_cast<char>('0' + std::min(count, 9));
}

std::string contrl_record(const FireflySettings& o) {
    const std::string scf = firefly_scf_name(o.scf_type), maxit = bare(o.maxit, 4);
    if (!firefly_ab_initio(o) || !o.dft) return " $CONTRL SCFTYP=" + scf + " MAXIT=" + maxit;
    const std::string functional = o.disp ? "B97D" : "B3LYP";
    std::string r = " $CONTRL DFTTYP=" + functional + " SCFTYP=" + scf + " MAXIT=" + maxit;
    if (o.wfn) r += " AIMPAC=1";
    return r;
}

std::string runtyp_record(const FireflySettings& o, int natoms) {
    std::string r = " RUNTYP=" + firefly_run_keyword(o.run_type) + " ICHARG=" + bare(o.charge, 3) +
                    " MULT=" + bare(o.multiplicity, 3);
    if (o.zmat) r += " COORD=ZMT NZVAR=" + bare(3 * natoms - 6, 4);
    return r + " $END";
}

std::string basis_record(const FireflySettings& o) {
    if (!firefly_ab_initio(o)) return " $BASIS GBASIS=" + firefly_method_name(o.method) + " $END";
    std::string basis = o.method == 6 ? kBasis321 : kBasis631;
    set_digit(basis, "NDFUNC=", o.nd);
    set_digit(basis, "NPFUNC=", o.np);
    return " $BASIS " + basis + " diffsp=.f. diffs=.f. $END";
}

std::string eldens_record(const FireflySettings& o) {
    if (o.plot == 1) return " $ELDENS IEDEN=1 MORB=0 $END";
    if (o.multiplicity > 1) return " $ELDENS IEDEN=1 spind=.t. diffd=.t. skiphf=.f. derivs(1)=0,1,2 $END";
    return " $ELDENS IEDEN=1 ICORBS(1)=" + text::format_i(o.plot_orbital, 4) + "," + text::format_i(o.plot_homo, 4) +
           " $END";
}

}  // namespace

std::string firefly_method_name(int method) { return method >= 1 && method <= 7 ? kMethods[method - 1] : ""; }

bool firefly_ab_initio(const FireflySettings& o) { return o.method >= 6; }

std::string firefly_scf_name(int scf_type) { return kScf[std::clamp(scf_type, 1, 3) - 1]; }

std::string firefly_run_keyword(int run_type) { return kRunTypes[std::clamp(run_type, 1, 4) - 1]; }

std::vector<std::string> firefly_header(const FireflySettings& o, const std::string& job, int natoms) {
    std::vector<std::string> r{contrl_record(o), runtyp_record(o, natoms), basis_record(o),
                               " $SCF DIRSCF=.TRUE. $END"};
    r.push_back(" $STATPT OPTTOL=" + text::format_f(o.opt_tol, 7, 5) + " NSTEP=" + text::format_i(o.max_steps, 4) +
                " $END");
    if (o.chelpg) {
        r.emplace_back(" $ELPOT IEPOT=1 WHERE=PDC $END");
        r.emplace_back(" $PDC PTSEL=CHELPG $END");
    }
    r.push_back(" $SYSTEM TIMLIM=" + text::format_i(o.time_limit, 5) + " MEMORY= 30000000 $END");
    if (o.nbo) r.push_back(" $NBO CMO file=" + job + " archive $END");
    if (o.plot > 0) {
        r.emplace_back(" $CUBE MESH=regular $END");
        r.push_back(eldens_record(o));
    }
    r.emplace_back(" $DATA");
    r.push_back(job + " Firefly run");
    r.emplace_back("C1");
    return r;
}

std::string firefly_atom_record(const std::string& label, int nuclear_charge, float x, float y, float z) {
    return text::pad_right(label, 4) + text::format_f(nuclear_charge, 5, 1) + text::format_f(x, 12, 5) +
           text::format_f(y, 12, 5) + text::format_f(z, 12, 5);
}

int atomic_number(const Store& st, const std::string& label) {
    const std::string key = element_symbol(label);
    for (int row = 1; row < kElementRows; ++row)
        if (st.elements[row].symbol[0] == key[0] && st.elements[row].symbol[1] == key[1]) return row;
    // Deuterium has its own row at the end of the table; it is hydrogen.
    if (key[0] == 'D' && key[1] == ' ') return 1;
    return 0;
}

std::vector<std::string> firefly_cartesian_atoms(const Store& st) {
    std::vector<std::string> r;
    for (int i = 1; i <= st.natoms; ++i) {
        const std::string label = label_text(st.atom_label[i]);
        const auto& a = st.atom_rec[i];
        r.push_back(firefly_atom_record(label, atomic_number(st, label), a[kX], a[kY], a[kZ]));
    }
    r.emplace_back(" $END");
    return r;
}

std::string freeze_coordinate(const std::string& statpt_record, int coordinate) {
    const std::string end = " $END";
    const std::size_t at = statpt_record.rfind(end);
    const std::string head = at == std::string::npos ? statpt_record : statpt_record.substr(0, at);
    return head + " IFREEZ(1)=" + text::format_i(coordinate, 4) + end;
}

int statpt_record_index(const std::vector<std::string>& header) {
    for (std::size_t i = 0; i < header.size(); ++i)
        if (header[i].rfind(" $STATPT", 0) == 0) return static_cast<int>(i);
    return -1;
}

std::vector<std::string> firefly_kew(int first, int second, int grid_steps) {
    text::FreeRecord r;
    r << first << second << grid_steps;
    return {r.str()};
}

}  // namespace zentol
