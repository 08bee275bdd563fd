// The shipped menu bars, tool bars and dialogs: every file parses, each
// mode's menu offers its whole command table, and the tool bars keep their order.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/test_support.h"
#include "toolkit/dialog_model.h"
#include "toolkit/menu_desc.h"

using namespace zentol;
using zentol::testing::read_file;

namespace {

const std::string kUi = std::string(ZENTOL_DATA_DIR) + "/ui";
const std::string kDir = kUi + "/menus";

std::vector<int> item_ids(const MenuDesc& menu) {
    std::vector<int> ids;
    for (const auto& e : menu.entries)
        if (e.kind == MenuEntry::Item) ids.push_back(e.id);
    return ids;
}

}  // namespace

TEST(ShippedMenus, EveryMenuToolBarAndDialogParses) {
    std::set<int> menus, bars;
    for (const auto& file : std::filesystem::directory_iterator(kDir)) {
        const auto ext = file.path().extension().string();
        const int id = std::stoi(file.path().stem().string());
        std::string error;
        if (ext == ".menu") {
            EXPECT_TRUE(load_menu_desc(kDir, id, &error)) << id << ": " << error;
            menus.insert(id);
        } else if (ext == ".toolbar") {
            EXPECT_TRUE(load_toolbar_desc(kDir, id, &error)) << id << ": " << error;
            bars.insert(id);
        }
    }
    for (int id : {30001, 30002, 30003, 30004, 30005, 30006, 30008}) EXPECT_TRUE(menus.count(id)) << id;
    for (int id : {30101, 30102, 30103}) EXPECT_TRUE(bars.count(id)) << id;
    int dialogs = 0;
    for (const auto& file : std::filesystem::directory_iterator(kUi + "/dialogs")) {
        std::string error;
        const int id = std::stoi(file.path().stem().string());
        EXPECT_TRUE(parse_dialog_desc(read_file(file.path().string()), id, &error)) << id << ": " << error;
        ++dialogs;
    }
    EXPECT_GE(dialogs, 12);
}

TEST(ShippedMenus, EachModeMenuHoldsExactlyItsCommands) {
    // Command codes of each mode; the item id is 40000 + code (Orca's HA_basis is 41019).
    const std::map<int, std::vector<int>> commands = {
        {30002, {1, 15, 23, 6, 8, 18, 5, 7, 11, 17, 20, 2, 16, 13, 10, 14, 12, 9}},      // Firefly
        {30003, {5, 6, 7, 8, 15, 22, 24, 25, 26, 40, 41, 42, 44, 49, 56, 77, 82}},       // Build
        {30004, {1, 13, 23, 8, 14, 5, 6, 10, 11, 12, 7, 9, 2}},                          // Mopac
        {30005, {1, 13, 23, 6, 9}},                                                      // ICONC
        {30006, {1, 2, 3, 4, 6, 8, 12, 13, 14, 15, 16, 17, 18, 21, 27, 28, 30, 62}},     // Tinker
        {30008, {1, 2, 3, 5, 6, 21, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 1019, 20}},   // Orca
    };
    for (const auto& [menu_id, codes] : commands) {
        std::string error;
        auto menu = load_menu_desc(kDir, menu_id, &error);
        ASSERT_TRUE(menu) << menu_id << ": " << error;
        std::multiset<int> got;
        for (int id : item_ids(*menu)) got.insert(id);
        std::multiset<int> want;
        for (int code : codes) want.insert(40000 + code);
        EXPECT_EQ(got, want) << "menu " << menu_id;   // nothing dropped, nothing twice
    }
    auto display = load_menu_desc(kDir, 30001, nullptr);
    ASSERT_TRUE(display);
    EXPECT_EQ(item_ids(*display).size(), 46u);   // every command of the Display table, and Export
}

TEST(ShippedMenus, ModeToolBarsKeepOrderPairsAndTheMenuTexts) {
    struct Bar { int menu; std::vector<std::pair<int, int>> buttons; };   // (id, second state)
    const std::map<int, Bar> bars = {
        {30102, {30006, {{40028, 0}, {40021, 0}, {40027, 0}, {40030, 0},
                         {40008, 0}, {40012, 0}, {40002, 0}, {40062, 0}}}},
        {30103, {30003, {{40056, 0}, {40007, 40063}, {40049, 40017}, {40041, 40043}, {40082, 0}}}},
    };
    for (const auto& [bar_id, want] : bars) {
        std::string error;
        auto bar = load_toolbar_desc(kDir, bar_id, &error);
        ASSERT_TRUE(bar) << bar_id << ": " << error;
        auto menu = load_menu_desc(kDir, want.menu, &error);
        ASSERT_TRUE(menu) << want.menu << ": " << error;
        std::map<int, std::string> menu_text;
        for (const auto& e : menu->entries)
            if (e.kind == MenuEntry::Item) menu_text[e.id] = e.text;

        std::vector<std::pair<int, int>> got;
        for (const auto& b : bar->buttons) {
            got.emplace_back(b.id, b.alternate);
            EXPECT_FALSE(b.text.empty()) << b.id;
            EXPECT_EQ(b.tooltip, menu_text[b.id]) << "tool-tip of " << b.id << " in " << bar_id;
        }
        EXPECT_EQ(got, want.buttons) << "tool bar " << bar_id;
    }
    // The Display tool bar's own tool-tips differ from its menu texts.
    auto display = load_toolbar_desc(kDir, 30101, nullptr);
    ASSERT_TRUE(display);
    std::vector<int> ids;
    for (const auto& b : display->buttons) ids.push_back(b.id);
    EXPECT_EQ(ids, (std::vector<int>{40003, 40013, 40014, 40015, 40085, 40052, 40031, 40029, 40060, 40040, 40065,
                                     40078, 40064, 40081, 40083, 40084, 40086}));
}
