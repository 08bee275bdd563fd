#include "toolkit/dialog_model.h"

#include <sstream>

#include "text/fixed_format.h"

namespace zentol {

const FieldDesc* DialogDesc::field(int fid) const {
    for (const auto& f : fields)
        if (f.id == fid) return &f;
    return nullptr;
}

namespace {

std::optional<FieldKind> kind_from_word(const std::string& w) {
    static const std::pair<const char*, FieldKind> kinds[] = {
        {"label", FieldKind::Label},     {"string", FieldKind::String}, {"real", FieldKind::Real},
        {"integer", FieldKind::Integer}, {"check", FieldKind::Check},   {"radio", FieldKind::Radio},
        {"trackbar", FieldKind::Trackbar}, {"menu", FieldKind::Menu},   {"button", FieldKind::Button},
        {"text", FieldKind::Text}};
    for (const auto& [name, kind] : kinds)
        if (w == name) return kind;
    return std::nullopt;
}

// The rest of a line after n words, without surrounding blanks and quotes.
std::string rest_text(std::istringstream& in) {
    std::string rest;
    std::getline(in, rest);
    std::string_view v = text::trim(rest);
    if (v.size() >= 2 && v.front() == '"' && v.back() == '"') v = v.substr(1, v.size() - 2);
    return std::string(v);
}

bool parse_field_line(std::istringstream& in, DialogDesc& d, std::string* error) {
    FieldDesc f;
    std::string kind;
    if (!(in >> f.id >> kind)) return (*error = "field needs a number and a kind", false);
    auto k = kind_from_word(kind);
    if (!k) return (*error = "unknown field kind " + kind, false);
    f.kind = *k;
    if (f.kind == FieldKind::Radio) {
        if (!(in >> f.group)) return (*error = "radio field needs its group's first field", false);
    }
    f.text = rest_text(in);
    if (f.kind == FieldKind::Menu) {
        // Menu items are separated by '|'.
        std::string items = f.text;
        f.text.clear();
        std::size_t start = 0;
        while (start <= items.size()) {
            std::size_t bar = items.find('|', start);
            if (bar == std::string::npos) bar = items.size();
            f.items.emplace_back(items.substr(start, bar - start));
            start = bar + 1;
        }
    }
    d.fields.push_back(std::move(f));
    return true;
}

bool parse_section_line(const std::string& section, std::istringstream& in, DialogDesc& d,
                        std::string* error) {
    int fid = 0;
    if (!(in >> fid)) return (*error = "section line needs a field number", false);
    if (section == "[Checks]") {
        int on = 0;
        if (!(in >> on)) return (*error = "[Checks] line needs 0 or 1", false);
        d.checks[fid] = on;
    } else if (section == "[Ranges]") {
        std::string lo, hi;
        in >> lo >> hi;
        auto a = text::read_f(lo), b = text::read_f(hi);
        if (!a || !b || lo.empty() || hi.empty()) return (*error = "[Ranges] line needs min and max", false);
        d.ranges[fid] = {*a, *b};
    } else if (section == "[Trackbars]") {
        Trackbar t;
        if (!(in >> t.max >> t.min >> t.tick)) return (*error = "[Trackbars] line needs max min tick", false);
        d.trackbars[fid] = t;
    } else if (section == "[Formats]") {
        std::string f;
        in >> f;
        if (f.size() < 3 || f.front() != '(' || f.back() != ')')
            return (*error = "[Formats] line needs (fW.D)", false);
        d.formats[fid] = text::lower_case(f.substr(1, f.size() - 2));
    } else if (section == "[Tips]") {
        std::string tip = rest_text(in);
        if (tip.empty()) return (*error = "[Tips] line needs a quoted text", false);
        d.tips[fid] = tip;
    } else {
        return (*error = "unknown section " + section, false);
    }
    return true;
}

}  // namespace

std::optional<DialogDesc> parse_dialog_desc(const std::string& content, int id, std::string* error) {
    std::string dummy;
    if (!error) error = &dummy;
    DialogDesc d;
    d.id = id;
    std::string section;
    std::istringstream lines(content);
    std::string line;
    int number = 0;
    while (std::getline(lines, line)) {
        ++number;
        std::string_view t = text::trim(line);
        if (t.empty() || t.front() == '#') continue;
        if (t.front() == '[') {
            section = std::string(t);
            continue;
        }
        std::istringstream in{std::string(t)};
        bool ok = true;
        if (!section.empty()) {
            ok = parse_section_line(section, in, d, error);
        } else {
            std::string word;
            in >> word;
            if (word == "title") d.title = rest_text(in);
            else if (word == "page") { int p = 0; in >> p; d.pages.push_back(p); }
            else if (word == "field") ok = parse_field_line(in, d, error);
            else { *error = "unknown word " + word; ok = false; }
        }
        if (!ok) {
            *error = "dialog " + std::to_string(id) + " line " + std::to_string(number) + ": " + *error;
            return std::nullopt;
        }
    }
    return d;
}

std::string format_field_real(double value, const std::string& format) {
    int w = 0, dec = 0;
    if (format.size() >= 2 && format[0] == 'f') {
        std::size_t dot = format.find('.');
        auto wv = text::read_i(format.substr(1, dot == std::string::npos ? std::string::npos : dot - 1));
        auto dv = dot == std::string::npos ? std::optional<long long>(0) : text::read_i(format.substr(dot + 1));
        if (wv && dv) { w = static_cast<int>(*wv); dec = static_cast<int>(*dv); }
    }
    if (w <= 0) { w = 14; dec = 6; }
    return std::string(text::trim(text::format_f(value, w, dec)));
}

DialogModel::DialogModel(DialogDesc desc) : desc_(std::move(desc)) {
    for (const auto& f : desc_.fields) values_[f.id];
    for (const auto& [fid, on] : desc_.checks) {
        const FieldDesc* f = desc_.field(fid);
        if (f && f->kind == FieldKind::Radio) { if (on) put_radio(fid); }
        else values_[fid].state = on;
    }
}

FieldValue& DialogModel::value(int field) { return values_[field]; }

const FieldValue* DialogModel::find(int field) const {
    auto it = values_.find(field);
    return it == values_.end() ? nullptr : &it->second;
}

void DialogModel::put_string(int field, const std::string& s) { values_[field].text = s; }

void DialogModel::put_real(int field, double v) {
    auto& fv = values_[field];
    fv.real = v;
    auto fmt = desc_.formats.find(field);
    fv.text = format_field_real(v, fmt == desc_.formats.end() ? "" : fmt->second);
}

void DialogModel::put_integer(int field, long long v) {
    auto& fv = values_[field];
    fv.integer = v;
    fv.text = std::to_string(v);
}

void DialogModel::put_check(int field, int on) { values_[field].state = on ? 1 : 0; }

void DialogModel::put_radio(int field) {
    const FieldDesc* f = desc_.field(field);
    int group = f ? f->group : field;
    for (const auto& g : desc_.fields)
        if (g.kind == FieldKind::Radio && g.group == group) values_[g.id].state = (g.id == field);
}

int DialogModel::get_radio(int first_field) const {
    int index = 0;
    for (const auto& g : desc_.fields) {
        if (g.kind != FieldKind::Radio || g.group != first_field) continue;
        ++index;
        auto it = values_.find(g.id);
        if (it != values_.end() && it->second.state) return index;
    }
    return 0;
}

bool DialogModel::set_from_text(int field, const std::string& s, std::string* why) {
    const FieldDesc* f = desc_.field(field);
    FieldValue& fv = values_[field];
    if (!f || (f->kind != FieldKind::Real && f->kind != FieldKind::Integer)) {
        fv.text = s;
        return true;
    }
    double v = 0;
    if (f->kind == FieldKind::Real) {
        auto r = text::read_f(s);
        if (!r || text::trim(s).empty()) {
            if (why) *why = "\"" + s + "\" is not a number";
            return false;
        }
        v = *r;
    } else {
        auto r = text::read_i(s);
        if (!r || text::trim(s).empty()) {
            if (why) *why = "\"" + s + "\" is not a whole number";
            return false;
        }
        v = static_cast<double>(*r);
    }
    auto range = desc_.ranges.find(field);
    if (range != desc_.ranges.end() && (v < range->second.first || v > range->second.second)) {
        if (why)
            *why = "The value must lie between " + format_field_real(range->second.first, "") + " and " +
                   format_field_real(range->second.second, "");
        return false;
    }
    if (f->kind == FieldKind::Real) put_real(field, v);
    else put_integer(field, static_cast<long long>(v));
    return true;
}

}  // namespace zentol
