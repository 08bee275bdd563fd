// The orbital viewer's window: the view, an isovalue slider, and the
// commands Open, Save PNG, Another Orbital (back to Zentol) and Quit.
#pragma once

#include <QMainWindow>

#include "wavefunction/viewer_start.h"

class QLabel;
class QSlider;

namespace zentol {

class OrbitalView;

class OrbviewWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit OrbviewWindow(ViewerStart start);

    // Opens a cube file; false (and a message in the status bar) when it
    // cannot be read.
    bool open_cube(const QString& path);
    bool save_png(const QString& path);
    OrbitalView* view() const { return view_; }
    // Sets the isovalue (atomic units) and the slider with it.
    void set_level(double level);

protected:
    void closeEvent(QCloseEvent* e) override;

private:
    void choose_and_open();
    void choose_and_save();
    // Starts Zentol on the job in Mopac mode; true when it was started.
    bool back_to_zentol();
    void level_moved(int position);

    ViewerStart start_;
    OrbitalView* view_;
    QSlider* slider_;
    QLabel* level_label_;
    bool returned_ = false;
    bool quit_only_ = false;
};

// The program that is Zentol: $ZENTOL_PROGRAM, zentol beside this program,
// or zentol on the PATH; empty when there is none.
QString zentol_program();

}  // namespace zentol
