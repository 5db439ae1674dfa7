#pragma once

#include "Agent/AgentResult.hpp"
#include "BackgroundWorker.hpp"
#include "Classification/ColorMode.hpp"
#include "Classification/ScanAnalysis.hpp"
#include "Scanning/ScanCoordinator.hpp"
#include "Scanning/ScanScope.hpp"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

class MainExecutor;
class RepeatingTimer;

// The app's one model: the sources, the current result, the running scan, the open
// folder, the selection and the colour mode. Lives on the main executor; the window and
// the command line both read it there, so they always agree.
class AppModel {
public:
    // A finished scan with what was computed from it off the main thread.
    struct Result {
        ScanScope scope;
        std::shared_ptr<const ScanTree> tree;
        // The colours, owners and totals of a completed scan, made on the scan's thread for
        // the window, the commands and the history alike; null for a stopped scan.
        std::shared_ptr<const ScanAnalysis> analysis;
        ScanOutcome::Status status;
        Date startedAt;
        Date finishedAt;
    };

    struct RunningScan {
        ScanScope scope;
        std::shared_ptr<FileScanner> scanner;
        Date startedAt;
    };

    // hooks are handed to every scan's scanner (tests hold a scan at a folder with them).
    explicit AppModel(MainExecutor& executor, FileScanner::Hooks hooks = {});
    ~AppModel();

    // What choosing a place did: opened it in the finished scan that holds it, or started a
    // scan of it (path is then the scan's root as shown).
    struct Choice {
        std::string path;
        bool opened = false;
    };

    // The window's choice of a place and the scan command alike: a folder inside the finished
    // scan on screen is opened there; anything else must exist, be a folder and be readable,
    // and is scanned. A path that isn't absolute is refused.
    std::expected<Choice, AgentResult> choose(const std::string& path);
    // Starts scanning, superseding a running scan.
    void scan(const ScanScope& scope);
    // Scans the current location again, remembering its size before.
    bool rescan();
    void cancelScan();

    [[nodiscard]] const std::optional<RunningScan>& runningScan() const { return m_running; }
    [[nodiscard]] const std::optional<Result>& result() const { return m_result; }
    // What a scan that did not produce a tree (an unreadable root, a lost source) said.
    [[nodiscard]] const std::optional<ScanOutcome::Status>& lastFailure() const { return m_lastFailure; }
    [[nodiscard]] std::optional<std::int64_t> sizeBeforeRescan() const { return m_sizeBeforeRescan; }

    [[nodiscard]] NodeID openFolder() const { return m_openFolder; }
    [[nodiscard]] std::optional<NodeID> selection() const { return m_selection; }
    [[nodiscard]] ColorMode colorMode() const { return m_colorMode; }
    [[nodiscard]] bool isWaitingForUser() const { return m_waitingForUser; }
    void open(NodeID folder);
    void select(std::optional<NodeID> node);
    // Opens a folder, or selects a file in the folder that holds it.
    void show(NodeID node);
    // The same for the place at path (absolute, as in the tree) in the result of the running
    // scan, once it has finished: a first scan's preview is replaced by the result.
    void showWhenFinished(std::string path) { m_placeToShow = std::move(path); }
    void setColorMode(ColorMode mode) { m_colorMode = mode; notify(); }
    // Date colours belong to a calendar day: when now is on another day than the result's
    // date maps, they are made again for it off the main executor, and the result takes
    // them when they are ready. A timer asks once a minute.
    void keepDatesCurrent(Date now);

    // Called on the main executor after anything changed (for the window).
    void addObserver(std::function<void()> observer) { m_observers.push_back(std::move(observer)); }
    // Called on the main executor when a scan produced a result (for history and alerts).
    void addResultObserver(std::function<void(const Result&)> observer) { m_resultObservers.push_back(std::move(observer)); }

private:
    void finished(std::uint64_t generation, Result result);
    void redated(const std::shared_ptr<const ScanAnalysis>& before, std::shared_ptr<const ScanAnalysis> after);
    void notify();

    MainExecutor& m_executor;
    FileScanner::Hooks m_hooks;
    ScanCoordinator m_coordinator;
    std::uint64_t m_generation = 0;
    std::optional<RunningScan> m_running;
    std::optional<Result> m_result;
    std::optional<ScanOutcome::Status> m_lastFailure;
    std::optional<std::int64_t> m_sizeBeforeRescan;
    std::optional<std::string> m_rescanPath;
    std::optional<std::string> m_placeToShow;
    NodeID m_openFolder = NodeID::root();
    std::optional<NodeID> m_selection;
    ColorMode m_colorMode = ColorMode::contentType;
    bool m_waitingForUser = false;
    std::vector<std::function<void()>> m_observers;
    std::vector<std::function<void(const Result&)>> m_resultObservers;
    // The analysis whose date maps are being made again, while they are.
    std::shared_ptr<const ScanAnalysis> m_redating;
    // Lets work posted back from other threads find out on the main executor whether the
    // model is still there.
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
    BackgroundWorker m_datesWorker;
    std::unique_ptr<RepeatingTimer> m_dayCheck; // last, so that it stops first
};

}
