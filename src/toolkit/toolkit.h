// The toolkit seam: every window, menu, dialog, message and process operation
// the logic needs. The Qt toolkit shows them to a person; the scripted
// toolkit answers them from a script and records what was asked.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "display/image.h"
#include "toolkit/chart.h"
#include "toolkit/dialog_model.h"
#include "toolkit/plot.h"

namespace zentol {

enum class MessageType { None, Key, Menu, MouseDown, MouseUp, MouseMove, Expose, Resize, Close, Wheel, FileDropped };

// Cursor keys are delivered by role as codes 258..265.
inline constexpr int kKeyEsc = 27;

struct Message {
    MessageType type = MessageType::None;
    int value = 0;          // key code, menu or toolbar id, mouse button, wheel steps
    float fx = 0, fy = 0;   // position as a fraction of the view, from the top left
    std::string path{};     // FileDropped: the file dropped on the window, absolute
};

enum class MessageIcon { None, Information, Question, Exclamation, Stop };

// File chooser modes: an existing file, or a new name (whose folders may
// not exist yet).
inline constexpr int kChooseExisting = 8;
inline constexpr int kChooseNew = 2;

inline constexpr int kButtonsOk = 0;
inline constexpr int kButtonsYesNo = 3;

class Toolkit {
public:
    virtual ~Toolkit() = default;

    // Window, status bar, menus.
    virtual void window_open(int width, int height, const std::string& title) = 0;
    virtual void set_window_title(const std::string& title) = 0;
    virtual void status_bar_parts(const std::vector<int>& widths) = 0;
    virtual void WindowOutStatusBar(int field, const std::string& text) = 0;
    // What a status field shows now.
    virtual std::string status_field(int field) const = 0;
    // A mode's menu bar; the tool bar goes with the old one, until
    // WMenuToolbar puts up the mode's own.
    virtual void menu_load(int menu_id) = 0;
    virtual void WMenuToolbar(int toolbar_id) = 0;
    virtual void WMenuSetState(int id, int which, int value) = 0;
    virtual void WMenuSetString(int id, const std::string& text) = 0;
    virtual Message next_message() = 0;
    // A message that is already there, without waiting: how a long series
    // of engine runs looks for Esc between two runs. nullopt when nothing
    // came.
    virtual std::optional<Message> poll_message() { return std::nullopt; }
    virtual void message_enable(MessageType type, bool on) = 0;
    virtual int window_size(int which) = 0;      // 1 width, 2 height of the view
    virtual void close_all() = 0;

    // Dialogs: the field operations act on the dialog last selected.
    bool WDialogLoad(int id);
    void WDialogSelect(int id);
    // type 1 waits for a button; type 2 leaves the dialog up and returns.
    void WDialogShow(int type);
    void WDialogUnload();
    void WDialogPutString(int field, const std::string& s);
    std::string WDialogGetString(int field);
    void WDialogPutReal(int field, double v);
    double WDialogGetReal(int field);
    void WDialogPutInteger(int field, long long v);
    long long WDialogGetInteger(int field);
    void WDialogPutCheckBox(int field, int on);
    int WDialogGetCheckBox(int field);
    void WDialogPutRadioButton(int field);
    int WDialogGetRadioButton(int first_field);
    void WDialogPutTrackbar(int field, int v);
    int WDialogGetTrackbar(int field);
    void WDialogFieldState(int field, int enabled);
    // A menu (combo box) field's rows, put at run time, and the chosen row
    // (1-based; 0 none).
    void WDialogPutMenu(int field, const std::vector<std::string>& rows, int chosen);
    int WDialogGetMenu(int field);
    int last_button() const { return last_button_; }

    // Message boxes: text may hold line breaks as character 13. Returns the
    // button: 1 for OK or Yes, 0 for No.
    virtual int WMessageBox(int buttons, MessageIcon icon, int default_button,
                            const std::string& text, const std::string& title) = 0;
    // Choosers: path in and out; false when cancelled.
    virtual bool select_file(int filter_id, int mode, std::string& path, const std::string& title) = 0;
    virtual bool WSelectDir(std::string& path, const std::string& title) = 0;

    // Processes. IOsCommand runs one command line through /bin/sh in the
    // current directory and waits when told to; IOsExecute starts a program
    // with its argument words and returns at once.
    virtual void IOsCommand(const std::string& command, bool wait) = 0;
    virtual void IOsExecute(const std::string& program, const std::vector<std::string>& args) = 0;
    virtual void wait_hundredths(int n) = 0;
    virtual int os_family() { return 4; }

    // The toolkit's own text editor on a file; blocks until it is closed.
    virtual void edit_text_file(const std::string& path) { (void)path; }
    // A read-only viewer for a text or a table.
    virtual void show_text(const std::string& title, const std::string& text) { (void)title, (void)text; }
    // HTTP GET of a small text file; nullopt when it fails or takes longer
    // than the limit.
    virtual std::optional<std::string> http_get(const std::string& url, int timeout_ms);
    // Writes a picture; the format follows the name's ending (.pcx and .bmp
    // and .png here, .jpg where the toolkit has image writers). quality is
    // for JPEG, -1 for the writer's default.
    virtual bool save_image(const Image& image, const std::string& path, int quality);
    // Puts a picture on the system clipboard; false when there is none.
    virtual bool copy_image_to_clipboard(const Image& image) {
        (void)image;
        return false;
    }

    // A chart in a window of its own, which stays up until the next chart
    // replaces it or the program closes its windows.
    virtual void show_chart(const Chart& chart) { (void)chart; }
    // The system print dialog, then the chart on the chosen printer; false
    // when the dialog was cancelled or nothing could be printed.
    virtual bool print_chart(const Chart& chart) {
        (void)chart;
        return false;
    }

    // The second window for plots and its 2-D calls, in the units set by
    // IGrUnits (y upwards).
    void WindowOpenChild(const std::string& title, int width, int height);
    void WindowCloseChild();
    bool child_open() const { return child_open_; }
    const Plot& plot() const { return plot_; }
    void IGrUnits(double left, double bottom, double right, double top);
    void IGrColourN(int n);
    void IGrMoveTo(double x, double y);
    void IGrLineTo(double x, double y);
    void IGrCircle(double x, double y, double radius);
    void IGrCharOut(double x, double y, const std::string& text);

    // Where the descriptions are read from: <ui_dir>/dialogs/<id>.dlg,
    // <ui_dir>/menus/<id>.menu and <ui_dir>/menus/<id>.toolbar.
    void set_ui_dir(std::string dir) { ui_dir_ = std::move(dir); }
    const std::string& ui_dir() const { return ui_dir_; }

protected:
    // Shows a loaded dialog; returns the closing button (1 OK, 0 Cancel) for
    // type 1.
    virtual int show_dialog(DialogModel& dialog, int type) = 0;
    virtual void hide_dialog(int id) { (void)id; }
    // The plot window is shown, changed or closed.
    virtual void show_plot(const Plot& plot) { (void)plot; }
    virtual void close_plot() {}
    DialogModel* selected();
    int last_button_ = 0;

private:
    std::string ui_dir_;
    Plot plot_;
    bool child_open_ = false;
    std::map<int, std::unique_ptr<DialogModel>> loaded_;
    int selected_ = 0;
};

// The chooser filter of Firefly punch files.
inline constexpr int kFilterFireflyPunch = 20016;
// Structure files to open (the job's .xyz and the formats Open Babel
// reads), and the formats an export can be written in.
inline constexpr int kFilterStructureOpen = 20030;
inline constexpr int kFilterStructureExport = 20031;

// Filter strings of the file chooser, by number.
std::string filter_string(int filter_id);

}  // namespace zentol
