#include "ItemMenu.hpp"

#include "Scanning/ScanTree.hpp"
#include "ViewTexts.hpp"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMenu>
#include <QUrl>

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
    menu->addAction(ViewTexts::showInFileManager, menu, [folder] { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); });
    menu->addAction(ViewTexts::copyPath, menu, [path] { QGuiApplication::clipboard()->setText(path); });
    return menu;
}

}
