#include "toolkit/qt/main_window.h"

#include <algorithm>

#include <QAction>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

namespace zentol {

namespace {

const char* const kKeyProperty = "zentol_key";
const char* const kAlternateProperty = "zentol_alternate";

// The shortcut letter is shown after a tab, which Qt draws in the menu's
// shortcut column without making it a shortcut: the letter keys reach the
// logic as key messages from the view and must not be taken by the menu.
QString item_text(const QString& label, const QString& key) {
    return key.isEmpty() ? label : label + '\t' + key;
}

// The first local file of a drag, or an empty string.
QString dropped_file(const QMimeData* data) {
    if (!data || !data->hasUrls()) return {};
    for (const QUrl& url : data->urls())
        if (url.isLocalFile()) return url.toLocalFile();
    return {};
}

}  // namespace

QString menu_label(const std::string& text) {
    QString in = QString::fromStdString(text);
    QString out;
    for (qsizetype i = 0; i < in.size(); ++i) {
        out += in[i];
        if (in[i] != '&') continue;
        if (i + 1 < in.size() && in[i + 1] == '&') out += in[++i];
        else if (i + 1 == in.size() || in[i + 1].isSpace()) out += '&';
    }
    return out;
}

MainWindow::MainWindow(MessageSink sink) : sink_(std::move(sink)) {
    setObjectName("zentol_main_window");
    view_ = new ViewWidget(sink_, this);
    setCentralWidget(view_);
    setFocusProxy(view_);
    setContextMenuPolicy(Qt::NoContextMenu);   // no menu for hiding the tool bar
    tool_bar_ = addToolBar("Tools");
    tool_bar_->setObjectName("tool_bar");
    tool_bar_->setMovable(false);
    statusBar()->setSizeGripEnabled(false);
    view_->setFocus();
    setAcceptDrops(true);
}

void MainWindow::set_status_parts(const std::vector<int>& widths) {
    for (QLabel* l : status_) delete l;
    status_.clear();
    for (int w : widths) {
        auto* label = new QLabel(this);
        label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        // Ignoring the text's own size makes the stretch factors alone
        // divide the width, so a long text never shifts the fields.
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        statusBar()->addWidget(label, std::max(w, 1));
        status_.push_back(label);
    }
}

QLabel* MainWindow::status_label(int field) const {
    if (field < 1 || field > static_cast<int>(status_.size())) return nullptr;
    return status_[field - 1];
}

void MainWindow::set_status_text(int field, const QString& text) {
    if (QLabel* l = status_label(field)) l->setText(text);
}

QString MainWindow::status_text(int field) const {
    QLabel* l = status_label(field);
    return l ? l->text() : QString();
}

QAction* MainWindow::add_item(QWidget* menu, const MenuEntry& entry) {
    auto* action = new QAction(menu);
    QString key = QString::fromStdString(entry.shortcut);
    // A single letter is the logic's own key, only shown; a combination
    // such as Ctrl+O or F1 is a real shortcut of the window.
    if (key.size() > 1) {
        action->setShortcut(QKeySequence(key));
        action->setShortcutContext(Qt::WindowShortcut);
        key.clear();
    }
    action->setProperty(kKeyProperty, key);
    action->setText(item_text(menu_label(entry.text), key));
    action->setData(entry.id);
    connect(action, &QAction::triggered, this,
            [this, id = entry.id] { sink_(Message{MessageType::Menu, id, 0, 0}); });
    menu->addAction(action);
    menu_actions_[entry.id] = action;
    return action;
}

void MainWindow::build_menu(const MenuDesc& desc) {
    menu_actions_.clear();
    auto* bar = new QMenuBar(this);
    std::vector<QWidget*> open{bar};   // the menu bar, then the popups being filled
    for (const MenuEntry& e : desc.entries) {
        QWidget* top = open.back();
        auto* top_menu = qobject_cast<QMenu*>(top);
        switch (e.kind) {
            case MenuEntry::Popup: {
                auto* m = new QMenu(menu_label(e.text), top);
                if (top_menu) top_menu->addMenu(m);
                else bar->addMenu(m);
                open.push_back(m);
                break;
            }
            case MenuEntry::EndPopup:
                if (open.size() > 1) open.pop_back();
                break;
            case MenuEntry::Separator:
                if (top_menu) top_menu->addSeparator();
                else bar->addSeparator();
                break;
            case MenuEntry::Item:
                add_item(top, e);
                break;
        }
    }
    setMenuBar(bar);   // deletes the previous bar with its menus and actions
}

// A two-state button starts up. Pressing it puts it down and sends its first
// command; pressing it again brings it up and sends the alternate command.
// set_state(id, 2, v) puts it down or up without sending anything.
void MainWindow::tool_pressed(QAction* action, bool down) {
    int id = action->data().toInt();
    int alternate = action->property(kAlternateProperty).toInt();
    sink_(Message{MessageType::Menu, alternate != 0 && !down ? alternate : id, 0, 0});
}

void MainWindow::build_toolbar(const ToolbarDesc& desc) {
    tool_actions_.clear();
    removeToolBar(tool_bar_);
    delete tool_bar_;
    tool_bar_ = new QToolBar("Tools", this);
    tool_bar_->setObjectName("tool_bar");
    tool_bar_->setMovable(false);
    tool_bar_->setFocusPolicy(Qt::NoFocus);
    addToolBar(tool_bar_);
    tool_bar_->setVisible(!desc.buttons.empty());
    for (const ToolButton& b : desc.buttons) {
        QAction* action = tool_bar_->addAction(QString::fromStdString(b.text));
        action->setToolTip(QString::fromStdString(b.tooltip));
        action->setData(b.id);
        action->setProperty(kAlternateProperty, b.alternate);
        action->setCheckable(b.alternate != 0);
        connect(action, &QAction::triggered, this, [this, action](bool down) { tool_pressed(action, down); });
        tool_actions_[b.id] = action;
        if (b.alternate != 0) tool_actions_[b.alternate] = action;
        if (QWidget* w = tool_bar_->widgetForAction(action)) w->setFocusPolicy(Qt::NoFocus);
    }
}

QAction* MainWindow::menu_action(int id) const {
    auto it = menu_actions_.find(id);
    return it == menu_actions_.end() ? nullptr : it->second;
}

QAction* MainWindow::tool_action(int id) const {
    auto it = tool_actions_.find(id);
    return it == tool_actions_.end() ? nullptr : it->second;
}

void MainWindow::set_state(int id, int which, int value) {
    for (QAction* a : {menu_action(id), tool_action(id)}) {
        if (!a) continue;
        if (which == 1) a->setEnabled(value != 0);
        else if (which == 2 && a->isCheckable()) a->setChecked(value != 0);
    }
}

void MainWindow::set_item_text(int id, const std::string& text) {
    if (QAction* a = menu_action(id)) a->setText(item_text(menu_label(text), a->property(kKeyProperty).toString()));
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!dropped_file(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dragMoveEvent(QDragMoveEvent* event) {
    if (!dropped_file(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QString file = dropped_file(event->mimeData());
    if (file.isEmpty()) return;
    event->acceptProposedAction();
    Message m{MessageType::FileDropped, 0, 0, 0};
    m.path = file.toStdString();
    sink_(m);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (may_close_) {
        event->accept();
        return;
    }
    event->ignore();
    sink_(Message{MessageType::Close, 0, 0, 0});
}

}  // namespace zentol
