// A numbered dialog on the screen: widgets built from the dialog's
// description, filled from its field values, and copied back when the user
// confirms.
#pragma once

#include <map>
#include <memory>
#include <string>

#include <QDialog>

#include "toolkit/dialog_model.h"

class QButtonGroup;
class QFormLayout;
class QGridLayout;
class QHBoxLayout;

namespace zentol {

class DialogWindow : public QDialog {
    Q_OBJECT
public:
    // type 1 is the modal dialog the logic waits on: it works on the model
    // itself, gets OK and Cancel when its description has no buttons, and
    // exec() returns the pressed button (1 OK, 0 Cancel, else the field id).
    // type 2 is left up while the logic goes on: it shows the values as they
    // were when it was shown and works on a copy of them, because the logic
    // may unload or reload the dialog at any time; its buttons only close it.
    DialogWindow(DialogModel& model, int type, QWidget* parent = nullptr);

    // The widget of a field (objectName "field_<id>"), or nullptr.
    QWidget* field_widget(int field) const;

private:
    void add_field(const FieldDesc& f, QFormLayout* form, QHBoxLayout* buttons);
    void add_button(int id, const QString& text, QHBoxLayout* buttons);
    void add_radio(const FieldDesc& f, QFormLayout* form);
    QWidget* make_slider(const FieldDesc& f);
    void press(int button);
    // Copies the widgets into the model. Numbers the user changed go through
    // the model's checks; the first refused one is reported, gets the focus,
    // and nothing is copied.
    bool store();
    bool store_field(const FieldDesc& f, QWidget* w, DialogModel& into);

    std::unique_ptr<DialogModel> copy_;   // type 2 works on its own copy
    DialogModel& model_;
    std::map<int, QWidget*> widgets_;
    std::map<int, QButtonGroup*> groups_;
    std::map<int, QGridLayout*> radio_grids_;   // long radio groups stand in two columns
    std::map<int, int> radio_counts_;
};

}  // namespace zentol
