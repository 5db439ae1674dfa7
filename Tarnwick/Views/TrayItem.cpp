#include "TrayItem.hpp"

#include "Alerts/AlertTexts.hpp"
#include "HistoryFeed.hpp"
#include "MenuBar/MenuBarItem.hpp"
#include "MenuBar/MenuBarTexts.hpp"
#include "MenuBar/MenuBarDisks.hpp"
#include "MenuBarSettings.hpp"
#include "MenuBarViews.hpp"
#include "OffThread.hpp"
#include "Platform/SystemLog.hpp"
#include "Platform/UserDefaults.hpp"
#include "ViewTexts.hpp"

#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTimer>


namespace tarnwick {

namespace {

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

}

TrayItem::TrayItem(std::string defaultsPath, HistoryFeed& history, DailyScans* dailyScans, Actions actions, QObject* parent)
    : QObject(parent)
    , m_defaults(std::make_shared<UserDefaults>(std::move(defaultsPath)))
    , m_history(history)
    , m_dailyScans(dailyScans)
    , m_actions(std::move(actions))
    , m_icon(new QSystemTrayIcon(this))
    , m_menu(std::make_unique<QMenu>())
    , m_timer(new QTimer(this))
{
    // The window's closing decides itself whether the app ends (watchWindow).
    QApplication::setQuitOnLastWindowClosed(false);
    m_icon->setContextMenu(m_menu.get());
    connect(m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger && m_actions.openWindow)
            m_actions.openWindow();
    });
    m_timer->setInterval(refreshMilliseconds);
    connect(m_timer, &QTimer::timeout, this, &TrayItem::refresh);
    // The change since yesterday moves with each saved snapshot; the space now with the timer.
    connect(&m_history, &HistoryFeed::changed, this, &TrayItem::refresh);
    m_timer->start();
    if (m_dailyScans) {
        QPointer<TrayItem> guard(this);
        m_dailyObserver = m_dailyScans->addObserver([guard] {
            QMetaObject::invokeMethod(QCoreApplication::instance(), [guard] {
                if (guard)
                    guard->updateDailyActions();
            }, Qt::QueuedConnection);
        });
    }
    show({});
    refresh();
}

TrayItem::~TrayItem()
{
    if (m_dailyScans)
        m_dailyScans->removeObserver(m_dailyObserver);
}

bool TrayItem::isAvailable()
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

bool TrayItem::isShown() const
{
    return isAvailable() && MenuBarSettings::isShown(*m_defaults);
}

bool TrayItem::keepsAppRunning() const
{
    return isShown() && m_dailyScans && m_dailyScans->isEnabled();
}

void TrayItem::watchWindow(QObject* window)
{
    window->installEventFilter(this);
    if (window->isWidgetType())
        m_window = static_cast<QWidget*>(window);
}

// The item going away while the window is hidden would leave the app out of reach: the
// window comes back then.
void TrayItem::applyVisibility()
{
    bool shown = isShown();
    if (m_iconShown && !shown && m_window && !m_window->isVisible() && m_actions.openWindow)
        m_actions.openWindow();
    m_iconShown = shown;
    m_icon->setVisible(shown);
}

bool TrayItem::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Close && watched->isWidgetType() && !static_cast<QWidget*>(watched)->parentWidget()) {
        // Without the tray and the daily snapshot, closing the window ends the app as before.
        if (!keepsAppRunning())
            QMetaObject::invokeMethod(QCoreApplication::instance(), [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

void TrayItem::refresh()
{
    // Without a history the disks still show their space.
    if (!m_disks)
        m_disks = std::make_shared<MenuBarDisks>(m_history.store(), *m_defaults);
    std::shared_ptr<MenuBarDisks> disks = m_disks;
    std::shared_ptr<UserDefaults> defaults = m_defaults;
    MenuBarStyle style = MenuBarSettings::style(*m_defaults);
    ++m_refreshing;
    OffThread::run<std::vector<MenuBarSegment>>(
        this,
        [disks, defaults, style] {
            std::vector<MenuBarDisk> facts = disks->read(MenuBarDisks::systemDisks());
            return MenuBarItem::segments(facts, style, MenuBarItem::changeThreshold);
        },
        [this](std::vector<MenuBarSegment> segments) {
            --m_refreshing;
            show(std::move(segments));
            Q_EMIT refreshed();
        });
}

void TrayItem::show(std::vector<MenuBarSegment> segments)
{
    m_segments = std::move(segments);
    m_icon->setIcon(MenuBarViews::icon(m_segments));
    m_icon->setToolTip(MenuBarViews::toolTip(m_segments));
    rebuildMenu();
    applyVisibility();
}

QIcon TrayItem::icon() const
{
    return m_icon->icon();
}

QString TrayItem::toolTip() const
{
    return m_icon->toolTip();
}

void TrayItem::rebuildMenu()
{
    m_menu->clear();
    if (m_segments.empty())
        m_menu->addAction(text(MenuBarTexts::noDisks))->setEnabled(false);
    for (const MenuBarSegment& segment : m_segments) {
        QAction* line = m_menu->addAction(QString::fromStdString(MenuBarItem::description(segment)));
        line->setIcon(QIcon(MenuBarViews::picture({ segment }, 32)));
        line->setEnabled(false);
    }
    m_menu->addSeparator();
    m_menu->addAction(ViewTexts::openWindow, this, [this] {
        if (m_actions.openWindow)
            m_actions.openWindow();
    });
    m_snapshotNow = m_menu->addAction(ViewTexts::takeSnapshotNow, this, [this] {
        if (!m_dailyScans)
            return;
        // The menu closes at once: a notification says the snapshot started, another when it ends.
        std::optional<DailyScans::Pass> before = m_dailyScans->lastPass();
        m_passBefore = before ? std::optional(before->startedAt) : std::nullopt;
        m_snapshotAsked = true;
        m_dailyScans->takeSnapshotNow();
        deliver(ViewTexts::appName, ViewTexts::snapshotStarted);
    });
    m_daily = m_menu->addAction(ViewTexts::dailyMenuItem, this, [this](bool on) {
        if (!m_dailyScans)
            return;
        auto changed = on ? m_dailyScans->turnOn() : m_dailyScans->turnOff();
        if (!changed) {
            SystemLog::write(SystemLog::Level::error, "daily scans", changed.error());
            m_icon->showMessage(ViewTexts::appName, QString::fromStdString(changed.error()), QSystemTrayIcon::Warning);
        }
        updateDailyActions();
    });
    m_daily->setCheckable(true);
    m_menu->addSeparator();
    m_menu->addAction(ViewTexts::customizeMenuBar, this, [this] {
        if (m_actions.openMenuBarSettings)
            m_actions.openMenuBarSettings();
    });
    m_menu->addAction(ViewTexts::settings, this, [this] {
        if (m_actions.openSettings)
            m_actions.openSettings();
    });
    m_menu->addSeparator();
    m_menu->addAction(ViewTexts::quit, this, [] { QCoreApplication::quit(); });
    updateDailyActions();
}

void TrayItem::updateDailyActions()
{
    if (!m_daily || !m_snapshotNow)
        return;
    m_daily->setEnabled(m_dailyScans != nullptr);
    m_daily->setChecked(m_dailyScans && m_dailyScans->isEnabled());
    DailyScans::Progress progress = m_dailyScans ? m_dailyScans->progress() : DailyScans::Progress {};
    m_snapshotNow->setEnabled(m_dailyScans && !progress.running);
    if (progress.running && !progress.disk.empty())
        m_snapshotNow->setText(ViewTexts::takingSnapshotOf(QString::fromStdString(progress.disk), progress.done, progress.total));
    else if (progress.running)
        m_snapshotNow->setText(ViewTexts::takingSnapshot);
    else
        m_snapshotNow->setText(ViewTexts::takeSnapshotNow);
    // A pass that ended changed the snapshots the item is drawn from.
    if (m_wasRunning && !progress.running)
        refresh();
    // A pass may start and end between two looks at the progress: its record tells it ended.
    if (m_snapshotAsked && !progress.running && m_dailyScans) {
        std::optional<DailyScans::Pass> pass = m_dailyScans->lastPass();
        if (pass && std::optional(pass->startedAt) != m_passBefore) {
            m_snapshotAsked = false;
            deliver(ViewTexts::appName, snapshotOutcome());
        }
    }
    m_wasRunning = progress.running;
    applyVisibility();
}

QString TrayItem::snapshotOutcome() const
{
    std::optional<DailyScans::Pass> pass = m_dailyScans ? m_dailyScans->lastPass() : std::nullopt;
    int saved = 0;
    int failed = 0;
    for (const DailyScans::DiskOutcome& outcome : pass ? pass->outcomes : std::vector<DailyScans::DiskOutcome> {}) {
        saved += outcome.outcome == DailyScans::Outcome::saved || outcome.outcome == DailyScans::Outcome::alreadyTaken;
        failed += outcome.outcome == DailyScans::Outcome::failed;
    }
    return ViewTexts::snapshotEnded(saved, failed);
}

void TrayItem::notify(const std::string& title, const std::string& body)
{
    QPointer<TrayItem> guard(this);
    QString titleText = QString::fromStdString(title);
    QString bodyText = QString::fromStdString(body);
    QMetaObject::invokeMethod(QCoreApplication::instance(), [guard, titleText, bodyText] {
        if (guard)
            guard->deliver(titleText, bodyText);
    }, Qt::QueuedConnection);
}

void TrayItem::deliver(const QString& title, const QString& body)
{
    m_lastNotification = { title, body };
    std::string reason;
    if (!isAvailable())
        reason = "the desktop has no system tray";
    else if (!m_icon->isVisible())
        reason = "the tray item is hidden";
    else if (!QSystemTrayIcon::supportsMessages())
        reason = "the desktop shows no notifications";
    if (!reason.empty()) {
        SystemLog::write(SystemLog::Level::error, AlertTexts::logCategory, AlertTexts::notDelivered(reason));
        return;
    }
    m_icon->showMessage(title, body, QSystemTrayIcon::Information, 15'000);
}

}
