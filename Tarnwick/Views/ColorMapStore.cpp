#include "ColorMapStore.hpp"

#include "Classification/InstalledOwners.hpp"
#include "Classification/TimeZone.hpp"
#include "OffThread.hpp"
#include "Scanning/ScanTree.hpp"

#include <mutex>

namespace tarnwick {

namespace {

std::size_t slot(ColorMode mode)
{
    return static_cast<std::size_t>(mode);
}

bool isDateMode(ColorMode mode)
{
    return mode == ColorMode::lastModified || mode == ColorMode::created;
}

}

ColorMapStore::ColorMapStore(QObject* parent)
    : QObject(parent)
{
}

ColorMapStore::~ColorMapStore() = default;

ColorMapStore::PerTree& ColorMapStore::entry(const std::shared_ptr<const ScanTree>& tree)
{
    PerTree& perTree = m_trees[tree.get()];
    // Another tree at the address of a freed one starts afresh.
    if (perTree.tree.lock() != tree) {
        perTree = PerTree {};
        perTree.tree = tree;
    }
    return perTree;
}

std::shared_ptr<const ColorMap> ColorMapStore::colors(const std::shared_ptr<const ScanTree>& tree, ColorMode mode)
{
    if (!tree)
        return nullptr;
    PerTree& perTree = entry(tree);
    auto& made = perTree.maps[slot(mode)];
    // Date colours belong to a calendar day and are made again on the next one.
    if (made && isDateMode(mode) && !made->boundaries().isCurrent(std::chrono::system_clock::now(), TimeZone::system()))
        made.reset();
    if (made)
        return made;
    // The ratio mode reads the tree alone and costs nothing to set up.
    if (mode == ColorMode::onDiskVsSize) {
        made = ColorMap::make(mode, tree);
        return made;
    }
    if (!perTree.pending[slot(mode)])
        make(tree, mode);
    return nullptr;
}

void ColorMapStore::make(const std::shared_ptr<const ScanTree>& tree, ColorMode mode)
{
    PerTree& perTree = entry(tree);
    perTree.pending[slot(mode)] = true;
    ++m_making;
    std::shared_ptr<const OwnerMap> knownOwners = perTree.owners;
    OffThread::run<Made>(
        this,
        [tree, mode, knownOwners] {
            Made made;
            ColorMap::Sources sources;
            if (mode == ColorMode::owner) {
                made.owners = knownOwners ? knownOwners : std::make_shared<const OwnerMap>(OwnerMap::build(*tree, InstalledOwners::places()));
                sources.owner = made.owners->buckets(tree);
            }
            made.colors = ColorMap::make(mode, tree, std::move(sources));
            return made;
        },
        [this, weakTree = std::weak_ptr<const ScanTree>(tree), mode](Made made) {
            --m_making;
            auto tree = weakTree.lock();
            auto found = tree ? m_trees.find(tree.get()) : m_trees.end();
            if (found == m_trees.end() || found->second.tree.lock() != tree)
                return;
            found->second.pending[slot(mode)] = false;
            found->second.maps[slot(mode)] = std::move(made.colors);
            if (made.owners)
                found->second.owners = std::move(made.owners);
            Q_EMIT ready();
        });
}

std::shared_ptr<const OwnerMap> ColorMapStore::owners(const ScanTree* tree) const
{
    auto found = m_trees.find(tree);
    return found == m_trees.end() ? nullptr : found->second.owners;
}

void ColorMapStore::keepOnly(const std::vector<const ScanTree*>& trees)
{
    std::erase_if(m_trees, [&](const auto& item) { return std::find(trees.begin(), trees.end(), item.first) == trees.end(); });
}

}
