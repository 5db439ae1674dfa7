#include "InspectorView.hpp"

#include "MapLegend.hpp"
#include "MapPalette.hpp"
#include "OffThread.hpp"
#include "Scanning/NodeStatus.hpp"
#include "TreeQueries/HardLinkNote.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QFormLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace tarnwick {

// What an item holds, in the groups of the colour mode, as one stacked bar and the names of
// its largest groups.
class ContentStrip : public QWidget {
public:
    explicit ContentStrip(QWidget* parent)
        : QWidget(parent)
    {
        setMinimumHeight(10);
    }

    void setItems(std::vector<LegendContent::Item> items)
    {
        m_items = std::move(items);
        setFixedHeight(m_items.empty() ? 0 : 14 + rowsShown() * (fontMetrics().height() + 4));
        update();
    }
    [[nodiscard]] const std::vector<LegendContent::Item>& items() const { return m_items; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        if (m_items.empty())
            return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        std::int64_t total = 0;
        for (const auto& item : m_items)
            total += item.bytes;
        QRectF bar(0, 0, width(), 8);
        QPainterPath clip;
        clip.addRoundedRect(bar, 4, 4);
        painter.setClipPath(clip);
        double x = 0;
        for (const auto& item : m_items) {
            double part = total > 0 ? bar.width() * static_cast<double>(item.bytes) / static_cast<double>(total) : 0;
            painter.fillRect(QRectF(x, 0, part + 0.5, 8), item.color);
            x += part;
        }
        painter.setClipping(false);
        int line = fontMetrics().height() + 4;
        for (int row = 0; row < rowsShown(); ++row) {
            const LegendContent::Item& item = m_items[static_cast<std::size_t>(row)];
            int y = 14 + row * line;
            painter.setPen(Qt::NoPen);
            painter.setBrush(item.color);
            painter.drawRoundedRect(QRectF(0, y + (line - 8) / 2.0 - 1, 8, 8), 2, 2);
            double fraction = total > 0 ? static_cast<double>(item.bytes) / static_cast<double>(total) : 0;
            QString numbers = ViewFormat::size(item.bytes) + QStringLiteral("  ·  ") + ViewFormat::percent(fraction);
            int numbersWidth = fontMetrics().horizontalAdvance(numbers) + 8;
            painter.setPen(QColor(0x1F, 0x29, 0x37));
            painter.drawText(QRect(14, y, width() - 14 - numbersWidth, line), Qt::AlignVCenter | Qt::AlignLeft,
                fontMetrics().elidedText(item.label, Qt::ElideRight, width() - 14 - numbersWidth));
            painter.setPen(QColor(0x4B, 0x55, 0x63));
            painter.drawText(QRect(0, y, width(), line), Qt::AlignVCenter | Qt::AlignRight, numbers);
        }
    }

private:
    [[nodiscard]] int rowsShown() const { return static_cast<int>(std::min<std::size_t>(m_items.size(), 5)); }

    std::vector<LegendContent::Item> m_items;
};

InspectorView::InspectorView(QWidget* parent)
    : QWidget(parent)
    , m_title(new QLabel(this))
    , m_path(new QLabel(this))
    , m_strip(new ContentStrip(this))
    , m_rows(new QWidget(this))
    , m_form(new QFormLayout(m_rows))
    , m_notes(new QWidget(this))
{
    setObjectName("inspector");
    QFont titleFont = m_title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.25);
    titleFont.setWeight(QFont::DemiBold);
    m_title->setFont(titleFont);
    m_title->setWordWrap(true);
    m_title->setTextFormat(Qt::PlainText);
    m_path->setWordWrap(true);
    m_path->setTextFormat(Qt::PlainText);
    m_path->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_path->setStyleSheet("color: #6B7280;");
    m_form->setContentsMargins(0, 4, 0, 0);
    m_form->setHorizontalSpacing(14);
    m_form->setVerticalSpacing(6);
    m_form->setLabelAlignment(Qt::AlignLeft);
    m_form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto* notes = new QVBoxLayout(m_notes);
    notes->setContentsMargins(0, 4, 0, 0);
    notes->setSpacing(6);

    auto* content = new QWidget();
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(16, 14, 16, 14);
    column->setSpacing(8);
    column->addWidget(m_title);
    column->addWidget(m_path);
    column->addSpacing(4);
    column->addWidget(m_strip);
    column->addWidget(m_rows);
    column->addWidget(m_notes);
    column->addStretch(1);
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(scroll);
    clear();
}

void InspectorView::clearRows()
{
    while (m_form->rowCount() > 0)
        m_form->removeRow(0);
    QLayout* notes = m_notes->layout();
    while (QLayoutItem* item = notes->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

void InspectorView::clear()
{
    m_tree.reset();
    m_shares.clear();
    ++m_request;
    clearRows();
    m_strip->setItems({});
    m_title->setText(ViewTexts::nothingSelected);
    m_path->clear();
}

void InspectorView::addRow(const QString& label, const QString& value)
{
    auto* name = new QLabel(label);
    name->setStyleSheet("color: #6B7280;");
    auto* field = new QLabel(value);
    field->setTextFormat(Qt::PlainText);
    field->setWordWrap(true);
    field->setTextInteractionFlags(Qt::TextSelectableByMouse);
    field->setObjectName(label);
    m_form->addRow(name, field);
}

void InspectorView::addNote(const QString& text, bool warning)
{
    auto* note = new QLabel(text);
    note->setWordWrap(true);
    note->setTextFormat(Qt::PlainText);
    note->setStyleSheet(warning ? "background: #FEF3E2; color: #7C4A03; border-radius: 6px; padding: 8px;"
                                : "background: #EEF2F7; color: #374151; border-radius: 6px; padding: 8px;");
    m_notes->layout()->addWidget(note);
}

void InspectorView::showNode(std::shared_ptr<const ScanTree> tree, NodeID node, std::shared_ptr<const ContentMap> content,
    std::shared_ptr<const OwnerMap> owners)
{
    if (!tree) {
        clear();
        return;
    }
    if (tree == m_tree && node == m_node && content == m_content && owners == m_owners)
        return;
    bool sameItem = tree == m_tree && node == m_node && content == m_content;
    m_tree = std::move(tree);
    m_node = node;
    m_content = std::move(content);
    m_owners = std::move(owners);
    const ScanTree& scan = *m_tree;
    clearRows();

    m_title->setText(ViewFormat::shortName(scan, node));
    m_path->setText(QString::fromStdString(ScopeResolver::displayPath(scan.path(node))));
    NodeFlags flags = scan.flags(node);
    addRow(ViewTexts::sizeOnDisk, ViewFormat::size(scan, node));
    addRow(ViewTexts::logicalSize, ViewFormat::size(scan.logicalSize(node), flags.contains(NodeFlag::logicalIncomplete)));
    addRow(ViewTexts::format, ViewFormat::format(scan, node));
    if (m_owners) {
        const auto& buckets = m_owners->nodeBuckets();
        std::size_t bucket = buckets.size() > node.index() ? buckets[node.index()] : m_owners->owners().size();
        if (bucket < m_owners->owners().size())
            addRow(ViewTexts::owner, QString::fromStdString(m_owners->owners()[bucket].displayName));
    }
    addRow(isContainer(scan.kind(node)) ? ViewTexts::lastChange : ViewTexts::modified, ViewFormat::date(scan.lastChangeInside(node)));
    if (isContainer(scan.kind(node)))
        addRow(ViewTexts::oldestItem, ViewFormat::date(scan.oldestItem(node)));
    addRow(ViewTexts::created, ViewFormat::date(scan.creationDate(node)));
    if (std::optional<bool> hidden = scan.isHiddenFromFinder(node))
        addRow(ViewTexts::hiddenFromView, *hidden ? ViewTexts::yes : ViewTexts::no);
    if (auto word = NodeStatus::word(scan, node))
        addRow(ViewTexts::statusColumn, QString::fromUtf8(word->data(), static_cast<qsizetype>(word->size())));

    if (const ScanIssue* issue = scan.issue(node)) {
        std::string_view label = IssueTexts::label(issue->kind);
        QString text = ViewTexts::readIssue + QStringLiteral(": ") + QString::fromUtf8(label.data(), static_cast<qsizetype>(label.size()));
        if (auto explanation = IssueTexts::explanation(issue->kind))
            text += QStringLiteral("\n") + QString::fromUtf8(explanation->data(), static_cast<qsizetype>(explanation->size()));
        if (!issue->message.empty())
            text += QStringLiteral("\n(") + QString::fromStdString(issue->message) + QStringLiteral(")");
        addNote(text, true);
    }
    for (std::string_view explanation : NodeStatus::explanations(scan, node))
        addNote(QString::fromUtf8(explanation.data(), static_cast<qsizetype>(explanation.size())), false);
    if (auto note = HardLinkNote::text(scan, node))
        addNote(QString::fromStdString(*note), false);

    if (sameItem)
        return;
    m_shares.clear();
    m_strip->setItems({});
    requestStrip();
}

void InspectorView::setColors(std::shared_ptr<const ColorMap> colors)
{
    if (colors == m_colors)
        return;
    m_colors = std::move(colors);
    requestStrip();
}

// In a mode of groups the bar shows the item's groups of that mode; by content type, or while
// the colours are being made, its content shares.
void InspectorView::requestStrip()
{
    std::uint64_t request = ++m_request;
    std::shared_ptr<const ColorMap> colors = m_colors;
    std::shared_ptr<const ScanTree> tree = m_tree;
    NodeID node = m_node;
    if (tree && colors && colors->mode() != ColorMode::contentType) {
        std::shared_ptr<const OwnerMap> owners = m_owners;
        OffThread::run<std::vector<LegendContent::Item>>(
            this, [colors, tree, node, owners] { return LegendContent::make(*colors, *tree, node, owners.get(), std::nullopt).items; },
            [this, request](std::vector<LegendContent::Item> items) {
                if (request == m_request)
                    m_strip->setItems(std::move(items));
            });
        return;
    }
    if (!m_content)
        return;
    std::shared_ptr<const ContentMap> map = m_content;
    OffThread::run<std::vector<ContentShare>>(
        this, [map, node] { return map->shares(node); },
        [this, request](std::vector<ContentShare> shares) {
            if (request == m_request)
                showShares(std::move(shares));
        });
}

void InspectorView::showShares(std::vector<ContentShare> shares)
{
    std::stable_sort(shares.begin(), shares.end(), [](const auto& a, const auto& b) { return a.bytes > b.bytes; });
    m_shares = shares;
    std::vector<LegendContent::Item> items;
    for (const ContentShare& share : shares) {
        std::string_view label = ContentCategories::displayLabel(share.category);
        items.push_back({ MapPalette::group(ColorGroup::content(share.category), 0),
            QString::fromUtf8(label.data(), static_cast<qsizetype>(label.size())), share.bytes, {} });
    }
    m_strip->setItems(std::move(items));
    Q_EMIT contentSharesShown();
}

std::vector<QString> InspectorView::stripLabels() const
{
    std::vector<QString> labels;
    for (const LegendContent::Item& item : m_strip->items())
        labels.push_back(item.label);
    return labels;
}

QString InspectorView::titleText() const
{
    return m_title->text();
}

QString InspectorView::pathText() const
{
    return m_path->text();
}

QString InspectorView::value(const QString& label) const
{
    auto* field = m_rows->findChild<QLabel*>(label);
    return field ? field->text() : QString();
}

}
