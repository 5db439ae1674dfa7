#include "DailyScansPage.hpp"

#include "DailyScans.hpp"
#include "ViewTexts.hpp"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

namespace tarnwick {

namespace {

QString passSummary(const DailyScans::Pass& pass)
{
    std::array<int, 4> counts {};
    for (const DailyScans::DiskOutcome& outcome : pass.outcomes)
        ++counts[static_cast<std::size_t>(outcome.outcome)];
    QStringList parts;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (counts[i] > 0)
            parts << ViewTexts::outcomeCount(counts[i], static_cast<int>(i));
    }
    auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(pass.startedAt.time_since_epoch()).count();
    QString when = QDateTime::fromMSecsSinceEpoch(milliseconds).toString(QStringLiteral("MMM d, HH:mm"));
    return ViewTexts::lastSnapshot(when, parts.isEmpty() ? QStringLiteral("no disks") : parts.join(QStringLiteral(", ")));
}

}

DailyScansPage::DailyScansPage(DailyScans* dailyScans, QWidget* parent)
    : QWidget(parent)
    , m_dailyScans(dailyScans)
    , m_switch(new QCheckBox(ViewTexts::dailySwitch, this))
    , m_lastPass(new QLabel(this))
    , m_progress(new QProgressBar(this))
    , m_progressText(new QLabel(this))
    , m_now(new QPushButton(ViewTexts::takeSnapshotNow, this))
    , m_error(new QLabel(this))
{
    QFont bold = m_switch->font();
    bold.setWeight(QFont::DemiBold);
    m_switch->setFont(bold);
    auto* explanation = new QLabel(ViewTexts::dailyExplanation, this);
    explanation->setWordWrap(true);
    explanation->setStyleSheet("color: #4B5563; padding-left: 24px;");
    m_lastPass->setWordWrap(true);
    m_lastPass->setStyleSheet("color: #4B5563;");
    m_progress->setTextVisible(false);
    m_progress->setFixedHeight(4);
    m_progressText->setStyleSheet("color: #4B5563;");
    m_error->setWordWrap(true);
    m_error->setStyleSheet("color: #B42318;");
    m_error->hide();
    auto* nowRow = new QHBoxLayout();
    nowRow->addWidget(m_now);
    nowRow->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(18, 16, 18, 16);
    column->setSpacing(10);
    column->addWidget(m_switch);
    column->addWidget(explanation);
    column->addWidget(m_error);
    column->addSpacing(10);
    column->addWidget(m_lastPass);
    column->addLayout(nowRow);
    column->addWidget(m_progressText);
    column->addWidget(m_progress);
    column->addStretch(1);

    connect(m_switch, &QCheckBox::clicked, this, &DailyScansPage::turn);
    connect(m_now, &QPushButton::clicked, this, [this] {
        if (m_dailyScans)
            m_dailyScans->takeSnapshotNow();
        refresh();
    });
    if (m_dailyScans) {
        QPointer<DailyScansPage> guard(this);
        m_observer = m_dailyScans->addObserver([guard] {
            QMetaObject::invokeMethod(QCoreApplication::instance(), [guard] {
                if (guard)
                    guard->refresh();
            }, Qt::QueuedConnection);
        });
    }
    refresh();
}

DailyScansPage::~DailyScansPage()
{
    if (m_dailyScans)
        m_dailyScans->removeObserver(m_observer);
}

QString DailyScansPage::lastPassText() const
{
    return m_lastPass->text();
}

QString DailyScansPage::error() const
{
    return m_error->isHidden() ? QString() : m_error->text();
}

void DailyScansPage::turn(bool on)
{
    if (!m_dailyScans)
        return;
    auto changed = on ? m_dailyScans->turnOn() : m_dailyScans->turnOff();
    m_error->setText(changed ? QString() : QString::fromStdString(changed.error()));
    m_error->setVisible(!changed);
    refresh();
    Q_EMIT switched();
}

void DailyScansPage::refresh()
{
    m_switch->setEnabled(m_dailyScans != nullptr);
    m_now->setEnabled(m_dailyScans != nullptr);
    if (!m_dailyScans) {
        m_lastPass->clear();
        m_progress->hide();
        m_progressText->hide();
        return;
    }
    m_switch->setChecked(m_dailyScans->isEnabled());
    std::optional<DailyScans::Pass> pass = m_dailyScans->lastPass();
    m_lastPass->setText(pass ? passSummary(*pass) : ViewTexts::noPassYet);
    DailyScans::Progress progress = m_dailyScans->progress();
    m_now->setEnabled(!progress.running);
    m_progress->setVisible(progress.running);
    m_progressText->setVisible(progress.running);
    if (progress.running) {
        // Disks are counted, but how long each takes isn't known in advance.
        m_progress->setRange(0, progress.total > 0 ? progress.total : 0);
        m_progress->setValue(progress.done);
        m_progressText->setText(progress.disk.empty() ? ViewTexts::takingSnapshot
                                                      : ViewTexts::takingSnapshotOf(QString::fromStdString(progress.disk), progress.done, progress.total));
    }
}

}
