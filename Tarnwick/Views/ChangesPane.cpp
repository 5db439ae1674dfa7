#include "ChangesPane.hpp"

#include "History/HistoryStore.hpp"
#include "HistoryFeed.hpp"
#include "History/HistoryTexts.hpp"
#include "History/ScanRecorder.hpp"
#include "History/Snapshot.hpp"
#include "MapPalette.hpp"
#include "OffThread.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QComboBox>
#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QProgressBar>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace tarnwick {

namespace {

// While the history saves the scan, the pane looks again every second, for a minute.
// A scan is saved within a second or two; a save that failed is told elsewhere, and the pane
// stops waiting for it after this.
constexpr int saveWaitMilliseconds = 60'000;
// The picker's item of a day picked among the saved days, beside the periods.
constexpr int pickedDay = -1;

enum Role { kindRole = Qt::UserRole + 1, pathRole, changeRole, uncertainRole, scaleRole };

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QDateTime dateTime(Date date)
{
    return QDateTime::fromMSecsSinceEpoch(std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count());
}

// "Jun 7", with the year when it is not this one.
QString shortDate(Date date)
{
    QDateTime when = dateTime(date);
    bool thisYear = when.date().year() == QDate::currentDate().year();
    return when.toString(thisYear ? QStringLiteral("MMM d") : QStringLiteral("MMM d, yyyy"));
}

QString dateAndTime(Date date)
{
    return shortDate(date) + QStringLiteral(", ") + dateTime(date).toString(QStringLiteral("HH:mm"));
}

std::int64_t magnitude(std::int64_t value)
{
    return value < 0 ? (value == INT64_MIN ? INT64_MAX : -value) : value;
}

QString relativeTo(const std::string& path, const std::string& folder)
{
    if (path.size() > folder.size() && path.starts_with(folder) && (folder == "/" || path[folder.size()] == '/'))
        return QString::fromStdString(path.substr(folder == "/" ? 1 : folder.size() + 1));
    return QString::fromStdString(path.substr(path.rfind('/') + 1));
}

// A changed place as a name, its signed change and a bar of it against the largest change
// shown; the rest and section rows in quieter type.
class ChangeDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        auto kind = static_cast<ChangesPane::RowKind>(index.data(kindRole).toInt());
        int line = option.fontMetrics.height();
        if (kind == ChangesPane::RowKind::section)
            return QSize(200, line + 16);
        if (kind == ChangesPane::RowKind::more)
            return QSize(200, line + 10);
        return QSize(200, line + 18);
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        auto kind = static_cast<ChangesPane::RowKind>(index.data(kindRole).toInt());
        QRect area = option.rect.adjusted(12, 0, -12, 0);
        QString name = index.data(Qt::DisplayRole).toString();
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (kind == ChangesPane::RowKind::section) {
            QFont font = option.font;
            font.setPointSizeF(font.pointSizeF() * 0.82);
            font.setWeight(QFont::DemiBold);
            font.setCapitalization(QFont::AllUppercase);
            painter->setFont(font);
            painter->setPen(QColor(0x8A, 0x93, 0xA3));
            painter->drawText(area.adjusted(0, 0, 0, -3), Qt::AlignLeft | Qt::AlignBottom, name);
            painter->restore();
            return;
        }
        if (option.state & QStyle::State_MouseOver && kind == ChangesPane::RowKind::place) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(QColor(0xF1, 0xF4, 0xF8));
            painter->drawRoundedRect(QRectF(option.rect).adjusted(4, 1, -4, -1), 6, 6);
        }
        if (kind == ChangesPane::RowKind::more) {
            painter->setPen(QColor(0x6B, 0x72, 0x80));
            painter->drawText(area, Qt::AlignLeft | Qt::AlignVCenter, name);
            painter->restore();
            return;
        }
        auto change = index.data(changeRole).toLongLong();
        bool uncertain = index.data(uncertainRole).toBool();
        auto scale = std::max<qlonglong>(index.data(scaleRole).toLongLong(), 1);
        QColor color = change > 0 ? MapPalette::growth() : MapPalette::shrinkage();
        int line = option.fontMetrics.height();
        QRect textRow(area.left(), area.top() + 5, area.width(), line);
        QString amount = ViewFormat::change(change, uncertain);
        QFont bold = option.font;
        bold.setWeight(QFont::DemiBold);
        int amountWidth = QFontMetrics(bold).horizontalAdvance(amount) + 12;
        painter->setFont(option.font);
        painter->setPen(kind == ChangesPane::RowKind::rest ? QColor(0x6B, 0x72, 0x80) : QColor(0x1F, 0x29, 0x37));
        painter->drawText(textRow.adjusted(0, 0, -amountWidth, 0), Qt::AlignLeft | Qt::AlignVCenter,
            option.fontMetrics.elidedText(name, Qt::ElideMiddle, textRow.width() - amountWidth));
        painter->setFont(bold);
        painter->setPen(color.darker(115));
        painter->drawText(textRow, Qt::AlignRight | Qt::AlignVCenter, amount);
        QRectF track(area.left(), textRow.bottom() + 4, area.width(), 3);
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(0xEE, 0xF1, 0xF5));
        painter->drawRoundedRect(track, 1.5, 1.5);
        QRectF bar = track;
        bar.setWidth(std::max(2.0, track.width() * std::min(1.0, static_cast<double>(magnitude(change)) / static_cast<double>(scale))));
        if (uncertain)
            color.setAlphaF(0.5);
        painter->setBrush(color);
        painter->drawRoundedRect(bar, 1.5, 1.5);
        painter->restore();
    }
};

// "■ Grew  ▨ Shrank", drawn the way the map draws them.
class ChangeKey : public QWidget {
public:
    explicit ChangeKey(QWidget* parent)
        : QWidget(parent)
    {
        setFixedHeight(fontMetrics().height() + 4);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        int x = 0;
        for (bool grew : { true, false }) {
            QRectF swatch(x, (height() - 10) / 2.0, 10, 10);
            QColor color = grew ? MapPalette::growth() : MapPalette::shrinkage();
            painter.setPen(Qt::NoPen);
            painter.setBrush(grew ? color : MapPalette::forRing(color, 3));
            painter.drawRoundedRect(swatch, 2, 2);
            if (!grew) {
                painter.setBrush(QBrush(color, Qt::BDiagPattern));
                painter.drawRoundedRect(swatch, 2, 2);
            }
            QString label = grew ? ViewTexts::grew : ViewTexts::shrank;
            painter.setPen(QColor(0x4B, 0x55, 0x63));
            painter.drawText(QRect(x + 15, 0, 200, height()), Qt::AlignLeft | Qt::AlignVCenter, label);
            x += 15 + fontMetrics().horizontalAdvance(label) + 18;
        }
    }
};

}

struct ChangesPane::Loaded {
    std::uint64_t request = 0;
    std::optional<PeriodChanges::Problem> problem;
    std::shared_ptr<const PeriodChanges> comparison;
    std::shared_ptr<const SunburstView::ChangeMap> onTree;
    std::optional<std::expected<HistoryQueries::Changes, HistoryQueries::ChangesError>> atOpen;
};

ChangesPane::ChangesPane(HistoryFeed& history, QWidget* parent)
    : QWidget(parent)
    , m_history(history)
    , m_picker(new QComboBox(this))
    , m_rule(new QLabel(text(HistoryTexts::periodRule), this))
    , m_busy(new QProgressBar(this))
    , m_headline(new QLabel(this))
    , m_detail(new QLabel(this))
    , m_key(new ChangeKey(this))
    , m_list(new QListWidget(this))
    , m_notes(new QLabel(this))
    , m_message(new QLabel(this))
    , m_giveUp(new QTimer(this))
{
    setObjectName("changes");
    auto* title = new QLabel(ViewTexts::changes, this);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.1);
    titleFont.setWeight(QFont::DemiBold);
    title->setFont(titleFont);
    m_picker->setObjectName("colorMode");
    for (HistoryPeriod period : allHistoryPeriods)
        m_picker->addItem(ViewTexts::periodTitle(static_cast<int>(period)), static_cast<int>(period));
    m_rule->setWordWrap(true);
    m_rule->setStyleSheet("color: #6B7280;");
    QFont small = m_rule->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    m_rule->setFont(small);
    m_busy->setRange(0, 0);
    m_busy->setTextVisible(false);
    m_busy->setFixedHeight(4);
    m_busy->hide();
    QFont headlineFont = m_headline->font();
    headlineFont.setPointSizeF(headlineFont.pointSizeF() * 1.25);
    headlineFont.setWeight(QFont::DemiBold);
    m_headline->setFont(headlineFont);
    m_headline->setWordWrap(true);
    m_headline->setTextFormat(Qt::PlainText);
    m_detail->setWordWrap(true);
    m_detail->setStyleSheet("color: #6B7280;");
    m_list->setObjectName("changeList");
    m_list->setItemDelegate(new ChangeDelegate(m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setMouseTracking(true);
    m_list->viewport()->setAttribute(Qt::WA_Hover);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setStyleSheet("QListWidget { background: transparent; outline: 0; }");
    m_notes->setWordWrap(true);
    m_notes->setTextFormat(Qt::PlainText);
    m_notes->setStyleSheet("background: #EEF2F7; color: #374151; border-radius: 6px; padding: 8px;");
    m_message->setWordWrap(true);
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setStyleSheet("color: #6B7280; padding: 24px 12px;");
    m_giveUp->setSingleShot(true);
    m_giveUp->setInterval(saveWaitMilliseconds);

    auto* header = new QHBoxLayout();
    header->addWidget(title);
    header->addStretch(1);
    header->addWidget(m_picker);
    auto* top = new QVBoxLayout();
    top->setContentsMargins(16, 14, 16, 4);
    top->setSpacing(8);
    top->addLayout(header);
    top->addWidget(m_rule);
    top->addWidget(m_busy);
    top->addSpacing(2);
    top->addWidget(m_headline);
    top->addWidget(m_detail);
    top->addWidget(m_key);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 10);
    column->setSpacing(4);
    column->addLayout(top);
    column->addWidget(m_message);
    column->addWidget(m_list, 1);
    auto* notesRow = new QVBoxLayout();
    notesRow->setContentsMargins(16, 0, 16, 0);
    notesRow->addWidget(m_notes);
    column->addLayout(notesRow);

    connect(m_picker, &QComboBox::activated, this, [this](int index) {
        int chosen = m_picker->itemData(index).toInt();
        if (chosen != pickedDay)
            setPeriod(static_cast<HistoryPeriod::Value>(chosen));
    });
    connect(m_giveUp, &QTimer::timeout, this, &ChangesPane::giveUpWaiting);
    // The scan's own snapshot arrives with a save: the pane looks again then, and only then.
    connect(&m_history, &HistoryFeed::changed, this, [this] {
        m_savedSinceLoad = true;
        if (m_waitingForSave)
            retry();
    });
    connect(m_list, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
        if (static_cast<RowKind>(item->data(kindRole).toInt()) == RowKind::place)
            Q_EMIT placeChosen(item->data(pathRole).toString());
    });
    clear();
}

ChangesPane::~ChangesPane() = default;

void ChangesPane::giveUpWaiting()
{
    if (!m_waitingForSave)
        return;
    m_waitingForSave = false;
    showMessage(ViewTexts::notSaved, false);
    Q_EMIT loaded();
}

void ChangesPane::setPeriod(HistoryPeriod period)
{
    bool leavesDay = m_since.has_value();
    if (leavesDay) {
        m_since.reset();
        m_picker->removeItem(m_picker->findData(pickedDay));
    }
    m_picker->setCurrentIndex(m_picker->findData(static_cast<int>(period)));
    if (period == m_period && !leavesDay)
        return;
    m_period = period;
    reload();
}

void ChangesPane::compareSince(const HistoryEntry& day)
{
    m_since = day;
    int index = m_picker->findData(pickedDay);
    if (index < 0) {
        m_picker->addItem(QString(), pickedDay);
        index = m_picker->count() - 1;
    }
    m_picker->setItemText(index, ViewTexts::since(shortDate(day.date)));
    m_picker->setCurrentIndex(index);
    reload();
}

void ChangesPane::showScan(std::shared_ptr<const ScanTree> tree, NodeID open, Date finishedAt, bool saved)
{
    bool sameScan = tree == m_tree && finishedAt == m_finishedAt && saved == m_saved;
    if (sameScan && open == m_open)
        return;
    m_tree = std::move(tree);
    m_open = open;
    m_finishedAt = finishedAt;
    m_saved = saved;
    if (sameScan && m_comparison)
        compareOpenFolder();
    else if (!sameScan)
        reload();
}

void ChangesPane::clear()
{
    m_tree.reset();
    m_comparison.reset();
    m_saved = false;
    ++m_request;
    m_giveUp->stop();
    m_waitingForSave = false;
    showMessage(ViewTexts::scanToCompare, false);
    Q_EMIT changesShown(nullptr, {});
}

bool ChangesPane::isLoading() const
{
    return !m_busy->isHidden();
}

QString ChangesPane::headline() const
{
    return m_headline->isHidden() ? QString() : m_headline->text();
}

QString ChangesPane::detail() const
{
    return m_detail->isHidden() ? QString() : m_detail->text();
}

QString ChangesPane::message() const
{
    return m_message->isHidden() ? QString() : m_message->text();
}

QString ChangesPane::notes() const
{
    return m_notes->isHidden() ? QString() : m_notes->text();
}

void ChangesPane::setBusy(bool busy)
{
    m_busy->setVisible(busy);
}

void ChangesPane::showMessage(const QString& message, bool busy)
{
    m_rows.clear();
    m_list->clear();
    m_list->hide();
    m_headline->hide();
    m_detail->hide();
    m_key->hide();
    m_notes->hide();
    m_message->setText(message);
    m_message->show();
    setBusy(busy);
}

void ChangesPane::reload()
{
    ++m_request;
    m_giveUp->stop();
    m_waitingForSave = false;
    m_comparison.reset();
    Q_EMIT changesShown(nullptr, {});
    if (!m_tree) {
        showMessage(ViewTexts::scanToCompare, false);
        return;
    }
    if (!m_saved) {
        showMessage(ViewTexts::stoppedScan, false);
        return;
    }
    setBusy(true);
    retry();
}

void ChangesPane::retry()
{
    m_savedSinceLoad = false;
    HistoryStore* history = m_history.store();
    if (!history) {
        loadedComparison(Loaded { m_request, PeriodChanges::Problem::notSavedYet, nullptr, nullptr, std::nullopt });
        return;
    }
    HistoryStore* keep = history;
    std::shared_ptr<const ScanTree> tree = m_tree;
    std::string openPath = tree->path(m_open);
    std::uint64_t request = m_request;
    HistoryPeriod period = m_period;
    std::optional<HistoryEntry> since = m_since;
    Date finishedAt = m_finishedAt;
    OffThread::run<Loaded>(
        this,
        [keep, tree, openPath, request, period, since, finishedAt] {
            Loaded loaded { request, std::nullopt, nullptr, nullptr, std::nullopt };
            HistorySource source = ScanRecorder::sourceFor(tree->rootPath());
            auto comparison = since ? PeriodChanges::loadSince(*keep, source, *since, finishedAt)
                                    : PeriodChanges::load(*keep, source, period, finishedAt);
            if (!comparison) {
                loaded.problem = comparison.error();
                return loaded;
            }
            auto shared = std::make_shared<const PeriodChanges>(std::move(*comparison));
            loaded.onTree = std::make_shared<const SunburstView::ChangeMap>(shared->onTree(*tree));
            loaded.atOpen = shared->at(openPath);
            loaded.comparison = std::move(shared);
            return loaded;
        },
        [this](Loaded loaded) { loadedComparison(std::move(loaded)); });
}

void ChangesPane::loadedComparison(Loaded result)
{
    if (result.request != m_request)
        return;
    if (result.problem) {
        if (*result.problem == PeriodChanges::Problem::notSavedYet && m_history.store() && (m_waitingForSave || !m_giveUp->isActive())) {
            if (!m_waitingForSave)
                m_giveUp->start();
            m_waitingForSave = true;
            showMessage(text(PeriodChanges::problemText(*result.problem)), true);
            if (m_savedSinceLoad)
                retry();
            return;
        }
        m_waitingForSave = false;
        showMessage(*result.problem == PeriodChanges::Problem::notSavedYet ? ViewTexts::notSaved : text(PeriodChanges::problemText(*result.problem)),
            false);
        Q_EMIT loaded();
        return;
    }
    m_waitingForSave = false;
    m_giveUp->stop();
    m_comparison = std::move(result.comparison);
    Q_EMIT changesShown(result.onTree, ViewTexts::since(shortDate(m_comparison->start().date)));
    showComparison(*result.atOpen);
    Q_EMIT loaded();
}

void ChangesPane::compareOpenFolder()
{
    std::shared_ptr<const PeriodChanges> comparison = m_comparison;
    std::string openPath = m_tree->path(m_open);
    std::uint64_t request = ++m_request;
    setBusy(true);
    using Result = std::expected<HistoryQueries::Changes, HistoryQueries::ChangesError>;
    OffThread::run<Result>(
        this, [comparison, openPath] { return comparison->at(openPath); },
        [this, request](Result changes) {
            if (request != m_request)
                return;
            showComparison(changes);
            Q_EMIT loaded();
        });
}

void ChangesPane::showComparison(const std::expected<HistoryQueries::Changes, HistoryQueries::ChangesError>& changes)
{
    if (!changes) {
        showMessage(text(HistoryQueries::ChangeTexts::message(changes.error())), false);
        return;
    }
    if (m_comparison->startsWithThisScan()) {
        showMessage(ViewTexts::firstSnapshot, false);
        return;
    }
    setBusy(false);
    m_message->hide();
    QString name = ViewFormat::shortName(*m_tree, m_open);
    QString amount = (changes->isUncertain ? text(HistoryQueries::ChangeTexts::uncertainMark) : QString())
        + ViewFormat::size(magnitude(changes->change));
    m_headline->setText(changes->change > 0 ? ViewTexts::grewBy(name, amount)
            : changes->change < 0           ? ViewTexts::shrankBy(name, amount)
                                            : ViewTexts::didNotChange(name));
    m_detail->setText(ViewTexts::comparedWith(dateAndTime(m_comparison->start().date)) + QStringLiteral(" · ")
        + ViewTexts::sizeFromTo(ViewFormat::size(changes->sizeBefore), ViewFormat::size(changes->sizeAfter)));
    m_headline->show();
    m_detail->show();
    m_key->show();
    fillRows(*changes);

    QStringList notes;
    bool anyUncertain = changes->isUncertain;
    for (const Row& row : m_rows)
        anyUncertain = anyUncertain || row.isUncertain;
    if (anyUncertain)
        notes << text(HistoryQueries::ChangeTexts::uncertainExplanation);
    if (!changes->readByOneScan.empty()) {
        QStringList places;
        for (const HistoryQueries::OneScanPlace& place : changes->readByOneScan)
            places << QString::fromStdString(ScopeResolver::displayPath(place.path));
        notes << ViewTexts::readByOneScan(places.join(QStringLiteral(", ")));
    }
    m_notes->setText(notes.join(QStringLiteral("\n")));
    m_notes->setVisible(!notes.isEmpty());
}

void ChangesPane::fillRows(const HistoryQueries::Changes& changes)
{
    m_rows.clear();
    std::string folder = m_tree->path(m_open);
    m_rows.push_back({ RowKind::section, ViewTexts::changedInside, {}, 0, false });
    for (const HistoryQueries::PlaceChange& place : changes.inside)
        m_rows.push_back({ RowKind::place, relativeTo(place.path, folder), QString::fromStdString(place.path), place.change(), place.isUncertain });
    if (changes.moreInside > 0)
        m_rows.push_back({ RowKind::more, ViewTexts::moreChanged(ViewFormat::count(changes.moreInside)), {}, 0, false });
    if (changes.rest.change() != 0)
        m_rows.push_back({ RowKind::rest, text(HistoryQueries::ChangeTexts::restLabel), {}, changes.rest.change(), changes.rest.isUncertain });
    if (changes.inside.empty() && changes.rest.change() == 0)
        m_rows.push_back({ RowKind::more, ViewTexts::nothingInsideChanged, {}, 0, false });
    // Deep places are worth listing only when they say more than the first level does.
    bool deeper = false;
    for (const HistoryQueries::PlaceChange& place : changes.grewMost)
        deeper = deeper || std::ranges::none_of(changes.inside, [&place](const auto& inside) { return inside.path == place.path; });
    if (deeper) {
        m_rows.push_back({ RowKind::section, ViewTexts::grewMost, {}, 0, false });
        for (const HistoryQueries::PlaceChange& place : changes.grewMost)
            m_rows.push_back({ RowKind::place, relativeTo(place.path, folder), QString::fromStdString(place.path), place.change(), place.isUncertain });
    }

    std::int64_t scale = 1;
    for (const Row& row : m_rows)
        scale = std::max(scale, magnitude(row.change));
    m_list->clear();
    for (const Row& row : m_rows) {
        auto* item = new QListWidgetItem(row.name, m_list);
        item->setData(kindRole, static_cast<int>(row.kind));
        item->setData(pathRole, row.path);
        item->setData(changeRole, static_cast<qlonglong>(row.change));
        item->setData(uncertainRole, row.isUncertain);
        item->setData(scaleRole, static_cast<qlonglong>(scale));
        if (row.kind == RowKind::rest)
            item->setToolTip(text(HistoryQueries::ChangeTexts::restExplanation));
        else if (row.kind == RowKind::place)
            item->setToolTip(QString::fromStdString(ScopeResolver::displayPath(row.path.toStdString())));
        if (row.kind != RowKind::place)
            item->setFlags(Qt::ItemIsEnabled);
    }
    m_list->show();
}

}
