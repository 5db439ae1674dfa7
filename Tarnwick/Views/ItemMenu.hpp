#pragma once

#include "Scanning/NodeID.hpp"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QMenu;
class QWidget;

namespace tarnwick {

class ScanTree;

// What can be done with one item of the map or the list, offered on a right click. It only
// reads: it opens, shows, scans and copies, it never changes a file.
namespace ItemMenu {

struct Actions {
    std::function<void(NodeID folder)> open;     // open a folder on the map
    std::function<void(NodeID node)> select;     // make it the selection, for the inspector
    std::function<void(NodeID node)> goUp;       // open the folder that holds it
    // Paths: the item itself for the file manager, a folder (folderToShow) for the others.
    std::function<void(const QString& path)> showInFileManager;
    std::function<void(const QString& folder)> openTerminal;
    std::function<void(const QString& folder)> scan;
    std::function<void(const QString& folder)> addFavorite;
};

// A menu for the node, owned by parent; none for the scan root's parent.
QMenu* make(QWidget* parent, const std::shared_ptr<const ScanTree>& tree, NodeID node, Actions actions);

// The folder a file manager should show for the node: the node itself when it is a folder,
// else the folder that holds it.
QString folderToShow(const ScanTree& tree, NodeID node);

}

}
