// What one frame shows: the display copy turned into shaded spheres, capped
// sticks and text in model space, with the colours still as palette entries.
// A renderer only has to put these on the screen with the fixed camera of
// projection.h; every rule of what is drawn, and how big and in which colour,
// lives here and can be tested without a display.
#pragma once

#include <array>
#include <vector>

#include "session/molecule_store.h"
#include "session/session.h"

namespace zentol {

// The marks of the running session.
BondMarks session_bond_marks(const Session& s);

inline constexpr int kHighlightEntry = 16;    // picked atoms and bonds between them
inline constexpr int kStoredBondEntry = 8;
inline constexpr int kFastBondEntry = 2;      // every bond in fast drawing
inline constexpr int kBackgroundEntry = 1;
inline constexpr int kFastSlices = 8;

struct SceneSphere {
    float x, y, z, radius;
    int colour;     // palette entry
    float alpha;
};

// One capped cylinder from (x0,y0,z0) to (x1,y1,z1); its radius is the
// scene's stick_radius.
struct SceneStick {
    float x0, y0, z0, x1, y1, z1;
    int colour;
    float alpha;
};

// Text standing in the model's xy plane, left end of its baseline at
// (x, y, z), one em being label_scale model units.
struct SceneLabel {
    float x, y, z;
    char text[8];
    int length;
};

// A 2-D ring around a picked atom: its centre is the projected point, its
// radius a fraction of the viewport width, drawn over everything else.
struct SceneCircle {
    float x, y, z;
    float radius;     // of the viewport width
    std::array<float, 3> rgb;
};

inline constexpr int kPickCircleColour = 152;    // toolkit colour number
inline constexpr float kPickCircleRadius = 0.01f;

struct Scene {
    Scene();   // sized once for the largest molecule; building never allocates

    std::array<float, 3> background{};                   // palette entry 1
    std::array<std::array<float, 3>, 49> palette{};      // entries 1..48 as drawn
    int slices = 32, stacks = 32;                        // tessellation asked for
    float stick_radius = 0;
    float label_scale = 0.5f;
    std::array<float, 3> label_colour{};

    std::vector<SceneSphere> spheres;   // in atom order
    std::vector<SceneStick> sticks;     // bond order; two halves a bond unless fast
    std::vector<SceneLabel> labels;
    std::vector<SceneCircle> circles;

    std::array<float, 3> rgb(int entry) const {
        return palette[static_cast<std::size_t>(entry >= 0 && entry <= 48 ? entry : 0)];
    }
};

// The frame of the current display copy. The mark state comes from
// session_bond_marks unless given.
void build_scene(const Session& s, Scene& out);
void build_scene(const Session& s, const BondMarks& marks, Scene& out);

// A label as written beside its atom: cut at trailing blanks, at least its
// first character.
int label_length(const Label& label);

// A charge as written by charge labels: three decimals, five columns when
// zero or more, six when negative. The text goes to out (at least 8 chars,
// nul-terminated); returns its length.
int charge_text(float charge, char* out);

}  // namespace zentol
