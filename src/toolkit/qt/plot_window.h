// The second window: paints the toolkit's plot, scaled to the window, y up.
#pragma once

#include <QWidget>

#include "toolkit/plot.h"

namespace zentol {

class PlotWindow : public QWidget {
    Q_OBJECT
public:
    PlotWindow(const Plot& plot, QWidget* parent);
    void refresh();   // the plot changed: title, size of a new window, picture

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Plot& plot_;
};

}  // namespace zentol
