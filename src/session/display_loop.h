// Display mode: the program's home loop.
#pragma once

#include <string>

namespace zentol {

struct Session;

// One event reduced the way every mode loop reads it.
struct Event {
    int key = 0;        // key code, 0 for none
    int state = 0;      // 1 resize, 2 expose, 3 a command or a real key
    float x = 0, y = 0; // view fractions of a mouse event, y from the bottom
    int command = 0;    // menu/tool id - 40000, 311 press, 411 release, 500 close
    bool moved = false; // a mouse move
    int button = 0;     // mouse button of a press or release: 1 left, 3 right
    int wheel = 0;      // wheel steps: above 0 away from the user (zoom in)
    std::string dropped{};  // a file dropped on the window
};

inline constexpr int kCommandPress = 311;
inline constexpr int kCommandRelease = 411;
inline constexpr int kCommandClose = 500;
inline constexpr int kCommandExit = 20;
inline constexpr int kCommandExport = 120;   // File > Export, menu id 40120

Event read_event(Session& s);

void display_loop(Session& s);

// The close path: marked bonds removed, the view pulled back and saved, the
// bond list written, dynamics and movie files removed as chosen.
void close_path(Session& s);

void remove_marked_bonds(Session& s);

}  // namespace zentol
