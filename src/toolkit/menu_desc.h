// Menu bars and tool bars described as data, shared by both toolkits.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zentol {

struct MenuEntry {
    enum Kind { Item, Separator, Popup, EndPopup } kind = Item;
    int id = 0;             // items
    std::string text;       // item or popup text, '&' marks the mnemonic
    std::string shortcut;   // a letter key, for the menu's own display
};

struct MenuDesc {
    int id = 0;
    std::vector<MenuEntry> entries;   // Popup ... EndPopup brackets
};

struct ToolButton {
    int id = 0;             // command id
    int alternate = 0;      // a two-state button's second command, 0 for none
    std::string text;       // short text on the button
    std::string tooltip;
};

struct ToolbarDesc {
    int id = 0;
    std::vector<ToolButton> buttons;
};

// Files: "<dir>/<id>.menu" and "<dir>/<id>.toolbar". Lines:
//   popup "&File" ... end
//   item 40005 "&Open existing Job" [key B | key Ctrl+O]  (a letter is only
//                                     shown; a combination is a shortcut)
//   separator
//   button 40003 "Build" "Start Build Mode"        (toolbar)
//   button 40007/40063 "Save" "..."                 (two-state button)
std::optional<MenuDesc> parse_menu_desc(const std::string& content, int id, std::string* error);
std::optional<ToolbarDesc> parse_toolbar_desc(const std::string& content, int id, std::string* error);
std::optional<MenuDesc> load_menu_desc(const std::string& dir, int id, std::string* error);
std::optional<ToolbarDesc> load_toolbar_desc(const std::string& dir, int id, std::string* error);

}  // namespace zentol
