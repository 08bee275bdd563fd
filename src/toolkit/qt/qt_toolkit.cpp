#include "toolkit/qt/qt_toolkit.h"

#include <algorithm>

#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace zentol {

namespace {

QString qs(const std::string& s) { return QString::fromStdString(s); }

}  // namespace

QtToolkit::QtToolkit() {
    // The logic decides when the program ends. Qt quitting by itself when
    // the last window goes would also end the nested event loops the logic
    // waits in.
    QApplication::setQuitOnLastWindowClosed(false);
}

QtToolkit::~QtToolkit() { close_all(); }

QWidget* QtToolkit::parent_widget() const { return window_ ? window_.data() : nullptr; }

QWidget* QtToolkit::view() const { return window_ ? window_->view() : nullptr; }

void QtToolkit::window_open(int width, int height, const std::string& title) {
    if (!window_) {
        window_ = new MainWindow([this](const Message& m) { queue_.post(m); });
        // If the window goes while the logic waits, the wait must end.
        QObject::connect(window_, &QObject::destroyed, [this] { queue_.wake(); });
    }
    window_->setWindowTitle(qs(title));
    window_->resize(width, height);
    window_->show();
    window_->activateWindow();
    window_->view()->setFocus();
}

void QtToolkit::set_window_title(const std::string& title) {
    if (window_) window_->setWindowTitle(qs(title));
}

void QtToolkit::status_bar_parts(const std::vector<int>& widths) {
    if (window_) window_->set_status_parts(widths);
}

void QtToolkit::WindowOutStatusBar(int field, const std::string& text) {
    if (window_) window_->set_status_text(field, qs(text));
}

QString QtToolkit::status_text(int field) const { return window_ ? window_->status_text(field) : QString(); }

void QtToolkit::menu_load(int menu_id) {
    std::string error;
    auto desc = load_menu_desc(ui_dir() + "/menus", menu_id, &error);
    if (!desc) {
        QMessageBox::warning(parent_widget(), "Zentol", "Cannot read the menu bar: " + qs(error));
        return;
    }
    if (!window_) return;
    window_->build_menu(*desc);
    // Each mode's buttons mean its own commands: a new menu bar takes the
    // old tool bar away until the mode puts up its own.
    window_->build_toolbar(ToolbarDesc{});
}

void QtToolkit::WMenuToolbar(int toolbar_id) {
    std::string error;
    auto desc = load_toolbar_desc(ui_dir() + "/menus", toolbar_id, &error);
    if (!desc) {
        QMessageBox::warning(parent_widget(), "Zentol", "Cannot read the tool bar: " + qs(error));
        return;
    }
    if (window_) window_->build_toolbar(*desc);
}

void QtToolkit::WMenuSetState(int id, int which, int value) {
    if (window_) window_->set_state(id, which, value);
}

void QtToolkit::WMenuSetString(int id, const std::string& text) {
    if (window_) window_->set_item_text(id, text);
}

Message QtToolkit::next_message() {
    // An Esc from a run that nobody polled for means nothing any more.
    escape_during_run_ = false;
    for (;;) {
        if (auto m = queue_.take()) return *m;
        // With the window gone nothing can come any more.
        if (!window_) return Message{MessageType::Close, 0, 0, 0};
        queue_.wait();
    }
}

std::optional<Message> QtToolkit::poll_message() {
    QApplication::processEvents();
    if (escape_during_run_) {
        escape_during_run_ = false;
        return Message{MessageType::Key, kKeyEsc, 0, 0};
    }
    return queue_.take();
}

void QtToolkit::message_enable(MessageType type, bool on) { queue_.enable(type, on); }

int QtToolkit::window_size(int which) {
    QWidget* v = view();
    if (!v) return 0;
    return which == 1 ? v->width() : v->height();
}

void QtToolkit::close_all() {
    for (auto& [id, dialog] : modeless_) delete dialog.data();
    modeless_.clear();
    delete chart_window_.data();
    // A plot shown before any main window has no parent to take it along,
    // and it reads the plot this toolkit owns.
    close_plot();
    if (window_) {
        window_->allow_close();
        window_->close();
        delete window_.data();
    }
    queue_.clear();
}

int QtToolkit::show_dialog(DialogModel& dialog, int type) {
    const int id = dialog.desc().id;
    if (type == 1) {
        DialogWindow w(dialog, 1, parent_widget());
        return w.exec();
    }
    hide_dialog(id);
    auto* w = new DialogWindow(dialog, type, parent_widget());
    modeless_[id] = w;
    w->show();
    w->raise();
    return 0;
}

void QtToolkit::hide_dialog(int id) {
    auto it = modeless_.find(id);
    if (it == modeless_.end()) return;
    delete it->second.data();
    modeless_.erase(it);
}

DialogWindow* QtToolkit::dialog_window(int id) const {
    auto it = modeless_.find(id);
    return it == modeless_.end() ? nullptr : it->second.data();
}

namespace {

QMessageBox::Icon box_icon(MessageIcon icon) {
    switch (icon) {
        case MessageIcon::Information: return QMessageBox::Information;
        case MessageIcon::Question: return QMessageBox::Question;
        case MessageIcon::Exclamation: return QMessageBox::Warning;
        case MessageIcon::Stop: return QMessageBox::Critical;
        case MessageIcon::None: break;
    }
    return QMessageBox::NoIcon;
}

// Character 13 separates the lines of a message.
QString box_text(const std::string& text) {
    QString t = qs(text);
    t.replace("\r\n", "\n");
    t.replace('\r', '\n');
    return t;
}

}  // namespace

int QtToolkit::WMessageBox(int buttons, MessageIcon icon, int default_button, const std::string& text,
                           const std::string& title) {
    QMessageBox box(box_icon(icon), qs(title), box_text(text), QMessageBox::NoButton, parent_widget());
    QAbstractButton* no = nullptr;
    if (buttons == kButtonsYesNo) {
        QPushButton* yes = box.addButton(QMessageBox::Yes);
        QPushButton* no_button = box.addButton(QMessageBox::No);
        box.setDefaultButton(default_button == 2 ? no_button : yes);
        box.setEscapeButton(no_button);
        no = no_button;
    } else {
        box.setDefaultButton(box.addButton(QMessageBox::Ok));
    }
    box.exec();
    last_button_ = (no && box.clickedButton() == no) ? 0 : 1;
    return last_button_;
}

void QtToolkit::cannot_start(const QString& program) {
    QMessageBox::warning(parent_widget(), "Zentol", "Cannot start " + program);
}

void QtToolkit::wait_hundredths(int n) {
    QEventLoop loop;
    QTimer::singleShot(std::max(n, 0) * 10, &loop, &QEventLoop::quit);
    loop.exec();
}

}  // namespace zentol
