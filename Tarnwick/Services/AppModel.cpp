#include "AppModel.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentMessages.hpp"
#include "PlaceAccess.hpp"
#include "Scanning/ScopeResolver.hpp"

#include "Classification/InstalledOwners.hpp"
#include "Classification/TimeZone.hpp"

#include "MainExecutor.hpp"
#include "RepeatingTimer.hpp"

namespace tarnwick {

namespace {

constexpr std::chrono::minutes dayCheckInterval { 1 };
constexpr std::chrono::seconds dayCheckTolerance { 30 };

}

AppModel::AppModel(MainExecutor& executor, FileScanner::Hooks hooks)
    : m_executor(executor)
    , m_hooks(std::move(hooks))
{
    m_dayCheck = std::make_unique<RepeatingTimer>(dayCheckInterval, dayCheckTolerance, [this, alive = std::weak_ptr(m_alive)] {
        m_executor.post([this, alive] {
            if (alive.lock())
                keepDatesCurrent(std::chrono::system_clock::now());
        });
    });
}

AppModel::~AppModel()
{
    m_alive.reset();
    m_dayCheck.reset();
    m_coordinator.cancel();
    m_coordinator.waitUntilIdle();
}

std::expected<AppModel::Choice, AgentResult> AppModel::choose(const std::string& chosen)
{
    if (chosen.empty() || chosen.front() != '/')
        return std::unexpected(AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::notAbsolute(chosen)));
    std::string path = ScopeResolver::standardizedPath(chosen);
    if (m_result && !m_running) {
        if (auto node = m_result->tree->node(ScopeResolver::realPath(path)); node && isContainer(m_result->tree->kind(*node))) {
            open(*node);
            return Choice { path, true };
        }
    }
    if (std::optional<AgentResult> refused = PlaceAccess::refusal(path))
        return std::unexpected(*refused);
    auto scope = ScopeResolver::resolve(path);
    if (!scope)
        return std::unexpected(AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::unresolvable(path, scope.error().title(), scope.error().detail())));
    scan(*scope);
    return Choice { ScopeResolver::displayPath(scope->scanRoot), false };
}

void AppModel::scan(const ScanScope& scope)
{
    FileScanner::Options options;
    options.root = scope.scanRoot;
    options.progress = std::make_shared<ScanProgress>();
    options.previews = FileScanner::Previews::on;
    options.hooks = m_hooks;
    auto scanner = std::make_shared<FileScanner>(options);
    std::uint64_t generation = ++m_generation;
    if (!m_rescanPath || *m_rescanPath != scope.scanRoot)
        m_sizeBeforeRescan.reset();
    m_rescanPath.reset();
    m_placeToShow.reset();
    m_running = RunningScan { scope, scanner, std::chrono::system_clock::now() };
    m_coordinator.submit(scanner, [this, generation, scope](ScanOutcome outcome) {
        // Colours, owners and totals are worked out here, on the scan's thread, once for the
        // window, the commands and the history alike, never on the main executor. Their dates
        // are grouped by the day the scan finished, as its snapshot records them.
        Result result { scope, outcome.tree, nullptr, outcome.status, outcome.startedAt, outcome.finishedAt };
        if (outcome.tree && outcome.status.kind == ScanOutcome::Status::Kind::completed) {
            result.analysis = ScanAnalysis::make(outcome.tree, DateGroup::Boundaries::make(outcome.finishedAt, TimeZone::system()),
                &InstalledOwners::places());
        }
        m_executor.post([this, generation, result = std::move(result)]() mutable { finished(generation, std::move(result)); });
    });
    notify();
}

bool AppModel::rescan()
{
    if (!m_result)
        return false;
    ScanScope scope = m_result->scope;
    std::int64_t before = m_result->tree->allocatedSize(NodeID::root());
    scan(scope);
    m_sizeBeforeRescan = before;
    m_rescanPath = scope.scanRoot;
    return true;
}

void AppModel::cancelScan()
{
    m_coordinator.cancel();
}

void AppModel::finished(std::uint64_t generation, Result result)
{
    // A superseded scan's outcome is dropped: a newer one is already on its way.
    if (generation != m_generation)
        return;
    m_running.reset();
    using Kind = ScanOutcome::Status::Kind;
    if (result.status.kind == Kind::completed || (result.status.kind == Kind::stopped && result.tree)) {
        bool sameRoot = m_result && m_result->tree && result.tree && m_result->tree->rootPath() == result.tree->rootPath();
        std::optional<std::string> openPath = sameRoot ? std::optional(m_result->tree->path(m_openFolder)) : std::nullopt;
        m_result = std::move(result);
        m_lastFailure.reset();
        m_openFolder = NodeID::root();
        m_selection.reset();
        if (openPath) {
            if (auto node = m_result->tree->node(*openPath); node && isContainer(m_result->tree->kind(*node)))
                m_openFolder = *node;
        }
        if (m_placeToShow) {
            if (auto node = m_result->tree->node(*m_placeToShow))
                show(*node);
        }
        for (auto& observer : m_resultObservers)
            observer(*m_result);
    } else {
        m_lastFailure = result.status;
    }
    m_placeToShow.reset();
    notify();
}

void AppModel::keepDatesCurrent(Date now)
{
    if (!m_result || !m_result->analysis || m_redating)
        return;
    const TimeZone& zone = TimeZone::system();
    std::shared_ptr<const ScanAnalysis> before = m_result->analysis;
    if (before->boundaries().isCurrent(now, zone))
        return;
    m_redating = before;
    m_datesWorker.post([this, alive = std::weak_ptr(m_alive), before, boundaries = DateGroup::Boundaries::make(now, zone)] {
        std::shared_ptr<const ScanAnalysis> after = before->redated(boundaries);
        m_executor.post([this, alive, before, after = std::move(after)]() mutable {
            if (alive.lock())
                redated(before, std::move(after));
        });
    });
}

void AppModel::redated(const std::shared_ptr<const ScanAnalysis>& before, std::shared_ptr<const ScanAnalysis> after)
{
    m_redating.reset();
    // A result that came since has its own dates.
    if (!m_result || m_result->analysis != before)
        return;
    m_result->analysis = std::move(after);
    notify();
}

void AppModel::open(NodeID folder)
{
    m_openFolder = folder;
    m_selection.reset();
    notify();
}

void AppModel::show(NodeID node)
{
    const ScanTree& tree = *m_result->tree;
    if (isContainer(tree.kind(node))) {
        open(node);
        return;
    }
    m_openFolder = tree.parent(node).value_or(NodeID::root());
    select(node);
}

void AppModel::select(std::optional<NodeID> node)
{
    m_selection = node;
    notify();
}

void AppModel::notify()
{
    for (auto& observer : m_observers)
        observer();
}

}
