#include "Breadcrumb.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "ViewFormat.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace tarnwick {

namespace {

// Beyond this many folders the middle of the way folds into an ellipsis.
constexpr std::size_t mostShown = 6;

}

Breadcrumb::Breadcrumb(QWidget* parent)
    : QWidget(parent)
    , m_layout(new QHBoxLayout(this))
{
    setObjectName("breadcrumb");
    m_layout->setContentsMargins(4, 0, 4, 0);
    m_layout->setSpacing(0);
    m_layout->addStretch(1);
}

void Breadcrumb::showPath(std::shared_ptr<const ScanTree> tree, NodeID folder)
{
    if (tree == m_tree && folder == m_folder)
        return;
    m_tree = std::move(tree);
    m_folder = folder;
    while (QLayoutItem* item = m_layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    if (m_tree) {
        std::vector<NodeID> chain = m_tree->chain(folder);
        for (std::size_t i = 0; i < chain.size(); ++i) {
            if (chain.size() > mostShown && i > 0 && i < chain.size() - (mostShown - 2)) {
                if (i == 1) {
                    auto* more = new QLabel(QStringLiteral("  …  "), this);
                    more->setStyleSheet("color: #9CA3AF;");
                    m_layout->addWidget(more);
                }
                continue;
            }
            if (i > 0) {
                auto* separator = new QLabel(QStringLiteral("›"), this);
                separator->setStyleSheet("color: #9CA3AF; padding: 0 2px;");
                m_layout->addWidget(separator);
            }
            NodeID node = chain[i];
            auto* button = new QToolButton(this);
            button->setObjectName("crumb");
            button->setText(ViewFormat::shortName(*m_tree, node));
            if (i == 0)
                button->setToolTip(QString::fromStdString(ScopeResolver::displayPath(m_tree->rootPath())));
            button->setAutoRaise(true);
            button->setCursor(Qt::PointingHandCursor);
            button->setProperty("current", node == folder);
            button->setEnabled(node != folder);
            connect(button, &QToolButton::clicked, this, [this, node] { Q_EMIT folderChosen(node); });
            m_layout->addWidget(button);
        }
    }
    m_layout->addStretch(1);
}

QStringList Breadcrumb::names() const
{
    QStringList list;
    for (auto* button : findChildren<QToolButton*>())
        list << button->text();
    return list;
}

}
