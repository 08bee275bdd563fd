// File and directory choosers and child processes of the Qt toolkit.
#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QProcess>

#include "toolkit/qt/qt_toolkit.h"

namespace zentol {

namespace {

QString qs(const std::string& s) { return QString::fromStdString(s); }

// Patterns of one filter entry ("*.XYZ" or "*.a;*.b"), each also in lower
// and upper case.
QStringList patterns_any_case(const QString& list) {
    QStringList out;
    for (const QString& p : list.split(';', Qt::SkipEmptyParts)) {
        for (const QString& v : {p.trimmed(), p.trimmed().toLower(), p.trimmed().toUpper()})
            if (!v.isEmpty() && !out.contains(v)) out << v;
    }
    return out;
}

// Starts a chooser at a directory, or at a file's directory with the file
// selected. An empty path starts in the current directory.
void start_at(QFileDialog& dialog, const std::string& path) {
    QFileInfo info(path.empty() ? QDir::currentPath() : qs(path));
    if (info.isDir()) {
        dialog.setDirectory(info.absoluteFilePath());
        return;
    }
    dialog.setDirectory(info.absolutePath());
    if (!info.fileName().isEmpty()) dialog.selectFile(info.fileName());
}

// Runs a chooser; the chosen path comes back absolute.
bool run_chooser(QFileDialog& dialog, std::string& path) {
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
    path = QFileInfo(dialog.selectedFiles().first()).absoluteFilePath().toStdString();
    return true;
}

// Swallows the user's input while a command runs, so that clicks and keys
// given meanwhile are not acted on later; painting and timers go on. Only
// Esc is remembered: it asks a series of runs to stop after this one.
class InputBlocker : public QObject {
public:
    explicit InputBlocker(bool& escape) : escape_(escape) {}
    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
            case QEvent::KeyPress:
                if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) escape_ = true;
                return true;
            case QEvent::KeyRelease:
            case QEvent::ShortcutOverride:
            case QEvent::Shortcut:
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonRelease:
            case QEvent::MouseButtonDblClick:
            case QEvent::MouseMove:
            case QEvent::Wheel:
            case QEvent::ContextMenu:
            case QEvent::TouchBegin:
            case QEvent::TouchUpdate:
            case QEvent::TouchEnd:
                return true;
            default:
                return QObject::eventFilter(watched, event);
        }
    }

private:
    bool& escape_;
};

}  // namespace

QStringList qt_name_filters(const std::string& filter) {
    const QStringList parts = qs(filter).split('|');
    QStringList out;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns = patterns_any_case(parts[i + 1]);
        if (patterns.isEmpty()) continue;
        out << parts[i].trimmed() + " (" + patterns.join(' ') + ")";
    }
    if (out.isEmpty()) out << "All files (*)";
    return out;
}

// Only opening an existing file is asked for; the mode is not needed.
bool QtToolkit::select_file(int filter_id, int mode, std::string& path, const std::string& title) {
    QFileDialog dialog(parent_widget(), qs(title));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    // Choosing a new name may also name folders that are still to be made.
    bool new_name = mode == kChooseNew;
    dialog.setAcceptMode(new_name ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(new_name ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    if (new_name) dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setNameFilters(qt_name_filters(filter_string(filter_id)));
    start_at(dialog, path);
    bool ok = run_chooser(dialog, path);
    last_button_ = ok ? 1 : 0;
    return ok;
}

bool QtToolkit::WSelectDir(std::string& path, const std::string& title) {
    QFileDialog dialog(parent_widget(), qs(title));
    dialog.setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::ShowDirsOnly);
    dialog.setFileMode(QFileDialog::Directory);
    start_at(dialog, path);
    bool ok = run_chooser(dialog, path);
    last_button_ = ok ? 1 : 0;
    return ok;
}

void QtToolkit::IOsCommand(const std::string& command, bool wait) {
    const QStringList args{"-c", qs(command)};
    if (!wait) {
        if (!QProcess::startDetached("/bin/sh", args, QDir::currentPath())) cannot_start("/bin/sh");
        return;
    }
    QProcess process;
    process.setWorkingDirectory(QDir::currentPath());
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    process.start("/bin/sh", args);
    if (!process.waitForStarted(-1)) {
        cannot_start("/bin/sh");
        return;
    }
    InputBlocker blocker(escape_during_run_);
    qApp->installEventFilter(&blocker);
    if (process.state() != QProcess::NotRunning) loop.exec();
    qApp->removeEventFilter(&blocker);
    if (process.state() != QProcess::NotRunning) process.waitForFinished(-1);
}

void QtToolkit::IOsExecute(const std::string& program, const std::vector<std::string>& args) {
    QStringList list;
    for (const auto& a : args) list << qs(a);
    if (!QProcess::startDetached(qs(program), list, QDir::currentPath())) cannot_start(qs(program));
}

}  // namespace zentol
