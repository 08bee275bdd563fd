// The toolkit's own text editor and text viewer, the plot window, picture
// writing through Qt's image writers, and the update fetch through Qt Network.
#include <QBuffer>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {

namespace {

QPlainTextEdit* text_area(QDialog* dialog, const QString& content, bool read_only) {
    auto* edit = new QPlainTextEdit(content, dialog);
    edit->setObjectName("text");
    edit->setReadOnly(read_only);
    edit->setLineWrapMode(QPlainTextEdit::NoWrap);
    edit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return edit;
}

}  // namespace

void QtToolkit::edit_text_file(const std::string& path) {
    // The last line end is the editor's to add back when it saves.
    std::string content = files::read_text(path).value_or("");
    if (!content.empty() && content.back() == '\n') content.pop_back();
    QDialog dialog(main_window());
    dialog.setObjectName("editor");
    dialog.setWindowTitle(QString::fromStdString(path));
    dialog.resize(720, 520);
    auto* layout = new QVBoxLayout(&dialog);
    auto* edit = text_area(&dialog, QString::fromUtf8(content.c_str()), false);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Close, &dialog);
    layout->addWidget(edit);
    layout->addWidget(buttons);
    QObject::connect(buttons->button(QDialogButtonBox::Save), &QPushButton::clicked, &dialog, [&] {
        std::string text = edit->toPlainText().toStdString();
        if (!text.empty() && text.back() != '\n') text += '\n';
        if (files::write_atomic(path, text)) edit->document()->setModified(false);
        else QMessageBox::warning(&dialog, dialog.windowTitle(), "Cannot write " + dialog.windowTitle());
    });
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, [&] {
        if (edit->document()->isModified() &&
            QMessageBox::question(&dialog, dialog.windowTitle(), "Close without saving the changes?") !=
                QMessageBox::Yes)
            return;
        dialog.reject();
    });
    dialog.exec();
}

void QtToolkit::show_text(const std::string& title, const std::string& text) {
    QDialog dialog(main_window());
    dialog.setObjectName("viewer");
    dialog.setWindowTitle(QString::fromStdString(title));
    dialog.resize(720, 520);
    auto* layout = new QVBoxLayout(&dialog);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    layout->addWidget(text_area(&dialog, QString::fromUtf8(text.c_str()), true));
    layout->addWidget(buttons);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    dialog.exec();
}

void QtToolkit::show_plot(const Plot& plot) {
    if (!plot_window_) {
        plot_window_ = new PlotWindow(plot, main_window());
        plot_window_->show();
    }
    plot_window_->refresh();
}

void QtToolkit::close_plot() {
    if (plot_window_) plot_window_->close();
    delete plot_window_;
}

bool QtToolkit::save_image(const Image& image, const std::string& path, int quality) {
    std::string low = text::lower_case(path);
    const char* format = nullptr;
    if (low.ends_with(".png")) format = "PNG";
    else if (low.ends_with(".jpg") || low.ends_with(".jpeg")) format = "JPG";
    if (!format) return Toolkit::save_image(image, path, quality);   // PCX and BMP: our own writers
    QImage q(image.rgb.data(), image.width, image.height, image.width * 3, QImage::Format_RGB888);
    // Coded in memory and written through a temporary file, as every file is.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!q.save(&buffer, format, quality)) return false;
    return files::write_atomic(path, std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

bool QtToolkit::copy_image_to_clipboard(const Image& image) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!clipboard || image.rgb.empty()) return false;
    // The clipboard keeps its own copy: the picture's buffer goes away.
    QImage q(image.rgb.data(), image.width, image.height, image.width * 3, QImage::Format_RGB888);
    clipboard->setImage(q.copy());
    return true;
}

std::optional<std::string> QtToolkit::http_get(const std::string& url, int timeout_ms) {
    QNetworkAccessManager manager;
    QNetworkRequest request(QUrl(QString::fromStdString(url)));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    QNetworkReply* reply = manager.get(request);
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    timer.start(timeout_ms);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    std::optional<std::string> body;
    int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->isFinished() && reply->error() == QNetworkReply::NoError && status == 200) {
        QByteArray data = reply->read(65536 + 1);
        if (data.size() <= 65536) body = data.toStdString();
    }
    reply->abort();
    reply->deleteLater();
    return body;
}

}  // namespace zentol
