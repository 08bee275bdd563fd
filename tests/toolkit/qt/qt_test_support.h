// Shared by the window tests of the Qt toolkit: one QApplication for the
// whole test program (offscreen when there is no display), and a helper that
// acts on a modal window once it is up.
#pragma once

#include <functional>

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <gtest/gtest.h>

namespace zentol::qt_testing {

// Acts on the modal dialog once it is up; gives up after a few seconds.
inline void on_modal(std::function<void(QDialog*)> act, int tries = 250) {
    QTimer::singleShot(20, [act, tries] {
        if (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget()); d && d->isVisible()) return act(d);
        if (tries > 0) return on_modal(act, tries - 1);
        ADD_FAILURE() << "no modal window appeared";
    });
}

}  // namespace zentol::qt_testing
