#pragma once

#include <QWidget>

#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

class QListWidget;
class QMenu;
class QListWidgetItem;
class QPushButton;

namespace tarnwick {

class HistoryStore;

class Favorites;

// The sources down the left of the window: every disk with its free space, the home folder,
// the user's favourites and the places that have a history.
class SourceSidebar : public QWidget {
    Q_OBJECT

public:
    enum class Kind { section, disk, home, favorite, history };

    struct Source {
        Kind kind = Kind::disk;
        QString title;
        std::string path;
        std::int64_t total = 0;     // disks only
        std::int64_t available = 0; // disks only
    };

    struct Places {
        std::string home;
        HistoryStore* history = nullptr; // the app's history, whose places are listed
    };

    SourceSidebar(Places places, Favorites& favorites, QWidget* parent = nullptr);

    // Reads the disks, favourites and history again, off the main thread: a disk that
    // doesn't answer (a hung network mount) or a history busy saving never holds the window.
    // sourcesChanged follows.
    void refresh();
    // Marks the source whose path is being shown.
    void setCurrentPath(const std::string& path);
    // Adds the days the history keeps of path, newest first, as last read; false when none.
    // Choosing one asks for it with savedDayRequested.
    bool addSavedDays(QMenu& menu, const std::string& path);
    // As last read; empty until the first reading is in.
    [[nodiscard]] const std::vector<Source>& sources() const { return m_listing.sources; }
    [[nodiscard]] QListWidget* list() const { return m_list; }

Q_SIGNALS:
    void sourceChosen(const QString& path);
    void addFavoriteRequested();
    void freeSpaceRequested(const QString& diskPath);
    // A day of a place's history to show on the map: its path and the day snapshot's entry.
    void savedDayRequested(const QString& path, qint64 entryID);
    void sourcesChanged();

private:
    // A day a place's history keeps.
    struct SavedDay {
        std::int64_t id = 0;
        Date date {};
        std::int64_t total = 0;
    };
    struct Listing {
        std::vector<Source> sources;
        std::map<std::string, std::vector<SavedDay>> savedDays; // by place, newest first
    };
    static Listing read(const Places& places, const std::vector<std::string>& favorites);
    void show(Listing listing);
    void addSection(const QString& title);
    void addSource(const Source& source);
    void showMenu(const QPoint& position);
    void chosen(QListWidgetItem* item);

    Places m_places;
    Favorites& m_favorites;
    QListWidget* m_list;
    QPushButton* m_add;
    std::string m_currentPath;
    Listing m_listing;
    bool m_reading = false;
    bool m_readAgain = false; // asked to refresh while reading
};

}
