#include "display/colours.h"

#include <gtest/gtest.h>

#include "session/session.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

void label_atoms(Store& st, const std::vector<std::string>& labels) {
    st.natoms = static_cast<int>(labels.size());
    for (int i = 1; i <= st.natoms; ++i) st.atom_label[i] = make_label(labels[i - 1]);
}

}  // namespace

TEST(Colours, MapFileAndFixedChargeScaleAreListed) {
    TestSession t;
    load_colour_map(t.s);
    auto lines = *files::read_lines("RGB.LST");
    ASSERT_EQ(lines.size(), 49u);
    EXPECT_EQ(lines[0], "   1 1.000 1.000 1.000");
    EXPECT_EQ(lines[48].substr(0, 18), "-0.938-0.875-0.812");

    files::remove(t.s.inst.cfgset + "/RASMAP3.DEF");
    t.s.opt.palette_choice = 3;
    load_colour_map(t.s);   // missing: grey entries and a word in the status bar
    EXPECT_FLOAT_EQ(t.s.palette.r[5], 0.5f);
    EXPECT_NE(t.tk.status(9).find("RASMAP3.DEF"), std::string::npos);
}

TEST(Colours, ElementListAndSlots) {
    Store st;
    std::vector<std::string> labels = {"C1", "Fe2", "H3", "Cl4"};
    const char* more[] = {"Li", "Be", "B", "F", "Na", "Mg", "Al", "Si", "P", "S", "K", "Ca", "Sc", "Ti"};
    for (const char* sym : more) labels.push_back(std::string(sym) + "9");
    label_atoms(st, labels);
    collect_elements(st);
    EXPECT_EQ(st.element_count, 20);
    EXPECT_EQ(label_text(st.element_list[6]), "Fe  ");
    EXPECT_EQ(label_text(st.element_list[20]), "Ti  ");   // the 21st symbol took the 20th place
    apply_element_colour_lines(st, {"REM colours", "", "C      3", "Fe    13", "Ti  bad"});
    EXPECT_EQ(colour_slot(make_label("C12"), st), 3);
    EXPECT_EQ(colour_slot(make_label("Fe2"), st), 13);
    EXPECT_EQ(colour_slot(make_label("Ti9"), st), 1);    // not given: entry 1
    EXPECT_EQ(colour_slot(make_label("U1"), st), 2);     // not in the list
    EXPECT_EQ(colour_slot(make_label(" C"), st), 8);     // blank first character
}

TEST(Colours, ChargeAndMoleculeColouring) {
    Store st;
    Palette p;
    fill_charge_scale(p);
    label_atoms(st, {"C1", "O2", "H3"});
    ASSERT_TRUE(assign_charge_colours(st, p, {0.5, -1.0, -0.5}));
    EXPECT_FLOAT_EQ(st.atom_colour[1], 16.0f + 24.0f);
    EXPECT_FLOAT_EQ(st.atom_colour[2], 32.0f);   // -1 lies below the first step: no match
    EXPECT_FLOAT_EQ(st.atom_colour[3], 16.0f + 8.0f);
    st.atom_rec[1][kMolecule] = 1, st.atom_rec[2][kMolecule] = 8, st.atom_rec[3][kMolecule] = 9;
    assign_molecule_colours(st);
    EXPECT_FLOAT_EQ(st.atom_colour[1], 4.0f);
    EXPECT_FLOAT_EQ(st.atom_colour[2], 11.0f);
    EXPECT_FLOAT_EQ(st.atom_colour[3], 4.0f);
}
