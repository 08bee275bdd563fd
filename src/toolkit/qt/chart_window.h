// The chart window: a Qt Charts view of the toolkit's chart, one line
// series with point markers on two value axes.
#pragma once

#include <QWidget>

#include "toolkit/chart.h"

class QChart;
class QChartView;

namespace zentol {

class ChartWindow : public QWidget {
    Q_OBJECT
public:
    explicit ChartWindow(QWidget* parent);
    // Replaces what the window shows.
    void set_chart(const Chart& chart);
    QChartView* view() const { return view_; }

private:
    QChartView* view_;
};

// A chart view of its own, for a chart printed without a window.
QChartView* make_chart_view(const Chart& chart, QWidget* parent);
// Fills a chart with the toolkit's chart: title, series and axes.
void fill_chart(QChart* target, const Chart& chart);

}  // namespace zentol
