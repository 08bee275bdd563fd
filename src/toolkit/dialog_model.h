// Numbered dialogs: their descriptions (fields, texts and the [Checks],
// [Ranges], [Trackbars] and [Formats] companion data) and the field values
// the logic puts and gets. Both toolkits share this; they differ only in how
// a dialog is shown.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zentol {

enum class FieldKind { Label, String, Real, Integer, Check, Radio, Trackbar, Menu, Button, Text };

struct FieldDesc {
    int id = 0;
    FieldKind kind = FieldKind::Label;
    std::string text;
    int group = 0;                     // radio buttons: first field of the group
    std::vector<std::string> items;    // menu fields
    int page = 0;                      // the tab page it sits on; 0 the dialog itself
};

struct Trackbar { int max = 100, min = 0, tick = 1; };

struct DialogDesc {
    int id = 0;
    std::string title;
    std::vector<int> pages;            // a tab dialog lists the dialogs it holds
    std::map<int, std::string> page_titles;
    std::vector<FieldDesc> fields;
    std::map<int, int> checks;
    std::map<int, std::pair<double, double>> ranges;
    std::map<int, Trackbar> trackbars;
    std::map<int, std::string> formats;   // e.g. "f6.1"
    std::map<int, std::string> tips;      // what a field with a short label does

    const FieldDesc* field(int id) const;
};

// Parses one description; on error returns nullopt and says why in *error.
std::optional<DialogDesc> parse_dialog_desc(const std::string& text, int id, std::string* error);

// Formats a real the way a field with format "fW.D" shows it (blank-trimmed).
std::string format_field_real(double value, const std::string& format);

struct FieldValue {
    std::string text;
    double real = 0;
    long long integer = 0;
    int state = 0;      // check box, radio selection, trackbar, menu index
    bool enabled = true;
    std::vector<std::string> items;   // a menu's rows put at run time; the description's when empty
};

class DialogModel {
public:
    explicit DialogModel(DialogDesc desc);
    const DialogDesc& desc() const { return desc_; }
    FieldValue& value(int field);
    const FieldValue* find(int field) const;

    void put_string(int field, const std::string& s);
    void put_real(int field, double v);
    void put_integer(int field, long long v);
    void put_check(int field, int on);
    void put_radio(int field);                  // selects this field in its group
    int get_radio(int first_field) const;       // 1-based index in the group, 0 none
    // Values outside a field's [Ranges] are refused: returns false, keeps the old value.
    bool set_from_text(int field, const std::string& text, std::string* why);

private:
    DialogDesc desc_;
    std::map<int, FieldValue> values_;
};

}  // namespace zentol
