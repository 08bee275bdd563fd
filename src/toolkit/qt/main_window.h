// The main window: the view in the middle, the menu bar and the tool bar
// built from their descriptions, and the status bar fields.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <QMainWindow>
#include <QString>

#include "toolkit/menu_desc.h"
#include "toolkit/qt/view_widget.h"

class QAction;
class QLabel;
class QMenu;
class QToolBar;

namespace zentol {

// Menu item text as Qt shows it: a '&' before a letter marks the mnemonic,
// a '&' followed by a blank (or ending the text) is a plain ampersand.
QString menu_label(const std::string& text);

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(MessageSink sink);

    ViewWidget* view() const { return view_; }

    // Status bar fields share the width in proportion to the given numbers.
    void set_status_parts(const std::vector<int>& widths);
    void set_status_text(int field, const QString& text);   // field 1..n
    QString status_text(int field) const;
    QLabel* status_label(int field) const;
    int status_fields() const { return static_cast<int>(status_.size()); }

    // Replaces the menu bar or the tool bar.
    void build_menu(const MenuDesc& desc);
    void build_toolbar(const ToolbarDesc& desc);
    QToolBar* tool_bar() const { return tool_bar_; }

    // which 1: enabled (value 0 greys the item and its tool button);
    // which 2: a two-state tool button down (1) or up (0).
    void set_state(int id, int which, int value);
    void set_item_text(int id, const std::string& text);
    QAction* menu_action(int id) const;
    QAction* tool_action(int id) const;

    // Lets the next close event through; until then closing the window only
    // tells the logic, which decides.
    void allow_close() { may_close_ = true; }

protected:
    void closeEvent(QCloseEvent* event) override;
    // A file dragged from a file manager onto the window is handed to the
    // logic as a FileDropped message.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QAction* add_item(QWidget* menu, const MenuEntry& entry);
    void tool_pressed(QAction* action, bool down);

    MessageSink sink_;
    ViewWidget* view_ = nullptr;
    QToolBar* tool_bar_ = nullptr;
    std::vector<QLabel*> status_;
    std::map<int, QAction*> menu_actions_;
    std::map<int, QAction*> tool_actions_;   // a two-state button is found by both its ids
    bool may_close_ = false;
};

}  // namespace zentol
