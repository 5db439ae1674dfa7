#include "SourceSidebar.hpp"

#include "OffThread.hpp"

#include "Favorites.hpp"
#include "History/HistoryStore.hpp"
#include "MapPalette.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <memory>


namespace tarnwick {

namespace {

enum Role { kindRole = Qt::UserRole + 1, pathRole, totalRole, availableRole };

QString lastComponent(const std::string& path)
{
    std::string_view text(path);
    while (text.size() > 1 && text.back() == '/')
        text.remove_suffix(1);
    auto slash = text.rfind('/');
    std::string_view name = slash == std::string_view::npos ? text : text.substr(slash + 1);
    return name.empty() ? QStringLiteral("/") : QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

QString diskTitle(const DiskMount& disk)
{
    if (disk.mount.mountPoint == "/")
        return QStringLiteral("System Disk");
    return lastComponent(disk.mount.mountPoint);
}

// Small line drawings, so the sidebar looks the same under every style and theme.
void drawGlyph(QPainter& painter, SourceSidebar::Kind kind, const QRectF& box, const QColor& color)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    QPointF c = box.center();
    switch (kind) {
    case SourceSidebar::Kind::disk: {
        QRectF body(c.x() - 8, c.y() - 6, 16, 12);
        painter.drawRoundedRect(body, 3, 3);
        painter.drawLine(QPointF(body.left(), c.y() + 1), QPointF(body.right(), c.y() + 1));
        painter.setBrush(color);
        painter.drawEllipse(QPointF(body.right() - 3.5, c.y() + 3.3), 0.9, 0.9);
        break;
    }
    case SourceSidebar::Kind::home: {
        QPainterPath house;
        house.moveTo(c.x() - 7, c.y() - 0.5);
        house.lineTo(c.x(), c.y() - 7);
        house.lineTo(c.x() + 7, c.y() - 0.5);
        painter.drawPath(house);
        painter.drawRect(QRectF(c.x() - 5, c.y() - 1.5, 10, 8));
        break;
    }
    case SourceSidebar::Kind::favorite: {
        QPainterPath star;
        for (int i = 0; i < 10; ++i) {
            double radius = i % 2 == 0 ? 7.5 : 3.3;
            double angle = i * M_PI / 5 - M_PI / 2;
            QPointF point(c.x() + radius * std::cos(angle), c.y() + 0.8 + radius * std::sin(angle));
            if (i == 0)
                star.moveTo(point);
            else
                star.lineTo(point);
        }
        star.closeSubpath();
        painter.drawPath(star);
        break;
    }
    case SourceSidebar::Kind::history:
        painter.drawEllipse(c, 7, 7);
        painter.drawLine(c, QPointF(c.x(), c.y() - 4.5));
        painter.drawLine(c, QPointF(c.x() + 3.5, c.y() + 1.5));
        break;
    case SourceSidebar::Kind::section:
        break;
    }
    painter.restore();
}

class SourceDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        auto kind = static_cast<SourceSidebar::Kind>(index.data(kindRole).toInt());
        int line = option.fontMetrics.height();
        if (kind == SourceSidebar::Kind::section)
            return QSize(180, line + 18);
        if (kind == SourceSidebar::Kind::disk)
            return QSize(180, line * 2 + 20);
        return QSize(180, line + 14);
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        auto kind = static_cast<SourceSidebar::Kind>(index.data(kindRole).toInt());
        QRect area = option.rect;
        QString title = index.data(Qt::DisplayRole).toString();
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (kind == SourceSidebar::Kind::section) {
            QFont font = option.font;
            font.setPointSizeF(font.pointSizeF() * 0.82);
            font.setWeight(QFont::DemiBold);
            font.setCapitalization(QFont::AllUppercase);
            font.setLetterSpacing(QFont::PercentageSpacing, 106);
            painter->setFont(font);
            painter->setPen(QColor(0x8A, 0x93, 0xA3));
            painter->drawText(area.adjusted(14, 8, -8, -2), Qt::AlignLeft | Qt::AlignBottom, title);
            painter->restore();
            return;
        }
        bool selected = option.state & QStyle::State_Selected;
        bool hovered = option.state & QStyle::State_MouseOver;
        QRectF pill = QRectF(area).adjusted(6, 1, -6, -1);
        if (selected || hovered) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(selected ? QColor(0xDC, 0xE6, 0xF9) : QColor(0xE6, 0xE9, 0xEE));
            painter->drawRoundedRect(pill, 7, 7);
        }
        QColor ink = selected ? MapPalette::accent() : QColor(0x4B, 0x55, 0x63);
        int line = option.fontMetrics.height();
        QRectF glyph(area.left() + 12, area.top() + 7, 20, line);
        drawGlyph(*painter, kind, glyph, ink);
        QRect text(area.left() + 40, area.top() + 7, area.width() - 52, line);
        painter->setPen(QColor(0x1F, 0x29, 0x37));
        QFont font = option.font;
        if (selected)
            font.setWeight(QFont::DemiBold);
        painter->setFont(font);
        painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter, option.fontMetrics.elidedText(title, Qt::ElideMiddle, text.width()));
        if (kind == SourceSidebar::Kind::disk) {
            auto total = index.data(totalRole).toLongLong();
            auto available = index.data(availableRole).toLongLong();
            double used = total > 0 ? 1.0 - static_cast<double>(available) / static_cast<double>(total) : 0;
            QRectF track(text.left(), text.bottom() + 5, text.width(), 4);
            painter->setPen(Qt::NoPen);
            painter->setBrush(QColor(0xD9, 0xDE, 0xE6));
            painter->drawRoundedRect(track, 2, 2);
            QRectF bar = track;
            bar.setWidth(track.width() * std::clamp(used, 0.0, 1.0));
            painter->setBrush(used > 0.9 ? QColor(0xE5, 0x48, 0x4D) : MapPalette::accent());
            painter->drawRoundedRect(bar, 2, 2);
            QFont small = option.font;
            small.setPointSizeF(small.pointSizeF() * 0.85);
            painter->setFont(small);
            painter->setPen(QColor(0x6B, 0x72, 0x80));
            painter->drawText(QRect(text.left(), static_cast<int>(track.bottom()) + 3, text.width(), line), Qt::AlignLeft | Qt::AlignVCenter,
                ViewTexts::freeOf(ViewFormat::size(available), ViewFormat::size(total)));
        }
        painter->restore();
    }
};

}

SourceSidebar::SourceSidebar(Places places, Favorites& favorites, QWidget* parent)
    : QWidget(parent)
    , m_places(std::move(places))
    , m_favorites(favorites)
    , m_list(new QListWidget(this))
    , m_add(new QPushButton(QStringLiteral("+  ") + ViewTexts::addFavorite, this))
{
    setObjectName("sidebar");
    m_list->setObjectName("sources");
    m_list->setItemDelegate(new SourceDelegate(m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setMouseTracking(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->viewport()->setAttribute(Qt::WA_Hover);
    m_add->setObjectName("addFavorite");
    m_add->setFlat(true);
    m_add->setCursor(Qt::PointingHandCursor);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 8, 0, 8);
    layout->setSpacing(4);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_add);
    connect(m_list, &QListWidget::itemClicked, this, &SourceSidebar::chosen);
    connect(m_list, &QListWidget::itemActivated, this, &SourceSidebar::chosen);
    connect(m_list, &QListWidget::customContextMenuRequested, this, &SourceSidebar::showMenu);
    connect(m_add, &QPushButton::clicked, this, &SourceSidebar::addFavoriteRequested);
    refresh();
}

SourceSidebar::Listing SourceSidebar::read(const Places& places, const std::vector<std::string>& favorites)
{
    constexpr std::size_t shownDays = 31;
    Listing listing;
    for (DiskMount& disk : MountTable::disks()) {
        Source source { Kind::disk, diskTitle(disk), disk.mount.mountPoint };
        if (auto space = VolumeIdentity::space(disk.mount.mountPoint)) {
            source.total = space->total;
            source.available = space->available;
        }
        listing.sources.push_back(std::move(source));
    }
    if (!places.home.empty())
        listing.sources.push_back({ Kind::home, ViewTexts::homeFolder, places.home });
    for (const std::string& path : favorites)
        listing.sources.push_back({ Kind::favorite, lastComponent(path), path });
    if (!places.history)
        return listing;
    for (const HistorySource& place : places.history->sources()) {
        listing.sources.push_back({ Kind::history, lastComponent(place.path), place.path });
        std::optional<HistoryStore::SourceRecord> record = places.history->record(place);
        if (!record)
            continue;
        std::vector<SavedDay>& days = listing.savedDays[place.path];
        for (auto entry = record->entries.rbegin(); entry != record->entries.rend() && days.size() < shownDays; ++entry)
            days.push_back({ entry->id, entry->date, entry->total });
    }
    return listing;
}

void SourceSidebar::refresh()
{
    if (m_reading) {
        m_readAgain = true;
        return;
    }
    m_reading = true;
    OffThread::run<Listing>(
        this, [places = m_places, favorites = m_favorites.paths()] { return read(places, favorites); },
        [this](Listing listing) {
            m_reading = false;
            show(std::move(listing));
            if (std::exchange(m_readAgain, false))
                refresh();
        });
}

void SourceSidebar::show(Listing listing)
{
    m_listing = std::move(listing);
    m_list->clear();
    std::optional<Kind> section;
    for (const Source& source : m_listing.sources) {
        Kind heading = source.kind == Kind::home ? Kind::home : source.kind;
        if (section != heading) {
            section = heading;
            switch (heading) {
            case Kind::disk:
                addSection(ViewTexts::disksSection);
                break;
            case Kind::home:
                addSection(ViewTexts::placesSection);
                break;
            case Kind::favorite:
                addSection(ViewTexts::favoritesSection);
                break;
            case Kind::history:
                addSection(ViewTexts::historySection);
                break;
            case Kind::section:
                break;
            }
        }
        addSource(source);
    }
    setCurrentPath(m_currentPath);
    Q_EMIT sourcesChanged();
}

void SourceSidebar::addSection(const QString& title)
{
    auto* item = new QListWidgetItem(title, m_list);
    item->setData(kindRole, static_cast<int>(Kind::section));
    item->setFlags(Qt::NoItemFlags);
}

void SourceSidebar::addSource(const Source& source)
{
    auto* item = new QListWidgetItem(source.title, m_list);
    item->setData(kindRole, static_cast<int>(source.kind));
    item->setData(pathRole, QString::fromStdString(source.path));
    item->setData(totalRole, static_cast<qlonglong>(source.total));
    item->setData(availableRole, static_cast<qlonglong>(source.available));
    item->setToolTip(QString::fromStdString(source.path));
}

void SourceSidebar::setCurrentPath(const std::string& path)
{
    m_currentPath = path;
    QSignalBlocker quiet(m_list);
    m_list->clearSelection();
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem* item = m_list->item(row);
        if (!path.empty() && item->data(pathRole).toString().toStdString() == path) {
            item->setSelected(true);
            break;
        }
    }
}

void SourceSidebar::chosen(QListWidgetItem* item)
{
    if (!item || static_cast<Kind>(item->data(kindRole).toInt()) == Kind::section)
        return;
    Q_EMIT sourceChosen(item->data(pathRole).toString());
}

void SourceSidebar::showMenu(const QPoint& position)
{
    QListWidgetItem* item = m_list->itemAt(position);
    if (!item)
        return;
    auto kind = static_cast<Kind>(item->data(kindRole).toInt());
    std::string path = item->data(pathRole).toString().toStdString();
    QMenu menu(this);
    if (kind == Kind::favorite) {
        menu.addAction(ViewTexts::removeFromFavorites, this, [this, path] {
            m_favorites.remove(path);
            refresh();
        });
    } else if (kind != Kind::section) {
        menu.addAction(ViewTexts::addToFavorites, this, [this, path] {
            m_favorites.add(path);
            refresh();
        });
    }
    if (kind == Kind::disk)
        menu.addAction(ViewTexts::freeSpaceOverTime, this, [this, path] { Q_EMIT freeSpaceRequested(QString::fromStdString(path)); });
    if (kind != Kind::section) {
        auto days = std::make_unique<QMenu>(ViewTexts::savedDays, &menu);
        if (addSavedDays(*days, path))
            menu.addMenu(days.release());
    }
    if (!menu.isEmpty())
        menu.exec(m_list->viewport()->mapToGlobal(position));
}

bool SourceSidebar::addSavedDays(QMenu& menu, const std::string& path)
{
    auto found = m_listing.savedDays.find(ScopeResolver::realPath(path));
    if (found == m_listing.savedDays.end() || found->second.empty())
        return false;
    QString place = QString::fromStdString(found->first);
    for (const SavedDay& day : found->second) {
        std::int64_t id = day.id;
        menu.addAction(ViewFormat::date(day.date) + QStringLiteral(" · ") + ViewFormat::size(day.total), this,
            [this, place, id] { Q_EMIT savedDayRequested(place, id); });
    }
    return true;
}

}
