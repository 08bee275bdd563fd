// Shared by the window tests of the Qt toolkit: one QApplication for the
// whole test program (offscreen when there is no display), and a helper that
// acts on a modal window once it is up.
#pragma once

#include <functional>
#include <type_traits>

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QTimer>
#include <gtest/gtest.h>

namespace zentol::qt_testing {

// Acts on the modal widget of type W once it is up. Gives up after ms_left,
// rejecting whatever is modal, so a broken dialog cannot hang the test; a
// window the act left open is a failure too.
template <typename W = QDialog>
void on_modal(std::type_identity_t<std::function<void(W*)>> act, int ms_left = 5000) {
    QTimer::singleShot(20, [act, ms_left] {
        if (auto* w = qobject_cast<W*>(QApplication::activeModalWidget()); w && w->isVisible()) {
            QPointer<W> acted = w;
            act(w);
            QTimer::singleShot(3000, [acted] {
                if (!acted || !acted->isVisible()) return;
                ADD_FAILURE() << "the modal window stayed open";
                while (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) d->reject();
            });
            return;
        }
        if (ms_left > 0) return on_modal<W>(act, ms_left - 20);
        ADD_FAILURE() << "no modal window appeared";
        if (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) d->reject();
    });
}

}  // namespace zentol::qt_testing
