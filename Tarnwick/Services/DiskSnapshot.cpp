#include "DiskSnapshot.hpp"

#include "Classification/ScanAnalysis.hpp"
#include "Classification/TimeZone.hpp"
#include "History/ScanRecorder.hpp"
#include "Scanning/FileScanner.hpp"
#include "Scanning/ScopeResolver.hpp"

#include <future>
#include <thread>

namespace tarnwick::DiskSnapshot {

namespace {

// How often a running scan asks the defer test.
constexpr std::chrono::milliseconds deferCheck { 250 };

}

DailyScans::DiskOutcome take(HistoryStore& store, const HistorySource& disk, const DailyScans::ShouldDefer& shouldDefer)
{
    using Outcome = DailyScans::Outcome;
    if (shouldDefer())
        return { disk, Outcome::deferred, {} };
    auto scope = ScopeResolver::resolve(disk.path);
    if (!scope)
        return { disk, Outcome::failed, std::string(scope.error().title()) };
    FileScanner::Options options;
    options.root = scope->scanRoot;
    options.progress = std::make_shared<ScanProgress>();
    options.priority = ScanPriority::background;
    FileScanner scanner(options);
    std::packaged_task<ScanOutcome()> task([&scanner] { return scanner.scan(); });
    std::future<ScanOutcome> finished = task.get_future();
    std::thread scanThread(std::move(task));
    bool cancelled = false;
    while (finished.wait_for(deferCheck) != std::future_status::ready) {
        if (!cancelled && shouldDefer()) {
            scanner.cancel();
            cancelled = true;
        }
    }
    scanThread.join();
    ScanOutcome outcome = finished.get();
    switch (outcome.status.kind) {
    case ScanOutcome::Status::Kind::completed:
        break;
    case ScanOutcome::Status::Kind::stopped:
        return { disk, Outcome::deferred, {} };
    case ScanOutcome::Status::Kind::sourceUnavailable:
    case ScanOutcome::Status::Kind::rootUnreadable:
        return { disk, Outcome::failed, outcome.status.message };
    }
    // Made as the app makes a finished scan's, so that a daily snapshot keeps the same colours;
    // a snapshot keeps no owners, so none are attributed.
    auto analysis = ScanAnalysis::make(outcome.tree, DateGroup::Boundaries::make(outcome.finishedAt, TimeZone::system()), nullptr);
    auto recorded = ScanRecorder::record(store, analysis, outcome.finishedAt);
    if (!recorded)
        return { disk, Outcome::failed, recorded.error().message() };
    return { recorded->source, Outcome::saved, {} };
}

DailyScans::ScanRunner runner(HistoryStore& store, std::function<void(const HistorySource&)> saved)
{
    return [&store, saved = std::move(saved)](const HistorySource& disk, const DailyScans::ShouldDefer& shouldDefer) {
        DailyScans::DiskOutcome outcome = take(store, disk, shouldDefer);
        if (outcome.outcome == DailyScans::Outcome::saved && saved)
            saved(outcome.disk);
        return outcome;
    };
}

}
