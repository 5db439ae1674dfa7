#include "SunburstView.hpp"

#include "MapPalette.hpp"
#include "ScanBanner.hpp"
#include "Scanning/ScanTree.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTimer>
#include <QToolTip>

#include <cmath>
#include <numbers>

namespace tarnwick {

namespace {

// A sector narrower than this many pixels along its outer edge is not drawn.
constexpr double narrowestArc = 2.0;

double degrees(double fraction)
{
    // Fractions run clockwise from twelve o'clock; Qt's angles anticlockwise from three.
    return 90.0 - fraction * 360.0;
}

QPainterPath sectorPath(const SunburstGeometry& geometry, int ring, double start, double end)
{
    QPointF center(geometry.center.x, geometry.center.y);
    double inner = geometry.centerRadius + ring * geometry.ringWidth;
    double outer = inner + geometry.ringWidth;
    QRectF outerRect(center.x() - outer, center.y() - outer, 2 * outer, 2 * outer);
    QRectF innerRect(center.x() - inner, center.y() - inner, 2 * inner, 2 * inner);
    double from = degrees(start);
    double sweep = -(end - start) * 360.0;
    QPainterPath path;
    path.arcMoveTo(outerRect, from);
    path.arcTo(outerRect, from, sweep);
    path.arcTo(innerRect, from + sweep, -sweep);
    path.closeSubpath();
    return path;
}

QPointF pointAt(const SunburstGeometry& geometry, double radius, double fraction)
{
    double angle = fraction * 2 * std::numbers::pi;
    return QPointF(geometry.center.x + radius * std::sin(angle), geometry.center.y - radius * std::cos(angle));
}

}

SunburstView::SunburstView(QWidget* parent)
    : QWidget(parent)
    , m_poll(new QTimer(this))
    , m_banner(new ScanBanner(this))
{
    setMouseTracking(true);
    setMinimumSize(320, 320);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setObjectName("sunburst");
    m_poll->setInterval(pollMilliseconds);
    connect(m_poll, &QTimer::timeout, this, &SunburstView::pollScan);
    connect(m_banner, &ScanBanner::stopRequested, this, &SunburstView::stopRequested);
    m_banner->hide();
}

SunburstView::~SunburstView() = default;

void SunburstView::showTree(std::shared_ptr<const ScanTree> tree, NodeID root, std::optional<VolumeCapacity> capacity)
{
    if (tree == m_tree && root == m_root && capacity == m_capacity)
        return;
    if (tree != m_tree) {
        m_colors.reset();
        m_selection.reset();
    }
    m_tree = std::move(tree);
    m_root = root;
    m_capacity = capacity;
    m_hover.reset();
    invalidatePicture();
}

void SunburstView::setColors(std::shared_ptr<const ColorMap> colors)
{
    if (colors == m_colors)
        return;
    m_colors = std::move(colors);
    invalidatePicture();
}

void SunburstView::setSelection(std::optional<NodeID> node)
{
    if (node == m_selection)
        return;
    m_selection = node;
    update();
}

void SunburstView::clear()
{
    endScanWatch();
    showTree(nullptr, NodeID::root(), std::nullopt);
}

void SunburstView::watchScan(std::shared_ptr<ScanProgress> progress, const QString& rootName, std::optional<VolumeCapacity> capacity,
    ColorSource colors)
{
    if (progress == m_progress)
        return;
    m_progress = std::move(progress);
    m_scanRootName = rootName;
    m_scanCapacity = capacity;
    m_colorSource = std::move(colors);
    m_shownPreview = 0;
    showTree(nullptr, NodeID::root(), std::nullopt);
    placeBanner();
    pollScan();
    m_poll->start();
}

void SunburstView::endScanWatch()
{
    m_poll->stop();
    m_progress.reset();
    m_colorSource = nullptr;
    m_banner->hide();
}

void SunburstView::pollScan()
{
    if (!m_progress)
        return;
    ScanProgress::Snapshot state = m_progress->state();
    m_banner->show(m_scanRootName, state.itemCount, QString::fromStdString(state.currentPath));
    std::shared_ptr<const ScanPreview> preview = m_progress->latestPreview();
    if (!preview || !preview->tree || preview->version == m_shownPreview)
        return;
    std::shared_ptr<const ColorMap> colors = m_colorSource ? m_colorSource(preview->tree) : nullptr;
    // A preview waits for its colours, so the map doesn't flash grey between previews; only
    // the first one shows at once.
    if (!colors && m_tree)
        return;
    m_shownPreview = preview->version;
    showTree(preview->tree, NodeID::root(), m_scanCapacity);
    setColors(colors);
    Q_EMIT previewShown();
}

SunburstGeometry SunburstView::currentGeometry()
{
    currentLayout();
    return m_geometry;
}

SunburstLayout SunburstView::layOut(const SunburstGeometry& geometry)
{
    ++m_layoutsMade;
    // Also skip what would be too thin to see along the ring's outer edge.
    auto minimumSpan = [geometry](int ring) {
        double outer = geometry.centerRadius + (ring + 1) * geometry.ringWidth;
        return narrowestArc / (2 * std::numbers::pi * std::max(outer, 1.0));
    };
    return SunburstLayout::layout(*m_tree, m_root, geometry.ringCount, spanDivisor, m_capacity, minimumSpan);
}

const SunburstLayout& SunburstView::currentLayout()
{
    SunburstGeometry full = SunburstGeometry::geometry(maxRings, width(), height(), minimumRingWidth, inset);
    LayoutKey key { m_tree.get(), m_root, m_capacity, full };
    if (m_layoutKey == key)
        return m_layout;
    m_layoutKey = key;
    m_pictureValid = false;
    m_geometry = full;
    if (!m_tree || full.ringCount < 1) {
        m_layout = SunburstLayout { m_root, 0, {} };
        return m_layout;
    }
    m_layout = layOut(full);
    // When the tree ends before the outermost ring, the rings it has grow wider instead (up to
    // a limit), so a shallow folder still fills the view.
    int used = static_cast<int>(m_layout.rings.size());
    if (used >= 1 && used < full.ringCount) {
        double half = std::min(width(), height()) * 0.5;
        double radius = used * maximumRingWidth / 0.76;
        SunburstGeometry fitted = SunburstGeometry::geometry(used, width(), height(), minimumRingWidth, std::max(inset, half - radius));
        if (fitted.ringCount == used && fitted.ringWidth > full.ringWidth) {
            m_geometry = fitted;
            m_layout = layOut(fitted);
        }
    }
    return m_layout;
}

std::optional<SunburstSector> SunburstView::sectorAt(QPointF point)
{
    const SunburstLayout& layout = currentLayout();
    SunburstGeometry::Hit hit = currentGeometry().hit({ point.x(), point.y() });
    if (hit.kind != SunburstGeometry::Hit::Kind::ring)
        return std::nullopt;
    return layout.sector(hit.index, hit.fraction);
}

std::optional<SunburstSector> SunburstView::sectorOf(NodeID node)
{
    if (!m_tree || node == m_root || !m_tree->isAncestor(m_root, node))
        return std::nullopt;
    int ring = m_tree->depth(node) - m_tree->depth(m_root) - 1;
    const SunburstLayout& layout = currentLayout();
    if (ring < 0 || static_cast<std::size_t>(ring) >= layout.rings.size())
        return std::nullopt;
    for (const SunburstSector& sector : layout.rings[static_cast<std::size_t>(ring)]) {
        if (sector.node() == node)
            return sector;
    }
    return std::nullopt;
}

QString SunburstView::describe(const SunburstSector& sector) const
{
    if (!m_tree)
        return {};
    QString rootName = ViewFormat::name(*m_tree, m_root);
    std::int64_t total = std::max<std::int64_t>(m_tree->allocatedSize(m_root), 1);
    if (std::holds_alternative<SunburstSector::Available>(sector.content) || std::holds_alternative<SunburstSector::Unaccounted>(sector.content)) {
        QString title = std::holds_alternative<SunburstSector::Available>(sector.content) ? ViewTexts::available : ViewTexts::unaccounted;
        double ofDisk = m_capacity && m_capacity->total > 0 ? static_cast<double>(sector.bytes) / static_cast<double>(m_capacity->total) : 0;
        return QStringLiteral("<b>%1</b><br>%2 · %3").arg(title.toHtmlEscaped(), ViewFormat::size(sector.bytes),
            ViewTexts::ofDisk(ViewFormat::percent(ofDisk)));
    }
    double share = static_cast<double>(sector.bytes) / static_cast<double>(total);
    QString shareText = ViewTexts::shareOf(ViewFormat::percent(share), rootName);
    if (const auto* rest = std::get_if<SunburstSector::SmallObjects>(&sector.content)) {
        return QStringLiteral("<b>%1</b><br>%2 · %3")
            .arg(ViewTexts::smallObjectsCount(ViewFormat::count(rest->count())), ViewFormat::size(sector.bytes), shareText.toHtmlEscaped());
    }
    NodeID node = *sector.node();
    return QStringLiteral("<b>%1</b><br>%2 · %3")
        .arg(ViewFormat::name(*m_tree, node).toHtmlEscaped(), ViewFormat::size(*m_tree, node), shareText.toHtmlEscaped());
}

QColor SunburstView::fill(const SunburstSector& sector) const
{
    if (std::holds_alternative<SunburstSector::Available>(sector.content))
        return MapPalette::available();
    if (std::holds_alternative<SunburstSector::Unaccounted>(sector.content))
        return MapPalette::unaccounted();
    if (std::holds_alternative<SunburstSector::SmallObjects>(sector.content))
        return MapPalette::forRing(MapPalette::smallObjects(), sector.ring);
    QColor base = m_colors ? MapPalette::color(m_colors->color(*sector.node()), *m_colors) : MapPalette::uncolored(sector.branch);
    return MapPalette::forRing(base, sector.ring);
}

void SunburstView::invalidatePicture()
{
    m_pictureValid = false;
    update();
}

// The sectors and their names go into a picture that hovering and selection paint over.
void SunburstView::renderPicture()
{
    const SunburstLayout& layout = currentLayout();
    SunburstGeometry geometry = currentGeometry();
    qreal ratio = devicePixelRatioF();
    m_picture = QPixmap((QSizeF(size()) * ratio).toSize());
    m_picture.setDevicePixelRatio(ratio);
    m_picture.fill(Qt::transparent);
    QPainter painter(&m_picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QPen border(MapPalette::sectorBorder(), 1.0);
    border.setJoinStyle(Qt::RoundJoin);
    for (const SunburstLayout::Ring& ring : layout.rings) {
        for (const SunburstSector& sector : ring) {
            QPainterPath path = sectorPath(geometry, sector.ring, sector.start, sector.end);
            painter.setPen(border);
            painter.setBrush(fill(sector));
            painter.drawPath(path);
            // Texture tells the parts that are not one item: the space the scan didn't find,
            // and many items too small to draw.
            if (std::holds_alternative<SunburstSector::Unaccounted>(sector.content)) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(QBrush(QColor(255, 255, 255, 110), Qt::BDiagPattern));
                painter.drawPath(path);
            } else if (std::holds_alternative<SunburstSector::SmallObjects>(sector.content)) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(QBrush(QColor(0xB4, 0xBC, 0xC8), Qt::Dense6Pattern));
                painter.drawPath(path);
            }
        }
    }
    drawLabels(painter, geometry);
    m_pictureValid = true;
}

// Names go along the sectors of the first two rings that have room for them, turned so that
// they never stand on their heads.
void SunburstView::drawLabels(QPainter& painter, const SunburstGeometry& geometry)
{
    if (!m_tree)
        return;
    QFont font = this->font();
    font.setPointSizeF(font.pointSizeF() * 0.85);
    painter.setFont(font);
    QFontMetricsF metrics(font);
    if (geometry.ringWidth < metrics.height() + 4)
        return;
    for (std::size_t ring = 0; ring < std::min<std::size_t>(m_layout.rings.size(), 2); ++ring) {
        double radius = geometry.centerRadius + (static_cast<double>(ring) + 0.5) * geometry.ringWidth;
        for (const SunburstSector& sector : m_layout.rings[ring]) {
            std::optional<NodeID> node = sector.node();
            if (!node)
                continue;
            double room = std::min(sector.span() * 2 * std::numbers::pi * radius, 180.0) - 12;
            if (room < metrics.averageCharWidth() * 4)
                continue;
            QString text = metrics.elidedText(ViewFormat::name(*m_tree, *node), Qt::ElideRight, room);
            if (text.size() < 3)
                continue;
            double middle = (sector.start + sector.end) / 2;
            double turn = middle * 360.0;
            if (middle > 0.25 && middle < 0.75)
                turn += 180.0;
            painter.save();
            painter.translate(pointAt(geometry, radius, middle));
            painter.rotate(turn);
            painter.setPen(MapPalette::textOn(fill(sector)));
            painter.drawText(QRectF(-room / 2, -metrics.height() / 2, room, metrics.height()), Qt::AlignCenter, text);
            painter.restore();
        }
    }
}

void SunburstView::drawOutline(QPainter& painter, const SunburstGeometry& geometry, const SunburstSector& sector, const QColor& color,
    double width)
{
    painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(sectorPath(geometry, sector.ring, sector.start, sector.end));
}

void SunburstView::drawCenter(QPainter& painter, const SunburstGeometry& geometry)
{
    QPointF center(geometry.center.x, geometry.center.y);
    double radius = geometry.centerRadius - 2;
    if (radius <= 4)
        return;
    painter.setPen(QPen(QColor(0xE3, 0xE7, 0xED), 1));
    painter.setBrush(MapPalette::centerFill());
    painter.drawEllipse(center, radius, radius);

    QString title;
    QString detail;
    if (m_hover && m_tree) {
        if (std::optional<NodeID> node = m_hover->node()) {
            title = ViewFormat::name(*m_tree, *node);
            detail = ViewFormat::size(*m_tree, *node);
        } else if (const auto* rest = std::get_if<SunburstSector::SmallObjects>(&m_hover->content)) {
            title = ViewTexts::smallObjectsCount(ViewFormat::count(rest->count()));
            detail = ViewFormat::size(m_hover->bytes);
        } else {
            title = std::holds_alternative<SunburstSector::Available>(m_hover->content) ? ViewTexts::available : ViewTexts::unaccounted;
            detail = ViewFormat::size(m_hover->bytes);
        }
    } else if (m_tree) {
        title = ViewFormat::shortName(*m_tree, m_root);
        detail = ViewFormat::size(*m_tree, m_root);
    } else if (m_progress) {
        title = ViewTexts::scanningCenter;
    }
    if (m_progress && !m_hover)
        title = ViewTexts::scanningCenter;

    double room = radius * 1.6;
    QFont titleFont = font();
    titleFont.setBold(true);
    QFont detailFont = font();
    detailFont.setPointSizeF(detailFont.pointSizeF() * 1.5);
    detailFont.setWeight(QFont::DemiBold);
    QFontMetricsF titleMetrics(titleFont);
    QFontMetricsF detailMetrics(detailFont);
    double top = center.y() - (titleMetrics.height() + detailMetrics.height()) / 2;
    painter.setPen(QColor(0x4B, 0x55, 0x63));
    painter.setFont(titleFont);
    painter.drawText(QRectF(center.x() - room / 2, top, room, titleMetrics.height()), Qt::AlignCenter,
        titleMetrics.elidedText(title, Qt::ElideMiddle, room));
    painter.setPen(QColor(0x11, 0x18, 0x27));
    painter.setFont(detailFont);
    painter.drawText(QRectF(center.x() - room / 2, top + titleMetrics.height(), room, detailMetrics.height()), Qt::AlignCenter,
        detailMetrics.elidedText(detail, Qt::ElideRight, room));
}

void SunburstView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    currentLayout();
    if (!m_pictureValid || m_picture.size() != (QSizeF(size()) * devicePixelRatioF()).toSize())
        renderPicture();
    painter.drawPixmap(0, 0, m_picture);
    SunburstGeometry geometry = currentGeometry();
    if (m_hover)
        drawOutline(painter, geometry, *m_hover, QColor(255, 255, 255, 230), 3.0);
    if (m_selection) {
        if (std::optional<SunburstSector> selected = sectorOf(*m_selection))
            drawOutline(painter, geometry, *selected, MapPalette::selectionOutline(), 2.5);
    }
    if (m_tree || m_progress)
        drawCenter(painter, geometry);
}

void SunburstView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeBanner();
    invalidatePicture();
}

void SunburstView::placeBanner()
{
    int bannerWidth = std::min(width() - 24, 560);
    int bannerHeight = m_banner->sizeHint().height();
    m_banner->setGeometry((width() - bannerWidth) / 2, height() - bannerHeight - 12, bannerWidth, bannerHeight);
}

void SunburstView::mouseMoveEvent(QMouseEvent* event)
{
    std::optional<SunburstSector> sector = sectorAt(event->position());
    if (sector != m_hover) {
        m_hover = sector;
        setCursor(sector && sector->node() && !m_progress ? Qt::PointingHandCursor : Qt::ArrowCursor);
        update();
    }
}

void SunburstView::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    if (m_hover) {
        m_hover.reset();
        update();
    }
}

void SunburstView::mouseReleaseEvent(QMouseEvent* event)
{
    // A preview is only looked at: its nodes are not the finished tree's.
    if (event->button() != Qt::LeftButton || !m_tree || m_progress)
        return;
    SunburstGeometry::Hit hit = currentGeometry().hit({ event->position().x(), event->position().y() });
    if (hit.kind == SunburstGeometry::Hit::Kind::center) {
        Q_EMIT upRequested();
        return;
    }
    std::optional<SunburstSector> sector = sectorAt(event->position());
    std::optional<NodeID> node = sector ? sector->node() : std::nullopt;
    if (!node) {
        Q_EMIT nodeSelected(std::nullopt);
        return;
    }
    if (m_tree->kind(*node) == NodeKind::directory && m_tree->childCount(*node) > 0)
        Q_EMIT folderOpened(*node);
    else
        Q_EMIT nodeSelected(*node);
}

bool SunburstView::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        std::optional<SunburstSector> sector = sectorAt(help->pos());
        if (sector)
            QToolTip::showText(help->globalPos(), describe(*sector), this);
        else
            QToolTip::hideText();
        return true;
    }
    return QWidget::event(event);
}

}
