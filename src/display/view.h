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

// A cursor key sets the axis and sign of one step and draws. False for any
// other key.
bool rotate_by_key(Session& s, int key);

// The key a drag from (px, py) to (x, y) stands for: the dominant direction,
// vertical on a tie, 0 when the pointer did not move.
int drag_key(float px, float py, float x, float y);

// Picking tolerance for the atom count: 0.05 below 10 atoms, 0.02 below 20,
// else 0.01.
float pick_tolerance_for(int natoms);

// The atom nearest (x, y) in viewport fractions (y from the bottom) by the
// sum of the two distances; the lower number wins a tie. found is set when
// it lies strictly within the latest draw's tolerance.
int nearest_atom(const Session& s, float x, float y, bool& found);

// Mouse press begins a drag, every move while dragging rotates one step,
// the release ends it. Returns true when the event was part of a drag.
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
