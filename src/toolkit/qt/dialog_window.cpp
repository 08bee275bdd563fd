#include "toolkit/qt/dialog_window.h"

#include <algorithm>
#include <map>

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTabWidget>
#include <QVBoxLayout>

namespace zentol {

namespace {

QString qs(const std::string& s) { return QString::fromStdString(s); }

// A caption in front of an input widget; Alt plus its mnemonic focuses it.
void add_row(QFormLayout* form, const std::string& caption, QWidget* w) {
    if (caption.empty()) {
        form->addRow(w);
        return;
    }
    auto* label = new QLabel(qs(caption));
    label->setBuddy(w);
    form->addRow(label, w);
}

}  // namespace

DialogWindow::DialogWindow(DialogModel& model, int type, QWidget* parent)
    : QDialog(parent),
      copy_(type == 2 ? std::make_unique<DialogModel>(model) : nullptr),
      model_(copy_ ? *copy_ : model) {
    const DialogDesc& desc = model_.desc();
    setObjectName("dialog_" + QString::number(desc.id));
    setWindowTitle(qs(desc.title));
    auto* outer = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    outer->addLayout(form);
    // A tab dialog shows each page's fields on a tab of its own.
    std::map<int, QFormLayout*> forms{{0, form}};
    if (!desc.pages.empty()) {
        auto* tabs = new QTabWidget;
        tabs->setObjectName("tabs");
        for (int page : desc.pages) {
            auto* w = new QWidget;
            forms[page] = new QFormLayout(w);
            auto title = desc.page_titles.find(page);
            tabs->addTab(w, qs(title == desc.page_titles.end() ? std::to_string(page) : title->second));
        }
        outer->addWidget(tabs);
    }
    outer->addLayout(buttons);
    bool has_buttons = false;
    for (const FieldDesc& f : desc.fields) {
        auto target = forms.find(f.page);
        add_field(f, target == forms.end() ? form : target->second, buttons);
        has_buttons = has_buttons || f.kind == FieldKind::Button;
    }
    if (!has_buttons && type == 1) {
        add_button(1, tr("OK"), buttons);
        add_button(2, tr("Cancel"), buttons);
    }
}

QWidget* DialogWindow::field_widget(int field) const {
    auto it = widgets_.find(field);
    return it == widgets_.end() ? nullptr : it->second;
}

void DialogWindow::add_button(int id, const QString& text, QHBoxLayout* buttons) {
    auto* b = new QPushButton(text);
    b->setObjectName("field_" + QString::number(id));
    b->setAutoDefault(false);
    b->setDefault(id == 1);
    connect(b, &QPushButton::clicked, this, [this, id] { press(id); });
    buttons->addWidget(b);
    widgets_[id] = b;
}

void DialogWindow::add_radio(const FieldDesc& f, QFormLayout* form) {
    auto* r = new QRadioButton(qs(f.text));
    r->setObjectName("field_" + QString::number(f.id));
    QButtonGroup*& group = groups_[f.group];
    if (!group) group = new QButtonGroup(this);
    group->addButton(r);
    r->setChecked(model_.value(f.id).state != 0);
    widgets_[f.id] = r;
    int members = 0;
    for (const FieldDesc& g : model_.desc().fields) members += g.kind == FieldKind::Radio && g.group == f.group;
    if (members <= 12) {
        form->addRow(r);
        return;
    }
    // A long group fills two columns, top to bottom, so the dialog stays low.
    QGridLayout*& grid = radio_grids_[f.group];
    if (!grid) {
        auto* box = new QWidget;
        grid = new QGridLayout(box);
        grid->setContentsMargins(0, 0, 0, 0);
        form->addRow(box);
    }
    const int index = radio_counts_[f.group]++, rows = (members + 1) / 2;
    grid->addWidget(r, index % rows, index / rows);
}

QWidget* DialogWindow::make_slider(const FieldDesc& f) {
    Trackbar t;
    if (auto it = model_.desc().trackbars.find(f.id); it != model_.desc().trackbars.end()) t = it->second;
    auto* s = new QSlider(Qt::Horizontal);
    s->setRange(std::min(t.min, t.max), std::max(t.min, t.max));
    s->setTickInterval(std::max(t.tick, 1));
    s->setSingleStep(std::max(t.tick, 1));
    s->setTickPosition(QSlider::TicksBelow);
    s->setValue(model_.value(f.id).state);
    return s;
}

void DialogWindow::add_field(const FieldDesc& f, QFormLayout* form, QHBoxLayout* buttons) {
    const FieldValue& v = model_.value(f.id);
    QWidget* w = nullptr;
    switch (f.kind) {
        case FieldKind::Button:
            add_button(f.id, qs(f.text), buttons);
            widgets_[f.id]->setEnabled(v.enabled);
            return;
        case FieldKind::Radio:
            add_radio(f, form);
            widgets_[f.id]->setEnabled(v.enabled);
            return;
        case FieldKind::Label:
            w = new QLabel(qs(v.text.empty() ? f.text : v.text));   // a text set at run time wins
            form->addRow(w);
            break;
        case FieldKind::Check: {
            auto* c = new QCheckBox(qs(f.text));
            c->setChecked(v.state != 0);
            form->addRow(c);
            w = c;
            break;
        }
        case FieldKind::Text:
            w = new QPlainTextEdit(qs(v.text));
            add_row(form, f.text, w);
            break;
        case FieldKind::String:
        case FieldKind::Real:
        case FieldKind::Integer:
            w = new QLineEdit(qs(v.text));
            add_row(form, f.text, w);
            break;
        case FieldKind::Trackbar:
            w = make_slider(f);
            add_row(form, f.text, w);
            break;
        case FieldKind::Menu: {
            auto* c = new QComboBox;
            for (const auto& item : v.items.empty() ? f.items : v.items) c->addItem(qs(item));
            c->setCurrentIndex(v.state - 1);   // state 0: nothing chosen
            w = c;
            add_row(form, f.text, w);
            break;
        }
    }
    w->setObjectName("field_" + QString::number(f.id));
    if (auto tip = model_.desc().tips.find(f.id); tip != model_.desc().tips.end()) w->setToolTip(qs(tip->second));
    w->setEnabled(v.enabled);
    widgets_[f.id] = w;
}

void DialogWindow::press(int button) {
    if (button == 2) {
        done(0);
        return;
    }
    if (store()) done(button);
}

bool DialogWindow::store_field(const FieldDesc& f, QWidget* w, DialogModel& into) {
    switch (f.kind) {
        case FieldKind::String:
            into.put_string(f.id, static_cast<QLineEdit*>(w)->text().toStdString());
            break;
        case FieldKind::Text:
            into.put_string(f.id, static_cast<QPlainTextEdit*>(w)->toPlainText().toStdString());
            break;
        case FieldKind::Real:
        case FieldKind::Integer: {
            std::string text = static_cast<QLineEdit*>(w)->text().toStdString();
            // An untouched or greyed number keeps the value it has.
            if (!w->isEnabled() || text == into.value(f.id).text) break;
            std::string why;
            if (into.set_from_text(f.id, text, &why)) break;
            QMessageBox::warning(this, windowTitle(), QString::fromStdString(why));
            w->setFocus();
            static_cast<QLineEdit*>(w)->selectAll();
            return false;
        }
        case FieldKind::Check:
            into.put_check(f.id, static_cast<QCheckBox*>(w)->isChecked());
            break;
        case FieldKind::Radio:
            if (static_cast<QRadioButton*>(w)->isChecked()) into.put_radio(f.id);
            break;
        case FieldKind::Trackbar:
            into.value(f.id).state = static_cast<QSlider*>(w)->value();
            break;
        case FieldKind::Menu:
            into.value(f.id).state = static_cast<QComboBox*>(w)->currentIndex() + 1;
            break;
        case FieldKind::Label:
        case FieldKind::Button:
            break;
    }
    return true;
}

bool DialogWindow::store() {
    DialogModel trial = model_;
    for (const FieldDesc& f : model_.desc().fields) {
        QWidget* w = field_widget(f.id);
        if (w && !store_field(f, w, trial)) return false;
    }
    model_ = trial;
    return true;
}

}  // namespace zentol
