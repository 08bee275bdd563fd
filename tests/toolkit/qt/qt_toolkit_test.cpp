// The Qt toolkit on a real (or offscreen) display.
#include <filesystem>

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QToolBar>
#include <QWheelEvent>

#include "toolkit/qt/qt_test_support.h"

namespace zentol {
namespace {

using qt_testing::on_modal;

void expect_message(const Message& m, MessageType type, int value, float fx = 0, float fy = 0) {
    EXPECT_EQ(m.type, type);
    EXPECT_EQ(m.value, value);
    EXPECT_NEAR(m.fx, fx, 1e-3);
    EXPECT_NEAR(m.fy, fy, 1e-3);
}

template <typename W = QWidget>
W* field(QWidget* dialog, int id) {
    return dialog->findChild<W*>("field_" + QString::number(id));
}

class QtToolkitTest : public qt_testing::WindowTest {
protected:
    void SetUp() override {
        tk.set_ui_dir(ZENTOL_DATA_DIR "/ui");
        tk.window_open(800, 600, "Zentol test");
        settle();
    }
    // The next message other than Expose and Resize; fails instead of
    // waiting when there is none.
    Message next_input() {
        while (tk.pending_messages()) {
            Message m = tk.next_message();
            if (m.type != MessageType::Expose && m.type != MessageType::Resize) return m;
        }
        ADD_FAILURE() << "no message queued";
        return {};
    }
    void key(int qt_key, const QString& text) {
        QKeyEvent press(QEvent::KeyPress, qt_key, Qt::NoModifier, text);
        QApplication::sendEvent(tk.view(), &press);
    }
    void mouse(QEvent::Type type, Qt::MouseButton b, QPointF at) {
        QMouseEvent e(type, at, tk.view()->mapToGlobal(at), b, type == QEvent::MouseButtonRelease ? Qt::NoButton : b,
                      Qt::NoModifier);
        QApplication::sendEvent(tk.view(), &e);
    }
    // A ui directory of our own for a description the shipped data lacks.
    void use_ui(const std::string& name, const std::string& content) {
        testing::write_file(dir / ("ui/" + name), content);
        tk.set_ui_dir(dir / "ui");
    }
};

// The view's size is what mouse fractions are taken of.
TEST_F(QtToolkitTest, ViewSizeAndProportionalStatusFields) {
    MainWindow* w = tk.main_window();
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(tk.window_size(1), tk.view()->width());
    EXPECT_EQ(tk.window_size(2), tk.view()->height());   // not the window's: the bars take their share

    tk.status_bar_parts({400, 1500, 620, 700, 620, 700, 600, 600, 3200, 1000});
    tk.WindowOutStatusBar(10, "a rather long text that must not widen its field at all");
    tk.WindowOutStatusBar(11, "nowhere");
    settle();
    EXPECT_EQ(tk.status_text(11), "");
    ASSERT_EQ(w->status_fields(), 10);
    double ratio = double(w->status_label(9)->width()) / w->status_label(2)->width();
    EXPECT_NEAR(ratio, 3200.0 / 1500.0, 0.15);
}

TEST_F(QtToolkitTest, MenuBarAndToolBarFollowTheirFilesAndTheMode) {
    tk.menu_load(30001);
    MainWindow* w = tk.main_window();
    ASSERT_EQ(w->menuBar()->actions().size(), 6);
    EXPECT_NE(qobject_cast<QMenu*>(w->menu_action(40067)->parent()), nullptr);   // in the MRU submenu
    EXPECT_EQ(w->menu_action(40064)->text(), "Hardcopy && Print");   // a lone '&' is shown as such

    // The key letter is shown but left to the view; the usual keys open,
    // save, quit and help.
    QAction* build = w->menu_action(40003);
    EXPECT_EQ(build->text(), "&Build\tB");
    EXPECT_TRUE(build->shortcut().isEmpty());
    EXPECT_EQ(w->menu_action(40005)->shortcut(), QKeySequence("Ctrl+O"));
    EXPECT_EQ(w->menu_action(40006)->shortcut(), QKeySequence("F1"));

    tk.WMenuSetString(40003, "&Construct");
    EXPECT_EQ(build->text(), "&Construct\tB");

    tk.menu_load(30001);   // a reload replaces, never appends
    EXPECT_EQ(w->menuBar()->actions().size(), 6);

    // The tool bar shares its state with the menu.
    tk.WMenuToolbar(30101);
    tk.WMenuToolbar(30101);
    QList<QAction*> actions = w->tool_bar()->actions();
    ASSERT_EQ(actions.size(), 17);
    EXPECT_EQ(actions[0]->toolTip(), "Start Build Mode");
    EXPECT_EQ(w->findChildren<QToolBar*>().size(), 1);   // loaded twice, shown once

    tk.WMenuSetState(40003, 1, 0);
    EXPECT_FALSE(w->menu_action(40003)->isEnabled());
    EXPECT_FALSE(actions[0]->isEnabled());
    tk.WMenuSetState(40003, 1, 1);
    EXPECT_TRUE(actions[0]->isEnabled());

    // Each mode shows only its own buttons: a mode's menu bar takes the
    // Display tool bar away, and a mode with a tool bar of its own puts it up.
    tk.menu_load(30004);   // Mopac mode: none of its own
    EXPECT_TRUE(w->tool_bar()->isHidden());
    tk.menu_load(30006);   // Tinker mode: its own
    tk.WMenuToolbar(30102);
    EXPECT_FALSE(w->tool_bar()->isHidden());
    EXPECT_FALSE(w->tool_action(40014));    // no "Mopac" button that would run Tinker's 14
    EXPECT_TRUE(w->tool_action(40008));
}

TEST_F(QtToolkitTest, TwoStateToolButtonAlternatesItsCommands) {
    use_ui("menus/900.toolbar", "button 40007/40063 \"Save\" \"Save the job\"\n");
    tk.WMenuToolbar(900);
    drain();
    QAction* save = tk.main_window()->tool_action(40007);
    ASSERT_EQ(save, tk.main_window()->tool_action(40063));
    save->trigger();
    save->trigger();
    expect_message(next_input(), MessageType::Menu, 40007);
    expect_message(next_input(), MessageType::Menu, 40063);

    tk.WMenuSetState(40063, 2, 1);   // put down by the logic: the next press brings it up
    save->trigger();
    EXPECT_EQ(next_input().value, 40063);
    tk.WMenuSetState(40063, 1, 0);
    EXPECT_FALSE(save->isEnabled());
}

TEST_F(QtToolkitTest, KeysArriveAsLogicCodes) {
    drain();
    const struct { int qt; const char* text; int code; } keys[] = {
        {Qt::Key_B, "b", 'B'}, {Qt::Key_Escape, "\x1b", 27}, {Qt::Key_Return, "\r", 13}, {Qt::Key_Enter, "\r", 13},
        {Qt::Key_Left, "", 261}, {Qt::Key_Right, "", 260}, {Qt::Key_Up, "", 264}, {Qt::Key_Down, "", 265},
        {Qt::Key_PageUp, "", 259}, {Qt::Key_PageDown, "", 258}, {Qt::Key_Plus, "+", '+'}, {Qt::Key_Shift, "", 0},
        {Qt::Key_F5, "", 0}};
    for (const auto& k : keys) key(k.qt, k.text);
    for (const auto& k : keys)
        if (k.code != 0) expect_message(next_input(), MessageType::Key, k.code);
    EXPECT_EQ(tk.pending_messages(), 0u);   // modifiers and F keys are not passed on
}

TEST_F(QtToolkitTest, MouseMessagesGiveButtonsFractionsAndWheelSteps) {
    drain();
    const double w = tk.view()->width(), h = tk.view()->height();
    mouse(QEvent::MouseButtonPress, Qt::LeftButton, {w / 4, h / 2});
    mouse(QEvent::MouseButtonRelease, Qt::RightButton, {w, 0});
    mouse(QEvent::MouseButtonPress, Qt::MiddleButton, {w + 50, -5});
    expect_message(next_input(), MessageType::MouseDown, 1, 0.25, 0.5);
    expect_message(next_input(), MessageType::MouseUp, 3, 1.0, 0.0);   // the right button is button 3
    expect_message(next_input(), MessageType::MouseDown, 2, 1.0, 0.0);   // outside: held at the edge

    mouse(QEvent::MouseMove, Qt::NoButton, {w / 2, h / 2});
    EXPECT_EQ(tk.pending_messages(), 0u);   // moves are off until asked for
    tk.message_enable(MessageType::MouseMove, true);
    mouse(QEvent::MouseMove, Qt::NoButton, {w / 2, h / 2});
    mouse(QEvent::MouseMove, Qt::NoButton, {w / 10, h / 5});
    expect_message(next_input(), MessageType::MouseMove, 0, 0.1, 0.2);   // the later move replaced the first
    EXPECT_EQ(tk.pending_messages(), 0u);
    tk.message_enable(MessageType::MouseMove, false);
    mouse(QEvent::MouseMove, Qt::NoButton, {w / 2, h / 2});
    EXPECT_EQ(tk.pending_messages(), 0u);

    // The wheel in steps of 15 degrees; a fine wheel's eighths add up.
    for (int eighths : {240, 60, 60}) {
        QWheelEvent e({w / 2, h / 2}, tk.view()->mapToGlobal(QPointF(w / 2, h / 2)), {}, {0, eighths}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(tk.view(), &e);
    }
    expect_message(next_input(), MessageType::Wheel, 2);
    expect_message(next_input(), MessageType::Wheel, 1);
}

TEST_F(QtToolkitTest, RepaintsAreNotExposuresAndResizesAreCoalesced) {
    drain();
    // Qt repaints the view whenever a menu or a dialog passed over it: the
    // picture keeps itself and the logic is not told.
    tk.view()->repaint();
    tk.view()->repaint();
    settle();
    EXPECT_EQ(tk.pending_messages(), 0u);

    const int old_width = tk.window_size(1);
    tk.main_window()->resize(900, 700);
    settle();
    tk.main_window()->resize(1000, 700);
    settle();
    int resizes = 0;
    while (tk.pending_messages()) resizes += tk.next_message().type == MessageType::Resize;
    EXPECT_EQ(resizes, 1);
    EXPECT_EQ(tk.window_size(1), old_width + 200);
}

TEST_F(QtToolkitTest, ClosingAsksTheLogicAndCloseAllReallyCloses) {
    drain();
    QCloseEvent first, second;
    QApplication::sendEvent(tk.main_window(), &first);
    QApplication::sendEvent(tk.main_window(), &second);
    EXPECT_FALSE(first.isAccepted());
    ASSERT_EQ(tk.pending_messages(), 1u);
    EXPECT_EQ(tk.next_message().type, MessageType::Close);
    settle();
    ASSERT_NE(tk.main_window(), nullptr);
    EXPECT_TRUE(tk.main_window()->isVisible());

    tk.close_all();
    EXPECT_EQ(tk.main_window(), nullptr);
    EXPECT_EQ(tk.window_size(1), 0);
    QObject watchdog;   // should next_message wait after all, end the wait
    QTimer::singleShot(3000, &watchdog, [this] { tk.post(Message{MessageType::Key, -1, 0, 0}); });
    EXPECT_EQ(tk.next_message().type, MessageType::Close);
}

// A refused OK warns and keeps the dialog open; non-modal, it stays up until unloaded.
TEST_F(QtToolkitTest, DialogsCopyBackOnAnAcceptedOkOnly) {
    tk.WDialogLoad(103);
    tk.WDialogPutString(1002, "C");
    tk.WDialogPutReal(1071, 0.74);
    QString warning;
    bool still_open = false;
    on_modal<DialogWindow>([&](DialogWindow* d) {
        field<QLineEdit>(d, 1002)->setText("Si");
        field<QLineEdit>(d, 1071)->setText("9.0");
        on_modal<QMessageBox>([&](QMessageBox* box) {
            warning = box->text();
            box->accept();
        });
        field<QPushButton>(d, 1)->click();   // returns once the warning is closed
        still_open = d->isVisible();
        EXPECT_EQ(tk.WDialogGetString(1002), "C");
        field<QLineEdit>(d, 1071)->setText("1.5");
        field<QPushButton>(d, 1)->click();
    });
    tk.WDialogShow(1);
    EXPECT_TRUE(warning.contains("between")) << warning.toStdString();
    EXPECT_TRUE(still_open);
    EXPECT_EQ(tk.last_button(), 1);
    EXPECT_DOUBLE_EQ(tk.WDialogGetReal(1071), 1.5);
    EXPECT_EQ(tk.WDialogGetString(1071), "1.500");   // in the field's format f6.3
    EXPECT_EQ(tk.WDialogGetString(1002), "Si");

    on_modal<DialogWindow>([](DialogWindow* d) {
        field<QLineEdit>(d, 1071)->setText("2.0");
        field<QPushButton>(d, 2)->click();
    });
    tk.WDialogShow(1);
    EXPECT_EQ(tk.last_button(), 0);
    EXPECT_DOUBLE_EQ(tk.WDialogGetReal(1071), 1.5);

    tk.WDialogShow(2);
    QPointer<DialogWindow> d = tk.dialog_window(103);
    ASSERT_TRUE(d);
    EXPECT_TRUE(d->isVisible());
    EXPECT_FALSE(d->isModal());
    EXPECT_EQ(field<QLineEdit>(d, 1071)->text(), "1.500");
    tk.WDialogUnload();
    EXPECT_FALSE(d);
    EXPECT_EQ(tk.dialog_window(103), nullptr);
}

TEST_F(QtToolkitTest, EveryFieldKindIsShownAndReadBack) {
    use_ui("dialogs/900.dlg",
           "title All kinds\n"
           "field 10 label \"Heading\"\nfield 11 string \"Name\"\nfield 12 integer \"Count\"\n"
           "field 13 check \"Show H\"\nfield 14 radio 14 \"Ball\"\nfield 15 radio 14 \"Stick\"\n"
           "field 16 radio 16 \"Red\"\nfield 17 radio 16 \"Blue\"\nfield 18 trackbar \"Zoom\"\n"
           "field 19 menu \"One|Two|Three\"\nfield 20 text \"Notes\"\nfield 21 real \"Greyed\"\n"
           "[Checks]\n13 1\n14 1\n17 1\n[Ranges]\n12 1 10\n[Trackbars]\n18 50 10 5\n");
    tk.WDialogLoad(900);
    tk.WDialogPutString(11, "water");
    tk.WDialogPutTrackbar(18, 30);
    tk.WDialogFieldState(21, 0);
    on_modal<DialogWindow>([](DialogWindow* d) {
        EXPECT_TRUE(field<QRadioButton>(d, 14)->isChecked());   // the groups are independent
        EXPECT_TRUE(field<QRadioButton>(d, 17)->isChecked());
        auto* slider = field<QSlider>(d, 18);
        EXPECT_EQ((std::array{slider->minimum(), slider->maximum(), slider->value()}), (std::array{10, 50, 30}));
        EXPECT_FALSE(field(d, 21)->isEnabled());

        field<QLineEdit>(d, 11)->setText("ice");
        field<QLineEdit>(d, 12)->setText("7");
        field<QCheckBox>(d, 13)->setChecked(false);
        field<QRadioButton>(d, 15)->setChecked(true);
        field<QRadioButton>(d, 16)->setChecked(true);
        slider->setValue(45);
        field<QComboBox>(d, 19)->setCurrentIndex(2);
        field<QPlainTextEdit>(d, 20)->setPlainText("a\nb");
        field<QPushButton>(d, 1)->click();
    });
    tk.WDialogShow(1);
    EXPECT_EQ(tk.WDialogGetString(11), "ice");
    EXPECT_EQ(tk.WDialogGetString(20), "a\nb");
    EXPECT_EQ(tk.WDialogGetInteger(12), 7);
    // Check, radio groups, track bar and the menu's 1-based choice.
    EXPECT_EQ((std::vector{tk.WDialogGetCheckBox(13), tk.WDialogGetRadioButton(14), tk.WDialogGetRadioButton(16),
                           tk.WDialogGetTrackbar(18), tk.WDialogGetTrackbar(19)}),
              (std::vector{0, 2, 1, 45, 3}));
}

TEST_F(QtToolkitTest, MessageBoxesMapButtonsIconsAndLineBreaks) {
    QString text;
    QMessageBox::Icon icon{};
    auto answer = [&](QMessageBox::StandardButton b) {
        on_modal<QMessageBox>([&, b](QMessageBox* box) {
            text = box->text();
            icon = box->icon();
            box->button(b)->click();
        });
    };
    answer(QMessageBox::No);
    EXPECT_EQ(tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, "one\rtwo", "Zentol"), 0);
    EXPECT_EQ(text, "one\ntwo");
    EXPECT_EQ(icon, QMessageBox::Question);
    answer(QMessageBox::Yes);
    EXPECT_EQ(tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, "again", "Zentol"), 1);
    answer(QMessageBox::Ok);
    EXPECT_EQ(tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "careful", "Zentol"), 1);
    EXPECT_EQ(icon, QMessageBox::Warning);
}

// The chooser below shows a single upper-case extension.
TEST(QtNameFilters, ExtensionsMatchInEitherCase) {
    EXPECT_EQ(qt_name_filters("All files|*|"), QStringList{"All files (*)"});
    EXPECT_EQ(qt_name_filters("Inputs|*.dat;*.Key|Logs|*.log|"),
              (QStringList{"Inputs (*.dat *.DAT *.Key *.key *.KEY)", "Logs (*.log *.LOG)"}));
    EXPECT_EQ(qt_name_filters(""), QStringList{"All files (*)"});
}

TEST_F(QtToolkitTest, FileAndDirectoryChoosers) {
    const std::string water = dir / "water.xyz", jobs = dir / "jobs";
    testing::write_file(water, "3\n");
    std::filesystem::create_directory(jobs);

    std::string path = dir.path();
    on_modal<QFileDialog>([&](QFileDialog* d) {
        EXPECT_EQ(d->nameFilters().value(0), "Zentol file .XYZ (*.XYZ *.xyz)");
        EXPECT_EQ(QDir(d->directory()), QDir(QString::fromStdString(dir.path())));
        d->findChild<QLineEdit*>("fileNameEdit")->setText("water.xyz");   // typed by the user
        static_cast<QDialog*>(d)->accept();   // as the Open button does
    });
    EXPECT_TRUE(tk.select_file(20001, 8, path, "Find the XYZ Input File"));
    EXPECT_EQ(path, water);
    on_modal<QFileDialog>([](QFileDialog* d) { d->reject(); });
    EXPECT_FALSE(tk.select_file(20001, 8, path, "Find"));
    EXPECT_EQ(path, water);   // a cancel keeps it

    std::string folder = dir.path();
    on_modal<QFileDialog>([&](QFileDialog* d) {
        d->setDirectory(QString::fromStdString(jobs));
        static_cast<QDialog*>(d)->accept();   // as the Choose button does
    });
    EXPECT_TRUE(tk.WSelectDir(folder, "Scratch directory"));
    EXPECT_EQ(folder, jobs);
}

// Keys given while a waited command runs are dropped, all but Esc, which
// the loop polls for after the run.
TEST_F(QtToolkitTest, AWaitedCommandDropsKeysButKeepsEscForThePoll) {
    std::filesystem::current_path(dir.path());   // the TempDir gives the old one back
    drain();
    EXPECT_FALSE(tk.poll_message());
    QTimer::singleShot(50, [this] {
        key(Qt::Key_B, "b");
        key(Qt::Key_Escape, "");
    });
    tk.IOsCommand("sleep 0.3; echo hi > out.txt", true);
    EXPECT_EQ(testing::read_file("out.txt"), "hi\n");   // run in the current directory
    auto m = tk.poll_message();
    ASSERT_TRUE(m);
    expect_message(*m, MessageType::Key, kKeyEsc);
    // Once only; a key given between runs comes like any message.
    key(Qt::Key_A, "a");
    std::optional<Message> polled;
    while ((polled = tk.poll_message()) && polled->type != MessageType::Key) {
    }
    ASSERT_TRUE(polled);
    expect_message(*polled, MessageType::Key, 'A');
    // An Esc from a run that nobody polled for is forgotten by the next wait.
    QTimer::singleShot(50, [this] { key(Qt::Key_Escape, ""); });
    tk.IOsCommand("sleep 0.3", true);
    tk.post(Message{MessageType::Menu, 40001, 0, 0});
    while (tk.next_message().type != MessageType::Menu) {
    }
    while ((polled = tk.poll_message())) EXPECT_NE(polled->type, MessageType::Key);
}

TEST_F(QtToolkitTest, DetachedStartsReturnAtOnceAndFailuresAreShown) {
    std::filesystem::current_path(dir.path());
    // Both wait for a file the test makes after they returned (up to 5 s,
    // so a start that blocked shows as a file made too early, not a hang).
    const std::string gate = "i=0; while [ ! -f go ] && [ $i -lt 100 ]; do sleep 0.05; i=$((i+1)); done; ";
    tk.IOsCommand(gate + "echo x > later.txt", false);
    tk.IOsExecute("/bin/sh", {"-c", gate + "echo x > exec.txt"});
    EXPECT_FALSE(testing::file_present("later.txt") || testing::file_present("exec.txt"));
    testing::write_file("go", "");
    for (int i = 0; i < 50 && !testing::file_present("exec.txt"); ++i) tk.wait_hundredths(10);
    tk.wait_hundredths(10);
    EXPECT_TRUE(testing::file_present("later.txt") && testing::file_present("exec.txt"));

    QString said;
    on_modal<QMessageBox>([&](QMessageBox* box) {
        said = box->text();
        box->accept();
    });
    tk.IOsExecute("/nonexistent/zentol-helper", {"x"});
    EXPECT_EQ(said, "Cannot start /nonexistent/zentol-helper");
}

}  // namespace
}  // namespace zentol
