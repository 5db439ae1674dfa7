#include "ItemMenu.hpp"

#include "Scanning/ScanTree.hpp"
#include "ViewTexts.hpp"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>

namespace tarnwick::ItemMenu {

QString folderToShow(const ScanTree& tree, NodeID node)
{
    if (!isContainer(tree.kind(node))) {
        if (std::optional<NodeID> parent = tree.parent(node))
            node = *parent;
    }
    return QString::fromStdString(tree.path(node));
}

QMenu* make(QWidget* parent, const std::shared_ptr<const ScanTree>& tree, NodeID node, Actions actions)
{
    auto* menu = new QMenu(parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QString path = QString::fromStdString(tree->path(node));
    if (isContainer(tree->kind(node)) && actions.open)
        menu->addAction(ViewTexts::openOnMap, menu, [actions, node] { actions.open(node); });
    if (actions.select)
        menu->addAction(ViewTexts::showInInspector, menu, [actions, node] { actions.select(node); });
    if (tree->parent(node) && actions.goUp)
        menu->addAction(ViewTexts::openEnclosingFolder, menu, [actions, node] { actions.goUp(node); });
    menu->addSeparator();
    QString folder = folderToShow(*tree, node);
    if (actions.showInFileManager)
        menu->addAction(ViewTexts::showInFileManager, menu, [actions, path] { actions.showInFileManager(path); });
    if (actions.openTerminal)
        menu->addAction(ViewTexts::openTerminalHere, menu, [actions, folder] { actions.openTerminal(folder); });
    menu->addAction(ViewTexts::copyPath, menu, [path] { QGuiApplication::clipboard()->setText(path); });
    menu->addSeparator();
    if (actions.scan)
        menu->addAction(ViewTexts::scanThisFolder, menu, [actions, folder] { actions.scan(folder); });
    if (actions.addFavorite)
        menu->addAction(ViewTexts::addToFavorites, menu, [actions, folder] { actions.addFavorite(folder); });
    return menu;
}

}
