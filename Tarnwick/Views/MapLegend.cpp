#include "MapLegend.hpp"

#include "Classification/ContentClassifier.hpp"
#include "Classification/OwnerMap.hpp"
#include "MapPalette.hpp"
#include "Scanning/ScanTree.hpp"
#include "Support/SaturatingMath.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

namespace tarnwick {

namespace {

QString fromView(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString capitalized(QString text)
{
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}

const BucketMap* bucketsOf(const ColorMap& colors)
{
    switch (colors.mode()) {
    case ColorMode::contentType:
        return colors.content() ? &colors.content()->buckets() : nullptr;
    case ColorMode::owner:
        return colors.owner() ? &colors.owner()->buckets() : nullptr;
    case ColorMode::lastModified:
    case ColorMode::created:
        return colors.buckets().get();
    case ColorMode::caches:
    case ColorMode::hiddenFromFinder:
    case ColorMode::onDiskVsSize:
        break;
    }
    return nullptr;
}

void addGroups(LegendContent& legend, const ColorMap& colors, const BucketMap& buckets, NodeID root, const OwnerMap* owners)
{
    std::vector<std::int64_t> totals = buckets.totals(root);
    std::int64_t sum = 0;
    for (std::int64_t bytes : totals)
        SaturatingMath::add(sum, bytes);
    const auto& groups = colors.groups();
    for (std::size_t bucket = 0; bucket < totals.size() && bucket < groups.size(); ++bucket) {
        if (totals[bucket] < 1)
            continue;
        double share = sum > 0 ? static_cast<double>(totals[bucket]) / static_cast<double>(sum) : 0;
        legend.items.push_back({ MapPalette::group(groups[bucket], bucket), LegendContent::label(groups[bucket], colors.mode(), owners),
            totals[bucket], ViewFormat::percent(share) });
    }
    // Dates keep their order from recent to old; other groups go largest first.
    bool ordered = colors.mode() == ColorMode::lastModified || colors.mode() == ColorMode::created;
    if (!ordered)
        std::stable_sort(legend.items.begin(), legend.items.end(), [](const auto& a, const auto& b) { return a.bytes > b.bytes; });
    legend.keys.push_back({ MapPalette::mixed(), ViewTexts::mixed, 0, {} });
    legend.note = colors.mode() == ColorMode::contentType ? fromView(ContentClassifier::limitsText) : fromView(ColorModes::groupRuleText);
}

void addScale(LegendContent& legend, const ColorMap& colors, const ScanTree& tree, NodeID root)
{
    legend.gradient = true;
    NodeColor whole = colors.color(root);
    QString name = ViewFormat::shortName(tree, root);
    switch (colors.mode()) {
    case ColorMode::caches:
    case ColorMode::hiddenFromFinder: {
        bool caches = colors.mode() == ColorMode::caches;
        legend.scaleTitle = caches ? ViewTexts::cachesScale : ViewTexts::hiddenScale;
        legend.low = MapPalette::share(colors.mode(), 0);
        legend.high = MapPalette::share(colors.mode(), 1);
        legend.lowText = QStringLiteral("0 %");
        legend.highText = QStringLiteral("100 %");
        if (whole.kind() == NodeColor::Kind::share) {
            QString percent = ViewFormat::percent(whole.value());
            legend.summary = caches ? ViewTexts::cachesOf(percent, name) : ViewTexts::hiddenOf(percent, name);
        }
        break;
    }
    case ColorMode::onDiskVsSize:
        legend.scaleTitle = ViewTexts::ratioScale;
        legend.low = MapPalette::ratio(0.5);
        legend.high = MapPalette::ratio(2.0);
        legend.middle = MapPalette::ratio(1.0);
        legend.lowText = QStringLiteral("½×");
        legend.middleText = QStringLiteral("1×");
        legend.highText = QStringLiteral("2×");
        legend.note = ViewTexts::ratioNote;
        if (whole.kind() == NodeColor::Kind::ratio)
            legend.summary = ViewTexts::ratioOf(QString::number(whole.value(), 'f', 2), name);
        break;
    default:
        break;
    }
    legend.keys.push_back({ MapPalette::unknown(), ViewTexts::unknown, 0, {} });
}

}

QString LegendContent::label(const ColorGroup& group, ColorMode mode, const OwnerMap* owners)
{
    if (owners) {
        if (auto name = owners->displayName(group))
            return fromView(*name);
    }
    switch (group.kind()) {
    case ColorGroup::Kind::content:
        return fromView(ContentCategories::displayLabel(*group.contentCategory()));
    case ColorGroup::Kind::date:
        return capitalized(fromView(group.dateGroup()->text(mode == ColorMode::created ? DateGroup::Form::created : DateGroup::Form::changed)));
    case ColorGroup::Kind::owner:
        return fromView(*group.ownerIdentifier());
    case ColorGroup::Kind::macOS:
        return fromView(OwnerIndex::fallbackSystemName);
    case ColorGroup::Kind::noOwner:
        return fromView(OwnerMap::noOwnerName);
    case ColorGroup::Kind::otherApps:
        return fromView(OwnerMap::otherAppsName);
    case ColorGroup::Kind::hidden:
        return ViewTexts::hiddenFromView;
    case ColorGroup::Kind::visible:
    case ColorGroup::Kind::unknown:
        break;
    }
    return mode == ColorMode::lastModified || mode == ColorMode::created ? ViewTexts::noDate : ViewTexts::unknown;
}

LegendContent LegendContent::make(const ColorMap& colors, const ScanTree& tree, NodeID root, const OwnerMap* owners,
    std::optional<VolumeCapacity> capacity)
{
    LegendContent legend;
    if (const BucketMap* buckets = bucketsOf(colors))
        addGroups(legend, colors, *buckets, root, owners);
    else
        addScale(legend, colors, tree, root);
    legend.keys.push_back({ MapPalette::smallObjects(), ViewTexts::smallObjects, 0, {} });
    if (capacity && capacity->total > 0 && root == NodeID::root()) {
        std::int64_t available = std::max<std::int64_t>(capacity->available, 0);
        std::int64_t unaccounted = capacity->unaccounted(tree.allocatedSize(root));
        auto ofDisk = [&](std::int64_t bytes) { return ViewFormat::percent(static_cast<double>(bytes) / static_cast<double>(capacity->total)); };
        if (unaccounted > 0)
            legend.items.push_back({ MapPalette::unaccounted(), ViewTexts::unaccounted, unaccounted, ofDisk(unaccounted) });
        if (capacity->reserved > 0)
            legend.items.push_back({ MapPalette::reserved(), ViewTexts::reserved, capacity->reserved, ofDisk(capacity->reserved) });
        legend.items.push_back({ MapPalette::available(), ViewTexts::available, available, ofDisk(available) });
    }
    return legend;
}

MapLegend::MapLegend(QWidget* parent)
    : QWidget(parent)
{
    setObjectName("legend");
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void MapLegend::setContent(LegendContent content)
{
    m_content = std::move(content);
    updateGeometry();
    update();
}

void MapLegend::clear()
{
    setContent(LegendContent {});
}

int MapLegend::heightForWidth(int width) const
{
    return arrange(width, nullptr);
}

QSize MapLegend::sizeHint() const
{
    return QSize(480, arrange(std::max(width(), 480), nullptr));
}

void MapLegend::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    arrange(width(), &painter);
}

// The gradient of the share and ratio modes with its title, end words and summary line.
int MapLegend::arrangeScale(int y, int width, QPainter* painter) const
{
    const LegendContent& legend = m_content;
    const int margin = 12;
    QFont regular = font();
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.88);
    QFontMetrics regularMetrics(regular);
    QFontMetrics smallMetrics(small);
    const int line = regularMetrics.height() + 6;
    int barWidth = std::min(220, std::max(width - 2 * margin, 60));
    if (painter) {
        painter->setFont(bold);
        painter->setPen(QColor(0x1F, 0x29, 0x37));
        painter->drawText(QRect(margin, y, width - 2 * margin, line), Qt::AlignVCenter | Qt::AlignLeft, legend.scaleTitle);
    }
    y += line;
    if (painter) {
        QLinearGradient gradient(margin, 0, margin + barWidth, 0);
        gradient.setColorAt(0, legend.low);
        if (legend.middle)
            gradient.setColorAt(0.5, *legend.middle);
        gradient.setColorAt(1, legend.high);
        painter->setPen(Qt::NoPen);
        painter->setBrush(gradient);
        painter->drawRoundedRect(QRectF(margin, y + 2, barWidth, 8), 4, 4);
        painter->setFont(small);
        painter->setPen(QColor(0x6B, 0x72, 0x80));
        painter->drawText(QRect(margin, y + 12, barWidth, smallMetrics.height()), Qt::AlignLeft, legend.lowText);
        painter->drawText(QRect(margin, y + 12, barWidth, smallMetrics.height()), Qt::AlignRight, legend.highText);
        painter->drawText(QRect(margin, y + 12, barWidth, smallMetrics.height()), Qt::AlignHCenter, legend.middleText);
    }
    int besideX = margin + barWidth + 24;
    if (!legend.summary.isEmpty() && painter) {
        painter->setFont(regular);
        painter->setPen(QColor(0x1F, 0x29, 0x37));
        painter->drawText(QRect(besideX, y - 2, std::max(width - besideX - margin, 0), line), Qt::AlignVCenter | Qt::AlignLeft,
            regularMetrics.elidedText(legend.summary, Qt::ElideRight, std::max(width - besideX - margin, 0)));
    }
    y += 12 + smallMetrics.height() + 6;
    return y;
}

int MapLegend::arrange(int width, QPainter* painter) const
{
    const LegendContent& legend = m_content;
    const int margin = 12;
    const int swatch = 10;
    const int gap = 18;
    QFont regular = font();
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.88);
    QFontMetrics regularMetrics(regular);
    QFontMetrics boldMetrics(bold);
    QFontMetrics smallMetrics(small);
    const int line = regularMetrics.height() + 6;
    int x = margin;
    int y = margin;
    auto chip = [&](const LegendContent::Item& item, bool dim) {
        int labelWidth = regularMetrics.horizontalAdvance(item.label);
        int shareWidth = item.share.isEmpty() ? 0 : boldMetrics.horizontalAdvance(item.share) + 6;
        int chipWidth = swatch + 6 + labelWidth + shareWidth;
        if (x > margin && x + chipWidth > width - margin) {
            x = margin;
            y += line;
        }
        if (painter) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(item.color);
            QRectF box(x, y + (line - swatch) / 2.0 - 1, swatch, swatch);
            painter->drawRoundedRect(box, 3, 3);
            if (item.color.lightness() > 225) {
                painter->setPen(QColor(0xC5, 0xCC, 0xD6));
                painter->setBrush(Qt::NoBrush);
                painter->drawRoundedRect(box, 3, 3);
            }
            painter->setFont(regular);
            painter->setPen(dim ? QColor(0x6B, 0x72, 0x80) : QColor(0x1F, 0x29, 0x37));
            painter->drawText(QRect(x + swatch + 6, y, labelWidth + 1, line), Qt::AlignVCenter | Qt::AlignLeft, item.label);
            if (shareWidth > 0) {
                painter->setFont(bold);
                painter->setPen(QColor(0x37, 0x41, 0x51));
                painter->drawText(QRect(x + swatch + 12 + labelWidth, y, shareWidth, line), Qt::AlignVCenter | Qt::AlignLeft, item.share);
            }
        }
        x += chipWidth + gap;
    };

    if (legend.gradient)
        y = arrangeScale(y, width, painter);
    for (const auto& item : legend.items)
        chip(item, false);
    for (const auto& item : legend.keys)
        chip(item, true);
    if (x > margin)
        y += line;
    if (!legend.note.isEmpty()) {
        QRect noteBox(margin, y + 2, std::max(width - 2 * margin, 10), 1000);
        QRect needed = smallMetrics.boundingRect(noteBox, Qt::TextWordWrap, legend.note);
        if (painter) {
            painter->setFont(small);
            painter->setPen(QColor(0x6B, 0x72, 0x80));
            painter->drawText(noteBox, Qt::TextWordWrap, legend.note);
        }
        y += needed.height() + 4;
    }
    return y + margin / 2;
}

}
