#include "engines/firefly/firefly_programs.h"

#include "session/openers.h"
#include "session/session.h"

namespace zentol {

namespace {

std::string fallback(const Session& s, const std::string& key) {
    if (key == "firefly" || key == "dos2unix") return key;
    if (key == "dgrid50") return s.inst.bin + "/dgrid-5.0";
    if (key == "dgrid51") return s.inst.bin + "/dgrid-5.1";
    if (key == "gridmap" || key == "orbview" || key == "elf_input_gen") return s.inst.bin + "/" + key;
    return "";
}

}  // namespace

std::string helper_program(const Session& s, const std::string& key) {
    if (s.engines.values.count(key)) return configured_program(s, key);
    const std::string value = fallback(s, key);
    if (value.empty()) return "";
    if (value.find('/') == std::string::npos) return on_path(value);
    return runnable(value) ? value : "";
}

std::string helper_or_message(Session& s, const std::string& key, const std::string& what) {
    std::string program = helper_program(s, key);
    if (program.empty()) tell_missing(s, what, key);
    return program;
}

}  // namespace zentol
