#include "session/molecule_store.h"

#include <cstring>

namespace zentol {

namespace {

struct ElementSeed {
    const char* symbol;
    float radius;
    float electronegativity;
    int mm3_type;
};

// Symbol, covalent radius (Angstrom), Allen electronegativity (0 where none
// is held), default MM3 type (999 none). Row number is the atomic number;
// the last row is deuterium. Every bond found by distance depends on these
// radii, so they stand exactly as they are, odd ones included.
constexpr ElementSeed kElementSeed[kElementRows] = {
    {"H", 0.31f, 2.300f, 5},    {"He", 0.28f, 4.160f, 51},  {"Li", 1.28f, 0.912f, 999},
    {"Be", 0.96f, 1.576f, 999}, {"B", 0.84f, 2.051f, 26},   {"C", 0.76f, 2.544f, 1},
    {"N", 0.71f, 3.066f, 8},    {"O", 0.66f, 3.610f, 6},    {"F", 0.57f, 4.193f, 11},
    {"Ne", 0.58f, 4.787f, 52},  {"Na", 1.66f, 0.869f, 999}, {"Mg", 1.41f, 1.293f, 59},
    {"Al", 1.21f, 1.613f, 999}, {"Si", 1.11f, 1.916f, 19},  {"P", 1.07f, 2.253f, 25},
    {"S", 1.05f, 2.589f, 15},   {"Cl", 1.02f, 2.869f, 12},  {"Ar", 1.06f, 3.242f, 53},
    {"K", 2.03f, 0.734f, 999},  {"Ca", 1.76f, 1.034f, 125}, {"Sc", 1.70f, 1.190f, 999},
    {"Ti", 1.60f, 1.380f, 999}, {"V", 1.53f, 1.530f, 999},  {"Cr", 1.39f, 1.650f, 999},
    {"Mn", 1.39f, 1.750f, 999}, {"Fe", 1.32f, 1.800f, 61},  {"Co", 1.26f, 1.840f, 65},
    {"Ni", 1.24f, 1.880f, 63},  {"Cu", 1.32f, 1.850f, 999}, {"Zn", 1.22f, 1.590f, 999},
    {"Ga", 1.22f, 1.756f, 999}, {"Ge", 1.20f, 1.994f, 31},  {"As", 1.19f, 2.211f, 999},
    {"Se", 1.20f, 2.424f, 34},  {"Br", 1.23f, 2.685f, 13},  {"Kr", 1.16f, 2.966f, 54},
    {"Rb", 2.20f, 0.706f, 999}, {"Sr", 1.95f, 0.963f, 126}, {"Y", 1.90f, 1.120f, 999},
    {"Zr", 1.75f, 1.320f, 999}, {"Nb", 1.64f, 1.410f, 999}, {"Mo", 1.54f, 1.470f, 999},
    {"Tc", 1.47f, 1.510f, 999}, {"Ru", 1.46f, 1.540f, 999}, {"Rh", 1.42f, 1.560f, 999},
    {"Pd", 1.39f, 1.580f, 999}, {"Ag", 1.45f, 1.870f, 999}, {"Cd", 1.44f, 1.520f, 999},
    {"In", 2.42f, 1.656f, 999}, {"Sn", 1.39f, 1.824f, 32},  {"Sb", 1.39f, 1.984f, 999},
    {"Te", 1.38f, 2.158f, 35},  {"I", 1.39f, 2.359f, 14},   {"Xe", 1.40f, 2.582f, 55},
    {"Cs", 2.44f, 0.659f, 999}, {"Ba", 1.15f, 0.881f, 127}, {"La", 2.07f, 0.000f, 128},
    {"Ce", 2.04f, 0.000f, 129}, {"Pr", 1.03f, 0.000f, 130}, {"Nd", 2.01f, 0.000f, 131},
    {"Pm", 1.99f, 0.000f, 132}, {"Sm", 1.98f, 0.000f, 133}, {"Eu", 1.98f, 0.000f, 134},
    {"Gd", 1.96f, 0.000f, 135}, {"Tb", 1.94f, 0.000f, 136}, {"Dy", 1.92f, 0.000f, 137},
    {"Ho", 1.92f, 0.000f, 138}, {"Er", 1.89f, 0.000f, 139}, {"Tm", 1.90f, 0.000f, 140},
    {"Yb", 1.87f, 0.000f, 141}, {"Lu", 1.87f, 1.090f, 142}, {"Hf", 1.75f, 1.160f, 999},
    {"Ta", 1.70f, 1.340f, 999}, {"W", 1.62f, 1.470f, 999},  {"Re", 1.51f, 1.600f, 999},
    {"Os", 1.44f, 1.650f, 999}, {"Ir", 1.41f, 1.680f, 999}, {"Pt", 1.36f, 1.720f, 999},
    {"Au", 1.36f, 1.920f, 999}, {"Hg", 1.32f, 1.760f, 999}, {"Tl", 1.45f, 1.789f, 999},
    {"Pb", 1.46f, 2.010f, 999}, {"Bi", 1.48f, 2.190f, 999}, {"Po", 1.40f, 2.390f, 999},
    {"At", 1.50f, 2.600f, 999}, {"Rn", 1.50f, 0.670f, 999}, {"Fr", 2.60f, 0.890f, 999},
    {"Ra", 2.21f, 0.000f, 999}, {"Ac", 2.15f, 0.000f, 999}, {"Th", 2.06f, 0.000f, 999},
    {"Pa", 2.00f, 0.000f, 999}, {"U", 1.96f, 2.300f, 999},  {"D", 0.31f, 0.000f, 5},
};

}  // namespace

Label make_label(std::string_view text) {
    Label l{' ', ' ', ' ', ' '};
    for (std::size_t i = 0; i < 4 && i < text.size(); ++i) l[i] = text[i];
    return l;
}

std::string label_text(const Label& l) { return std::string(l.data(), 4); }

Store::Store() {
    for (int row = 1; row <= kElementRows; ++row) {
        const ElementSeed& s = kElementSeed[row - 1];
        ElementRow& e = elements[row];
        e.symbol[0] = s.symbol[0];
        e.symbol[1] = s.symbol[1] ? s.symbol[1] : ' ';
        e.symbol[2] = '\0';
        e.radius = s.radius;
        e.electronegativity = s.electronegativity;
        e.mm3_type = s.mm3_type;
        e.confirmed = false;
    }
    for (auto& l : atom_label) l = make_label("");
    for (auto& l : disp_label) l = make_label("");
    for (auto& l : element_list) l = make_label("");
}

void Store::clear_molecule() {
    natoms = natoms_file = nbonds = disp_natoms = 0;
    box_corner_count = 0;
    big_molecule = hide_atoms = false;
    emphasis_count = 0;
    marked_bond_count = 0;
    for (auto& column : conn) column.fill(0);
}

}  // namespace zentol
