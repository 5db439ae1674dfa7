#include "AlertsPage.hpp"

#include "Alerts/AlertReadings.hpp"
#include "Alerts/AlertPeriods.hpp"
#include "Alerts/AlertTexts.hpp"
#include "Alerts/SpaceAlertStore.hpp"
#include "History/HistoryPeriod.hpp"
#include "HistoryFeed.hpp"
#include "OffThread.hpp"
#include "Platform/UserDefaults.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <cmath>

namespace tarnwick {

namespace {

constexpr double gigabyte = 1e9;

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QString periodPhrase(std::string_view rawValue)
{
    std::optional<HistoryPeriod> period = HistoryPeriod::fromRawValue(rawValue);
    QString title = ViewTexts::periodTitle(period ? static_cast<int>(*period) : 0);
    return title.left(1).toLower() + title.mid(1);
}

QString percentText(double percent)
{
    return QString::number(percent, 'f', std::abs(percent - std::round(percent)) < 0.05 ? 0 : 1) + QStringLiteral(" %");
}

}

QString AlertsPage::limitText(const SpaceAlert::Condition& condition)
{
    using Condition = SpaceAlert::Condition;
    if (const auto* disk = std::get_if<Condition::DiskUsed>(&condition.value))
        return ViewTexts::limitFullerThan(percentText(disk->percent));
    if (const auto* size = std::get_if<Condition::Size>(&condition.value))
        return ViewTexts::limitLargerThan(ViewFormat::size(size->bytes));
    if (const auto* share = std::get_if<Condition::Share>(&condition.value))
        return ViewTexts::limitShare(percentText(share->percent));
    const auto& growth = std::get<Condition::Growth>(condition.value);
    return ViewTexts::limitGrowth(ViewFormat::size(growth.bytes), periodPhrase(growth.period));
}

QString AlertsPage::readingText(const SpaceAlert::Condition& condition, const AlertReading& reading)
{
    if (reading.state == AlertReading::State::unknown || !reading.value)
        return QString::fromStdString(reading.note());
    QString value;
    switch (condition.kind()) {
    case SpaceAlert::Condition::Kind::diskUsed:
    case SpaceAlert::Condition::Kind::share:
        value = percentText(*reading.value);
        break;
    case SpaceAlert::Condition::Kind::size:
        value = ViewFormat::size(static_cast<std::int64_t>(*reading.value));
        break;
    case SpaceAlert::Condition::Kind::growth:
        value = ViewFormat::change(static_cast<std::int64_t>(*reading.value));
        break;
    }
    if (reading.state == AlertReading::State::exceeded)
        value = ViewTexts::exceeded + QStringLiteral(": ") + value;
    return value + QString::fromStdString(reading.note());
}

AlertsPage::AlertsPage(std::shared_ptr<UserDefaults> defaults, HistoryFeed& history, QWidget* parent)
    : QWidget(parent)
    , m_defaults(std::move(defaults))
    , m_history(history)
    , m_list(new QTreeWidget(this))
    , m_busy(new QProgressBar(this))
    , m_remove(new QPushButton(ViewTexts::removeAlert, this))
    , m_place(new QLineEdit(this))
    , m_kind(new QComboBox(this))
    , m_value(new QDoubleSpinBox(this))
    , m_period(new QComboBox(this))
    , m_error(new QLabel(this))
{
    auto* intro = new QLabel(ViewTexts::alertsIntro(text(AlertTexts::rules), QString::fromStdString(AlertTexts::oneAlertPerKind())), this);
    intro->setWordWrap(true);
    intro->setStyleSheet("color: #4B5563;");
    m_list->setObjectName("alertList");
    m_list->setColumnCount(3);
    m_list->setHeaderLabels({ ViewTexts::placeColumn, ViewTexts::limitColumn, ViewTexts::readingColumn });
    m_list->setRootIsDecorated(false);
    m_list->setAlternatingRowColors(true);
    m_list->header()->setStretchLastSection(true);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_list->setMinimumHeight(150);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->setUniformRowHeights(true);
    m_busy->setRange(0, 0);
    m_busy->setTextVisible(false);
    m_busy->setFixedHeight(4);
    m_busy->hide();
    m_remove->setEnabled(false);

    m_place->setPlaceholderText(ViewTexts::alertPlacePlaceholder);
    auto* choose = new QPushButton(ViewTexts::choosePlace, this);
    for (const QString& kind : { ViewTexts::diskFullerThan, ViewTexts::folderLargerThan, ViewTexts::folderShareAbove, ViewTexts::folderGrowsBy })
        m_kind->addItem(kind);
    m_value->setDecimals(1);
    for (HistoryPeriod period : allHistoryPeriods)
        m_period->addItem(periodPhrase(period.rawValue()), static_cast<int>(period));
    m_period->setCurrentIndex(static_cast<int>(HistoryPeriod::week));
    auto* addButton = new QPushButton(ViewTexts::addAlert, this);
    addButton->setProperty("accent", true);
    m_error->setWordWrap(true);
    m_error->setStyleSheet("color: #B42318;");
    m_error->hide();

    auto* placeRow = new QHBoxLayout();
    placeRow->addWidget(m_place, 1);
    placeRow->addWidget(choose);
    auto* limitRow = new QHBoxLayout();
    limitRow->addWidget(m_kind);
    limitRow->addWidget(m_value);
    limitRow->addWidget(m_period);
    limitRow->addStretch(1);
    limitRow->addWidget(addButton);
    auto* listButtons = new QHBoxLayout();
    listButtons->addStretch(1);
    listButtons->addWidget(m_remove);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(18, 16, 18, 16);
    column->setSpacing(8);
    column->addWidget(intro);
    column->addWidget(m_busy);
    column->addWidget(m_list, 1);
    column->addLayout(listButtons);
    column->addSpacing(6);
    column->addLayout(placeRow);
    column->addLayout(limitRow);
    column->addWidget(m_error);

    connect(m_kind, &QComboBox::currentIndexChanged, this, &AlertsPage::kindChosen);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, [this] { m_remove->setEnabled(!m_list->selectedItems().isEmpty()); });
    connect(m_remove, &QPushButton::clicked, this, &AlertsPage::removeSelected);
    connect(choose, &QPushButton::clicked, this, [this] {
        QString path = QFileDialog::getExistingDirectory(this, ViewTexts::choosePlace, m_place->text());
        if (!path.isEmpty())
            m_place->setText(path);
    });
    connect(addButton, &QPushButton::clicked, this, [this] {
        add(m_place->text(), static_cast<Kind>(m_kind->currentIndex()), m_value->value(), m_period->currentData().toInt());
    });
    // A new snapshot may change what folder alerts read.
    connect(&m_history, &HistoryFeed::changed, this, &AlertsPage::reload);
    kindChosen();
    reload();
}

void AlertsPage::kindChosen()
{
    auto kind = static_cast<Kind>(m_kind->currentIndex());
    bool percent = kind == Kind::diskUsed || kind == Kind::share;
    m_value->setSuffix(percent ? QStringLiteral(" %") : QStringLiteral(" GB"));
    m_value->setDecimals(percent ? 0 : 1);
    m_value->setRange(percent ? 1 : 0.1, percent ? 99 : 1'000'000);
    m_value->setValue(kind == Kind::diskUsed ? 90 : kind == Kind::share ? 20 : kind == Kind::size ? 50 : 5);
    m_period->setVisible(kind == Kind::growth);
}

QString AlertsPage::error() const
{
    return m_error->isHidden() ? QString() : m_error->text();
}

bool AlertsPage::isMeasuring() const
{
    return !m_busy->isHidden();
}

void AlertsPage::showError(const QString& message)
{
    m_error->setText(message);
    m_error->setVisible(!message.isEmpty());
}

bool AlertsPage::add(const QString& place, Kind kind, double value, int period)
{
    using Condition = SpaceAlert::Condition;
    auto bytes = static_cast<std::int64_t>(std::llround(value * gigabyte));
    auto percent = static_cast<int>(std::lround(value));
    Condition condition = [&]() -> Condition {
        switch (kind) {
        case Kind::diskUsed:
            return { Condition::DiskUsed { percent } };
        case Kind::size:
            return { Condition::Size { bytes } };
        case Kind::share:
            return { Condition::Share { percent } };
        case Kind::growth:
            break;
        }
        return { Condition::Growth { bytes, std::string(HistoryPeriod(static_cast<HistoryPeriod::Value>(period)).rawValue()) } };
    }();
    std::string path = SpaceAlertStore::normalizedPlace(place.trimmed().toStdString());
    bool isDisk = AlertReadings::placeKind(path) == SpaceAlertStore::PlaceKind::disk;
    SpaceAlertStore store(*m_defaults);
    auto added = store.add(path, isDisk ? SpaceAlertStore::PlaceKind::disk : SpaceAlertStore::PlaceKind::folder, condition);
    if (!added) {
        showError(QString::fromStdString(added.error().text()));
        return false;
    }
    showError({});
    m_place->clear();
    reload();
    Q_EMIT alertsChanged();
    return true;
}

bool AlertsPage::removeSelected()
{
    QList<QTreeWidgetItem*> selected = m_list->selectedItems();
    if (selected.isEmpty())
        return false;
    SpaceAlertStore store(*m_defaults);
    for (QTreeWidgetItem* item : selected) {
        if (auto removed = store.remove(item->data(0, Qt::UserRole).toString().toStdString()); !removed)
            showError(QString::fromStdString(removed.error().text()));
    }
    reload();
    Q_EMIT alertsChanged();
    return true;
}

void AlertsPage::reload()
{
    m_alerts = SpaceAlertStore(*m_defaults).alerts();
    showAlerts();
    if (m_alerts.empty())
        return;
    std::uint64_t request = ++m_request;
    m_busy->show();
    std::vector<SpaceAlert> alerts = m_alerts;
    HistoryStore* store = m_history.store();
    using Readings = std::map<std::string, AlertReading>;
    OffThread::run<Readings>(
        this,
        [alerts, store] {
            Readings readings;
            Date now = std::chrono::system_clock::now();
            for (const SpaceAlert& alert : alerts)
                readings[alert.id] = AlertReadings::read(alert, store, now);
            return readings;
        },
        [this, request](Readings readings) {
            if (request != m_request)
                return;
            m_busy->hide();
            showReadings(readings);
            Q_EMIT readingsShown();
        });
}

void AlertsPage::showAlerts()
{
    m_list->clear();
    if (m_alerts.empty()) {
        auto* empty = new QTreeWidgetItem(m_list, { ViewTexts::noAlerts });
        empty->setFlags(Qt::NoItemFlags);
        return;
    }
    for (const SpaceAlert& alert : m_alerts) {
        auto* item = new QTreeWidgetItem(m_list,
            { ViewFormat::homePath(alert.path, QDir::homePath().toStdString()), limitText(alert.condition), ViewTexts::measuring });
        item->setData(0, Qt::UserRole, QString::fromStdString(alert.id));
        item->setToolTip(0, QString::fromStdString(ScopeResolver::displayPath(alert.path)) + QStringLiteral("\n") + QString::fromStdString(alert.shortID()));
    }
}

void AlertsPage::showReadings(const std::map<std::string, AlertReading>& readings)
{
    for (int row = 0; row < m_list->topLevelItemCount(); ++row) {
        QTreeWidgetItem* item = m_list->topLevelItem(row);
        std::string id = item->data(0, Qt::UserRole).toString().toStdString();
        auto alert = std::ranges::find(m_alerts, id, &SpaceAlert::id);
        auto reading = readings.find(id);
        if (alert == m_alerts.end() || reading == readings.end())
            continue;
        item->setText(2, readingText(alert->condition, reading->second));
        item->setToolTip(2, item->text(2));
        if (reading->second.state == AlertReading::State::exceeded)
            item->setForeground(2, QColor(0xB4, 0x23, 0x18));
        else if (reading->second.state == AlertReading::State::unknown)
            item->setForeground(2, QColor(0x6B, 0x72, 0x80));
    }
}

}
