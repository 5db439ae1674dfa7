#pragma once

#include "Classification/ColorMap.hpp"
#include "Classification/OwnerMap.hpp"

#include <QObject>

#include <array>
#include <memory>
#include <unordered_map>
#include <vector>

namespace tarnwick {

class ScanTree;

// The colour maps of the trees on screen that come without them, one per mode, made on the
// pool: a running scan's previews and a stopped scan's tree. A completed scan's colours come
// made from the scan's thread with its analysis and are not made here.
class ColorMapStore : public QObject {
    Q_OBJECT

public:
    explicit ColorMapStore(QObject* parent = nullptr);
    ~ColorMapStore() override;

    // The colours of a tree in a mode; null while they are being made, and ready() follows.
    std::shared_ptr<const ColorMap> colors(const std::shared_ptr<const ScanTree>& tree, ColorMode mode);
    // The owners of a tree, made with its owner colours; null before.
    [[nodiscard]] std::shared_ptr<const OwnerMap> owners(const ScanTree* tree) const;
    // Forgets the maps of every other tree.
    void keepOnly(const std::vector<const ScanTree*>& trees);
    [[nodiscard]] bool isMaking() const { return m_making > 0; }

Q_SIGNALS:
    void ready();

private:
    struct Made {
        std::shared_ptr<const ColorMap> colors;
        std::shared_ptr<const OwnerMap> owners;
    };
    struct PerTree {
        std::weak_ptr<const ScanTree> tree;
        std::array<std::shared_ptr<const ColorMap>, allColorModes.size()> maps;
        std::array<bool, allColorModes.size()> pending {};
        std::shared_ptr<const OwnerMap> owners;
    };

    PerTree& entry(const std::shared_ptr<const ScanTree>& tree);
    void make(const std::shared_ptr<const ScanTree>& tree, ColorMode mode);

    std::unordered_map<const ScanTree*, PerTree> m_trees;
    int m_making = 0;
};

}
