#pragma once

#include "Support/PlatformPhrases.hpp"

#include <QString>

// The words of the window, in one place.
namespace tarnwick::ViewTexts {

inline const QString appName = QStringLiteral("Tarnwick");

// Toolbar and menus.
inline const QString back = QStringLiteral("Back");
inline const QString forward = QStringLiteral("Forward");
inline const QString up = QStringLiteral("Enclosing Folder");
inline const QString rescan = QStringLiteral("Rescan");
inline const QString stop = QStringLiteral("Stop");
inline const QString colorBy = QStringLiteral("Color by");
inline const QString chooseFolder = QStringLiteral("Choose Folder…");
inline const QString chooseFolderTitle = QStringLiteral("Choose a Folder to Scan");
inline const QString addFavorite = QStringLiteral("Add Folder to Favorites…");
inline const QString addToFavorites = QStringLiteral("Add to Favorites");
inline const QString removeFromFavorites = QStringLiteral("Remove from Favorites");

// Sidebar.
inline const QString disksSection = QStringLiteral("Disks");
inline const QString placesSection = QStringLiteral("Places");
inline const QString favoritesSection = QStringLiteral("Favorites");
inline const QString historySection = QStringLiteral("History");
inline const QString homeFolder = QStringLiteral("Home");
inline QString freeOf(const QString& available, const QString& total)
{
    return QStringLiteral("%1 free of %2").arg(available, total);
}

// Start view.
inline const QString startTitle = QStringLiteral("Choose a disk or a folder");
inline const QString startDetail = QStringLiteral(
    "Tarnwick reads only sizes, dates and names, and shows where the space goes. It never changes your files.");
inline const QString scanFailed = QStringLiteral("The scan didn't finish");

// Map.
inline QString scanningTitle(const QString& rootName, const QString& items)
{
    return QStringLiteral("Scanning %1 · %2 items").arg(rootName, items);
}
inline const QString scanningCenter = QStringLiteral("Scanning…");
inline const QString scanning = QStringLiteral("Scanning");
inline const QString available = QStringLiteral("Free space");
inline const QString unaccounted = QStringLiteral("Used, not found by the scan");
inline const QString reserved = QStringLiteral("Reserved for the system");
inline const QString smallObjects = QStringLiteral("Smaller items");
inline QString smallObjectsCount(const QString& count)
{
    return QStringLiteral("%1 smaller items").arg(count);
}
inline const QString smallObjectsHere = QStringLiteral("Click to see them in the list");
inline const QString smallObjectsInFolder = QStringLiteral("Click to open their folder and see them in the list");
// What a folder holds beyond the items listed in it (a saved day keeps folders of 10 MB and more).
inline QString restOf(const QString& folder)
{
    return QStringLiteral("Rest of %1").arg(folder);
}
inline const QString restDetail = QStringLiteral("Files and folders not listed one by one");

// A saved day of a place's history, on the map.
inline const QString savedDays = QStringLiteral("Saved Days");
inline const QString noSavedDays = QStringLiteral("No Saved Days of This Place");
inline const QString compareWithNow = QStringLiteral("Compare with Now");
inline const QString savedDayLoading = QStringLiteral("Reading the saved day…");
inline const QString savedDayUnreadable = QStringLiteral("This saved day can no longer be read");
inline QString savedDayTitle(const QString& day)
{
    return QStringLiteral("Saved day: %1").arg(day);
}
inline QString savedDayDetail(const QString& place, const QString& size)
{
    return QStringLiteral("%1 as it was, %2. A past day: folders of 10 MB and more, and the rest of each folder as one piece.")
        .arg(place, size);
}
inline const QString mixed = QStringLiteral("Mixed");
inline const QString unknown = QStringLiteral("Unknown");
inline const QString noDate = QStringLiteral("No date");
inline const QString coloring = QStringLiteral("Coloring…");
inline QString shareOf(const QString& percent, const QString& name)
{
    return QStringLiteral("%1 of %2").arg(percent, name);
}
inline QString ofDisk(const QString& percent)
{
    return QStringLiteral("%1 of the disk").arg(percent);
}
inline const QString cachesScale = QStringLiteral("Share in caches");
inline const QString hiddenScale = QStringLiteral("Share hidden from view");
inline const QString ratioScale = QStringLiteral("Size on disk ÷ size");
inline const QString ratioNote = QStringLiteral(
    "Green takes less space on disk than its size (compressed or sparse files); red takes more (many small files).");
inline QString ratioOf(const QString& ratio, const QString& name)
{
    return QStringLiteral("On disk, %1 takes %2× its size").arg(name, ratio);
}
inline QString cachesOf(const QString& percent, const QString& name)
{
    return QStringLiteral("%1 of %2 is caches").arg(percent, name);
}
inline QString hiddenOf(const QString& percent, const QString& name)
{
    return QStringLiteral("%1 of %2 is hidden from view").arg(percent, name);
}

// Item menu and finding.
inline const QString openOnMap = QStringLiteral("Open on the Map");
inline const QString showInInspector = QStringLiteral("Show in the Inspector");
inline const QString openEnclosingFolder = QStringLiteral("Open the Folder That Holds It");
inline const QString showInFileManager = QStringLiteral("Show in the File Manager");
inline const QString openTerminalHere = QStringLiteral("Open Terminal Here");
inline const QString scanThisFolder = QStringLiteral("Scan This Folder");
inline const QString noTerminal = QStringLiteral("No terminal was found: set TERMINAL to the one you use.");
inline const QString copyPath = QStringLiteral("Copy Path");
inline const QString findPlaceholder = QStringLiteral("Find (Ctrl+F)");
inline const QString searchAnyKind = QStringLiteral("Files and folders");
inline const QString searchFiles = QStringLiteral("Files");
inline const QString searchFolders = QStringLiteral("Folders");
inline const QString searchAnySize = QStringLiteral("Any size");
inline QString searchAtLeast(const QString& size)
{
    return QStringLiteral("%1 or more").arg(size);
}
inline const QString searchAnyAge = QStringLiteral("Any age");
inline QString searchUnchangedFor(int days)
{
    return days == 365 ? QStringLiteral("Unchanged for a year") : QStringLiteral("Unchanged for %1 days").arg(days);
}
inline const QString searchClose = QStringLiteral("Back to the list");
inline const QString searchWhere = QStringLiteral("In");
inline const QString findNothingOpen = QStringLiteral("Nothing is open to search.");
inline const QString findInvalid = QStringLiteral("The name pattern isn't valid.");
// "5 items below alex match, 1.52 GB in all."
inline QString findCount(std::int64_t count, const QString& size, const QString& folder)
{
    if (count == 0)
        return QStringLiteral("No item below %1 matches.").arg(folder);
    return count == 1 ? QStringLiteral("1 item below %1 matches, %2.").arg(folder, size)
                      : QStringLiteral("%1 items below %2 match, %3 in all.").arg(count).arg(folder, size);
}

// Menus.
inline const QString fileMenu = QStringLiteral("&File");
inline const QString editMenu = QStringLiteral("&Edit");
inline const QString viewMenu = QStringLiteral("&View");
inline const QString goMenu = QStringLiteral("&Go");
inline const QString helpMenu = QStringLiteral("&Help");
inline const QString home = QStringLiteral("Home");
inline const QString freeSpaceMenu = QStringLiteral("Free Space…");
inline const QString unreadablePlaces = QStringLiteral("Unreadable Places…");
inline const QString commandLineHelp = QStringLiteral("Command Line Help");
inline const QString aboutApp = QStringLiteral("About Tarnwick");
inline const QString aboutText = QStringLiteral("Where your disk space went, and where it goes: a map of any folder or disk, "
                                                "its history day by day, and the same answers on the command line.");
inline const QString scanDisk = QStringLiteral("Scan Disk");
inline const QString colorMenu = QStringLiteral("&Color By");
inline const QString closeWindow = QStringLiteral("&Close Window");
inline const QString find = QStringLiteral("&Find…");

// List.
inline const QString nameColumn = QStringLiteral("Name");
inline const QString sizeColumn = QStringLiteral("Size");
inline const QString shareColumn = QStringLiteral("Share");
inline const QString kindColumn = QStringLiteral("Kind");
inline const QString statusColumn = QStringLiteral("Status");
inline QString moreItems(const QString& count)
{
    return QStringLiteral("%1 more items").arg(count);
}
inline const QString folderKind = QStringLiteral("Folder");
inline const QString packageKind = QStringLiteral("Package");
inline const QString fileKind = QStringLiteral("File");
inline const QString symlinkKind = QStringLiteral("Symbolic link");
inline const QString aliasKind = QStringLiteral("Alias");
inline const QString mountPointKind = QStringLiteral("Mount point");
inline const QString otherKind = QStringLiteral("Other item");

// Inspector.
inline const QString sizeOnDisk = QStringLiteral("Size on disk");
inline const QString logicalSize = QStringLiteral("Size");
inline const QString format = QStringLiteral("Kind");
inline const QString owner = QStringLiteral("Owner");
inline const QString lastChange = QStringLiteral("Last change inside");
inline const QString modified = QStringLiteral("Modified");
inline const QString oldestItem = QStringLiteral("Oldest item");
inline const QString created = QStringLiteral("Created");
inline const QString hiddenFromView = QStringLiteral("Hidden from view");
inline const QString readIssue = QStringLiteral("Couldn't read");
inline const QString yes = QStringLiteral("Yes");
inline const QString no = QStringLiteral("No");
inline const QString noDateKnown = QStringLiteral("Unknown");
inline const QString nothingSelected = QStringLiteral("Nothing scanned yet");

// Changes.
inline const QString changes = QStringLiteral("Changes");
inline const QString showChanges = QStringLiteral("Show Changes");
inline const QString grew = QStringLiteral("Grew");
inline const QString shrank = QStringLiteral("Shrank");
inline const QString unchanged = QStringLiteral("unchanged");
inline const QString changedInside = QStringLiteral("Changed inside");
inline const QString grewMost = QStringLiteral("Where it grew most");
inline QString periodTitle(int period)
{
    static const QString titles[] = {
        QStringLiteral("Since yesterday"),
        QStringLiteral("Since the day before yesterday"),
        QStringLiteral("Over the past week"),
        QStringLiteral("Over the past month"),
        QStringLiteral("Over the past 3 months"),
        QStringLiteral("Over the past 6 months"),
        QStringLiteral("Over the past year"),
        QStringLiteral("Since the first snapshot"),
    };
    return period >= 0 && period < 8 ? titles[period] : titles[0];
}
inline QString grewBy(const QString& name, const QString& change)
{
    return QStringLiteral("%1 grew by %2").arg(name, change);
}
inline QString shrankBy(const QString& name, const QString& change)
{
    return QStringLiteral("%1 shrank by %2").arg(name, change);
}
inline QString didNotChange(const QString& name)
{
    return QStringLiteral("%1 didn't change").arg(name);
}
inline QString comparedWith(const QString& date)
{
    return QStringLiteral("Compared with the snapshot of %1").arg(date);
}
inline QString since(const QString& date)
{
    return QStringLiteral("since %1").arg(date);
}
inline QString sizeFromTo(const QString& before, const QString& after)
{
    return QStringLiteral("%1 → %2").arg(before, after);
}
inline QString moreChanged(const QString& count)
{
    return QStringLiteral("%1 more changed places").arg(count);
}
inline const QString nothingInsideChanged = QStringLiteral("Nothing inside changed by 10 MB or more.");
inline const QString firstSnapshot = QStringLiteral(
    "This is the first snapshot of this place, so there is nothing to compare with yet. Changes show from the next day's scan on.");
inline const QString stoppedScan = QStringLiteral(
    "This scan stopped before the end, so it isn't kept in the history and can't be compared.");
inline const QString notSaved = QStringLiteral("This scan couldn't be saved into the history, so it can't be compared.");
inline const QString scanToCompare = QStringLiteral("Scan a place to see what changed.");
inline QString readByOneScan(const QString& places)
{
    return QStringLiteral("Only one of the two scans could read all of %1.").arg(places);
}

// Free space over time.
inline const QString freeSpaceOverTime = QStringLiteral("Free Space Over Time…");
inline QString freeSpaceOf(const QString& disk)
{
    return QStringLiteral("Free Space on %1").arg(disk);
}
inline const QString freeSpaceAxis = QStringLiteral("Available");
inline const QString zoomed = QStringLiteral("Zoomed");
inline const QString fullScale = QStringLiteral("Full Disk");
inline QString jumpOf(const QString& change, const QString& date)
{
    return QStringLiteral("A one-off change of %1 on %2, left out of the pace").arg(change, date);
}
inline const QString noMeasurements = QStringLiteral(
    "No measurements of this disk yet. Tarnwick measures a disk's space with every scan of it and with the daily snapshot.");
inline const QString oneDayOnly = QStringLiteral("Measured on one day so far: the pace shows from the second day on.");
inline const QString steady = QStringLiteral("The available space has stayed about the same.");
inline const QString noForecast = QStringLiteral("Space isn't running out at the measured pace.");

// Places that could not be read.
inline const QString unreadableTitle = QStringLiteral("What Tarnwick Couldn't Read");
inline QString unreadableCount(const QString& count)
{
    return QStringLiteral("%1 places couldn't be read…").arg(count);
}
inline const QString unreadableOne = QStringLiteral("A place couldn't be read…");
inline const QString unreadableIntro = QStringLiteral(
    "These places were left out of the scan, so the sizes of the folders around them are lower bounds (shown with ≥).");
inline const QString otherReadProblems = QStringLiteral("Other read problems");
// What each area of unreadable places means on this system, and what can be done about it.
inline QString areaExplanation(int area)
{
    static const QString texts[] = {
        // desktop, documents, downloads, iCloudDrive: the user's own folders.
        QStringLiteral("A folder of your own whose permissions leave your user account out. Your file manager or chmod can let you in again."),
        QStringLiteral("A folder of your own whose permissions leave your user account out. Your file manager or chmod can let you in again."),
        QStringLiteral("A folder of your own whose permissions leave your user account out. Your file manager or chmod can let you in again."),
        QStringLiteral("A folder of your own whose permissions leave your user account out. Your file manager or chmod can let you in again."),
        // cloudStorage
        QStringLiteral("Folders of cloud storage that refused to be listed, often because the account behind them is signed out."),
        // otherApps
        QStringLiteral("Data that other apps keep to themselves inside your home folder."),
        // protectedByMacOS
        QStringLiteral("Places the system guards whatever your account may do."),
        // system
        QStringLiteral("System places outside the home folders that only the administrator may read. Tarnwick reads what your account may read, and no more."),
        // noPermission
        QStringLiteral("Places whose permissions don't let your account read them."),
    };
    return area >= 0 && area < 9 ? texts[area] : texts[8];
}
inline QString itemsWithIssue(const QString& label, std::int64_t count, const QString& countText)
{
    return count == 1 ? QStringLiteral("%1 · 1 item").arg(label) : QStringLiteral("%1 · %2 items").arg(label, countText);
}
inline QString andMore(const QString& count)
{
    return QStringLiteral("and %1 more").arg(count);
}
inline const QString close = QStringLiteral("Close");

// Settings.
inline const QString settings = QStringLiteral("Settings…");
inline const QString settingsTitle = QStringLiteral("Tarnwick Settings");
inline const QString alertsTab = QStringLiteral("Alerts");
inline const QString dailyTab = QStringLiteral("Daily Snapshot");
inline const QString menuBarTab = QStringLiteral("Tray");
inline const QString historyTab = QStringLiteral("History");
inline const QString placeColumn = QStringLiteral("Place");
inline const QString limitColumn = QStringLiteral("Limit");
inline const QString readingColumn = QStringLiteral("Now");
inline const QString addAlert = QStringLiteral("Add Alert");
inline const QString removeAlert = QStringLiteral("Remove");
inline const QString choosePlace = QStringLiteral("Choose…");
inline const QString alertPlacePlaceholder = QStringLiteral("A disk's mount point or a folder");
inline const QString diskFullerThan = QStringLiteral("Disk fuller than");
inline const QString folderLargerThan = QStringLiteral("Folder larger than");
inline const QString folderShareAbove = QStringLiteral("Folder takes more than, of its disk");
inline const QString folderGrowsBy = QStringLiteral("Folder grows by more than");
inline const QString overPeriod = QStringLiteral("over");
inline const QString measuring = QStringLiteral("Measuring…");
inline const QString exceeded = QStringLiteral("Exceeded");
inline QString limitFullerThan(const QString& percent)
{
    return QStringLiteral("Fuller than %1").arg(percent);
}
inline QString limitLargerThan(const QString& size)
{
    return QStringLiteral("Larger than %1").arg(size);
}
inline QString limitShare(const QString& percent)
{
    return QStringLiteral("More than %1 of its disk").arg(percent);
}
inline QString limitGrowth(const QString& size, const QString& period)
{
    return QStringLiteral("Grows by more than %1, %2").arg(size, period);
}
inline QString alertsIntro(const QString& rules, const QString& oneAlertPerKind)
{
    return rules + QStringLiteral(" ") + oneAlertPerKind;
}
inline const QString noAlerts = QStringLiteral("No alerts yet.");
inline const QString dailySwitch = QStringLiteral("Take a snapshot of your disks once a day");
// "stays in the menu bar" on macOS.
inline const QString dailyExplanation = QStringLiteral("Alerts are checked while Tarnwick runs. With the daily snapshot, it opens at login, stays ")
    + QString::fromUtf8(PlatformPhrases::statusArea.data(), static_cast<qsizetype>(PlatformPhrases::statusArea.size()))
    + QStringLiteral(" and measures your disks every day.");
inline const QString takeSnapshotNow = QStringLiteral("Take a Snapshot Now");
inline const QString snapshotStarted = QStringLiteral("Taking a snapshot of your disks. You will be told when it is done.");
inline QString snapshotEnded(int saved, int failed)
{
    QString disks = saved == 1 ? QStringLiteral("1 disk") : QStringLiteral("%1 disks").arg(saved);
    if (failed == 0)
        return QStringLiteral("Snapshot taken of %1.").arg(disks);
    return QStringLiteral("Snapshot taken of %1; %2 could not be scanned.").arg(disks).arg(failed);
}
inline const QString takingSnapshot = QStringLiteral("Taking a snapshot…");
inline QString takingSnapshotOf(const QString& disk, int done, int total)
{
    return QStringLiteral("Taking a snapshot of %1 (%2 of %3)…").arg(disk).arg(done + 1).arg(total);
}
inline QString lastSnapshot(const QString& date, const QString& outcomes)
{
    return QStringLiteral("Last pass %1: %2").arg(date, outcomes);
}
inline const QString noPassYet = QStringLiteral("No daily pass has run yet.");
inline QString outcomeCount(int count, int outcome)
{
    static const QString words[] = {
        QStringLiteral("saved"),
        QStringLiteral("already taken today"),
        QStringLiteral("put off"),
        QStringLiteral("failed"),
    };
    return QStringLiteral("%1 %2").arg(count).arg(outcome >= 0 && outcome < 4 ? words[outcome] : words[3]);
}
inline const QString showInTray = QStringLiteral("Show Tarnwick in the system tray");
inline const QString trayShows = QStringLiteral("Show");
inline const QString trayDisks = QStringLiteral("Disks");
inline const QString trayLayout = QStringLiteral("Layout");
inline const QString trayPreview = QStringLiteral("Preview");
inline const QString trayUnavailable = QStringLiteral("This desktop has no system tray, so the item can't be shown here.");
inline const QString historyFolder = QStringLiteral("Snapshots are kept in");
inline const QString clearHistory = QStringLiteral("Clear History…");
inline const QString clearHistoryButton = QStringLiteral("Clear History");
inline const QString cancel = QStringLiteral("Cancel");
inline QString storedHistory(const QString& size)
{
    return QStringLiteral("The history takes %1 now, at most 200 MB.").arg(size);
}
inline const QString noDayOfHistory = QStringLiteral("No day snapshots yet.");

// Tray.
inline const QString openWindow = QStringLiteral("Open Tarnwick");
inline const QString dailyMenuItem = QStringLiteral("Take a Snapshot of Disks Daily");
inline const QString customizeMenuBar = QStringLiteral("Tray Settings…");
inline const QString quit = QStringLiteral("Quit Tarnwick");

}
