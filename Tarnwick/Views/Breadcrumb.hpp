#pragma once

#include "Scanning/NodeID.hpp"

#include <QWidget>

#include <memory>

class QHBoxLayout;

namespace tarnwick {

class ScanTree;

// The way from the scanned root down to the open folder, one button per folder.
class Breadcrumb : public QWidget {
    Q_OBJECT

public:
    explicit Breadcrumb(QWidget* parent = nullptr);

    void showPath(std::shared_ptr<const ScanTree> tree, NodeID folder);
    [[nodiscard]] QStringList names() const;

Q_SIGNALS:
    void folderChosen(tarnwick::NodeID folder);

private:
    QHBoxLayout* m_layout;
    std::shared_ptr<const ScanTree> m_tree;
    NodeID m_folder;
};

}
