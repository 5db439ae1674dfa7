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

// The colour maps of the trees on screen, one per mode, made off the main thread. The
// content map of a finished scan comes made from the scan's thread; owner attribution, the
// date and visibility maps, and every map of a preview are made on the pool.
class ColorMapStore : public QObject {
    Q_OBJECT

public:
    explicit ColorMapStore(QObject* parent = nullptr);
    ~ColorMapStore() override;

    // The colours of a tree in a mode; null while they are being made, and ready() follows.
    // content and owners, when given, are the tree's content map and owners made before.
    std::shared_ptr<const ColorMap> colors(const std::shared_ptr<const ScanTree>& tree, ColorMode mode,
        const std::shared_ptr<const ContentMap>& content = nullptr, const std::shared_ptr<const OwnerMap>& owners = nullptr);
    // The owners of a tree: those given with it, or made with its owner colours; null before.
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
    void make(const std::shared_ptr<const ScanTree>& tree, ColorMode mode, const std::shared_ptr<const ContentMap>& content);

    std::unordered_map<const ScanTree*, PerTree> m_trees;
    int m_making = 0;
};

}
