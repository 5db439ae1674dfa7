#pragma once

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
inline const QString smallObjects = QStringLiteral("Smaller items");
inline QString smallObjectsCount(const QString& count)
{
    return QStringLiteral("%1 smaller items").arg(count);
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

}
