// The shipped menu bars, tool bars and dialogs: every file parses, each
// mode's menu offers its whole command table, and the mode tool bars match their menus.
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
    for (const auto& file : std::filesystem::directory_iterator(kDir)) {
        const int id = std::stoi(file.path().stem().string());
        std::string error;
        if (file.path().extension() == ".menu")
            EXPECT_TRUE(load_menu_desc(kDir, id, &error)) << id << ": " << error;
        else
            EXPECT_TRUE(load_toolbar_desc(kDir, id, &error)) << id << ": " << error;
    }
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

// A mode's tool-tips say what its menu says; Build's buttons keep their
// order and the second command of a two-state button, which its loop expects.
TEST(ShippedMenus, ModeToolBarsKeepTheMenuTextsAndBuildsPairs) {
    std::vector<std::pair<int, int>> build;   // (id, second state)
    for (auto [bar_id, menu_id] : {std::pair{30102, 30006}, {30103, 30003}}) {
        std::string error;
        auto bar = load_toolbar_desc(kDir, bar_id, &error);
        ASSERT_TRUE(bar) << bar_id << ": " << error;
        auto menu = load_menu_desc(kDir, menu_id, &error);
        ASSERT_TRUE(menu) << menu_id << ": " << error;
        std::map<int, std::string> menu_text;
        for (const auto& e : menu->entries)
            if (e.kind == MenuEntry::Item) menu_text[e.id] = e.text;
        for (const auto& b : bar->buttons) {
            EXPECT_FALSE(b.text.empty()) << b.id;
            EXPECT_EQ(b.tooltip, menu_text[b.id]) << "tool-tip of " << b.id << " in " << bar_id;
            if (bar_id == 30103) build.emplace_back(b.id, b.alternate);
        }
    }
    EXPECT_EQ(build, (std::vector<std::pair<int, int>>{{40056, 0}, {40007, 40063}, {40049, 40017}, {40041, 40043},
                                                       {40082, 0}}));
}
