// The Orca Input and MultiWFN dialogs in the real window: their controls
// come up with the values put, and the buttons close them as the modes
// expect. With ZENTOL_SHOT_DIR set each dialog is saved as a picture.
#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <gtest/gtest.h>

#include <cstdlib>

#include "toolkit/qt/qt_test_support.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {
namespace {

using qt_testing::on_modal;

void shoot(QDialog* d, const char* name) {
    if (const char* dir = std::getenv("ZENTOL_SHOT_DIR")) d->grab().save(QString(dir) + "/" + name);
}

TEST(OrcaDialogs, OrcaInputRunsAndMultiwfnActionsChoose) {
    QtToolkit tk;
    tk.set_ui_dir(std::string(ZENTOL_DATA_DIR) + "/ui");
    ASSERT_TRUE(tk.WDialogLoad(125));
    tk.WDialogPutInteger(1102, 2);
    tk.WDialogPutReal(1071, 0.97);
    bool wfn_on = false, optimisation = false;
    QString scale;
    on_modal([&](QDialog* d) {
        shoot(d, "dialog_125.png");
        wfn_on = d->findChild<QCheckBox*>("field_1031")->isChecked();
        optimisation = d->findChild<QRadioButton*>("field_1057")->isChecked();
        scale = d->findChild<QLineEdit*>("field_1071")->text();
        d->findChild<QRadioButton*>("field_1053")->click();
        d->findChild<QPushButton*>("field_3")->click();
    });
    tk.WDialogShow(1);
    EXPECT_TRUE(wfn_on);
    EXPECT_TRUE(optimisation);
    EXPECT_EQ(scale, "0.97");
    EXPECT_EQ(tk.last_button(), 3);
    EXPECT_EQ(tk.WDialogGetRadioButton(1051), 3);
    EXPECT_EQ(tk.WDialogGetInteger(1102), 2);
    tk.WDialogUnload();

    ASSERT_TRUE(tk.WDialogLoad(127));
    tk.WDialogPutReal(1071, 50.0);
    on_modal([&](QDialog* d) {
        shoot(d, "dialog_127.png");
        d->findChild<QRadioButton*>("field_1054")->click();
        d->findChild<QLineEdit*>("field_1071")->setText("35.5");
        d->findChild<QPushButton*>("field_1")->click();
    });
    tk.WDialogShow(1);
    EXPECT_EQ(tk.last_button(), 1);
    EXPECT_EQ(tk.WDialogGetRadioButton(1051), 4);
    EXPECT_DOUBLE_EQ(tk.WDialogGetReal(1071), 35.5);
    tk.WDialogUnload();
}

}  // namespace
}  // namespace zentol
