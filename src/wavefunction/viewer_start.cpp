#include "wavefunction/viewer_start.h"

#include <algorithm>
#include <filesystem>

#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

namespace {

bool ends_with_nocase(const std::string& s, std::string_view end) {
    return s.size() >= end.size() && text::equals_nocase(std::string_view(s).substr(s.size() - end.size()), end);
}

// The map named in pppmap.atl, when that file exists and the map too.
std::string map_of_hand_over() {
    const auto atl = files::read_lines("pppmap.atl");
    if (!atl || atl->empty()) return "";
    const std::string name(text::trim((*atl)[0]));
    return !name.empty() && files::exists(name) ? files::resolve(name) : "";
}

std::string existing(const std::string& name) { return files::exists(name) ? files::resolve(name) : ""; }

// The newest JOB_*.cube of the folder.
std::string newest_map(const std::string& job) {
    std::string best;
    std::filesystem::file_time_type best_time{};
    for (const std::string& name : files::list(".", job + "_*.cube")) {
        std::error_code ec;
        const auto t = std::filesystem::last_write_time(name, ec);
        if (!ec && (best.empty() || t > best_time)) best = name, best_time = t;
    }
    return best;
}

std::string mopac_map(const ViewerStart& v) {
    if (std::string atl = map_of_hand_over(); !atl.empty()) return atl;
    if (v.kind == "MOPAS") return existing(v.job + "_spin.cube");
    if (v.kind == "MOPAD") return existing(v.job + "_density.cube");
    std::string number = std::to_string(v.orbital);
    if (number.size() < 3) number.insert(0, 3 - number.size(), '0');
    return existing(v.job + "_MO" + number + ".cube");
}

}  // namespace

ViewerStart read_viewer_words(const std::vector<std::string>& words) {
    ViewerStart v;
    if (words.empty()) return v;
    if (words.size() == 1 || ends_with_nocase(words[0], ".cube") || ends_with_nocase(words[0], ".cub")) {
        v.cube = words[0];
        if (words.size() > 1) v.error = "only one cube file can be shown: " + words[1];
        return v;
    }
    if (words[1] == "FIREFLY") {
        v.kind = "FIREFLY";
        v.cube = map_of_hand_over();
        return v;
    }
    v.job = words[0];
    v.instance = words[1].substr(0, 1);
    if (v.instance < "1" || v.instance > "9") v.instance = "1";
    const std::string third = words.size() > 2 ? words[2] : "";
    if (third == "MOPAC" || third == "MOPAS" || third == "MOPAD") {
        v.kind = third;
        auto n = words.size() > 3 ? text::read_f(words[3]) : std::nullopt;
        if (!n) v.error = "no orbital number after " + third;
        v.orbital = n ? static_cast<int>(std::clamp(*n, 0.0, 1e6)) : 0;
        v.imx = words.size() > 4 && words[4].starts_with("IMX");
        v.cube = mopac_map(v);
        return v;
    }
    v.imx = third.starts_with("IMPX") || third.starts_with("IMX");
    v.cube = map_of_hand_over();
    if (v.cube.empty()) v.cube = newest_map(v.job);
    return v;
}

bool returns_to_zentol(const ViewerStart& v) {
    return v.kind == "MOPAC" || v.kind == "MOPAS" || v.kind == "MOPAD";
}

std::vector<std::string> zentol_return_words(const ViewerStart& v, int orbital) {
    const int nn = std::clamp(orbital, 0, 99);
    std::string word = v.kind == "MOPAS" ? "MOPAS" : v.kind == "MOPAD" ? "MOPAD" : "MOPA";
    std::vector<std::string> w{v.job, v.instance, word, (nn < 10 ? "0" : "") + std::to_string(nn)};
    if (v.imx) w.push_back("IMX");
    return w;
}

}  // namespace zentol
