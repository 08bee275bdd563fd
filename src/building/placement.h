// Growing a molecule: a new atom laid over a picked hydrogen from its
// template, the first atom of an empty molecule, an isolated atom, the Cp
// ring, and the join of two fragments by overlaying two hydrogens.
#pragma once

#include "building/templates.h"
#include "session/molecule_store.h"

namespace zentol {

class Toolkit;

// The Tinker type of a new hydrogen on a parent of this type.
int hydrogen_type(int parent_type);

// The new atom's type after the rules for carbonyl oxygen, alkene and
// alkyne carbon and sp nitrogen; n is the template size (1 for a bare atom).
int correct_type(int type, int parent_type, int n, int choice);

// What the Build dialog asked for.
struct PlaceRequest {
    Label element{};       // normalised symbol of the new atom
    int choice = 6;        // 1..14 here; 15..23 are substituents
};

// Places the new atom for choices 1..13 on site.hydrogen (a site with no
// hydrogen on an empty molecule starts it). Returns false when nothing was
// placed.
bool place_atom(Store& st, Toolkit* tk, BuildSite& site, const PlaceRequest& request);

// Choice 14: an atom on its own beyond the molecule's largest x.
void add_isolated_atom(Store& st, Toolkit* tk, const Label& element);

// Joins the fragment of h2 to the atom carrying h1: turned so that parent,
// h1, h2 and h2's parent come onto a line, pulled to the sum of the radii,
// bonded, and both hydrogens removed.
void join_by_hydrogens(Store& st, Toolkit* tk, int h1, int h2);

// Turns every atom about the x axis (y and z) by the angle.
void turn_about_x(Store& st, float degrees);

}  // namespace zentol
