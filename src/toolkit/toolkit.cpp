#include "toolkit/toolkit.h"

#include <fstream>
#include <sstream>

#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/http.h"

namespace zentol {

std::optional<std::string> Toolkit::http_get(const std::string& url, int timeout_ms) {
    return http::get(url, timeout_ms);
}

bool Toolkit::save_image(const Image& image, const std::string& path, int) {
    std::string low = text::lower_case(path);
    auto ends = [&](const char* e) { return low.size() >= 4 && low.compare(low.size() - 4, 4, e) == 0; };
    if (ends(".pcx")) return files::write_atomic(path, encode_pcx(image));
    if (ends(".bmp")) return files::write_atomic(path, encode_bmp(image));
    if (ends(".png")) return files::write_atomic(path, encode_png(image));
    return false;
}

void Toolkit::WindowOpenChild(const std::string& title, int width, int height) {
    plot_ = Plot{};
    plot_.title = title;
    plot_.width = width;
    plot_.height = height;
    child_open_ = true;
    show_plot(plot_);
}

void Toolkit::WindowCloseChild() {
    if (child_open_) close_plot();
    child_open_ = false;
}

void Toolkit::IGrUnits(double left, double bottom, double right, double top) {
    plot_.left = left, plot_.bottom = bottom, plot_.right = right, plot_.top = top;
    if (child_open_) show_plot(plot_);
}

void Toolkit::IGrColourN(int n) { plot_.colour = n; }

void Toolkit::IGrMoveTo(double x, double y) { plot_.pen_x = x, plot_.pen_y = y; }

void Toolkit::IGrLineTo(double x, double y) {
    plot_.items.push_back({PlotItem::Line, plot_.pen_x, plot_.pen_y, x, y, plot_.colour, ""});
    IGrMoveTo(x, y);
    if (child_open_) show_plot(plot_);
}

void Toolkit::IGrCircle(double x, double y, double radius) {
    plot_.items.push_back({PlotItem::Circle, x, y, radius, 0, plot_.colour, ""});
    if (child_open_) show_plot(plot_);
}

void Toolkit::IGrCharOut(double x, double y, const std::string& text) {
    plot_.items.push_back({PlotItem::Text, x, y, 0, 0, plot_.colour, text});
    if (child_open_) show_plot(plot_);
}

std::string filter_string(int filter_id) {
    if (filter_id == 20001) return "Zentol file .XYZ|*.XYZ|";
    if (filter_id == kFilterFireflyPunch) return "Firefly PUN file|*.pun|";
    if (filter_id == kFilterStructureOpen)
        return "Structure files|*.xyz;*.pdb;*.ent;*.sdf;*.sd;*.mol;*.mol2;*.cml;*.cif;*.log;*.out|"
               "Zentol file .XYZ|*.XYZ|PDB|*.pdb;*.ent|MDL MOL and SDF|*.mol;*.sdf;*.sd|Sybyl MOL2|*.mol2|"
               "Chemical Markup Language|*.cml|Gaussian, ORCA, GAMESS, MOPAC output|*.log;*.out|All files|*|";
    if (filter_id == kFilterStructureExport)
        return "MDL SDF|*.sdf|MDL MOL|*.mol|PDB|*.pdb|Sybyl MOL2|*.mol2|Chemical Markup Language|*.cml|"
               "Standard XYZ|*.xyz|Any format Open Babel writes|*|";
    return "All files|*|";
}

namespace {

DialogDesc read_desc(const std::string& ui_dir, int id) {
    std::ifstream in(ui_dir + "/dialogs/" + std::to_string(id) + ".dlg", std::ios::binary);
    DialogDesc desc;
    desc.id = id;
    if (in) {
        std::ostringstream all;
        all << in.rdbuf();
        std::string error;
        if (auto parsed = parse_dialog_desc(all.str(), id, &error)) desc = std::move(*parsed);
    }
    return desc;
}

// A tab dialog holds the fields of its pages: they are merged into its one
// description, so the logic puts and gets every page's fields on it.
void merge_pages(DialogDesc& desc, const std::string& ui_dir) {
    for (int page : desc.pages) {
        DialogDesc p = read_desc(ui_dir, page);
        desc.page_titles[page] = p.title.empty() ? "Page " + std::to_string(page) : p.title;
        for (auto& f : p.fields) {
            if (f.kind == FieldKind::Button) continue;
            f.page = page;
            desc.fields.push_back(f);
        }
        desc.checks.insert(p.checks.begin(), p.checks.end());
        desc.ranges.insert(p.ranges.begin(), p.ranges.end());
        desc.trackbars.insert(p.trackbars.begin(), p.trackbars.end());
        desc.formats.insert(p.formats.begin(), p.formats.end());
        desc.tips.insert(p.tips.begin(), p.tips.end());
    }
}

}  // namespace

bool Toolkit::WDialogLoad(int id) {
    DialogDesc desc = read_desc(ui_dir_, id);
    merge_pages(desc, ui_dir_);
    // A description that is missing or damaged still gives a dialog with no
    // fields, so the logic's puts and gets stay harmless.
    if (desc.title.empty()) desc.title = "Dialog " + std::to_string(id);
    if (loaded_.count(id)) hide_dialog(id);
    loaded_[id] = std::make_unique<DialogModel>(std::move(desc));
    selected_ = id;
    return true;
}

void Toolkit::WDialogSelect(int id) {
    if (!loaded_.count(id)) WDialogLoad(id);
    selected_ = id;
}

DialogModel* Toolkit::selected() {
    if (!loaded_.count(selected_)) WDialogLoad(selected_);
    return loaded_[selected_].get();
}

void Toolkit::WDialogShow(int type) {
    int button = show_dialog(*selected(), type);
    if (type == 1) last_button_ = button;
}

void Toolkit::WDialogUnload() {
    hide_dialog(selected_);
    loaded_.erase(selected_);
}

void Toolkit::WDialogPutString(int field, const std::string& s) { selected()->put_string(field, s); }
std::string Toolkit::WDialogGetString(int field) { return selected()->value(field).text; }
void Toolkit::WDialogPutReal(int field, double v) { selected()->put_real(field, v); }
double Toolkit::WDialogGetReal(int field) { return selected()->value(field).real; }
void Toolkit::WDialogPutInteger(int field, long long v) { selected()->put_integer(field, v); }
long long Toolkit::WDialogGetInteger(int field) { return selected()->value(field).integer; }
void Toolkit::WDialogPutCheckBox(int field, int on) { selected()->put_check(field, on); }
int Toolkit::WDialogGetCheckBox(int field) { return selected()->value(field).state; }
void Toolkit::WDialogPutRadioButton(int field) { selected()->put_radio(field); }
int Toolkit::WDialogGetRadioButton(int first_field) { return selected()->get_radio(first_field); }
void Toolkit::WDialogPutTrackbar(int field, int v) { selected()->value(field).state = v; }
int Toolkit::WDialogGetTrackbar(int field) { return selected()->value(field).state; }
void Toolkit::WDialogFieldState(int field, int enabled) { selected()->value(field).enabled = enabled != 0; }
void Toolkit::WDialogPutMenu(int field, const std::vector<std::string>& rows, int chosen) {
    FieldValue& v = selected()->value(field);
    v.items = rows;
    v.state = chosen;
}
int Toolkit::WDialogGetMenu(int field) { return selected()->value(field).state; }

}  // namespace zentol
