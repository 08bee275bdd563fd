// The rigid templates a new atom is built from: a centre, a back point
// towards the parent and the positions of the hydrogens it carries, laid
// over the bond the picked hydrogen stood on.
#pragma once

#include <vector>

#include "building/vec3.h"

namespace zentol {

// The running placement: parent atom and its type, the picked hydrogen,
// the template's size and first index, the new atom's type, start flag and
// geometry choice.
struct BuildSite {
    int parent = 0;
    int parent_type = 0;
    int hydrogen = 0;
    int template_size = 0;
    int template_index = 0;
    int new_type = 0;
    int unused = 0;
    int start_flag = 0;
    int choice = 0;
};

inline constexpr int kStartAtom = 99;     // start_flag of a molecule's first atom
inline constexpr int kRigidRing = 995;    // start_flag that keeps a template's own size

// The flat table of the twelve templates, 201 values, 1-based.
float template_value(int index);

// Size and first index of the template of a geometry choice 2..13; size 0
// for other choices.
struct TemplateRef {
    int size = 0;
    int index = 0;
};
TemplateRef template_for_choice(int choice);

// Moves `to` by `shift` along the line from `from` through `to`.
Vec3 move_along(const Vec3& from, const Vec3& to, float shift);

// The template's points stretched to the new atom's radius, the back point
// at the half bond unless the site is a start atom. Points are 0-based here:
// [0] the centre, [1] the back point.
std::vector<Vec3> fit_template(const BuildSite& site, float r_parent, float r_new);

// The turn of a start atom's molecule about x, by choice; 0 for none.
float start_turn_degrees(int choice);

}  // namespace zentol
