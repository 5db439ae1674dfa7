#include "HistoryPage.hpp"

#include "History/HistoryStore.hpp"
#include "HistoryFeed.hpp"
#include "History/HistoryTexts.hpp"
#include "History/Snapshot.hpp"
#include "OffThread.hpp"
#include "Platform/SystemLog.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>


namespace tarnwick {

namespace {

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

struct Figures {
    bool exists = false;
    std::int64_t dayOfHistory = 0;
    std::int64_t stored = 0;
    QString problem;
};

}

HistoryPage::HistoryPage(HistoryFeed& history, QWidget* parent)
    : QWidget(parent)
    , m_history(history)
    , m_dayOfHistory(new QLabel(this))
    , m_stored(new QLabel(this))
    , m_busy(new QProgressBar(this))
    , m_clear(new QPushButton(ViewTexts::clearHistory, this))
{
    QFont large = m_dayOfHistory->font();
    large.setPointSizeF(large.pointSizeF() * 1.15);
    large.setWeight(QFont::DemiBold);
    m_dayOfHistory->setFont(large);
    m_dayOfHistory->setObjectName("dayOfHistory");
    m_stored->setStyleSheet("color: #4B5563;");
    auto* rule = new QLabel(text(Snapshot::keepRule), this);
    rule->setWordWrap(true);
    rule->setStyleSheet("color: #4B5563;");
    auto* where = new QLabel(ViewTexts::historyFolder + QStringLiteral(" ") + QString::fromStdString(m_history.store() ? m_history.store()->directory() : std::string()), this);
    where->setWordWrap(true);
    where->setTextInteractionFlags(Qt::TextSelectableByMouse);
    where->setStyleSheet("color: #6B7280;");
    m_busy->setRange(0, 0);
    m_busy->setTextVisible(false);
    m_busy->setFixedHeight(4);
    m_busy->hide();
    auto* buttons = new QHBoxLayout();
    buttons->addWidget(m_clear);
    buttons->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(18, 16, 18, 16);
    column->setSpacing(10);
    column->addWidget(m_dayOfHistory);
    column->addWidget(m_stored);
    column->addWidget(rule);
    column->addWidget(where);
    column->addWidget(m_busy);
    column->addSpacing(6);
    column->addLayout(buttons);
    column->addStretch(1);
    connect(m_clear, &QPushButton::clicked, this, &HistoryPage::askToClear);
    connect(&m_history, &HistoryFeed::changed, this, &HistoryPage::reload);
    reload();
}

bool HistoryPage::isBusy() const
{
    return !m_busy->isHidden();
}

QString HistoryPage::dayOfHistoryText() const
{
    return m_dayOfHistory->text();
}

void HistoryPage::reload()
{
    m_busy->show();
    HistoryStore* store = m_history.store();
    OffThread::run<Figures>(
        this,
        [store] {
            Figures figures;
            if (store && !store->sources().empty()) {
                figures.exists = true;
                figures.dayOfHistory = store->dayOfHistoryBytes();
                figures.stored = store->storedBytes();
            }
            return figures;
        },
        [this](Figures figures) {
            m_busy->hide();
            m_storedBytes = figures.stored;
            m_dayOfHistory->setText(figures.dayOfHistory > 0 ? QString::fromStdString(HistoryTexts::dayOfHistory(figures.dayOfHistory))
                                                             : ViewTexts::noDayOfHistory);
            m_stored->setText(ViewTexts::storedHistory(ViewFormat::size(figures.stored)));
            m_clear->setEnabled(figures.exists);
            Q_EMIT figuresShown();
        });
}

void HistoryPage::askToClear()
{
    delete m_confirmation;
    m_confirmation = new QMessageBox(QMessageBox::Warning, ViewTexts::appName, text(HistoryTexts::clearTitle), QMessageBox::NoButton, this);
    m_confirmation->setInformativeText(QString::fromStdString(HistoryTexts::clearExplanation(m_storedBytes)));
    QPushButton* clear = m_confirmation->addButton(ViewTexts::clearHistoryButton, QMessageBox::DestructiveRole);
    m_confirmation->setDefaultButton(m_confirmation->addButton(ViewTexts::cancel, QMessageBox::RejectRole));
    m_confirmation->setWindowModality(Qt::WindowModal);
    connect(m_confirmation, &QMessageBox::finished, this, [this, clear] {
        if (m_confirmation->clickedButton() == clear)
            this->clear();
    });
    m_confirmation->open();
}

void HistoryPage::clear()
{
    m_busy->show();
    m_clear->setEnabled(false);
    HistoryStore* store = m_history.store();
    OffThread::run<QString>(
        this,
        [store] {
            if (!store)
                return QString();
            auto cleared = store->clear();
            return cleared ? QString() : QString::fromStdString(cleared.error().message());
        },
        [this](QString problem) {
            if (!problem.isEmpty()) {
                SystemLog::write(SystemLog::Level::error, "history", problem.toStdString());
                QMessageBox::warning(this, ViewTexts::appName, problem);
            }
            reload();
            Q_EMIT cleared();
        });
}

}
