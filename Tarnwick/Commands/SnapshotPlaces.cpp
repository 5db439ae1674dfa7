#include "SnapshotPlaces.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Alerts/AlertPeriods.hpp"
#include "Platform/UserFolders.hpp"

#include <sys/stat.h>

namespace tarnwick::SnapshotPlaces {

HistoryStore* history(const SnapshotAnswers::Context& context, std::unique_ptr<HistoryStore>& owned)
{
    if (context.store)
        return context.store;
    std::string directory = UserFolders::dataFolder() + "/" + std::string(HistoryStore::historyFolderName);
    struct stat info {};
    if (::stat(directory.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        return nullptr;
    auto store = HistoryStore::open(directory);
    if (!store)
        return nullptr;
    owned = std::move(*store);
    return owned.get();
}

AgentResult noHistory()
{
    return AgentResult::failure(AgentErrorCode::noHistory, AgentErrorCode::Messages::noHistory);
}

std::expected<HistoryPlaces::Located, AgentResult> locate(HistoryStore* store, const std::string& path)
{
    if (!store)
        return std::unexpected(noHistory());
    auto located = HistoryPlaces::locate(*store, path);
    if (!located)
        return std::unexpected(noHistory());
    return std::move(*located);
}

HistoryPeriod period(const std::map<std::string, std::string>& arguments)
{
    auto found = arguments.find("period");
    if (found == arguments.end())
        return HistoryPeriod::defaultPeriod;
    auto raw = AlertPeriods::fromCommandLineName(found->second);
    auto period = raw ? HistoryPeriod::fromRawValue(*raw) : std::nullopt;
    return period.value_or(HistoryPeriod::defaultPeriod);
}

std::string periodName(HistoryPeriod period)
{
    return std::string(AlertPeriods::commandLineName(period.rawValue()).value_or(period.rawValue()));
}

}
