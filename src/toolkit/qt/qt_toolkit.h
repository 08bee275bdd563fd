// The toolkit a person sees: a Qt main window with menus, tool bar, status
// bar and view, dialogs, message boxes, file choosers and child processes.
// Construct it after the QApplication; the logic drives everything from
// next_message(), which runs Qt's events while it waits.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <QPointer>
#include <QString>
#include <QStringList>

#include "toolkit/qt/chart_window.h"
#include "toolkit/qt/dialog_window.h"
#include "toolkit/qt/main_window.h"
#include "toolkit/qt/message_queue.h"
#include "toolkit/qt/plot_window.h"
#include "toolkit/toolkit.h"

class QWidget;

namespace zentol {

// Chooser name filters from a filter string "Text|*.EXT|Text|*.a;*.b|":
// "Text (*.EXT *.ext)". Extensions match in upper and lower case, the way
// the files are found whatever case they were written in.
QStringList qt_name_filters(const std::string& filter);

class QtToolkit : public Toolkit {
public:
    QtToolkit();
    ~QtToolkit() override;
    QtToolkit(const QtToolkit&) = delete;
    QtToolkit& operator=(const QtToolkit&) = delete;

    void window_open(int width, int height, const std::string& title) override;
    void status_bar_parts(const std::vector<int>& widths) override;
    void WindowOutStatusBar(int field, const std::string& text) override;
    void set_window_title(const std::string& title) override;
    std::string status_field(int field) const override { return status_text(field).toStdString(); }
    void menu_load(int menu_id) override;
    void WMenuToolbar(int toolbar_id) override;
    void WMenuSetState(int id, int which, int value) override;
    void WMenuSetString(int id, const std::string& text) override;
    Message next_message() override;
    // Qt's pending events are handled first; an Esc pressed while a
    // command ran comes as key 27.
    std::optional<Message> poll_message() override;
    void message_enable(MessageType type, bool on) override;
    int window_size(int which) override;
    void close_all() override;

    int WMessageBox(int buttons, MessageIcon icon, int default_button, const std::string& text,
                    const std::string& title) override;
    bool select_file(int filter_id, int mode, std::string& path, const std::string& title) override;
    bool WSelectDir(std::string& path, const std::string& title) override;

    void IOsCommand(const std::string& command, bool wait) override;
    void IOsExecute(const std::string& program, const std::vector<std::string>& args) override;
    void wait_hundredths(int n) override;
    void edit_text_file(const std::string& path) override;
    void show_text(const std::string& title, const std::string& text) override;
    bool save_image(const Image& image, const std::string& path, int quality) override;
    bool copy_image_to_clipboard(const Image& image) override;
    std::optional<std::string> http_get(const std::string& url, int timeout_ms) override;
    void show_chart(const Chart& chart) override;
    bool print_chart(const Chart& chart) override;

    // For the program and the tests.
    MainWindow* main_window() const { return window_; }   // nullptr when closed
    QWidget* view() const;
    QString status_text(int field) const;
    // The open non-modal dialog with this number, or nullptr.
    DialogWindow* dialog_window(int id) const;
    PlotWindow* plot_window() const { return plot_window_; }
    ChartWindow* chart_window() const { return chart_window_; }   // nullptr when none is up
    // Queues a message as if a widget had sent it.
    void post(const Message& m) { queue_.post(m); }
    std::size_t pending_messages() const { return queue_.size(); }

protected:
    int show_dialog(DialogModel& dialog, int type) override;
    void hide_dialog(int id) override;
    void show_plot(const Plot& plot) override;
    void close_plot() override;

private:
    QWidget* parent_widget() const;
    void cannot_start(const QString& program);

    MessageQueue queue_;
    bool escape_during_run_ = false;   // Esc was pressed while a command ran
    QPointer<MainWindow> window_;
    std::map<int, QPointer<DialogWindow>> modeless_;
    QPointer<PlotWindow> plot_window_;
    QPointer<ChartWindow> chart_window_;
};

}  // namespace zentol
