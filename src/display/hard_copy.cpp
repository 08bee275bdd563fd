#include "display/hard_copy.h"

#include <algorithm>

#include "display/renderer.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

// Field numbers of the hard-copy dialogs.
constexpr int kNameField = 1021;
constexpr int kFirstFormat = 1051;       // BMP, PNG, PCX, JPG
constexpr int kPrintField = 1031;
constexpr int kFirstResolution = 1061;   // five sizes

}  // namespace

std::string hard_copy_stem(const std::string& job, int counter) {
    int n = std::clamp(counter, 1, 99);
    return job + "_" + (n < 10 ? "0" : "") + std::to_string(n);
}

std::string image_extension(ImageFormat f) {
    switch (f) {
        case ImageFormat::Bmp: return ".bmp";
        case ImageFormat::Pcx: return ".pcx";
        case ImageFormat::Jpg: return ".jpg";
        default: return ".png";
    }
}

int resolution_factor(int choice) { return choice <= 1 ? 1 : 2 * choice - 2; }

void hard_copy(Session& s) {
    Toolkit& tk = s.tk;
    tk.WDialogLoad(112);
    tk.WDialogPutString(kNameField, hard_copy_stem(s.job.name, s.flags.hardcopy_counter));
    s.flags.hardcopy_counter = std::min(s.flags.hardcopy_counter + 1, 99);
    tk.WDialogPutRadioButton(kFirstFormat + 1);
    tk.WDialogShow(1);
    if (tk.last_button() != 1) return tk.WDialogUnload();
    std::string stem(text::trim(tk.WDialogGetString(kNameField)));
    int format = std::max(1, tk.WDialogGetRadioButton(kFirstFormat));
    bool print = tk.WDialogGetCheckBox(kPrintField) != 0;
    tk.WDialogUnload();
    if (stem.empty()) stem = hard_copy_stem(s.job.name, 1);
    std::string name = stem + image_extension(static_cast<ImageFormat>(format));

    tk.WDialogLoad(113);
    tk.WDialogPutRadioButton(kFirstResolution + 1);
    tk.WDialogShow(1);
    int choice = tk.last_button() == 1 ? std::max(1, tk.WDialogGetRadioButton(kFirstResolution)) : 0;
    tk.WDialogUnload();
    if (choice == 0) return;
    int f = resolution_factor(choice);

    tk.WDialogLoad(114);
    tk.WDialogShow(2);
    auto image = s.renderer.render_image(s, 640 * f, 480 * f);
    bool saved = image && tk.save_image(*image, name, format == 4 ? 75 : -1);
    tk.WDialogUnload();
    if (!saved) {
        tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Cannot write the picture " + name, "Hard Copy");
    } else {
        tk.WindowOutStatusBar(9, "Picture " + name);
        if (print) open_document(s, files::current_dir() + "/" + name);
    }
    s.renderer.init_gl_state();
    draw_scene(s);
}

}  // namespace zentol
