#include "FreeSpaceDialog.hpp"

#include "FreeSpaceChart.hpp"
#include "HistoryFeed.hpp"
#include "OffThread.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>


namespace tarnwick {

FreeSpaceDialog::FreeSpaceDialog(const QString& diskName, HistorySource disk, HistoryFeed& history, QWidget* parent)
    : QDialog(parent)
    , m_disk(std::move(disk))
    , m_history(history)
    , m_summary(new QLabel(this))
    , m_busy(new QProgressBar(this))
    , m_chart(new FreeSpaceChart(this))
{
    setWindowTitle(ViewTexts::freeSpaceOf(diskName));
    setObjectName("freeSpaceDialog");
    resize(720, 500);
    auto* title = new QLabel(ViewTexts::freeSpaceOf(diskName), this);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    titleFont.setWeight(QFont::DemiBold);
    title->setFont(titleFont);
    m_summary->setStyleSheet("color: #6B7280;");
    if (auto space = VolumeIdentity::space(m_disk.path))
        m_summary->setText(ViewTexts::freeOf(ViewFormat::size(space->available), ViewFormat::size(space->total)));
    m_busy->setRange(0, 0);
    m_busy->setTextVisible(false);
    m_busy->setFixedHeight(4);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(ViewTexts::close, QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(22, 20, 22, 16);
    column->setSpacing(8);
    column->addWidget(title);
    column->addWidget(m_summary);
    column->addWidget(m_busy);
    column->addSpacing(6);
    column->addWidget(m_chart, 1);
    column->addWidget(buttons);
    load();
}

QString FreeSpaceDialog::summaryText() const
{
    return m_summary->text();
}

bool FreeSpaceDialog::isLoading() const
{
    return !m_busy->isHidden();
}

void FreeSpaceDialog::load()
{
    struct Read {
        VolumeTimeline timeline;
        Calendar calendar = Calendar::current();
    };
    HistoryStore* store = m_history.store();
    std::string volume = m_disk.volume;
    OffThread::run<Read>(
        this,
        [store, volume] {
            Read read;
            if (!store)
                return read;
            read.calendar = store->calendar();
            if (auto measurements = store->measurements(volume))
                read.timeline = VolumeTimeline::make(*measurements, store->now(), read.calendar);
            return read;
        },
        [this](Read read) {
            // The words keep the free space now, as the sidebar reads it; the line ends at the
            // latest scan's measurement.
            m_busy->hide();
            m_chart->setTimeline(read.timeline, read.calendar);
            Q_EMIT loaded();
        });
}

}
