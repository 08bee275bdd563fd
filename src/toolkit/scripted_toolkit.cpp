#include "toolkit/scripted_toolkit.h"

#include <sstream>

#include "text/fixed_format.h"
#include "toolkit/process.h"

namespace zentol {

namespace {

// Words of a script line; "..." keeps blanks inside one word, and a word may
// be field="value with blanks".
std::vector<std::string> split_words(const std::string& line) {
    std::vector<std::string> words;
    std::string cur;
    bool quoted = false, any = false;
    for (char c : line) {
        if (c == '"') { quoted = !quoted; any = true; continue; }
        if (!quoted && (c == ' ' || c == '\t')) {
            if (any) words.push_back(cur), cur.clear(), any = false;
            continue;
        }
        cur += c;
        any = true;
    }
    if (any) words.push_back(cur);
    return words;
}

std::optional<float> fraction(const std::string& w) {
    auto v = text::read_f(w);
    if (!v || w.empty() || *v < 0 || *v > 1) return std::nullopt;
    return static_cast<float>(*v);
}

std::string one_line(std::string text) {
    for (char& c : text)
        if (c == '\r' || c == '\n') c = '|';
    return text;
}

}  // namespace

ScriptedToolkit::ScriptedToolkit() = default;

void ScriptedToolkit::load_script(const std::string& script) {
    std::istringstream in(script);
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        try {
            add_line(line);
        } catch (const ScriptError& e) {
            throw ScriptError("script line " + std::to_string(number) + ": " + e.what());
        }
    }
}

std::optional<Message> ScriptedToolkit::parse_message(const std::vector<std::string>& w) {
    static const std::pair<const char*, MessageType> simple[] = {
        {"expose", MessageType::Expose}, {"resize", MessageType::Resize}, {"close", MessageType::Close}};
    for (const auto& [name, type] : simple)
        if (w[0] == name && w.size() == 1) return Message{type, 0, 0, 0};
    if (w[0] == "key" && w.size() == 2) {
        if (w[1].size() == 1 && !(w[1][0] >= '0' && w[1][0] <= '9'))
            return Message{MessageType::Key, static_cast<unsigned char>(w[1][0]), 0, 0};
        auto code = text::read_i(w[1]);
        if (code) return Message{MessageType::Key, static_cast<int>(*code), 0, 0};
    }
    if (w[0] == "wheel" && w.size() == 2) {
        auto steps = text::read_i(w[1]);
        if (steps && *steps != 0) return Message{MessageType::Wheel, static_cast<int>(*steps), 0, 0};
    }
    if (w[0] == "drop" && w.size() == 2) {
        Message m{MessageType::FileDropped, 0, 0, 0};
        m.path = w[1];
        return m;
    }
    if (w[0] == "menu" && w.size() == 2) {
        auto id = text::read_i(w[1]);
        if (id && *id > 0) return Message{MessageType::Menu, static_cast<int>(*id), 0, 0};
    }
    struct Mouse {
        const char* name;
        MessageType type;
        int button;
    };
    static const Mouse mouse[] = {{"press", MessageType::MouseDown, 1},   {"release", MessageType::MouseUp, 1},
                                  {"press3", MessageType::MouseDown, 3},  {"release3", MessageType::MouseUp, 3},
                                  {"move", MessageType::MouseMove, 1}};
    for (const auto& [name, type, button] : mouse) {
        if (w[0] != name || w.size() != 3) continue;
        if (w[1] == "atom") return Message{type, button, 0, 0};   // located when delivered
        auto fx = fraction(w[1]), fy = fraction(w[2]);
        if (fx && fy) return Message{type, button, *fx, *fy};
    }
    return std::nullopt;
}

void ScriptedToolkit::add_line(const std::string& raw) {
    std::string line(text::trim(raw));
    if (line.empty() || line[0] == '#') return;
    auto w = split_words(line);
    // "after 8 runs key 27": a message that comes in while commands run.
    int after_runs = -1;
    if (w[0] == "after") {
        auto n = w.size() >= 4 ? text::read_i(w[1]) : std::nullopt;
        if (!n || *n < 0 || w[2] != "runs") throw ScriptError("bad \"after N runs\" in: " + line);
        after_runs = static_cast<int>(*n);
        w.erase(w.begin(), w.begin() + 3);
    }
    if (auto m = parse_message(w)) {
        int atom = 0;
        if (w.size() == 3 && w[1] == "atom") {
            auto n = text::read_i(w[2]);
            if (!n || *n < 1) throw ScriptError("bad atom number in: " + line);
            atom = static_cast<int>(*n);
        }
        messages_.push_back({*m, atom, after_runs});
        return;
    }
    if (after_runs >= 0) throw ScriptError("no message after \"after N runs\" in: " + line);
    if (w[0] == "dialog" && w.size() >= 3) {
        DialogAnswer a;
        auto id = text::read_i(w[1]);
        // "ok", "cancel", or "button:N" for a dialog's other closing buttons.
        const bool other = w[2].rfind("button:", 0) == 0;
        auto button = other ? text::read_i(w[2].substr(7)) : std::optional<long long>(1);
        if (!id || !button || *button < 1 || (!other && w[2] != "ok" && w[2] != "cancel"))
            throw ScriptError("bad dialog answer: " + line);
        a.id = static_cast<int>(*id);
        a.ok = w[2] != "cancel";
        a.button = static_cast<int>(*button);
        for (std::size_t k = 3; k < w.size(); ++k) {
            std::size_t eq = w[k].find('=');
            auto field = text::read_i(w[k].substr(0, eq));
            if (eq == std::string::npos || !field) throw ScriptError("bad field value: " + w[k]);
            a.fields.emplace_back(static_cast<int>(*field), w[k].substr(eq + 1));
        }
        dialog_answers_.push_back(std::move(a));
    } else if (w[0] == "msgbox" && w.size() == 2 && (w[1] == "yes" || w[1] == "no" || w[1] == "ok")) {
        box_answers_.push_back(w[1] == "no" ? 0 : 1);
    } else if (w[0] == "print" && w.size() == 2 && (w[1] == "ok" || w[1] == "cancel")) {
        print_answers_.push_back(w[1] == "ok");
    } else if ((w[0] == "file" || w[0] == "dir") && w.size() == 2) {
        auto& queue = w[0] == "file" ? file_answers_ : dir_answers_;
        queue.push_back(w[1] == "cancel" ? std::nullopt : std::optional<std::string>(w[1]));
    } else {
        throw ScriptError("not understood: " + line);
    }
}

void ScriptedToolkit::window_open(int width, int height, const std::string& title) {
    title_ = title;
    note("window " + std::to_string(width) + "x" + std::to_string(height) + " \"" + title + "\"");
}

void ScriptedToolkit::status_bar_parts(const std::vector<int>& widths) {
    note("status bar of " + std::to_string(widths.size()) + " fields");
}

void ScriptedToolkit::WindowOutStatusBar(int field, const std::string& text) {
    if (field < 1 || field > 10) return;
    status_writes_.emplace_back(field, text);
    if (status_[field] == text) return;
    status_[field] = text;
    note("status " + std::to_string(field) + ": " + text);
}

void ScriptedToolkit::menu_load(int menu_id) { note("menu " + std::to_string(menu_id)); }
void ScriptedToolkit::WMenuToolbar(int toolbar_id) { note("toolbar " + std::to_string(toolbar_id)); }

void ScriptedToolkit::WMenuSetState(int id, int which, int value) {
    note("menu state " + std::to_string(id) + " " + std::to_string(which) + " " + std::to_string(value));
}

void ScriptedToolkit::WMenuSetString(int id, const std::string& text) {
    for (auto& [mid, t] : menu_strings_)
        if (mid == id) {
            if (t != text) note("menu item " + std::to_string(id) + ": " + text);
            t = text;
            return;
        }
    menu_strings_.emplace_back(id, text);
    note("menu item " + std::to_string(id) + ": " + text);
}

std::string ScriptedToolkit::menu_string(int id) const {
    for (const auto& [mid, t] : menu_strings_)
        if (mid == id) return t;
    return "";
}

std::optional<Message> ScriptedToolkit::take_front() {
    while (!messages_.empty()) {
        Message m = messages_.front().message;
        const int atom = messages_.front().atom;
        messages_.pop_front();
        runs_since_take_ = 0;
        if (m.type == MessageType::MouseMove && !moves_enabled_) continue;
        if (atom > 0) {
            auto at = locator_ ? locator_(atom) : std::nullopt;
            if (!at) {
                note("no atom " + std::to_string(atom) + " to point at");
                continue;
            }
            m.fx = at->first;
            m.fy = 1.0f - at->second;
        }
        return m;
    }
    return std::nullopt;
}

std::optional<Message> ScriptedToolkit::poll_message() {
    if (messages_.empty()) return std::nullopt;
    const Scripted& front = messages_.front();
    if (front.after_runs < 0 || runs_since_take_ < front.after_runs) return std::nullopt;
    const Message m = front.message;
    note("message after " + std::to_string(runs_since_take_) + " runs");
    messages_.pop_front();
    runs_since_take_ = 0;
    return m;
}

Message ScriptedToolkit::next_message() {
    field9_when_taken_.push_back(status_[9]);
    if (ask_hook_) ask_hook_(static_cast<int>(field9_when_taken_.size()));
    if (auto m = take_front()) return *m;
    // The script has run out: the session is asked to close.
    if (closes_after_end_++ == 0) note("script ended: close requested");
    if (closes_after_end_ > 100) throw ScriptError("the session does not end after the script's close request");
    return Message{MessageType::Close, 0, 0, 0};
}

void ScriptedToolkit::message_enable(MessageType type, bool on) {
    if (type == MessageType::MouseMove) moves_enabled_ = on;
}

void ScriptedToolkit::close_all() {
    closed_ = true;
    note("window closed");
}

int ScriptedToolkit::show_dialog(DialogModel& dialog, int type) {
    int id = dialog.desc().id;
    dialogs_shown_.push_back(id);
    if (type != 1) {
        note("dialog " + std::to_string(id) + " shown");
        return 1;
    }
    for (auto it = dialog_answers_.begin(); it != dialog_answers_.end(); ++it) {
        if (it->id != id) continue;
        DialogAnswer a = *it;
        dialog_answers_.erase(it);
        for (const auto& [field, value] : a.fields) {
            const FieldDesc* f = dialog.desc().field(field);
            std::string why;
            if (f && (f->kind == FieldKind::Check || f->kind == FieldKind::Trackbar || f->kind == FieldKind::Menu)) {
                dialog.value(field).state = static_cast<int>(text::read_i(value).value_or(0));
            } else if (f && f->kind == FieldKind::Radio) {
                if (value != "0") dialog.put_radio(field);
            } else if (!dialog.set_from_text(field, value, &why)) {
                note("dialog " + std::to_string(id) + " field " + std::to_string(field) + " refused: " + why);
            }
        }
        note("dialog " + std::to_string(id) + " answered " +
             (!a.ok ? "Cancel" : a.button == 1 ? "OK" : "button " + std::to_string(a.button)));
        return a.ok ? a.button : 0;
    }
    note("dialog " + std::to_string(id) + " cancelled (no answer in the script)");
    return 0;
}

void ScriptedToolkit::close_plot() {
    note("plot window \"" + plot().title + "\" closed with " + std::to_string(plot().items.size()) + " items");
}

bool ScriptedToolkit::copy_image_to_clipboard(const Image& image) {
    clipboard_ = image;
    note("clipboard image " + std::to_string(image.width) + "x" + std::to_string(image.height));
    return true;
}

void ScriptedToolkit::show_chart(const Chart& chart) {
    chart_ = chart;
    note("chart \"" + chart.title + "\" with " + std::to_string(chart.points.size()) + " points");
}

bool ScriptedToolkit::print_chart(const Chart& chart) {
    const bool scripted = !print_answers_.empty();
    const bool print = scripted && print_answers_.front();
    if (scripted) print_answers_.pop_front();
    if (print) ++charts_printed_;
    note("print chart \"" + chart.title + "\": " +
         (print ? "printed" : scripted ? "cancelled" : "cancelled (no answer in the script)"));
    return print;
}

int ScriptedToolkit::WMessageBox(int buttons, MessageIcon, int, const std::string& text, const std::string&) {
    message_boxes_.push_back(text);
    int answer = 1;
    std::string how;
    if (!box_answers_.empty()) {
        answer = box_answers_.front();
        box_answers_.pop_front();
        how = buttons == kButtonsYesNo ? (answer ? "Yes" : "No") : "OK";
    } else {
        answer = buttons == kButtonsYesNo ? 0 : 1;
        how = buttons == kButtonsYesNo ? "No (no answer in the script)" : "OK";
    }
    note("message: " + one_line(text) + " -> " + how);
    last_button_ = answer;
    return answer;
}

bool ScriptedToolkit::take_chooser_answer(std::deque<std::optional<std::string>>& queue, const std::string& kind,
                                          std::string& path, const std::string& title) {
    std::optional<std::string> answer;
    bool scripted = !queue.empty();
    if (scripted) answer = queue.front(), queue.pop_front();
    note(kind + " chooser \"" + title + "\": " +
         (answer ? *answer : scripted ? "cancelled" : "cancelled (no answer in the script)"));
    last_button_ = answer ? 1 : 0;
    if (answer) path = *answer;
    return answer.has_value();
}

bool ScriptedToolkit::select_file(int, int, std::string& path, const std::string& title) {
    return take_chooser_answer(file_answers_, "file", path, title);
}

bool ScriptedToolkit::WSelectDir(std::string& path, const std::string& title) {
    return take_chooser_answer(dir_answers_, "folder", path, title);
}

void ScriptedToolkit::IOsCommand(const std::string& command, bool wait) {
    note(std::string(wait ? "run: " : "start: ") + command);
    if (wait) ++runs_since_take_;
    if (!process::run_shell(command, wait)) note("could not run: " + command);
}

void ScriptedToolkit::IOsExecute(const std::string& program, const std::vector<std::string>& args) {
    std::string line = program;
    for (const auto& a : args) line += " " + a;
    note("execute: " + line);
    if (!process::spawn(program, args)) {
        note("could not start: " + program);
        WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Cannot start " + program, "Zentol");
    }
}

}  // namespace zentol
