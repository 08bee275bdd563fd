// The shipped menu bars, tool bars and dialogs.
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

}  // namespace

// Every file parses, and no menu offers a command twice.
TEST(ShippedMenus, EveryMenuToolBarAndDialogParses) {
    for (const auto& file : std::filesystem::directory_iterator(kDir)) {
        const int id = std::stoi(file.path().stem().string());
        std::string error;
        if (file.path().extension() != ".menu") {
            EXPECT_TRUE(load_toolbar_desc(kDir, id, &error)) << id << ": " << error;
            continue;
        }
        auto menu = load_menu_desc(kDir, id, &error);
        ASSERT_TRUE(menu) << id << ": " << error;
        std::set<int> items;
        for (const auto& e : menu->entries)
            EXPECT_TRUE(e.kind != MenuEntry::Item || items.insert(e.id).second) << e.id << " twice in " << id;
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
            EXPECT_EQ(b.tooltip, menu_text[b.id]) << "tool-tip of " << b.id << " in " << bar_id;
            if (bar_id == 30103) build.emplace_back(b.id, b.alternate);
        }
    }
    EXPECT_EQ(build, (std::vector<std::pair<int, int>>{{40056, 0}, {40007, 40063}, {40049, 40017}, {40041, 40043},
                                                       {40082, 0}}));
}
