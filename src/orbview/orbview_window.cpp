#include "orbview/orbview_window.h"

#include <cmath>

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QSlider>
#include <QStandardPaths>
#include <QStatusBar>
#include <QToolBar>

#include "orbview/orbital_view.h"
#include "toolkit/files.h"

namespace zentol {

namespace {

// The slider runs over isovalues 0.001 to 0.3 on a log scale, 100 steps.
constexpr double kLowest = 0.001, kHighest = 0.3;
constexpr int kSteps = 100;

double level_at(int position) { return kLowest * std::pow(kHighest / kLowest, position / double(kSteps)); }
int position_of(double level) {
    return static_cast<int>(std::lround(kSteps * std::log(level / kLowest) / std::log(kHighest / kLowest)));
}

}  // namespace

QString zentol_program() {
    const QString configured = qEnvironmentVariable("ZENTOL_PROGRAM");
    if (!configured.isEmpty() && QFileInfo(configured).isExecutable()) return configured;
    const QString beside = QCoreApplication::applicationDirPath() + "/zentol";
    if (QFileInfo(beside).isExecutable()) return beside;
    return QStandardPaths::findExecutable("zentol");
}

OrbviewWindow::OrbviewWindow(ViewerStart start) : start_(std::move(start)) {
    setWindowTitle("Orbview");
    view_ = new OrbitalView(this);
    setCentralWidget(view_);
    QToolBar* bar = addToolBar("Orbview");
    bar->setMovable(false);
    bar->addAction("&Open...", this, &OrbviewWindow::choose_and_open);
    bar->addAction("Save &PNG...", this, &OrbviewWindow::choose_and_save);
    if (returns_to_zentol(start_)) {
        bar->addAction("&Another Orbital", this, [this] { close(); })
            ->setToolTip("Back to Zentol's Mopac mode on " + QString::fromStdString(start_.job));
    }
    bar->addSeparator();
    bar->addWidget(new QLabel(" Isovalue "));
    slider_ = new QSlider(Qt::Horizontal);
    slider_->setRange(0, kSteps);
    slider_->setMinimumWidth(160);
    slider_->setToolTip("Isovalue of the surfaces (atomic units)");
    bar->addWidget(slider_);
    level_label_ = new QLabel;
    level_label_->setMinimumWidth(60);
    bar->addWidget(level_label_);
    bar->addSeparator();
    bar->addAction("&Quit", this, [this] {
        quit_only_ = true;
        close();
    });
    connect(slider_, &QSlider::valueChanged, this, &OrbviewWindow::level_moved);
    set_level(0.05);
    resize(800, 640);
    statusBar()->showMessage("Drag to turn, wheel to zoom");
}

void OrbviewWindow::set_level(double level) {
    slider_->setValue(position_of(std::clamp(level, kLowest, kHighest)));
    level_moved(slider_->value());
    view_->set_level(static_cast<float>(level));
}

void OrbviewWindow::level_moved(int position) {
    const double level = level_at(position);
    level_label_->setText(QString::number(level, 'g', 3));
    view_->set_level(static_cast<float>(level));
}

bool OrbviewWindow::open_cube(const QString& path) {
    std::string error;
    const auto text = files::read_text(path.toStdString());
    auto grid = text ? read_cube(*text, error) : std::nullopt;
    if (!text) error = "cannot read the file";
    if (!grid) {
        statusBar()->showMessage(path + ": " + QString::fromStdString(error));
        return false;
    }
    const bool density = grid->title.find("density") != std::string::npos && grid->title.find("Spin") == std::string::npos;
    setWindowTitle("Orbview - " + QFileInfo(path).fileName() + " - " + QString::fromStdString(grid->title));
    view_->set_map(std::move(*grid));
    // A density wants a lower surface than an orbital to show the molecule.
    set_level(density ? 0.02 : view_->two_lobes() ? 0.05 : 0.01);
    statusBar()->showMessage(QFileInfo(path).fileName() + (view_->two_lobes() ? ": red positive, blue negative" : ""));
    return true;
}

bool OrbviewWindow::save_png(const QString& path) {
    // Plain 8-bit RGB: the picture is opaque.
    const QImage image = view_->grabFramebuffer().convertToFormat(QImage::Format_RGB888);
    const bool ok = !image.isNull() && image.save(path, "PNG");
    statusBar()->showMessage(ok ? "Saved " + path : "Cannot save " + path);
    return ok;
}

void OrbviewWindow::choose_and_open() {
    const QString path = QFileDialog::getOpenFileName(this, "Open a cube file", QDir::currentPath(),
                                                      "Cube files (*.cube *.cub);;All files (*)");
    if (!path.isEmpty()) open_cube(path);
}

void OrbviewWindow::choose_and_save() {
    QString name = QDir::currentPath() + "/orbital.png";
    const QString path = QFileDialog::getSaveFileName(this, "Save the picture", name, "PNG images (*.png)");
    if (!path.isEmpty()) save_png(path.endsWith(".png", Qt::CaseInsensitive) ? path : path + ".png");
}

bool OrbviewWindow::back_to_zentol() {
    const QString program = zentol_program();
    if (program.isEmpty()) {
        QMessageBox::warning(this, "Orbview",
                             "Zentol cannot be found to go back to " + QString::fromStdString(start_.job) +
                                 ".\nSet ZENTOL_PROGRAM or put zentol on the PATH.");
        return false;
    }
    QStringList args;
    for (const std::string& w : zentol_return_words(start_, start_.orbital)) args << QString::fromStdString(w);
    return QProcess::startDetached(program, args, QDir::currentPath());
}

void OrbviewWindow::closeEvent(QCloseEvent* e) {
    // Leaving the viewer hands the job back to Zentol, in Mopac mode.
    if (returns_to_zentol(start_) && !returned_ && !quit_only_) {
        if (!back_to_zentol()) {
            e->ignore();
            quit_only_ = true;   // a second close leaves without Zentol
            return;
        }
        returned_ = true;
    }
    e->accept();
}

}  // namespace zentol
