#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentMessages.hpp"
#include "AgentPlaces.hpp"
#include "Classification/TypeGroups.hpp"
#include "History/SnapshotTree.hpp"
#include "SnapshotPlaces.hpp"

namespace tarnwick::SnapshotCommands {

namespace {

constexpr long long defaultPlaces = 5;
constexpr long long defaultGroups = 20;

// Where the colour totals come from: the result on screen, or the latest snapshot.
struct TypesSource {
    std::shared_ptr<const ScanTree> tree;
    NodeID place;
    TypeGroups::Maps maps;
    std::optional<Date> snapshotDate; // absent for the result on screen
    bool hasColors = true;
};

std::expected<TypesSource, AgentResult> sourceFor(const Request& request, const Context& context)
{
    std::string path;
    if (auto argument = AgentPlaces::argument(request.arguments, "path")) {
        auto expanded = AgentPlaces::expand(*argument);
        if (!expanded)
            return std::unexpected(expanded.error());
        path = *expanded;
    } else if (context.openFolder) {
        path = *context.openFolder;
    } else {
        return std::unexpected(AgentResult::failure(AgentErrorCode::notScanned, "Nothing is open in Tarnwick. Give a folder or disk, such as types ~."));
    }
    if (context.tree) {
        for (const std::string& form : HistoryPlaces::pathForms(path)) {
            if (auto node = context.tree->node(form))
                return TypesSource { context.tree, *node, context.analysis ? context.analysis->maps() : TypeGroups::Maps {},
                    std::nullopt, true };
        }
    }
    std::unique_ptr<HistoryStore> owned;
    auto located = SnapshotPlaces::locate(SnapshotPlaces::history(context, owned), path);
    if (!located)
        return std::unexpected(located.error());
    const Snapshot& snapshot = *located->keptIn;
    return TypesSource { SnapshotTree::make(snapshot), NodeID { located->node }, {}, snapshot.date, snapshot.hasColors };
}

TypesAnswer answerAbout(const TypesSource& source, ColorMode mode, decltype(TypesAnswer::listing) listing)
{
    const ScanTree& tree = *source.tree;
    return TypesAnswer { tree.path(source.place), mode, source.snapshotDate, tree.allocatedSize(source.place), tree.isIncomplete(source.place),
        std::move(listing) };
}

}

Answered<TypesAnswer> types(const Request& request, const Context& context)
{
    ColorMode mode = ColorModes::fromCommandLineName(AgentPlaces::argument(request.arguments, "color").value_or("type")).value_or(ColorMode::contentType);
    auto perGroup = static_cast<std::size_t>(AgentPlaces::integer(request.arguments, "folders_per_type", defaultPlaces));
    auto limit = static_cast<std::size_t>(AgentPlaces::integer(request.arguments, "limit", defaultGroups));
    auto cursor = static_cast<std::size_t>(AgentPlaces::integer(request.arguments, "cursor", 0));
    auto source = sourceFor(request, context);
    if (!source)
        return std::unexpected(source.error());
    if (!source->hasColors && mode != ColorMode::owner) {
        return std::unexpected(AgentResult::failure(AgentErrorCode::colorUnavailable,
            AgentMessages::noColorTotals(source->tree->path(source->place), ColorModes::commandLineName(mode))));
    }

    if (mode == ColorMode::onDiskVsSize) {
        return answerAbout(*source, mode, TypesAnswer::Ratios { TypeGroups::ratios(*source->tree, source->place), perGroup });
    }

    auto groups = TypeGroups::groups(source->tree, source->place, mode, source->maps);
    if (!groups) {
        return std::unexpected(AgentResult::failure(AgentErrorCode::colorUnavailable,
            AgentMessages::noTotalsFor(ColorModes::title(mode), source->tree->path(source->place))));
    }
    TypesAnswer::Groups listing { {}, std::min(cursor, groups->size()), groups->size(), perGroup };
    std::size_t last = listing.first + std::min(limit, groups->size() - listing.first);
    listing.groups.assign(std::make_move_iterator(groups->begin() + static_cast<std::ptrdiff_t>(listing.first)),
        std::make_move_iterator(groups->begin() + static_cast<std::ptrdiff_t>(last)));
    return answerAbout(*source, mode, std::move(listing));
}

}
