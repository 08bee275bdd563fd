#include "building/templates.h"

#include <array>

namespace zentol {

namespace {

// Centre first, then the back point, then the hydrogens. Bonds of 1.096
// below index 58, of 1.42 from there on; the Cp ring keeps its own sizes.
constexpr std::array<float, 202> kTemplates = {
    0,
    // 1: linear
    0, 0, 1, 0, 0, -0.096f, 0, 0, 2.096f,
    // 10: bent, 109.5 degrees
    0, 0, 1, 0, 0, -0.096f, 1.033f, 0, 1.365f,
    // 19: trigonal planar
    1, 0, 0, -0.096f, 0, 0, 1.548f, 0.949f, 0, 1.548f, -0.949f, 0,
    // 31: pyramidal
    0, 0, 1, 0, 0, -0.096f, -0.517f, -0.895f, 1.365f, -0.517f, 0.895f, 1.365f,
    // 43: tetrahedral
    0, 0, 1, 0, 0, -0.096f, 1.033f, 0, 1.365f, -0.517f, -0.895f, 1.365f, -0.517f, 0.895f, 1.365f,
    // 58: square planar
    0, 0, 1, 0, 0, -0.42f, -1.42f, 0, 1, 0, 0, 2.42f, 1.42f, 0, 1,
    // 73: trigonal bipyramid, entering equatorially
    0, 0, 1, 0, 0, -0.42f, 1.23f, 0, 1.71f, 0, 1.42f, 1, -1.23f, 0, 1.71f, 0, -1.42f, 1,
    // 91: trigonal bipyramid, entering axially
    0, 0, 1, 0, -1.42f, 1, -1.23f, 0, 1.71f, 0, 1.42f, 1, 1.23f, 0, 1.71f, 0, 0, -0.42f,
    // 109: square pyramid, entering axially
    0, 0, 1, 0, 0, -0.42f, -1.42f, 0, 1, 1.42f, 0, 1, 0, 1.42f, 1, 0, -1.42f, 1,
    // 127: square pyramid, entering at the base
    0, 0, 1, -1.42f, 0, 1, 0, 0, -0.42f, 1.42f, 0, 1, 0, 1.42f, 1, 0, -1.42f, 1,
    // 145: octahedral
    0, 0, 1, 0, 0, -0.42f, -1.42f, 0, 1, 0, 0, 2.42f, 1.42f, 0, 1, 0, 1.42f, 1, 0, -1.42f, 1,
    // 166: centroid of an eta-5 Cp ring, its five carbons, their hydrogens
    0, 0, 1, 0, 0, -0.096f,
    0, 1.186f, 1, 1.128f, 0.367f, 1, 0.697f, -0.96f, 1, -0.697f, -0.96f, 1, -1.128f, 0.367f, 1,
    0, 2.282f, 1, 2.17f, 0.705f, 1, 1.341f, -1.846f, 1, -1.341f, -1.846f, 1, -2.17f, 0.705f, 1};

}  // namespace

float template_value(int index) { return index >= 1 && index <= 201 ? kTemplates[static_cast<std::size_t>(index)] : 0; }

TemplateRef template_for_choice(int choice) {
    static const TemplateRef table[] = {{3, 1},   {3, 10},  {4, 19},  {4, 31},  {5, 43},  {5, 58},
                                        {6, 73},  {6, 91},  {6, 109}, {6, 127}, {7, 145}, {12, 166}};
    if (choice < 2 || choice > 13) return {};
    return table[choice - 2];
}

Vec3 move_along(const Vec3& from, const Vec3& to, float shift) {
    return to + (to - from).unit() * shift;
}

std::vector<Vec3> fit_template(const BuildSite& site, float r_parent, float r_new) {
    std::vector<Vec3> p;
    for (int k = 0; k < site.template_size; ++k) {
        const int at = site.template_index + 3 * k;
        p.push_back({template_value(at), template_value(at + 1), template_value(at + 2)});
    }
    if (site.start_flag >= 991 || p.size() < 2) return p;
    const float standard = site.template_index >= 58 ? 1.42f : 1.09f;
    for (std::size_t k = 1; k < p.size(); ++k) p[k] = move_along(p[0], p[k], (0.32f - standard) + r_new);
    if (site.start_flag != kStartAtom) p[1] = move_along(p[0], p[1], ((r_parent + r_new) / 2 - 0.32f) - r_new);
    return p;
}

float start_turn_degrees(int choice) {
    if (choice == 6) return 100.0f;
    if (choice == 2 || choice == 3) return 30.5f;
    if (choice == 4) return 2.5f;
    if (choice == 5) return 33.5f;
    if (choice >= 7 && choice <= 12) return 20.5f;
    return 0;
}

}  // namespace zentol
