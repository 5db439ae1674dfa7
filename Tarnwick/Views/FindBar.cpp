#include "FindBar.hpp"

#include "Scanning/ScanTree.hpp"
#include "TreeQueries/NamePattern.hpp"
#include "TreeQueries/NodeKindSet.hpp"
#include "TreeQueries/TreeSearch.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QMenu>

namespace tarnwick {

namespace {

std::optional<NamePattern> patternFor(const QString& typed)
{
    QString text = typed.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    bool isPattern = text.contains('*') || text.contains('?') || text.contains('[');
    std::string pattern = (isPattern ? text : QStringLiteral("*") + text + QStringLiteral("*")).toStdString();
    auto compiled = NamePattern::compile(pattern);
    if (!compiled)
        return std::nullopt;
    return *compiled;
}

}

FindBar::FindBar(QWidget* parent)
    : QLineEdit(parent)
{
    setObjectName("findBar");
    setPlaceholderText(ViewTexts::findPlaceholder);
    setClearButtonEnabled(true);
    setMaximumWidth(220);
    connect(this, &QLineEdit::returnPressed, this, &FindBar::showResults);
}

void FindBar::setScope(std::shared_ptr<const ScanTree> tree, NodeID folder)
{
    m_tree = std::move(tree);
    m_folder = folder;
}

FindBar::Answer FindBar::answer(const QString& typed) const
{
    if (!m_tree)
        return { ViewTexts::findNothingOpen, {} };
    std::optional<NamePattern> pattern = patternFor(typed);
    if (!pattern)
        return { ViewTexts::findInvalid, {} };
    TreeSearch::Found found = TreeSearch::largestItems(*m_tree, m_folder, NodeKindSet::all(), 0, pattern, {}, resultLimit);
    Answer answer { ViewTexts::findCount(found.matchCount, ViewFormat::size(found.matchedBytes, found.matchedIncomplete)), {} };
    for (const TreeSearch::Item& item : found.items) {
        QString relative = QString::fromStdString(m_tree->relativePath(item.node));
        answer.items.push_back({ item.node, ViewFormat::size(*m_tree, item.node) + QStringLiteral("   ") + relative });
    }
    return answer;
}

void FindBar::showResults()
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    Answer found = answer(text());
    QAction* title = menu->addAction(found.title);
    title->setEnabled(false);
    for (const Result& result : found.items) {
        NodeID node = result.node;
        menu->addAction(result.text, this, [this, node] { Q_EMIT itemChosen(node); });
    }
    menu->popup(mapToGlobal(QPoint(0, height())));
}

}
