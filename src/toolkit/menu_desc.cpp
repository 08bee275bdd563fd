#include "toolkit/menu_desc.h"

#include <fstream>
#include <sstream>

#include "text/fixed_format.h"

namespace zentol {

namespace {

// Splits a line into words; a quoted text is one word.
std::vector<std::string> words_of(std::string_view line) {
    std::vector<std::string> out;
    std::size_t i = 0;
    while (i < line.size()) {
        if (line[i] == ' ' || line[i] == '\t') { ++i; continue; }
        if (line[i] == '"') {
            std::size_t end = line.find('"', i + 1);
            if (end == std::string_view::npos) end = line.size();
            out.emplace_back(line.substr(i + 1, end - i - 1));
            i = end + 1;
        } else {
            std::size_t end = line.find_first_of(" \t", i);
            if (end == std::string_view::npos) end = line.size();
            out.emplace_back(line.substr(i, end - i));
            i = end;
        }
    }
    return out;
}

std::optional<std::string> read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

int to_id(const std::string& w) {
    auto v = text::read_i(w);
    return v ? static_cast<int>(*v) : 0;
}

template <typename Fn>
bool each_line(const std::string& content, std::string* error, Fn fn) {
    std::istringstream lines(content);
    std::string line;
    int number = 0;
    while (std::getline(lines, line)) {
        ++number;
        auto w = words_of(text::trim(line));
        if (w.empty() || w[0][0] == '#') continue;
        if (!fn(w)) {
            if (error) *error = "line " + std::to_string(number) + ": " + std::string(text::trim(line));
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<MenuDesc> parse_menu_desc(const std::string& content, int id, std::string* error) {
    MenuDesc m;
    m.id = id;
    int depth = 0;
    bool ok = each_line(content, error, [&](const std::vector<std::string>& w) {
        MenuEntry e;
        if (w[0] == "popup" && w.size() >= 2) { e.kind = MenuEntry::Popup; e.text = w[1]; ++depth; }
        else if (w[0] == "end" && depth > 0) { e.kind = MenuEntry::EndPopup; --depth; }
        else if (w[0] == "separator") e.kind = MenuEntry::Separator;
        else if (w[0] == "item" && w.size() >= 3 && to_id(w[1]) > 0) {
            e.id = to_id(w[1]);
            e.text = w[2];
            if (w.size() >= 5 && w[3] == "key") e.shortcut = w[4];
        } else return false;
        m.entries.push_back(std::move(e));
        return true;
    });
    if (!ok || depth != 0) {
        if (ok && error) *error = "a popup is not closed";
        return std::nullopt;
    }
    return m;
}

std::optional<ToolbarDesc> parse_toolbar_desc(const std::string& content, int id, std::string* error) {
    ToolbarDesc t;
    t.id = id;
    bool ok = each_line(content, error, [&](const std::vector<std::string>& w) {
        if (w[0] != "button" || w.size() < 3) return false;
        ToolButton b;
        std::size_t slash = w[1].find('/');
        b.id = to_id(w[1].substr(0, slash));
        if (slash != std::string::npos) b.alternate = to_id(w[1].substr(slash + 1));
        b.text = w[2];
        b.tooltip = w.size() >= 4 ? w[3] : w[2];
        if (b.id <= 0) return false;
        t.buttons.push_back(std::move(b));
        return true;
    });
    if (!ok) return std::nullopt;
    return t;
}

std::optional<MenuDesc> load_menu_desc(const std::string& dir, int id, std::string* error) {
    auto content = read_file(dir + "/" + std::to_string(id) + ".menu");
    if (!content) {
        if (error) *error = "no menu " + std::to_string(id);
        return std::nullopt;
    }
    return parse_menu_desc(*content, id, error);
}

std::optional<ToolbarDesc> load_toolbar_desc(const std::string& dir, int id, std::string* error) {
    auto content = read_file(dir + "/" + std::to_string(id) + ".toolbar");
    if (!content) {
        if (error) *error = "no toolbar " + std::to_string(id);
        return std::nullopt;
    }
    return parse_toolbar_desc(*content, id, error);
}

}  // namespace zentol
