#include "FreeSpaceChart.hpp"

#include "History/HistoryTexts.hpp"
#include "MapPalette.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QAreaSeries>
#include <QButtonGroup>
#include <QChart>
#include <QChartView>
#include <QDateTime>
#include <QDateTimeAxis>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineSeries>
#include <QPushButton>
#include <QScatterSeries>
#include <QToolTip>
#include <QValueAxis>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

constexpr double gigabyte = 1e9;

double milliseconds(Date date)
{
    return static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count());
}

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QPushButton* segment(const QString& title, const char* name, QWidget* parent)
{
    auto* button = new QPushButton(title, parent);
    button->setCheckable(true);
    button->setObjectName(name);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

}

FreeSpaceChart::FreeSpaceChart(QWidget* parent)
    : QWidget(parent)
    , m_view(new QChartView(this))
    , m_zoomed(segment(ViewTexts::zoomed, "scaleZoomed", this))
    , m_full(segment(ViewTexts::fullScale, "scaleFull", this))
    , m_scaleNote(new QLabel(text(HistoryTexts::zoomedScaleExplanation), this))
    , m_forecast(new QLabel(this))
{
    setObjectName("freeSpaceChart");
    m_view->setRenderHint(QPainter::Antialiasing);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setMinimumHeight(240);
    m_view->setStyleSheet("background: transparent;");
    auto* scales = new QButtonGroup(this);
    scales->addButton(m_zoomed);
    scales->addButton(m_full);
    m_scaleNote->setWordWrap(true);
    m_scaleNote->setStyleSheet("color: #6B7280;");
    QFont small = m_scaleNote->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    m_scaleNote->setFont(small);
    m_forecast->setObjectName("forecast");
    m_forecast->setWordWrap(true);
    m_forecast->setTextFormat(Qt::PlainText);
    m_forecast->setStyleSheet("background: #EEF2F7; color: #1F2937; border-radius: 8px; padding: 10px 12px;");

    auto* scaleRow = new QHBoxLayout();
    scaleRow->setSpacing(0);
    scaleRow->addWidget(m_zoomed);
    scaleRow->addWidget(m_full);
    scaleRow->addSpacing(12);
    scaleRow->addWidget(m_scaleNote, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(10);
    column->addLayout(scaleRow);
    column->addWidget(m_view, 1);
    column->addWidget(m_forecast);
    setStyleSheet(R"(
        QPushButton#scaleZoomed, QPushButton#scaleFull { border: 1px solid #D7DCE3; padding: 4px 14px; background: #FFFFFF; color: #374151; }
        QPushButton#scaleZoomed { border-top-right-radius: 0; border-bottom-right-radius: 0; border-top-left-radius: 7px; border-bottom-left-radius: 7px; }
        QPushButton#scaleFull { border-left: none; border-top-left-radius: 0; border-bottom-left-radius: 0; border-top-right-radius: 7px; border-bottom-right-radius: 7px; }
        QPushButton#scaleZoomed:checked, QPushButton#scaleFull:checked { background: #DCE6F9; color: #111827; }
    )");
    connect(m_zoomed, &QPushButton::clicked, this, [this] { setScale(VolumeTimeline::Scale::zoomed); });
    connect(m_full, &QPushButton::clicked, this, [this] { setScale(VolumeTimeline::Scale::full); });
    rebuild();
}

QString FreeSpaceChart::sentence(const VolumeTimeline& timeline, const Calendar& calendar)
{
    if (timeline.points.empty())
        return ViewTexts::noMeasurements;
    if (timeline.forecast)
        return QString::fromStdString(timeline.forecast->text(calendar));
    if (timeline.dayCount < 2)
        return ViewTexts::oneDayOnly;
    if (timeline.isSteady)
        return ViewTexts::steady;
    return ViewTexts::noForecast;
}

void FreeSpaceChart::setTimeline(const VolumeTimeline& timeline, const Calendar& calendar)
{
    m_timeline = timeline;
    m_calendar = calendar;
    m_scale = timeline.automaticScale;
    rebuild();
}

void FreeSpaceChart::setScale(VolumeTimeline::Scale scale)
{
    m_scale = scale;
    applyScale();
}

QChart* FreeSpaceChart::chart() const
{
    return m_view->chart();
}

QString FreeSpaceChart::forecastText() const
{
    return m_forecast->text();
}

int FreeSpaceChart::markedJumps() const
{
    for (QAbstractSeries* series : chart()->series()) {
        if (auto* jumps = qobject_cast<QScatterSeries*>(series))
            return static_cast<int>(jumps->count());
    }
    return 0;
}

QString FreeSpaceChart::valueNear(double at) const
{
    const VolumeTimeline::Point* nearest = nullptr;
    for (const VolumeTimeline::Point& point : m_timeline.points) {
        if (!nearest || std::abs(milliseconds(point.date) - at) < std::abs(milliseconds(nearest->date) - at))
            nearest = &point;
    }
    if (!nearest)
        return {};
    QString date = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(milliseconds(nearest->date))).toString(QStringLiteral("MMM d"));
    return date + QStringLiteral(": ") + ViewTexts::freeOf(ViewFormat::size(nearest->available), ViewFormat::size(nearest->total));
}

std::pair<double, double> FreeSpaceChart::verticalRange() const
{
    const auto axes = chart()->axes(Qt::Vertical);
    if (axes.isEmpty())
        return { 0, 0 };
    auto* axis = static_cast<QValueAxis*>(axes.first());
    return { axis->min() * gigabyte, axis->max() * gigabyte };
}

void FreeSpaceChart::rebuild()
{
    auto* chart = new QChart();
    chart->setBackgroundVisible(false);
    chart->setPlotAreaBackgroundVisible(false);
    chart->legend()->hide();
    chart->setMargins(QMargins(4, 4, 8, 4));
    chart->setAnimationOptions(QChart::NoAnimation);
    m_view->setChart(chart); // the view owns the chart and deletes the one before
    m_forecast->setText(m_calendar ? sentence(m_timeline, *m_calendar) : ViewTexts::noMeasurements);
    bool hasPoints = !m_timeline.points.empty();
    m_view->setVisible(hasPoints);
    m_zoomed->setVisible(hasPoints);
    m_full->setVisible(hasPoints);
    m_scaleNote->setVisible(hasPoints);
    if (!hasPoints)
        return;

    auto* line = new QLineSeries();
    auto* floor = new QLineSeries();
    for (const VolumeTimeline::Point& point : m_timeline.points) {
        double x = milliseconds(point.date);
        line->append(x, static_cast<double>(point.available) / gigabyte);
        floor->append(x, 0);
    }
    // A single day still shows as a short level line.
    if (m_timeline.points.size() == 1) {
        double x = milliseconds(m_timeline.points.front().date) - 12 * 3600 * 1000.0;
        line->insert(0, QPointF(x, line->at(0).y()));
        floor->insert(0, QPointF(x, 0));
    }
    auto* area = new QAreaSeries(line, floor);
    QLinearGradient fill(0, 0, 0, 1);
    fill.setCoordinateMode(QGradient::ObjectBoundingMode);
    QColor top = MapPalette::accent();
    top.setAlpha(70);
    QColor bottom = MapPalette::accent();
    bottom.setAlpha(8);
    fill.setColorAt(0, top);
    fill.setColorAt(1, bottom);
    area->setBrush(fill);
    area->setPen(Qt::NoPen);
    chart->addSeries(area);
    // The line on its own, so that the area's sides and floor are not outlined.
    auto* edge = new QLineSeries();
    edge->append(line->points());
    edge->setPen(QPen(MapPalette::accent(), 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    chart->addSeries(edge);
    connect(edge, &QLineSeries::hovered, this, [this](const QPointF& at, bool entered) {
        if (entered)
            QToolTip::showText(QCursor::pos(), valueNear(at.x()), this);
        else
            QToolTip::hideText();
    });

    auto* jumps = new QScatterSeries();
    jumps->setMarkerShape(QScatterSeries::MarkerShapeCircle);
    jumps->setMarkerSize(11);
    jumps->setColor(MapPalette::growth());
    jumps->setBorderColor(Qt::white);
    for (const VolumeTimeline::Jump& jump : m_timeline.jumps) {
        const VolumeTimeline::Point& point = m_timeline.points[jump.index];
        jumps->append(milliseconds(point.date), static_cast<double>(point.available) / gigabyte);
    }
    chart->addSeries(jumps);
    connect(jumps, &QScatterSeries::hovered, this, [this](const QPointF& at, bool entered) {
        if (!entered) {
            QToolTip::hideText();
            return;
        }
        for (const VolumeTimeline::Jump& jump : m_timeline.jumps) {
            if (std::abs(milliseconds(jump.date) - at.x()) < 1000) {
                QString date = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(at.x())).toString(QStringLiteral("MMM d"));
                QToolTip::showText(QCursor::pos(), ViewTexts::jumpOf(ViewFormat::change(jump.change), date), this);
            }
        }
    });

    auto* days = new QDateTimeAxis();
    days->setFormat(QStringLiteral("MMM d"));
    days->setTickCount(std::clamp(m_timeline.dayCount, 2, 7));
    auto* bytes = new QValueAxis();
    bytes->setLabelFormat(QStringLiteral("%.0f GB"));
    for (QAbstractAxis* axis : { static_cast<QAbstractAxis*>(days), static_cast<QAbstractAxis*>(bytes) }) {
        axis->setLabelsColor(QColor(0x6B, 0x72, 0x80));
        axis->setGridLineColor(QColor(0xEC, 0xEF, 0xF3));
        axis->setLinePenColor(QColor(0xD7, 0xDC, 0xE3));
    }
    days->setGridLineVisible(false);
    chart->addAxis(days, Qt::AlignBottom);
    chart->addAxis(bytes, Qt::AlignLeft);
    for (QAbstractSeries* series : chart->series()) {
        series->attachAxis(days);
        series->attachAxis(bytes);
    }
    applyScale();
}

// The full scale runs from nothing to the whole capacity; the zoomed one spans the available
// space measured, with a margin, so that a few gigabytes on a large disk can be seen.
void FreeSpaceChart::applyScale()
{
    m_zoomed->setChecked(m_scale == VolumeTimeline::Scale::zoomed);
    m_full->setChecked(m_scale == VolumeTimeline::Scale::full);
    const auto axes = chart()->axes(Qt::Vertical);
    if (axes.isEmpty() || m_timeline.points.empty())
        return;
    auto* axis = static_cast<QValueAxis*>(axes.first());
    double capacity = static_cast<double>(std::max<std::int64_t>(m_timeline.capacity, 1));
    double low = 0;
    double high = capacity;
    if (m_scale == VolumeTimeline::Scale::zoomed) {
        double lowest = capacity - static_cast<double>(m_timeline.highestUsed);
        double highest = capacity - static_cast<double>(m_timeline.lowestUsed);
        double margin = std::max((highest - lowest) * 0.25, gigabyte);
        low = std::max(0.0, lowest - margin);
        high = std::min(capacity, highest + margin);
    }
    axis->setRange(low / gigabyte, high / gigabyte);
    axis->applyNiceNumbers();
    axis->setLabelFormat(high - low < 10 * gigabyte ? QStringLiteral("%.1f GB") : QStringLiteral("%.0f GB"));
}

}
