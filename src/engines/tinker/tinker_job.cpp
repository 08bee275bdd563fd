#include "engines/tinker/tinker_job.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

namespace {

namespace fs = std::filesystem;

std::string without_extension(const std::string& leaf) {
    const std::size_t dot = leaf.rfind('.');
    return dot == std::string::npos || dot == 0 ? leaf : leaf.substr(0, dot);
}

bool all_digits(const std::string& s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The N of "<stem>.xyz_N" in any spelling of the stem, 0 for other names.
int version_of(const std::string& leaf, const std::string& stem) {
    const std::string head = stem + ".xyz_";
    if (leaf.size() <= head.size() || !text::equals_nocase(leaf.substr(0, head.size()), head)) return 0;
    const std::string n = leaf.substr(head.size());
    return all_digits(n) && n.size() < 6 ? std::stoi(n) : 0;
}

void remove_versions(const std::string& stem) {
    for (const std::string& leaf : files::list(".", files::escape_pattern(stem) + ".xyz_*"))
        if (version_of(leaf, stem) > 0) files::remove_file(leaf);
}

}  // namespace

bool exact_file(const std::string& name) {
    std::error_code ec;
    return fs::is_regular_file(name, ec);
}

TinkerNames tinker_names(const Session& s) {
    TinkerNames n;
    n.told = files::resolve(job_file(s, ".xyz"));
    n.base = without_extension(n.told);
    n.plain_taken = n.told != n.base + ".xyz" && exact_file(n.base + ".xyz");
    return n;
}

TinkerNames prepare_tinker_run(Session& s) {
    remove_versions(s.job.name);
    TinkerNames n = tinker_names(s);
    if (n.base != s.job.name) remove_versions(n.base);
    // Tinker reads base.key under exactly that spelling and, without it,
    // asks for a parameter file the answers do not hold.
    const std::string key = n.base + ".key";
    const std::string on_disk = files::resolve(job_file(s, ".key"));
    if (!exact_file(key) && exact_file(on_disk)) {
        std::error_code ec;
        fs::rename(on_disk, key, ec);
    }
    return n;
}

std::string tinker_result_file(const TinkerNames& names) {
    std::string best;
    int highest = 0;
    for (const std::string& leaf : files::list(".", files::escape_pattern(names.base) + ".xyz_*")) {
        // Tinker writes under the base's own spelling.
        if (leaf.compare(0, names.base.size(), names.base) != 0) continue;
        const int n = version_of(leaf, names.base);
        if (n > highest) highest = n, best = leaf;
    }
    if (!best.empty()) return best;
    const std::string plain = names.base + ".xyz";
    if (plain != names.told && !names.plain_taken && exact_file(plain)) return plain;
    return "";
}

std::vector<std::array<double, 3>> restart_positions(const std::vector<std::string>& dyn) {
    // " Number of Atoms and Title :" / "    14  butane" / ... /
    // " Current Atomic Positions :" / "    0.2154572824737115D-01    0.53...D-02 ..."
    std::vector<std::array<double, 3>> out;
    if (dyn.size() < 2) return out;
    auto count = text::read_ints(std::string_view(dyn[1]).substr(0, std::min<std::size_t>(6, dyn[1].size())), 1);
    if (!count || count->empty() || (*count)[0] < 1 || (*count)[0] > kMaxAtoms) return out;
    const std::size_t n = static_cast<std::size_t>((*count)[0]);
    for (std::size_t i = 0; i < dyn.size(); ++i) {
        if (text::trim(dyn[i]) != "Current Atomic Positions :") continue;
        for (std::size_t k = i + 1; k <= i + n && k < dyn.size(); ++k) {
            auto v = text::read_reals(dyn[k], 3);
            if (!v || v->size() < 3) return {};
            out.push_back({(*v)[0], (*v)[1], (*v)[2]});
        }
        if (out.size() != n) out.clear();
        return out;
    }
    return out;
}

bool same_geometry(const std::vector<std::array<double, 3>>& positions, const Store& st) {
    if (static_cast<int>(positions.size()) != st.natoms || st.natoms < 1) return false;
    auto d = [](double ax, double ay, double az, double bx, double by, double bz) {
        return std::sqrt((ax - bx) * (ax - bx) + (ay - by) * (ay - by) + (az - bz) * (az - bz));
    };
    for (int i = 1; i <= st.natoms; ++i)
        for (int j = i + 1; j <= st.natoms; ++j) {
            const auto& p = positions[static_cast<std::size_t>(i - 1)];
            const auto& q = positions[static_cast<std::size_t>(j - 1)];
            const double then = d(p[0], p[1], p[2], q[0], q[1], q[2]);
            const double now = d(st.atom_rec[i][kX], st.atom_rec[i][kY], st.atom_rec[i][kZ], st.atom_rec[j][kX],
                                 st.atom_rec[j][kY], st.atom_rec[j][kZ]);
            if (std::fabs(then - now) > 1e-3) return false;
        }
    return true;
}

bool restart_is_stale(const Session& s) {
    if (s.tinker.tk_dyn_stale > 0.5f) return true;
    const std::string dyn = job_file(s, ".dyn");
    if (!files::exists(dyn)) return false;
    const auto lines = files::read_lines(dyn);
    return !lines || !same_geometry(restart_positions(*lines), s.store);
}

}  // namespace zentol
