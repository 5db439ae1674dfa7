#pragma once

#include "Classification/ColorMap.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/OwnerMap.hpp"
#include "Scanning/NodeID.hpp"

#include <QWidget>

#include <memory>
#include <vector>

class QFormLayout;
class QLabel;

namespace tarnwick {

class ScanTree;
class ContentStrip;

// Everything known about one item: the selection, or the open folder when nothing is
// selected. Its content shares read folder totals and are worked out off the main thread.
class InspectorView : public QWidget {
    Q_OBJECT

public:
    explicit InspectorView(QWidget* parent = nullptr);

    void showNode(std::shared_ptr<const ScanTree> tree, NodeID node, std::shared_ptr<const ContentMap> content,
        std::shared_ptr<const OwnerMap> owners);
    void clear();
    // The colours of the map, whose mode the bar of groups follows.
    void setColors(std::shared_ptr<const ColorMap> colors);
    // The names beside the bar, largest first, once they arrived.
    [[nodiscard]] std::vector<QString> stripLabels() const;

    [[nodiscard]] std::optional<NodeID> node() const { return m_tree ? std::optional(m_node) : std::nullopt; }
    [[nodiscard]] QString titleText() const;
    [[nodiscard]] QString pathText() const;
    // The value shown beside a label, empty when that row is not shown.
    [[nodiscard]] QString value(const QString& label) const;
    // The content shares once they arrived, largest first.
    [[nodiscard]] const std::vector<ContentShare>& contentShares() const { return m_shares; }

Q_SIGNALS:
    void contentSharesShown();

private:
    void addRow(const QString& label, const QString& value);
    void addNote(const QString& text, bool warning);
    void clearRows();
    void showShares(std::vector<ContentShare> shares);
    void requestStrip();

    std::shared_ptr<const ScanTree> m_tree;
    std::shared_ptr<const ContentMap> m_content;
    std::shared_ptr<const OwnerMap> m_owners;
    std::shared_ptr<const ColorMap> m_colors;
    NodeID m_node;
    std::vector<ContentShare> m_shares;
    std::uint64_t m_request = 0;

    QLabel* m_title;
    QLabel* m_path;
    ContentStrip* m_strip;
    QWidget* m_rows;
    QFormLayout* m_form;
    QWidget* m_notes;
};

}
