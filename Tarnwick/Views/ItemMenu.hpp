#pragma once

#include "Scanning/NodeID.hpp"

#include <QObject>

#include <functional>
#include <memory>

class QMenu;
class QWidget;

namespace tarnwick {

class ScanTree;

// What can be done with one item of the map or the list, offered on a right click. It only
// reads: it opens, shows and copies, it never changes a file.
namespace ItemMenu {

struct Actions {
    std::function<void(NodeID folder)> open;     // open a folder on the map
    std::function<void(NodeID node)> select;     // make it the selection, for the inspector
    std::function<void(NodeID node)> goUp;       // open the folder that holds it
};

// A menu for the node, owned by parent; none for the scan root's parent.
QMenu* make(QWidget* parent, const std::shared_ptr<const ScanTree>& tree, NodeID node, Actions actions);

// The folder a file manager should show for the node: the node itself when it is a folder,
// else the folder that holds it.
QString folderToShow(const ScanTree& tree, NodeID node);

}

}
