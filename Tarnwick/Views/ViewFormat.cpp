#include "ViewFormat.hpp"

#include "Support/Phrases.hpp"
#include "Classification/ContentClassifier.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "ViewTexts.hpp"

#include <QDateTime>
#include <QLocale>

namespace tarnwick::ViewFormat {

QString size(std::int64_t bytes, bool lowerBound)
{
    return QString::fromStdString(Phrases::size(bytes, lowerBound));
}

QString size(const ScanTree& tree, NodeID node)
{
    return size(tree.allocatedSize(node), tree.isIncomplete(node));
}

QString percent(double share)
{
    return QString::fromStdString(Phrases::percent(share));
}

QString change(std::int64_t bytes, bool uncertain)
{
    std::int64_t magnitude = bytes < 0 ? (bytes == INT64_MIN ? INT64_MAX : -bytes) : bytes;
    QString sign = bytes < 0 ? QStringLiteral("−") : QStringLiteral("+");
    return (uncertain ? QStringLiteral("≈") : QString()) + sign + size(magnitude);
}

QString date(std::optional<Date> value)
{
    if (!value)
        return ViewTexts::noDateKnown;
    auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(value->time_since_epoch()).count();
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(milliseconds), QLocale::ShortFormat);
}

QString kind(NodeKind kind)
{
    switch (kind) {
    case NodeKind::directory:
        return ViewTexts::folderKind;
    case NodeKind::package:
        return ViewTexts::packageKind;
    case NodeKind::file:
        return ViewTexts::fileKind;
    case NodeKind::symlink:
        return ViewTexts::symlinkKind;
    case NodeKind::alias:
        return ViewTexts::aliasKind;
    case NodeKind::mountPoint:
        return ViewTexts::mountPointKind;
    case NodeKind::other:
        break;
    }
    return ViewTexts::otherKind;
}

QString format(const ScanTree& tree, NodeID node)
{
    NodeKind nodeKind = tree.kind(node);
    if (nodeKind == NodeKind::file || isContainer(nodeKind)) {
        std::optional<NodeID> parent = tree.parent(node);
        std::optional<std::string_view> parentName;
        if (parent)
            parentName = tree.name(*parent);
        bool topLevel = parent && *parent == NodeID::root();
        auto itemKind = isContainer(nodeKind) ? ContentClassifier::ItemKind::folder : ContentClassifier::ItemKind::file;
        if (auto label = ContentClassifier::formatName(tree.name(node), itemKind, parentName, topLevel))
            return QString::fromUtf8(label->data(), static_cast<qsizetype>(label->size()));
    }
    return kind(nodeKind);
}

QString name(const ScanTree& tree, NodeID node)
{
    if (node == NodeID::root())
        return QString::fromStdString(ScopeResolver::displayPath(tree.rootPath()));
    std::string_view text = tree.name(node);
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString shortName(const ScanTree& tree, NodeID node)
{
    QString text = name(tree, node);
    if (node != NodeID::root())
        return text;
    int slash = text.lastIndexOf('/');
    return slash >= 0 && slash + 1 < text.size() ? text.mid(slash + 1) : text;
}

QString count(std::int64_t value)
{
    return QLocale().toString(static_cast<qlonglong>(value));
}

QString homePath(const std::string& path, const std::string& home)
{
    std::string shown = ScopeResolver::displayPath(path);
    std::string shownHome = home.empty() ? std::string() : ScopeResolver::displayPath(home);
    if (!shownHome.empty() && shownHome != "/" && (shown == shownHome || (shown.starts_with(shownHome) && shown[shownHome.size()] == '/')))
        return QStringLiteral("~") + QString::fromStdString(shown.substr(shownHome.size()));
    return QString::fromStdString(shown);
}

}
