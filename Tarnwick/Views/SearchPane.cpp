#include "SearchPane.hpp"

#include "Scanning/ScanTree.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace tarnwick {

namespace {

enum Column { sizeColumn, nameColumn, folderColumn };
constexpr int nodeRole = Qt::UserRole + 1;

std::optional<NamePattern> patternFor(const QString& typed)
{
    QString text = typed.trimmed();
    bool isPattern = text.contains('*') || text.contains('?') || text.contains('[');
    std::string pattern = (isPattern ? text : QStringLiteral("*") + text + QStringLiteral("*")).toStdString();
    auto compiled = NamePattern::compile(pattern);
    if (!compiled)
        return std::nullopt;
    return *compiled;
}

}

SearchPane::SearchPane(QWidget* parent)
    : QWidget(parent)
    , m_summary(new QLabel())
    , m_kind(new QComboBox())
    , m_size(new QComboBox())
    , m_age(new QComboBox())
    , m_results(new QTableWidget(0, 3))
{
    setObjectName("searchPane");
    m_kind->addItem(ViewTexts::searchAnyKind, 0);
    m_kind->addItem(ViewTexts::searchFiles, 1);
    m_kind->addItem(ViewTexts::searchFolders, 2);
    m_size->addItem(ViewTexts::searchAnySize, QVariant::fromValue<qlonglong>(0));
    for (qlonglong bytes : { 1'000'000LL, 10'000'000LL, 100'000'000LL, 1'000'000'000LL })
        m_size->addItem(ViewTexts::searchAtLeast(ViewFormat::size(bytes)), bytes);
    m_age->addItem(ViewTexts::searchAnyAge, 0);
    for (int days : { 30, 90, 365 })
        m_age->addItem(ViewTexts::searchUnchangedFor(days), days);
    for (QComboBox* picker : { m_kind, m_size, m_age })
        connect(picker, &QComboBox::activated, this, &SearchPane::rerun);

    auto* close = new QToolButton();
    close->setText(QStringLiteral("✕"));
    close->setToolTip(ViewTexts::searchClose);
    close->setAutoRaise(true);
    connect(close, &QToolButton::clicked, this, &SearchPane::closeRequested);
    m_summary->setWordWrap(true);
    m_summary->setStyleSheet("font-weight: 600;");

    m_results->setHorizontalHeaderLabels({ ViewTexts::sizeColumn, ViewTexts::nameColumn, ViewTexts::searchWhere });
    m_results->verticalHeader()->hide();
    m_results->setShowGrid(false);
    m_results->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_results->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_results->setSelectionMode(QAbstractItemView::SingleSelection);
    m_results->setWordWrap(false);
    m_results->setTextElideMode(Qt::ElideMiddle);
    m_results->horizontalHeader()->setSectionResizeMode(sizeColumn, QHeaderView::ResizeToContents);
    m_results->horizontalHeader()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    m_results->horizontalHeader()->setSectionResizeMode(folderColumn, QHeaderView::Stretch);
    connect(m_results, &QTableWidget::itemSelectionChanged, this, [this] {
        QList<QTableWidgetItem*> chosen = m_results->selectedItems();
        if (!chosen.isEmpty())
            Q_EMIT itemChosen(NodeID { m_results->item(chosen.front()->row(), sizeColumn)->data(nodeRole).toInt() });
    });

    auto* top = new QHBoxLayout();
    top->addWidget(m_summary, 1);
    top->addWidget(close, 0, Qt::AlignTop);
    auto* filters = new QHBoxLayout();
    filters->addWidget(m_kind);
    filters->addWidget(m_size);
    filters->addWidget(m_age);
    filters->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 10, 12, 8);
    layout->addLayout(top);
    layout->addLayout(filters);
    layout->addWidget(m_results, 1);
}

void SearchPane::clear()
{
    m_tree.reset();
    m_found.reset();
    m_name.clear();
    fill();
}

SearchPane::Query SearchPane::query(const QString& name) const
{
    Query query;
    query.name = name;
    int kind = m_kind->currentData().toInt();
    query.kinds = kind == 1 ? NodeKindSet { NodeKind::file } : kind == 2 ? NodeKindSet { NodeKind::directory, NodeKind::package } : NodeKindSet::all();
    query.minimumSize = m_size->currentData().toLongLong();
    if (int days = m_age->currentData().toInt(); days > 0)
        query.unchangedDays = days;
    return query;
}

std::optional<TreeSearch::Found> SearchPane::run(const ScanTree& tree, NodeID below, const Query& query, std::chrono::system_clock::time_point now)
{
    std::optional<NamePattern> pattern;
    if (!query.name.trimmed().isEmpty()) {
        pattern = patternFor(query.name);
        if (!pattern)
            return std::nullopt;
    }
    TreeSearch::AgeFilter age;
    if (query.unchangedDays)
        age.changedBefore = now - std::chrono::days(*query.unchangedDays);
    return TreeSearch::largestItems(tree, below, query.kinds, query.minimumSize, pattern, age, resultLimit);
}

void SearchPane::search(std::shared_ptr<const ScanTree> tree, NodeID folder, const QString& name)
{
    m_tree = std::move(tree);
    m_folder = folder;
    m_name = name;
    rerun();
}

void SearchPane::rerun()
{
    m_found.reset();
    if (m_tree)
        m_found = run(*m_tree, m_folder, query(m_name), std::chrono::system_clock::now());
    fill();
}

QString SearchPane::summary() const
{
    return m_summary->text();
}

void SearchPane::fill()
{
    m_results->setRowCount(0);
    if (!m_tree) {
        m_summary->setText(ViewTexts::findNothingOpen);
        return;
    }
    if (!m_found) {
        m_summary->setText(m_name.isEmpty() ? QString() : ViewTexts::findInvalid);
        return;
    }
    m_summary->setText(ViewTexts::findCount(m_found->matchCount, ViewFormat::size(m_found->matchedBytes, m_found->matchedIncomplete),
        ViewFormat::shortName(*m_tree, m_folder)));
    m_results->setRowCount(static_cast<int>(m_found->items.size()));
    int row = 0;
    for (const TreeSearch::Item& item : m_found->items) {
        auto* size = new QTableWidgetItem(ViewFormat::size(*m_tree, item.node));
        size->setData(nodeRole, item.node.value);
        size->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_results->setItem(row, sizeColumn, size);
        m_results->setItem(row, nameColumn, new QTableWidgetItem(ViewFormat::name(*m_tree, item.node)));
        std::optional<NodeID> parent = m_tree->parent(item.node);
        QString where = parent && *parent != m_folder ? QString::fromStdString(m_tree->relativePath(*parent)) : QStringLiteral("—");
        auto* folder = new QTableWidgetItem(where);
        folder->setToolTip(QString::fromStdString(m_tree->path(item.node)));
        m_results->setItem(row, folderColumn, folder);
        ++row;
    }
}

}
