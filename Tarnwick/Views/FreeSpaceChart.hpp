#pragma once

#include "History/Calendar.hpp"
#include "History/VolumeTimeline.hpp"

#include <QWidget>

#include <optional>
#include <utility>

class QChart;
class QChartView;
class QLabel;
class QPushButton;

namespace tarnwick {

// A disk's available space at the latest scan of each of the past 30 days: the line, its
// one-off jumps marked (left out of the pace), the vertical scale (the whole disk, or zoomed
// to the range the used space spans) and the forecast sentence below.
class FreeSpaceChart : public QWidget {
    Q_OBJECT

public:
    explicit FreeSpaceChart(QWidget* parent = nullptr);

    // The scale starts as the timeline's automatic one.
    void setTimeline(const VolumeTimeline& timeline, const Calendar& calendar);
    void setScale(VolumeTimeline::Scale scale);

    [[nodiscard]] const VolumeTimeline& timeline() const { return m_timeline; }
    [[nodiscard]] VolumeTimeline::Scale scale() const { return m_scale; }
    // The vertical axis in bytes.
    [[nodiscard]] std::pair<double, double> verticalRange() const;
    [[nodiscard]] QString forecastText() const;
    [[nodiscard]] QChart* chart() const;
    // How many jumps are marked on the line.
    [[nodiscard]] int markedJumps() const;
    // What hovering the line at a time (milliseconds since 1970) shows: the nearest day's free
    // space; empty without points.
    [[nodiscard]] QString valueNear(double milliseconds) const;

    // What the chart says under the line: the forecast, or why there is none.
    static QString sentence(const VolumeTimeline& timeline, const Calendar& calendar);

private:
    void rebuild();
    void applyScale();

    VolumeTimeline m_timeline;
    std::optional<Calendar> m_calendar;
    VolumeTimeline::Scale m_scale = VolumeTimeline::Scale::full;
    QChartView* m_view;
    QPushButton* m_zoomed;
    QPushButton* m_full;
    QLabel* m_scaleNote;
    QLabel* m_forecast;
};

}
