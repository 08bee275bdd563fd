// Build mode: the molecule editor. The molecule grows from its hydrogens:
// a click on one asks what to put in its place.
#pragma once

#include "building/templates.h"
#include "session/molecule_store.h"

namespace zentol {

struct Session;

// What the Build dialog was told.
struct BuildChoice {
    bool ok = false;
    Label element{};
    int charge = 0;
    bool load_library = false;
    bool back_to_display = false;
    int choice = 6;
};

// Dialog 102 with the current element, the job charge and the last
// geometry preset.
BuildChoice ask_build_choice(Session& s);

// Carries out a choice on the site; true when Build is to end.
bool apply_build_choice(Session& s, BuildSite& site, const BuildChoice& c);

// Runs Build mode until the user leaves it (End, R, the right button, the
// dialog's "Return to Display Mode" or closing the window, which leaves
// s.build.close_requested set). The caller's menu is restored by the caller.
void build_mode(Session& s);

}  // namespace zentol
