#include "SunburstView.hpp"

#include "MapPalette.hpp"
#include "OffThread.hpp"
#include "ScanBanner.hpp"
#include "SunburstPainter.hpp"
#include "Scanning/ScanTree.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QToolTip>

#include <cmath>
#include <numbers>

namespace tarnwick {

namespace {

// A sector narrower than this many pixels along its outer edge is not drawn.
constexpr double narrowestArc = 2.0;

}

SunburstView::SunburstView(QWidget* parent)
    : QWidget(parent)
    , m_poll(new QTimer(this))
    , m_banner(new ScanBanner(this))
{
    setMouseTracking(true);
    // Clicked or tabbed to, the map takes the keyboard, so keys meant for it stay with it.
    setFocusPolicy(Qt::StrongFocus);
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

void SunburstView::setChanges(std::shared_ptr<const ChangeMap> changes, const QString& since)
{
    if (changes == m_changes && since == m_changesSince)
        return;
    m_changes = std::move(changes);
    m_changesSince = since;
    m_projectionKey.reset();
    invalidatePicture();
}

const std::optional<ChangeProjection>& SunburstView::changeProjection()
{
    const SunburstLayout& layout = currentLayout();
    if (m_projectionKey == m_layoutKey && m_projectionChanges == m_changes.get())
        return m_projection;
    m_projectionKey = m_layoutKey;
    m_projectionChanges = m_changes.get();
    m_projection.reset();
    if (!m_changes || !m_tree)
        return m_projection;
    std::shared_ptr<const ChangeMap> changes = m_changes;
    const ScanTree& tree = *m_tree;
    m_projection = ChangeProjection::project(
        layout, m_root, [&tree](NodeID focus, NodeID node) { return tree.isAncestor(focus, node); },
        [&changes](NodeID node) -> std::optional<std::int64_t> {
            auto found = changes->find(node);
            return found == changes->end() ? std::nullopt : std::optional(found->second.change);
        });
    return m_projection;
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
    ColorSource colors, Start start)
{
    if (progress == m_progress)
        return;
    m_progress = std::move(progress);
    m_scanRootName = rootName;
    m_scanCapacity = capacity;
    m_colorSource = std::move(colors);
    m_shownPreview = 0;
    if (start == Start::empty)
        showTree(nullptr, NodeID::root(), std::nullopt);
    m_hover.reset();
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

void SunburstView::recolor()
{
    if (!m_progress || !m_tree || !m_colorSource)
        return;
    if (std::shared_ptr<const ColorMap> colors = m_colorSource(m_tree))
        setColors(std::move(colors));
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

SunburstGeometry SunburstView::fitRings(int rings, double ringsInset) const
{
    double margin = std::min(labelMargin, width() * labelMarginShare);
    SunburstGeometry geometry = SunburstGeometry::geometry(rings, width() - 2 * margin, height(), minimumRingWidth, ringsInset);
    geometry.center.x += margin;
    return geometry;
}

const SunburstLayout& SunburstView::currentLayout()
{
    SunburstGeometry full = fitRings(maxRings, inset);
    LayoutKey key { m_tree.get(), m_root, m_capacity, full };
    if (m_layoutKey == key)
        return m_layout;
    m_layoutKey = key;
    stalePicture();
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
        double margin = std::min(labelMargin, width() * labelMarginShare);
        double half = std::min(width() - 2 * margin, static_cast<double>(height())) * 0.5;
        double radius = used * maximumRingWidth / 0.76;
        SunburstGeometry fitted = fitRings(used, std::max(inset, half - radius));
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

std::optional<QString> SunburstView::capacityTitle(const SunburstSector& sector)
{
    if (std::holds_alternative<SunburstSector::Available>(sector.content))
        return ViewTexts::available;
    if (std::holds_alternative<SunburstSector::Unaccounted>(sector.content))
        return ViewTexts::unaccounted;
    if (std::holds_alternative<SunburstSector::Reserved>(sector.content))
        return ViewTexts::reserved;
    return std::nullopt;
}

QString SunburstView::describe(const SunburstSector& sector) const
{
    if (!m_tree)
        return {};
    QString rootName = ViewFormat::name(*m_tree, m_root);
    std::int64_t total = std::max<std::int64_t>(m_tree->allocatedSize(m_root), 1);
    if (std::optional<QString> title = capacityTitle(sector)) {
        double ofDisk = m_capacity && m_capacity->total > 0 ? static_cast<double>(sector.bytes) / static_cast<double>(m_capacity->total) : 0;
        return QStringLiteral("<b>%1</b><br>%2 · %3").arg(title->toHtmlEscaped(), ViewFormat::size(sector.bytes),
            ViewTexts::ofDisk(ViewFormat::percent(ofDisk)));
    }
    double share = static_cast<double>(sector.bytes) / static_cast<double>(total);
    QString shareText = ViewTexts::shareOf(ViewFormat::percent(share), rootName);
    if (const auto* rest = std::get_if<SunburstSector::Rest>(&sector.content)) {
        return QStringLiteral("<b>%1</b><br>%2 · %3<br>%4")
            .arg(ViewTexts::restOf(ViewFormat::shortName(*m_tree, rest->parent)).toHtmlEscaped(), ViewFormat::size(sector.bytes),
                shareText.toHtmlEscaped(), ViewTexts::restDetail);
    }
    if (const auto* rest = std::get_if<SunburstSector::SmallObjects>(&sector.content)) {
        return QStringLiteral("<b>%1</b><br>%2 · %3<br>%4")
            .arg(ViewTexts::smallObjectsCount(ViewFormat::count(rest->count())), ViewFormat::size(sector.bytes), shareText.toHtmlEscaped(),
                rest->parent == m_root ? ViewTexts::smallObjectsHere : ViewTexts::smallObjectsInFolder);
    }
    NodeID node = *sector.node();
    QString text = QStringLiteral("<b>%1</b><br>%2 · %3")
        .arg(ViewFormat::name(*m_tree, node).toHtmlEscaped(), ViewFormat::size(*m_tree, node), shareText.toHtmlEscaped());
    if (m_changes) {
        auto found = m_changes->find(node);
        QString change = found == m_changes->end() ? ViewTexts::unchanged : ViewFormat::change(found->second.change, found->second.isUncertain);
        text += QStringLiteral("<br>%1 %2").arg(change, m_changesSince.toHtmlEscaped());
    }
    return text;
}

void SunburstView::invalidatePicture()
{
    stalePicture();
    update();
}

void SunburstView::stalePicture()
{
    m_pictureValid = false;
    ++m_sceneVersion;
    // Drawn off the main thread, the picture starts now rather than at the next paint, so it
    // is on its way even while the window is hidden, and several changes in one turn of the
    // event loop make one picture.
    if (drawsOffThread() && !m_drawSoon) {
        m_drawSoon = true;
        QMetaObject::invokeMethod(this, [this] {
            m_drawSoon = false;
            if (!m_pictureValid)
                renderPicture();
        }, Qt::QueuedConnection);
    }
}

bool SunburstView::drawsOffThread() const
{
    return m_tree && (m_progress || m_pictureOfScan);
}

MapPicture::Scene SunburstView::scene()
{
    const SunburstLayout& layout = currentLayout();
    const std::optional<ChangeProjection>& projection = changeProjection();
    return MapPicture::Scene { m_tree, layout, m_geometry, m_colors, m_changes, projection, size(), devicePixelRatioF(), font() };
}

// The sectors and their names go into a picture that hovering and selection paint over.
void SunburstView::renderPicture()
{
    if (!drawsOffThread()) {
        m_picture = MapPicture::draw(scene());
        m_pictureValid = true;
        m_pictureOfScan = false;
        return;
    }
    // One picture at a time: the one drawing now is followed by the latest when it ends.
    if (m_drawing)
        return;
    MapPicture::Scene shown = scene();
    m_drawing = true;
    bool ofScan = m_progress != nullptr;
    std::uint64_t version = m_sceneVersion;
    OffThread::run<QImage>(
        this, [shown = std::move(shown)] { return MapPicture::draw(shown); },
        [this, version, ofScan](QImage picture) {
            m_drawing = false;
            m_picture = std::move(picture);
            m_pictureOfScan = ofScan;
            if (version == m_sceneVersion)
                m_pictureValid = true;
            else if (drawsOffThread())
                renderPicture();
            update();
        });
}

SunburstLabels SunburstView::placeLabels()
{
    return MapPicture::placeLabels(scene());
}

QColor SunburstView::labelColor(const SunburstSector& sector) const
{
    return MapPicture::labelColor(MapPicture::Scene { m_tree, {}, m_geometry, m_colors, m_changes, std::nullopt, size(), 1, font() }, sector);
}

// The centre names the hovered sector, else the open folder.
std::pair<QString, QString> SunburstView::centerTexts() const
{
    if (m_hover && m_tree) {
        if (std::optional<NodeID> node = m_hover->node())
            return { ViewFormat::name(*m_tree, *node), ViewFormat::size(*m_tree, *node) };
        if (const auto* rest = std::get_if<SunburstSector::Rest>(&m_hover->content))
            return { ViewTexts::restOf(ViewFormat::shortName(*m_tree, rest->parent)), ViewFormat::size(m_hover->bytes) };
        if (const auto* rest = std::get_if<SunburstSector::SmallObjects>(&m_hover->content))
            return { ViewTexts::smallObjectsCount(ViewFormat::count(rest->count())), ViewFormat::size(m_hover->bytes) };
        return { capacityTitle(*m_hover).value_or(QString()), ViewFormat::size(m_hover->bytes) };
    }
    QString detail = m_tree ? ViewFormat::size(*m_tree, m_root) : QString();
    if (m_progress)
        return { ViewTexts::scanningCenter, detail };
    return { m_tree ? ViewFormat::shortName(*m_tree, m_root) : QString(), detail };
}

SunburstPainter::CenterText SunburstView::centerText()
{
    auto [title, detail] = centerTexts();
    return SunburstPainter::centerText(currentGeometry(), font(), title, detail);
}

void SunburstView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    currentLayout();
    if (!m_pictureValid || m_picture.size() != (QSizeF(size()) * devicePixelRatioF()).toSize())
        renderPicture();
    painter.drawImage(0, 0, m_picture);
    SunburstGeometry geometry = currentGeometry();
    if (m_hover)
        SunburstPainter::drawOutline(painter, geometry, *m_hover, QColor(255, 255, 255, 230), 3.0);
    if (m_selection) {
        if (std::optional<SunburstSector> selected = sectorOf(*m_selection))
            SunburstPainter::drawOutline(painter, geometry, *selected, MapPalette::selectionOutline(), 2.5);
    }
    if (m_tree || m_progress) {
        auto [title, detail] = centerTexts();
        SunburstPainter::drawCenter(painter, geometry, font(), title, detail);
    }
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
        bool clickable = sector && (sector->node() || std::holds_alternative<SunburstSector::SmallObjects>(sector->content));
        setCursor(clickable && !m_progress ? Qt::PointingHandCursor : Qt::ArrowCursor);
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
    if (const auto* rest = sector ? std::get_if<SunburstSector::SmallObjects>(&sector->content) : nullptr) {
        openSmallObjects(*rest);
        return;
    }
    if (!node) {
        Q_EMIT nodeSelected(std::nullopt);
        return;
    }
    if (m_tree->kind(*node) == NodeKind::directory && m_tree->childCount(*node) > 0)
        Q_EMIT folderOpened(*node);
    else
        Q_EMIT nodeSelected(*node);
}

// The pieces too small to draw are listed one by one beside the map: their folder opens, or,
// when it is open already, the largest of them is selected there.
void SunburstView::openSmallObjects(const SunburstSector::SmallObjects& rest)
{
    if (rest.parent != m_root) {
        Q_EMIT folderOpened(rest.parent);
        return;
    }
    ScanTree::Children children = m_tree->children(rest.parent);
    if (rest.lower >= 0 && static_cast<std::size_t>(rest.lower) < children.size())
        Q_EMIT nodeSelected(children[static_cast<std::size_t>(rest.lower)]);
}

void SunburstView::contextMenuEvent(QContextMenuEvent* event)
{
    std::optional<SunburstSector> sector = sectorAt(event->pos());
    if (sector && sector->node())
        Q_EMIT itemMenuRequested(*sector->node(), event->globalPos());
    else if (m_tree && !m_progress)
        Q_EMIT itemMenuRequested(m_root, event->globalPos());
}

void SunburstView::keyPressEvent(QKeyEvent* event)
{
    // Escape stops a running scan; going up and back are the window's shortcuts.
    if (event->key() == Qt::Key_Escape && m_progress) {
        Q_EMIT stopRequested();
        return;
    }
    if (!m_tree || m_progress) {
        QWidget::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (std::optional<NodeID> next = neighbour(event->key()))
            Q_EMIT nodeSelected(*next);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_selection && m_tree->isAncestor(m_root, *m_selection) && *m_selection != m_root
            && isContainer(m_tree->kind(*m_selection)) && m_tree->childCount(*m_selection) > 0)
            Q_EMIT folderOpened(*m_selection);
        return;
    default:
        QWidget::keyPressEvent(event);
    }
}

// Left and right go anticlockwise and clockwise along the selection's ring, round the turn;
// up goes out to the largest item inside it, down back in to the item that holds it. Without
// a selection on the map any arrow picks the largest item of the first ring.
std::optional<NodeID> SunburstView::neighbour(int key)
{
    const SunburstLayout& layout = currentLayout();
    if (layout.rings.empty())
        return std::nullopt;
    std::optional<SunburstSector> current = m_selection ? sectorOf(*m_selection) : std::nullopt;
    auto largest = [](const SunburstLayout::Ring& ring, auto&& accept) -> std::optional<NodeID> {
        const SunburstSector* best = nullptr;
        for (const SunburstSector& sector : ring) {
            if (sector.node() && accept(*sector.node()) && (!best || sector.span() > best->span()))
                best = &sector;
        }
        return best ? best->node() : std::nullopt;
    };
    if (!current)
        return largest(layout.rings.front(), [](NodeID) { return true; });
    NodeID node = *current->node();
    auto ring = static_cast<std::size_t>(current->ring);
    if (key == Qt::Key_Up) {
        if (ring + 1 >= layout.rings.size())
            return std::nullopt;
        return largest(layout.rings[ring + 1], [&](NodeID child) { return m_tree->parent(child) == node; });
    }
    if (key == Qt::Key_Down) {
        std::optional<NodeID> parent = m_tree->parent(node);
        return parent && *parent != m_root ? parent : std::nullopt;
    }
    std::vector<NodeID> items;
    for (const SunburstSector& sector : layout.rings[ring]) {
        if (sector.node())
            items.push_back(*sector.node());
    }
    auto at = std::find(items.begin(), items.end(), node);
    if (at == items.end() || items.size() < 2)
        return std::nullopt;
    auto index = static_cast<std::size_t>(at - items.begin());
    std::size_t step = key == Qt::Key_Right ? 1 : items.size() - 1;
    return items[(index + step) % items.size()];
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
