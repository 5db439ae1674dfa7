#pragma once

#include "Scanning/NodeID.hpp"

#include <QLineEdit>

#include <memory>

namespace tarnwick {

class ScanTree;

// Finds items by name below the open folder, the largest first, as `find --name` does on
// the command line; a plain word matches names that contain it, a pattern with * ? [ is
// taken as it is. Choosing a result reports it.
class FindBar : public QLineEdit {
    Q_OBJECT

public:
    static constexpr int resultLimit = 30;

    explicit FindBar(QWidget* parent = nullptr);

    void setScope(std::shared_ptr<const ScanTree> tree, NodeID folder);
    // The results' menu as it is shown for the typed text: a title line, then the items.
    struct Result {
        NodeID node;
        QString text;
    };
    struct Answer {
        QString title;
        std::vector<Result> items;
    };
    [[nodiscard]] Answer answer(const QString& typed) const;

Q_SIGNALS:
    void itemChosen(tarnwick::NodeID node);

private:
    void showResults();

    std::shared_ptr<const ScanTree> m_tree;
    NodeID m_folder;
};

}
