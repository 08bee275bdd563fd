// The view: rotation applied to the display coordinates themselves, the
// mouse-drag and key rules, picking by projected position, and the rotation
// loop of the Build and engine modes.
#pragma once

namespace zentol {

struct Session;
struct Event;

// Cursor keys by role.
inline constexpr int kKeyZMinus = 258;
inline constexpr int kKeyZPlus = 259;
inline constexpr int kKeyYPlus = 260;
inline constexpr int kKeyYMinus = 261;
inline constexpr int kKeyXPlus = 264;
inline constexpr int kKeyXMinus = 265;

// Turns the display copy one rot_step about the pending axis (view_action
// 1..3); the axis stays pending.
void apply_pending_rotation(Session& s);

// Turns the display copy about the screen's x (1), y (2) or z (3) axis.
void turn_display(Session& s, int axis, float degrees);

// A drag across the whole view turns the molecule this far.
inline constexpr float kDegreesPerView = 180.0f;
// Up to this many atoms a turning molecule keeps its full picture.
inline constexpr int kFullPictureWhileTurning = 1000;

// A cursor key sets the axis and sign of one step and draws. False for any
// other key.
bool rotate_by_key(Session& s, int key);

// The zoom within its limits (0.2 to 3.8), projected and drawn; one wheel
// step is 0.1.
void set_zoom(Session& s, float zoom);
void zoom_by_wheel(Session& s, int steps);

// Picking tolerance for the atom count: 0.05 below 10 atoms, 0.02 below 20,
// else 0.01.
float pick_tolerance_for(int natoms);

// The atom nearest (x, y) in viewport fractions (y from the bottom) by the
// sum of the two distances; the lower number wins a tie. found is set when
// it lies strictly within the latest draw's tolerance.
int nearest_atom(const Session& s, float x, float y, bool& found);

// Mouse press begins a drag, every move while dragging turns the molecule
// by the distance moved (sideways about y, up and down about x), the
// release ends it. Returns true when the event was part of a drag.
bool drag_rotation(Session& s, const Event& e);

// Picks the atom under (x, y), if any, highlights it and shows its label in
// status field 9 (a blank when none); returns it or 0.
int pick_atom(Session& s, float x, float y);

// The 2-D pick circle around an atom, kept (at most four) until
// clear_pick_circles; both redraw.
void show_pick_circle(Session& s, int atom);
void clear_pick_circles(Session& s);

// The rotation loop of Build and the engine modes: a press, drag and
// release rotate and leave; Esc, close or a command/key leave at once.
void rotate_loop(Session& s);

}  // namespace zentol
