#include "SnapshotPlaces.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Support/ByteFormat.hpp"
#include "Alerts/AlertPeriods.hpp"
#include "Platform/UserFolders.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/ScopeResolver.hpp"

#include <ctime>
#include <sys/stat.h>

namespace tarnwick::SnapshotPlaces {

namespace {

std::string localFormat(Date date, const char* format)
{
    std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(date));
    std::tm parts {};
    localtime_r(&seconds, &parts);
    char buffer[40];
    std::strftime(buffer, sizeof buffer, format, &parts);
    return buffer;
}

}

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

std::vector<std::string> pathForms(const std::string& path)
{
    std::vector<std::string> forms { path };
    std::string real = ScopeResolver::realPath(path);
    if (real != path)
        forms.push_back(real);
    return forms;
}

AgentResult noHistory()
{
    return AgentResult::failure(AgentErrorCode::noHistory, AgentErrorCode::Messages::noHistory);
}

std::expected<HistoryPlaces::Located, AgentResult> locate(HistoryStore* store, const std::string& path)
{
    if (!store)
        return std::unexpected(noHistory());
    std::vector<std::string> forms = pathForms(path);
    auto located = HistoryPlaces::locate(*store, forms, VolumeIdentity::identifier(forms.back()));
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

std::optional<MountEntry> mountAt(const std::string& path)
{
    auto mounts = MountTable::read();
    if (!mounts)
        return std::nullopt;
    for (const std::string& form : pathForms(path)) {
        // Of mounts stacked on one mount point, the last listed is the one in sight.
        for (auto it = mounts->rbegin(); it != mounts->rend(); ++it) {
            if (it->mountPoint == form)
                return *it;
        }
    }
    return std::nullopt;
}

std::string signedSize(std::int64_t change, bool uncertain)
{
    std::string sign = change < 0 ? "-" : "+";
    std::int64_t magnitude = change < 0 ? (change == INT64_MIN ? INT64_MAX : -change) : change;
    return (uncertain ? "≈" : "") + sign + ByteFormat::format(magnitude);
}

std::string localTime(Date date)
{
    return localFormat(date, "%Y-%m-%d %H:%M");
}

std::string localDay(Date date)
{
    return localFormat(date, "%Y-%m-%d");
}

}
