#include "SavedDayWindow.hpp"

#include "Breadcrumb.hpp"
#include "Classification/ColorMap.hpp"
#include "Classification/ContentMap.hpp"
#include "History/HistoryStore.hpp"
#include "History/SnapshotLoader.hpp"
#include "History/SnapshotTree.hpp"
#include "ListPane.hpp"
#include "OffThread.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "SunburstView.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace tarnwick {

struct SavedDayWindow::Loaded {
    std::optional<HistoryEntry> entry;
    std::shared_ptr<const ScanTree> tree;
    std::shared_ptr<const ColorMap> colors;
};

namespace {

QString longDay(Date date)
{
    auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count();
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(milliseconds).date(), QLocale::LongFormat);
}

}

SavedDayWindow::SavedDayWindow(HistoryStore& history, std::string path, std::int64_t entryID, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_path(std::move(path))
    , m_title(new QLabel())
    , m_detail(new QLabel())
    , m_compare(new QPushButton(ViewTexts::compareWithNow))
    , m_breadcrumb(new Breadcrumb())
    , m_map(new SunburstView())
    , m_list(new ListPane())
{
    setObjectName("savedDay");
    resize(1100, 720);
    setWindowTitle(ViewTexts::savedDayLoading);

    // The banner says at once that this is the past, in the colour of a note, not of the app.
    auto* banner = new QWidget();
    banner->setObjectName("pastDay");
    banner->setAttribute(Qt::WA_StyledBackground);
    banner->setStyleSheet("QWidget#pastDay { background: #FEF3C7; border-bottom: 1px solid #F59E0B; }"
                          "QLabel { color: #78350F; }");
    m_title->setObjectName("pastDayTitle");
    m_title->setStyleSheet("font-weight: 600; font-size: 15px;");
    m_detail->setWordWrap(true);
    auto* texts = new QVBoxLayout();
    texts->addWidget(m_title);
    texts->addWidget(m_detail);
    auto* bannerLayout = new QHBoxLayout(banner);
    bannerLayout->setContentsMargins(16, 10, 16, 10);
    bannerLayout->addLayout(texts, 1);
    bannerLayout->addWidget(m_compare);
    m_compare->setEnabled(false);
    m_title->setText(ViewTexts::savedDayLoading);

    auto* split = new QSplitter(Qt::Horizontal);
    split->setChildrenCollapsible(false);
    split->addWidget(m_map);
    split->addWidget(m_list);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);
    // The list keeps room for its names beside a map that takes the rest.
    m_list->setMinimumWidth(360);
    split->setSizes({ 640, 440 });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(banner);
    auto* body = new QVBoxLayout();
    body->setContentsMargins(12, 0, 12, 12);
    body->addWidget(m_breadcrumb);
    body->addWidget(split, 1);
    layout->addLayout(body, 1);

    connect(m_map, &SunburstView::folderOpened, this, &SavedDayWindow::open);
    connect(m_list, &ListPane::folderOpened, this, &SavedDayWindow::open);
    connect(m_breadcrumb, &Breadcrumb::folderChosen, this, &SavedDayWindow::open);
    connect(m_map, &SunburstView::nodeSelected, this, &SavedDayWindow::select);
    connect(m_list, &ListPane::nodeSelected, this, &SavedDayWindow::select);
    connect(m_map, &SunburstView::upRequested, this, [this] {
        if (m_tree)
            if (std::optional<NodeID> parent = m_tree->parent(m_open))
                open(*parent);
    });
    connect(m_compare, &QPushButton::clicked, this, [this] {
        if (m_entry)
            Q_EMIT compareRequested(QString::fromStdString(m_path), *m_entry);
    });

    std::string place = m_path;
    OffThread::run<Loaded>(
        this,
        [store = &history, place, entryID] {
            Loaded result;
            for (const HistorySource& source : store->sources()) {
                if (source.path != place)
                    continue;
                std::optional<HistoryStore::SourceRecord> record = store->record(source);
                if (!record)
                    continue;
                for (const HistoryEntry& entry : record->entries) {
                    if (entry.id != entryID)
                        continue;
                    auto day = SnapshotLoader::load(*store, source, entry);
                    if (!day)
                        return result;
                    result.entry = day->entry;
                    result.tree = SnapshotTree::make(*day->snapshot);
                    result.colors = ColorMap::make(ColorMode::contentType, result.tree, { ContentMap::build(result.tree), nullptr, std::nullopt });
                    return result;
                }
            }
            return result;
        },
        [this](Loaded result) { loaded(std::move(result)); });
}

SavedDayWindow::~SavedDayWindow() = default;

void SavedDayWindow::loaded(Loaded result)
{
    m_loading = false;
    if (!result.tree || !result.entry) {
        m_title->setText(ViewTexts::savedDayUnreadable);
        setWindowTitle(ViewTexts::savedDayUnreadable);
        return;
    }
    m_tree = std::move(result.tree);
    m_entry = std::move(result.entry);
    QString day = longDay(m_entry->date);
    QString place = QString::fromStdString(ScopeResolver::displayPath(m_path));
    m_title->setText(ViewTexts::savedDayTitle(day));
    m_detail->setText(ViewTexts::savedDayDetail(place, ViewFormat::size(*m_tree, NodeID::root())));
    setWindowTitle(ViewTexts::savedDayTitle(day) + QStringLiteral(" · ") + place);
    m_compare->setEnabled(true);
    m_map->showTree(m_tree, NodeID::root(), std::nullopt);
    m_map->setColors(result.colors);
    m_list->setColors(result.colors);
    open(NodeID::root());
}

QString SavedDayWindow::headline() const
{
    return m_title->text();
}

void SavedDayWindow::open(NodeID folder)
{
    if (!m_tree)
        return;
    m_open = folder;
    m_map->showTree(m_tree, folder, std::nullopt);
    m_map->setSelection(std::nullopt);
    m_list->showFolder(m_tree, folder);
    m_breadcrumb->showPath(m_tree, folder);
}

void SavedDayWindow::select(std::optional<NodeID> node)
{
    m_map->setSelection(node);
    m_list->setSelection(node);
}

}
