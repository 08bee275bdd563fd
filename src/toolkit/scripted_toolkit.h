// A toolkit with no display: messages and answers come from a script, and
// everything the logic shows is recorded. It backs the tests and the
// --headless mode. The script format is described in docs/headless-script.md.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/toolkit.h"

namespace zentol {

struct DialogAnswer {
    int id = 0;
    bool ok = true;
    int button = 1;                                      // the closing button of an answer that is not Cancel
    std::vector<std::pair<int, std::string>> fields;   // field number, value as typed
};

struct ScriptError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class ScriptedToolkit : public Toolkit {
public:
    ScriptedToolkit();
    // Adds script lines; throws ScriptError naming the line on a bad one.
    void load_script(const std::string& script);
    void add_line(const std::string& line);

    // Finds an atom's view fraction for "press atom N" (y from the bottom,
    // as window coordinates run).
    void set_atom_locator(std::function<std::optional<std::pair<float, float>>(int)> locator) {
        locator_ = std::move(locator);
    }

    void window_open(int width, int height, const std::string& title) override;
    void status_bar_parts(const std::vector<int>& widths) override;
    void WindowOutStatusBar(int field, const std::string& text) override;
    void menu_load(int menu_id) override;
    void WMenuToolbar(int toolbar_id) override;
    void WMenuSetState(int id, int which, int value) override;
    void WMenuSetString(int id, const std::string& text) override;
    Message next_message() override;
    // Gives only a message written "after N runs ..." in the script, once N
    // waited-for commands have run since the message before it was taken.
    std::optional<Message> poll_message() override;
    void message_enable(MessageType type, bool on) override;
    int window_size(int which) override { return which == 1 ? width_ : height_; }
    void close_all() override;
    int WMessageBox(int buttons, MessageIcon icon, int default_button, const std::string& text,
                    const std::string& title) override;
    bool select_file(int filter_id, int mode, std::string& path, const std::string& title) override;
    bool WSelectDir(std::string& path, const std::string& title) override;
    void IOsCommand(const std::string& command, bool wait) override;
    void IOsExecute(const std::string& program, const std::vector<std::string>& args) override;
    void wait_hundredths(int) override {}
    void edit_text_file(const std::string& path) override { note("editor: " + path); }
    void show_text(const std::string& title, const std::string&) override { note("viewer: " + title); }
    void show_chart(const Chart& chart) override;
    // Recorded as "clipboard image WxH"; the picture is kept.
    bool copy_image_to_clipboard(const Image& image) override;
    // Answered by "print ok" or "print cancel"; cancelled when the script
    // has no answer, as every chooser is.
    bool print_chart(const Chart& chart) override;

    // What was recorded.
    const std::vector<std::string>& transcript() const { return transcript_; }
    std::string status(int field) const { return field >= 1 && field <= 10 ? status_[field] : ""; }
    std::string status_field(int field) const override { return status(field); }
    const std::vector<std::pair<int, std::string>>& status_writes() const { return status_writes_; }
    // What field 9 showed each time the session asked for its next message.
    const std::vector<std::string>& field9_when_asked() const { return field9_when_taken_; }
    // Called each time the session asks for a message (1 the first time),
    // before it is answered: tests look at the session as it goes idle.
    void set_ask_hook(std::function<void(int)> hook) { ask_hook_ = std::move(hook); }
    const std::vector<std::string>& message_boxes() const { return message_boxes_; }
    const std::vector<int>& dialogs_shown() const { return dialogs_shown_; }
    std::string menu_string(int id) const;
    const std::string& window_title() const { return title_; }
    void set_window_title(const std::string& title) override { title_ = title; }
    bool closed() const { return closed_; }
    std::size_t pending_messages() const { return messages_.size(); }
    // The chart shown last, and how many charts went to the printer.
    const std::optional<Chart>& last_chart() const { return chart_; }
    int charts_printed() const { return charts_printed_; }
    // The picture put on the clipboard last.
    const std::optional<Image>& clipboard_image() const { return clipboard_; }

protected:
    int show_dialog(DialogModel& dialog, int type) override;
    void close_plot() override;

private:
    void note(const std::string& line) { transcript_.push_back(line); }
    std::optional<Message> parse_message(const std::vector<std::string>& words);
    bool take_chooser_answer(std::deque<std::optional<std::string>>& queue, const std::string& kind,
                             std::string& path, const std::string& title);

    struct Scripted {
        Message message;
        int atom = 0;          // atom to locate, 0 none
        int after_runs = -1;   // "after N runs": for poll_message once N runs were made
    };
    std::optional<Message> take_front();

    std::deque<Scripted> messages_;
    int runs_since_take_ = 0;   // waited-for commands since the last message was taken
    std::deque<DialogAnswer> dialog_answers_;
    std::deque<int> box_answers_;                    // 1 yes/ok, 0 no
    std::deque<bool> print_answers_;                 // true print, false cancel
    std::deque<std::optional<std::string>> file_answers_, dir_answers_;
    std::function<std::optional<std::pair<float, float>>(int)> locator_;

    std::vector<std::string> transcript_;
    std::string status_[11];
    std::vector<std::pair<int, std::string>> status_writes_;
    std::vector<std::string> field9_when_taken_;
    std::function<void(int)> ask_hook_;
    std::vector<std::string> message_boxes_;
    std::vector<int> dialogs_shown_;
    std::optional<Chart> chart_;
    int charts_printed_ = 0;
    std::optional<Image> clipboard_;
    std::vector<std::pair<int, std::string>> menu_strings_;
    std::string title_;
    int width_ = 800, height_ = 600;
    bool closed_ = false;
    bool moves_enabled_ = false;
    int closes_after_end_ = 0;
};

}  // namespace zentol
