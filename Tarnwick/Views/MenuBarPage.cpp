#include "MenuBarPage.hpp"

#include "HistoryFeed.hpp"
#include "MenuBar/MenuBarItem.hpp"
#include "MenuBar/MenuBarTexts.hpp"
#include "MenuBar/MenuBarDisks.hpp"
#include "MenuBarSettings.hpp"
#include "MenuBarViews.hpp"
#include "OffThread.hpp"
#include "Platform/UserDefaults.hpp"
#include "TrayItem.hpp"
#include "ViewTexts.hpp"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QRadioButton>
#include <QEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace tarnwick {

namespace {

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QLabel* wrapped(const QString& content, QWidget* parent)
{
    auto* label = new QLabel(content, parent);
    label->setWordWrap(true);
    return label;
}

QRadioButton* radio(std::string_view title, QWidget* parent)
{
    auto* button = new QRadioButton(text(title), parent);
    return button;
}

}

MenuBarPage::MenuBarPage(std::shared_ptr<UserDefaults> defaults, HistoryFeed& history, QWidget* parent)
    : QWidget(parent)
    , m_defaults(std::move(defaults))
    , m_history(history)
    , m_shown(new QCheckBox(ViewTexts::showInTray, this))
    , m_all(radio(MenuBarTexts::allDisksOption, this))
    , m_physical(radio(MenuBarTexts::physicalDisksOption, this))
    , m_chosen(radio(MenuBarTexts::chosenDisksOption, this))
    , m_diskList(new QListWidget(this))
    , m_percent(new QCheckBox(text(MenuBarTexts::freePercentOption), this))
    , m_bytes(new QCheckBox(text(MenuBarTexts::freeBytesOption), this))
    , m_change(new QCheckBox(text(MenuBarTexts::changeOption), this))
    , m_mostNotable(radio(MenuBarTexts::mostNotableOption, this))
    , m_each(radio(MenuBarTexts::eachOption, this))
    , m_picture(new QLabel(this))
    , m_previewLines(new QLabel(this))
{
    auto* disksGroup = new QButtonGroup(this);
    for (QRadioButton* button : { m_all, m_physical, m_chosen })
        disksGroup->addButton(button);
    auto* layoutGroup = new QButtonGroup(this);
    layoutGroup->addButton(m_mostNotable);
    layoutGroup->addButton(m_each);
    m_mostNotable->setStyleSheet("QRadioButton { padding-right: 8px; }");
    for (const MenuBarDisks::Disk& disk : MenuBarDisks::systemDisks()) {
        auto* item = new QListWidgetItem(QString::fromStdString(MenuBarDisks::name(disk.source.path)) + QStringLiteral("  ")
                + QString::fromStdString(disk.source.path),
            m_diskList);
        item->setData(Qt::UserRole, QString::fromStdString(disk.source.volume));
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Unchecked);
    }
    m_diskList->setFixedHeight(std::clamp(m_diskList->count(), 1, 4) * (fontMetrics().height() + 8) + 8);
    m_picture->setFixedSize(64, 64);
    m_previewLines->setWordWrap(true);
    m_previewLines->setTextFormat(Qt::PlainText);
    m_previewLines->setStyleSheet("color: #374151;");

    auto* disksBox = new QGroupBox(ViewTexts::trayDisks, this);
    auto* disksColumn = new QVBoxLayout(disksBox);
    disksColumn->addWidget(m_all);
    disksColumn->addWidget(m_physical);
    disksColumn->addWidget(m_chosen);
    disksColumn->addWidget(m_diskList);
    auto* showsBox = new QGroupBox(ViewTexts::trayShows, this);
    auto* showsColumn = new QVBoxLayout(showsBox);
    showsColumn->addWidget(m_percent);
    showsColumn->addWidget(m_bytes);
    showsColumn->addWidget(m_change);
    auto* layoutBox = new QGroupBox(ViewTexts::trayLayout, this);
    auto* layoutColumn = new QVBoxLayout(layoutBox);
    auto* mostNotableRow = new QHBoxLayout();
    mostNotableRow->addWidget(m_mostNotable);
    m_mostNotable->setText(QString());
    auto* mostNotableText = wrapped(text(MenuBarTexts::mostNotableOption), this);
    mostNotableRow->addWidget(mostNotableText, 1);
    layoutColumn->addLayout(mostNotableRow);
    layoutColumn->addWidget(m_each);
    auto* previewBox = new QGroupBox(ViewTexts::trayPreview, this);
    auto* previewRow = new QHBoxLayout(previewBox);
    previewRow->addWidget(m_picture, 0, Qt::AlignTop);
    previewRow->addSpacing(8);
    previewRow->addWidget(m_previewLines, 1, Qt::AlignTop);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(18, 16, 18, 16);
    column->setSpacing(10);
    column->addWidget(m_shown);
    if (!TrayItem::isAvailable()) {
        auto* note = wrapped(ViewTexts::trayUnavailable, this);
        note->setStyleSheet("color: #7C4A03;");
        column->addWidget(note);
    }
    auto* columns = new QHBoxLayout();
    auto* left = new QVBoxLayout();
    left->addWidget(disksBox);
    left->addWidget(showsBox);
    auto* right = new QVBoxLayout();
    right->addWidget(layoutBox);
    right->addWidget(previewBox);
    right->addStretch(1);
    columns->addLayout(left, 1);
    columns->addLayout(right, 1);
    column->addLayout(columns);
    column->addStretch(1);

    // The long choice wraps in a label of its own, which picks its button when clicked.
    mostNotableText->installEventFilter(this);
    mostNotableText->setObjectName("mostNotableText");
    for (QAbstractButton* button : std::initializer_list<QAbstractButton*> { m_all, m_physical, m_chosen, m_percent, m_bytes, m_change, m_mostNotable, m_each })
        connect(button, &QAbstractButton::toggled, this, &MenuBarPage::save);
    connect(m_diskList, &QListWidget::itemChanged, this, &MenuBarPage::save);
    connect(m_shown, &QCheckBox::toggled, this, [this](bool shown) {
        if (m_applying)
            return;
        (void)MenuBarSettings::setShown(*m_defaults, shown);
        Q_EMIT changed();
    });
    connect(&m_history, &HistoryFeed::changed, this, &MenuBarPage::updatePreview);
    reloadShown();
    showStyle(MenuBarSettings::style(*m_defaults));
    updatePreview();
}

bool MenuBarPage::eventFilter(QObject* watched, QEvent* event)
{
    if (watched->objectName() == QStringLiteral("mostNotableText") && event->type() == QEvent::MouseButtonRelease)
        m_mostNotable->click();
    return QWidget::eventFilter(watched, event);
}

void MenuBarPage::reloadShown()
{
    m_applying = true;
    m_shown->setChecked(MenuBarSettings::isShown(*m_defaults));
    m_applying = false;
}

MenuBarStyle MenuBarPage::style() const
{
    MenuBarStyle style;
    if (m_all->isChecked()) {
        style.disks = MenuBarStyle::Disks::all();
    } else if (m_physical->isChecked()) {
        style.disks = MenuBarStyle::Disks::physical();
    } else {
        std::vector<std::string> chosen;
        for (int row = 0; row < m_diskList->count(); ++row) {
            if (m_diskList->item(row)->checkState() == Qt::Checked)
                chosen.push_back(m_diskList->item(row)->data(Qt::UserRole).toString().toStdString());
        }
        style.disks = MenuBarStyle::Disks::choosing(std::move(chosen));
    }
    style.showsFreePercent = m_percent->isChecked();
    style.showsFreeBytes = m_bytes->isChecked();
    style.showsChange = m_change->isChecked();
    style.layout = m_each->isChecked() ? MenuBarStyle::Layout::each : MenuBarStyle::Layout::mostNotable;
    return style;
}

void MenuBarPage::showStyle(const MenuBarStyle& style)
{
    m_applying = true;
    m_all->setChecked(style.disks.kind == MenuBarStyle::Disks::Kind::all);
    m_physical->setChecked(style.disks.kind == MenuBarStyle::Disks::Kind::physical);
    m_chosen->setChecked(style.disks.kind == MenuBarStyle::Disks::Kind::chosen);
    for (int row = 0; row < m_diskList->count(); ++row) {
        QListWidgetItem* item = m_diskList->item(row);
        bool chosen = std::ranges::find(style.disks.chosen, item->data(Qt::UserRole).toString().toStdString()) != style.disks.chosen.end();
        item->setCheckState(chosen ? Qt::Checked : Qt::Unchecked);
    }
    m_diskList->setEnabled(style.disks.kind == MenuBarStyle::Disks::Kind::chosen);
    m_percent->setChecked(style.showsFreePercent);
    m_bytes->setChecked(style.showsFreeBytes);
    m_change->setChecked(style.showsChange);
    m_mostNotable->setChecked(style.layout == MenuBarStyle::Layout::mostNotable);
    m_each->setChecked(style.layout == MenuBarStyle::Layout::each);
    m_applying = false;
}

void MenuBarPage::apply(const MenuBarStyle& style)
{
    showStyle(style);
    save();
}

void MenuBarPage::save()
{
    if (m_applying)
        return;
    MenuBarStyle chosen = style();
    m_diskList->setEnabled(chosen.disks.kind == MenuBarStyle::Disks::Kind::chosen);
    (void)MenuBarSettings::setStyle(*m_defaults, chosen);
    updatePreview();
    Q_EMIT changed();
}

QString MenuBarPage::previewText() const
{
    return m_previewLines->text();
}

void MenuBarPage::updatePreview()
{
    MenuBarStyle chosen = style();
    std::shared_ptr<UserDefaults> defaults = m_defaults;
    HistoryStore* store = m_history.store();
    ++m_previewing;
    OffThread::run<std::vector<MenuBarSegment>>(
        this,
        [chosen, defaults, store] {
            MenuBarDisks disks(store, *defaults);
            return MenuBarItem::segments(disks.read(MenuBarDisks::systemDisks()), chosen, MenuBarItem::changeThreshold);
        },
        [this](std::vector<MenuBarSegment> segments) {
            if (--m_previewing > 0)
                return;
            m_previewSegments = std::move(segments);
            QPixmap picture = MenuBarViews::picture(m_previewSegments, 64 * 2);
            picture.setDevicePixelRatio(2);
            m_picture->setPixmap(picture);
            QString lines = MenuBarViews::toolTip(m_previewSegments);
            m_previewLines->setText(lines.mid(lines.indexOf('\n') + 1));
            Q_EMIT previewShown();
        });
}

}
