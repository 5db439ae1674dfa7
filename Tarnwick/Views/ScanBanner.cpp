#include "ScanBanner.hpp"

#include "ViewTexts.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnwick {

ScanBanner::ScanBanner(QWidget* parent)
    : QWidget(parent)
    , m_title(new QLabel(this))
    , m_path(new QLabel(this))
    , m_activity(new QProgressBar(this))
    , m_stop(new QPushButton(ViewTexts::stop, this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    m_title->setObjectName("scanTitle");
    m_path->setObjectName("scanPath");
    m_title->setTextFormat(Qt::PlainText);
    m_path->setTextFormat(Qt::PlainText);
    QFont small = m_path->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    m_path->setFont(small);
    m_path->setStyleSheet("color: #6B7280;");
    // No end is known in advance: the bar only shows that the scan is alive.
    m_activity->setRange(0, 0);
    m_activity->setTextVisible(false);
    m_activity->setFixedHeight(4);
    m_stop->setObjectName("stopScan");
    connect(m_stop, &QPushButton::clicked, this, &ScanBanner::stopRequested);

    auto* texts = new QVBoxLayout();
    texts->setSpacing(2);
    texts->addWidget(m_title);
    texts->addWidget(m_path);
    auto* row = new QHBoxLayout();
    row->addLayout(texts, 1);
    row->addWidget(m_stop);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 12, 16, 12);
    column->addLayout(row);
    column->addWidget(m_activity);
}

void ScanBanner::show(const QString& rootName, std::int64_t itemCount, const QString& currentPath)
{
    m_title->setText(ViewTexts::scanningTitle(rootName, QLocale().toString(static_cast<qlonglong>(itemCount))));
    m_fullPath = currentPath;
    m_path->setText(m_path->fontMetrics().elidedText(currentPath, Qt::ElideMiddle, std::max(m_path->width(), 100)));
    m_path->setToolTip(currentPath);
    setVisible(true);
}

QString ScanBanner::itemText() const
{
    return m_title->text();
}

QString ScanBanner::pathText() const
{
    return m_fullPath;
}

void ScanBanner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0xE3, 0xE7, 0xED));
    painter.setBrush(QColor(255, 255, 255, 235));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 10, 10);
}

void ScanBanner::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_path->setText(m_path->fontMetrics().elidedText(m_fullPath, Qt::ElideMiddle, std::max(m_path->width(), 100)));
}

}
