#include "SettingsDialog.hpp"

#include "AlertsPage.hpp"
#include "DailyScansPage.hpp"
#include "HistoryPage.hpp"
#include "MenuBarPage.hpp"
#include "Platform/UserDefaults.hpp"
#include "ViewTexts.hpp"

#include <QDialogButtonBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tarnwick {

SettingsDialog::SettingsDialog(std::string defaultsPath, HistoryFeed& history, DailyScans* dailyScans, QWidget* parent)
    : QDialog(parent)
    , m_defaults(std::make_shared<UserDefaults>(std::move(defaultsPath)))
    , m_tabs(new QTabWidget(this))
    , m_alerts(new AlertsPage(m_defaults, history))
    , m_daily(new DailyScansPage(dailyScans))
    , m_menuBar(new MenuBarPage(m_defaults, history))
    , m_history(new HistoryPage(history))
{
    setWindowTitle(ViewTexts::settingsTitle);
    setObjectName("settings");
    resize(760, 560);
    m_tabs->setDocumentMode(true);
    m_tabs->addTab(m_alerts, ViewTexts::alertsTab);
    m_tabs->addTab(m_daily, ViewTexts::dailyTab);
    m_tabs->addTab(m_menuBar, ViewTexts::menuBarTab);
    m_tabs->addTab(m_history, ViewTexts::historyTab);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(ViewTexts::close, QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 8, 0, 12);
    column->addWidget(m_tabs, 1);
    auto* bottom = new QVBoxLayout();
    bottom->setContentsMargins(18, 0, 18, 0);
    bottom->addWidget(buttons);
    column->addLayout(bottom);
    setStyleSheet(R"(
        QTabWidget::pane { border: none; border-top: 1px solid #E2E6EC; }
        QTabBar::tab { padding: 7px 16px; border: none; color: #4B5563; background: transparent; }
        QTabBar::tab:selected { color: #111827; font-weight: 600; border-bottom: 2px solid #2F6FED; }
        QTabBar::tab:hover { color: #111827; }
        QGroupBox { border: 1px solid #E2E6EC; border-radius: 10px; margin-top: 14px; padding: 10px 8px 8px 8px; background: #FFFFFF; }
        QGroupBox::title { subcontrol-origin: margin; left: 12px; padding: 0 4px; color: #6B7280; font-weight: 600; }
        QTreeWidget#alertList { border: 1px solid #E2E6EC; border-radius: 8px; background: #FFFFFF; alternate-background-color: #F7F8FA; }
        QTreeWidget#alertList::item { padding: 6px 2px; }
        QLineEdit, QComboBox { border: 1px solid #D7DCE3; border-radius: 7px; padding: 4px 8px; background: #FFFFFF; min-height: 20px; }
        QComboBox::drop-down { border: none; width: 20px; }
    )");

    connect(m_menuBar, &MenuBarPage::changed, this, &SettingsDialog::menuBarChanged);
    connect(m_alerts, &AlertsPage::alertsChanged, this, &SettingsDialog::menuBarChanged);
    connect(m_daily, &DailyScansPage::switched, this, [this] {
        // Turning the daily snapshot on shows the tray item.
        m_menuBar->reloadShown();
        Q_EMIT menuBarChanged();
    });
    connect(m_history, &HistoryPage::cleared, this, &SettingsDialog::historyCleared);
    connect(m_history, &HistoryPage::cleared, this, &SettingsDialog::menuBarChanged);
}

void SettingsDialog::showPage(Page page)
{
    m_tabs->setCurrentIndex(static_cast<int>(page));
}

SettingsDialog::Page SettingsDialog::currentPage() const
{
    return static_cast<Page>(m_tabs->currentIndex());
}

}
