#pragma once

#include "Geometry/VolumeCapacity.hpp"
#include "History/HistoryEntry.hpp"
#include "ItemMenu.hpp"
#include "Scanning/NodeID.hpp"

#include <QMainWindow>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class QAction;
class QComboBox;
class QLabel;
class QMenu;
class QPushButton;
class QStackedWidget;

namespace tarnwick {

class HistoryFeed;
class HistoryStore;

class AppModel;
class Breadcrumb;
class ChangesPane;
class DailyScans;
class ColorMap;
class ColorMapStore;
class Favorites;
class FileManagerLink;
class FindBar;
class InspectorView;
class ListPane;
class MapLegend;
class OwnerMap;
class ScanTree;
class SavedDayWindow;
class SearchPane;
class SettingsDialog;
class SourceSidebar;
class StartView;
class SunburstView;
class UserDefaults;

// The app's window: sources on the left, the map with its legend in the middle, the list and
// the inspector on the right, and the toolbar above. Everything it shows comes from the app
// model, and everything the user does goes back to it, so the command line sees the same.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    struct Environment {
        std::string home;
        std::string defaultsPath;
        HistoryStore* history = nullptr; // the app's history; null without one
        DailyScans* dailyScans = nullptr; // the settings' switch and snapshot now; none without a history

        // The user's home and settings file, without a history.
        static Environment standard();
    };

    MainWindow(AppModel& model, Environment environment, QWidget* parent = nullptr);
    ~MainWindow() override;

    [[nodiscard]] SunburstView* map() const { return m_map; }
    [[nodiscard]] ListPane* list() const { return m_list; }
    [[nodiscard]] InspectorView* inspector() const { return m_inspector; }
    [[nodiscard]] MapLegend* legend() const { return m_legend; }
    [[nodiscard]] SourceSidebar* sidebar() const { return m_sidebar; }
    [[nodiscard]] QMenu* savedDaysMenu() const { return m_savedDays; }
    [[nodiscard]] HistoryFeed& history() const { return *m_history; }
    // What the status bar says of the history: empty while all is well.
    [[nodiscard]] QString historyProblem() const;
    [[nodiscard]] Breadcrumb* breadcrumb() const { return m_breadcrumb; }
    [[nodiscard]] QComboBox* colorModes() const { return m_colorModes; }
    [[nodiscard]] FindBar* findBar() const { return m_find; }
    [[nodiscard]] SearchPane* searchPane() const { return m_search; }
    [[nodiscard]] QStackedWidget* pages() const { return m_pages; }
    [[nodiscard]] StartView* startView() const { return m_start; }
    [[nodiscard]] ChangesPane* changes() const { return m_changes; }
    [[nodiscard]] QAction* changesAction() const { return m_showChanges; }
    [[nodiscard]] QPushButton* unreadableButton() const { return m_unreadable; }
    [[nodiscard]] FileManagerLink* fileManager() const { return m_fileManager; }
    // The right-click menu of an item of the current scan; null while a scan runs.
    QMenu* itemMenu(NodeID node);
    // Whether colours, the legend or the map's picture are still being worked out off the main
    // thread.
    [[nodiscard]] bool isBusy() const;

    // Scans a place, or opens it when the current scan holds it; false with a message shown
    // when it cannot be scanned.
    bool choose(const QString& path);

    // Shows the window, restored, in front of the others: for a second start of the app and
    // for show from the command line.
    void bringToFront();

    // Opens the settings on a page: 0 alerts, 1 daily snapshot, 2 menu bar, 3 history.
    SettingsDialog* openSettings(int page = 0);
    // A day of a place's history on the map, in a window of its own.
    SavedDayWindow* openSavedDay(const QString& path, qint64 entryID);
    // The changes of a place from a saved day to now: at once when the place is on show, else
    // once a scan of it has ended.
    void compareWithDay(const QString& path, const HistoryEntry& day);
    // The search pane in the list's place with the results of text, or the list back.
    void search(const QString& text);
    void showSearch(bool shown);
    void openUnreadable();
    void openFreeSpace(const QString& diskPath);

Q_SIGNALS:
    // The tray item's settings or what it shows changed.
    void menuBarSettingsChanged();

private:
    void buildToolbar();
    void buildMenus();
    ItemMenu::Actions itemActions();
    // The menu of one item of the map or the list, at a point of the screen.
    void showItemMenu(NodeID node, const QPoint& at);
    // Opens the folder that holds node and selects it there.
    void reveal(NodeID node);
    QWidget* buildWorkspace();
    void refresh();
    void updateStartChoices();
    void showResult();
    void showScan();
    void showPreview();
    void updateLegend(const std::shared_ptr<const ColorMap>& colors, const std::shared_ptr<const ScanTree>& tree, NodeID root);
    // The owners of a tree on screen: the finished scan's, or those made with its owner colours.
    [[nodiscard]] std::shared_ptr<const OwnerMap> ownersOf(const std::shared_ptr<const ScanTree>& tree) const;
    void updateNavigation(const std::shared_ptr<const ScanTree>& tree, NodeID open);
    void goBack();
    void goForward();
    void goUp();
    void chooseFolder();
    void addFavorite();
    void showChanges(bool shown);
    void updateChanges();
    void updateUnreadable();
    void updateHistoryProblem();
    std::optional<VolumeCapacity> capacityOf(const std::shared_ptr<const ScanTree>& tree);

    AppModel& m_model;
    Environment m_environment;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<Favorites> m_favorites;
    ColorMapStore* m_colors;
    HistoryFeed* m_history;

    SourceSidebar* m_sidebar;
    QStackedWidget* m_pages;
    StartView* m_start;
    SunburstView* m_map;
    MapLegend* m_legend;
    ListPane* m_list;
    InspectorView* m_inspector;
    Breadcrumb* m_breadcrumb;
    QComboBox* m_colorModes;
    FindBar* m_find;
    QLabel* m_status;
    QAction* m_back;
    QAction* m_forward;
    QAction* m_up;
    QAction* m_rescan;
    QAction* m_stop;
    QAction* m_showChanges;
    ChangesPane* m_changes;
    QStackedWidget* m_listOrChanges;
    QPushButton* m_unreadable;
    FileManagerLink* m_fileManager;
    SearchPane* m_search;
    NodeID m_searchRoot;
    QMenu* m_savedDays = nullptr;
    QAction* m_home = nullptr;
    QAction* m_showUnreadable = nullptr;
    QLabel* m_historyProblem; // a failed save or a rebuilt index, in the status bar
    const ScanTree* m_unreadableTree = nullptr;
    SettingsDialog* m_settings = nullptr;

    // Back and forward within one scan.
    std::shared_ptr<const ScanTree> m_navigationTree;
    NodeID m_lastOpen;
    std::vector<NodeID> m_backStack;
    std::vector<NodeID> m_forwardStack;
    bool m_navigating = false;

    // The legend shown, and the one being worked out.
    const void* m_legendColors = nullptr;
    NodeID m_legendRoot;
    std::uint64_t m_legendRequest = 0;
    int m_legendsPending = 0;

    // A comparison with a saved day that waits for the scan of its place.
    std::optional<std::pair<std::string, HistoryEntry>> m_pendingComparison;

    const ScanTree* m_capacityTree = nullptr;
    std::optional<VolumeCapacity> m_capacity;
};

}
