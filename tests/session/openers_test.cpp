// Commands that hand work to configured programs: the editor and ZMATGEN,
// each replaced here by a small script, and the document opener.
#include "session/openers.h"

#include <gtest/gtest.h>

#include "session_helpers.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

TEST(Openers, EditorBlocksAndTheLogGoesOnAfterIt) {
    TestSession t;
    t.s.engines.values["editor"] = fake_program(t, "ed", "sleep 0.2; echo ' edited by hand' >> \"$1\"");
    run_on_water(t, "menu 40045\n");
    EXPECT_EQ(read_file(t.scratch() + "/water.geo"), " Zentol water\n edited by hand\n");
}

TEST(Openers, ZmatrixInputWithAndWithoutHydrogens) {
    TestSession t;
    t.s.engines.values["zmatgen"] = fake_program(t, "zmatgen", "cat zmatgen.fhz >> seen.txt");
    run_on_water(t, "menu 40080\nmsgbox no\nmenu 40080\nmsgbox yes\n");
    auto seen = *files::read_lines(t.scratch() + "/seen.txt");
    ASSERT_EQ(seen.size(), 2u + 4u);
    EXPECT_EQ(seen[1].substr(0, 4), "O   ");    // No: the heavy atom only
    EXPECT_EQ(seen[2], "water");
    EXPECT_EQ(seen[5].substr(0, 4), "H   ");
    EXPECT_FALSE(file_present(t.scratch() + "/zmatgen.fhz"));

    TestSession missing;
    run_on_water(missing, "menu 40080\n");
    ASSERT_EQ(missing.tk.message_boxes().size(), 1u);
    EXPECT_EQ(missing.tk.message_boxes()[0].substr(0, 24), "ZMATGEN is not installed");
}

TEST(Openers, AMissingDocumentOpenerIsNamed) {
    TestSession t;
    t.s.engines.values["opener"] = "/no/such/opener";
    open_document(t.s, "x.html");
    EXPECT_EQ(t.tk.message_boxes().back().substr(0, 46), "A program to open documents is not installed.\r");
}
