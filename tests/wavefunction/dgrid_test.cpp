// The DGrid batch and deck for a Firefly wavefunction, with the installed
// DGrid versions and the converters as fake programs.
#include "wavefunction/dgrid.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "session/openers.h"
#include "session/session.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// An executable script in the test's directory.
std::string program(TestSession& t, const std::string& name, const std::string& body) {
    const std::string path = t.dir / name;
    write_file(path, "#!/bin/sh\n" + body);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

}  // namespace

TEST(Dgrid, TheNewestVersionGetsTheBatchAndTheConvertersRunAlways) {
    if (on_path("dos2unix").empty()) GTEST_SKIP() << "no dos2unix";
    struct Case {
        bool v50, v51;
    };
    for (const Case c : {Case{true, false}, Case{true, true}, Case{false, false}}) {
        SCOPED_TRACE(std::to_string(c.v50) + std::to_string(c.v51));
        TestSession t;
        // elf_input_gen writes run_<job> with CRLF ends; dos2unix (Debian's) makes them LF.
        t.s.engines.values["elf_input_gen"] = program(t, "elf_input_gen", "printf 'dgrid %s\\r\\n' \"$1\" > run_$1\n");
        t.s.engines.values["dos2unix"] = "dos2unix";
        t.s.engines.values["dgrid50"] = c.v50 ? program(t, "dgrid-5.0", "exit 0\n") : "";
        t.s.engines.values["dgrid51"] = c.v51 ? program(t, "dgrid-5.1", "exit 0\n") : "";
        // Without the wavefunction nothing at all happens.
        EXPECT_FALSE(dgrid_prepare(t.s, "water"));
        EXPECT_FALSE(file_present(t.scratch() + "/run_water"));
        write_file(t.scratch() + "/water.wfn", "wavefunction\n");
        EXPECT_TRUE(dgrid_prepare(t.s, "water"));
        const std::string batch = read_file(t.scratch() + "/water_D.bat");
        if (c.v51) EXPECT_EQ(batch, "'" + (t.dir / "dgrid-5.1") + "' 'water.wfn'\n");
        else if (c.v50) EXPECT_NE(batch.find("dgrid-5.0' 'water.wfn'"), std::string::npos);
        EXPECT_EQ(file_present(t.scratch() + "/water_D.inp"), c.v50 || c.v51);
        if (c.v50) EXPECT_EQ(read_file(t.scratch() + "/water_D.inp").substr(0, 8), "::water\n");
        EXPECT_EQ(t.tk.message_boxes().size(), c.v50 || c.v51 ? 0u : 1u);
        EXPECT_EQ(read_file(t.scratch() + "/run_water"), "dgrid water\n");
    }
}
