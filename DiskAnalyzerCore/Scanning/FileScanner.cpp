#include "Scanning/FileScanner.hpp"

#include "Classification/PackageTypes.hpp"
#include "Platform/DirectoryStream.hpp"
#include "Platform/OwnedDescriptor.hpp"
#include "Platform/ProcessResources.hpp"
#include "Scanning/AdaptiveWorkers.hpp"
#include "Scanning/FolderLister.hpp"
#include "Scanning/HomeFolders.hpp"
#include "Scanning/PreviewMaker.hpp"
#include "Support/UnicodeNames.hpp"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <thread>
#include <unistd.h>

namespace tarnwick {

namespace {

constexpr std::string_view workerThreadName = "Tarnwick scan worker";
using Clock = std::chrono::steady_clock;
constexpr std::string_view sourceLostMessage = "The location isn't available. It may have been disconnected, renamed or removed.";

std::string displayName(const std::string& root)
{
    if (root == "/")
        return "/";
    std::string_view path = root;
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    std::size_t slash = path.rfind('/');
    return UnicodeNames::repaired(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

}

// The scanning thread's side: owns the builder, applies listings in arrival order,
// hands out new folders, publishes progress and previews, and tunes the workers.
class FileScanner::Collector {
public:
    Collector(FileScanner& scanner, TreeBuilder& builder)
        : m_scanner(scanner)
        , m_builder(builder)
    {
    }

    void enqueueRoot(DirectoryTask task)
    {
        m_pending.emplace(task.node.value, false);
        std::vector<DirectoryTask> tasks;
        tasks.push_back(std::move(task));
        m_scanner.m_directories.add(std::move(tasks));
    }

    void run()
    {
        auto startedAt = Clock::now();
        m_nextPreview = startedAt + std::chrono::seconds(1);
        m_lastMeasurement = { startedAt, ProcessResources::processorSeconds(), 0, ProcessResources::runnableSeconds() };
        while (!m_pending.empty()) {
            std::vector<DirectoryListing> listings = m_scanner.m_listings.takeAll(std::chrono::milliseconds(500));
            for (DirectoryListing& listing : listings)
                apply(listing);
            if (m_scanner.isStopped())
                abandonQueuedFolders();
            publishProgress();
            if (m_scanner.m_options.previews == Previews::on)
                maybePublishPreview();
            if (m_scanner.m_options.workers.mode == Workers::Mode::adaptive)
                maybeTuneWorkers();
        }
    }

private:
    void apply(DirectoryListing& listing)
    {
        const DirectoryTask& task = listing.task;
        m_currentPath = task.path;
        std::vector<DirectoryTask> subfolders;
        bool stopped = m_scanner.isStopped();
        for (const ListedEntry& entry : listing.entries)
            addEntry(listing, entry, stopped, subfolders);
        if (listing.error != 0) {
            int error = listing.error;
            m_builder.recordIssue(task.node, IssueKinds::forErrorNumber(error), error, ErrorMessages::forErrorNumber(error));
            // What could not be listed is unknown, so the folder's total is only a lower bound.
            m_builder.markContentsUnready(task.node);
        }
        if (listing.isFinal) {
            m_pending.erase(task.node.value);
            if (listing.wasStopped)
                m_builder.markContentsUnready(task.node);
        } else {
            m_pending[task.node.value] = true;
        }
        for (const DirectoryTask& subfolder : subfolders)
            m_pending.emplace(subfolder.node.value, false);
        m_scanner.m_directories.add(std::move(subfolders));
    }

    void addEntry(const DirectoryListing& listing, const ListedEntry& entry, bool stopped, std::vector<DirectoryTask>& subfolders)
    {
        std::string_view rawName = listing.name(entry);
        std::string repairedName;
        std::string_view name = rawName;
        if (!UnicodeNames::isValidUTF8(rawName)) {
            repairedName = UnicodeNames::repaired(rawName);
            name = repairedName;
        }
        std::optional<std::int64_t> allocated = entry.allocatedSize;
        std::optional<std::int64_t> logical = entry.logicalSize;
        NodeID node = m_builder.addNode(listing.task.node, name, entry.kind, allocated, logical, entry.fileID, entry.modified, entry.created, entry.hidden);
        if (entry.linkCount > 1 && !isContainer(entry.kind))
            m_builder.noteHardLink(node, entry.device, entry.fileID);
        if (entry.error != 0)
            m_builder.recordIssue(node, IssueKinds::forEntryError(entry.error), entry.error, ErrorMessages::forErrorNumber(entry.error));
        if (!isContainer(entry.kind))
            return;
        if (stopped) {
            m_builder.markContentsUnready(node);
            return;
        }
        subfolders.push_back(DirectoryTask { node, listing.task.childPath(rawName), listing.handle, entry.device });
    }

    void abandonQueuedFolders()
    {
        for (const DirectoryTask& task : m_scanner.m_directories.drain()) {
            m_builder.markContentsUnready(task.node);
            m_pending.erase(task.node.value);
        }
    }

    void publishProgress()
    {
        if (m_scanner.m_options.progress)
            m_scanner.m_options.progress->setState({ m_builder.count(), m_currentPath });
    }

    void maybePublishPreview()
    {
        auto now = Clock::now();
        if (now < m_nextPreview || !m_scanner.m_options.progress)
            return;
        auto preview = PreviewMaker::make(m_builder, m_pending, m_scanner.m_options.root, ++m_previewVersion);
        m_scanner.m_options.progress->setLatestPreview(std::move(preview));
        auto took = Clock::now() - now;
        m_nextPreview = Clock::now() + std::max<Clock::duration>(std::chrono::seconds(1), took * 10);
    }

    void maybeTuneWorkers()
    {
        auto now = Clock::now();
        double elapsed = std::chrono::duration<double>(now - m_lastMeasurement.at).count();
        if (elapsed < 1.0)
            return;
        double processor = ProcessResources::processorSeconds();
        AdaptiveWorkers::Measurement measurement;
        measurement.itemsPerSecond = static_cast<double>(m_builder.count() - m_lastMeasurement.items) / elapsed;
        measurement.load = (processor - m_lastMeasurement.processor) / (elapsed * m_tuner.current());
        measurement.waitingFolders = m_scanner.m_directories.waitingCount();
        std::optional<double> runnable = ProcessResources::runnableSeconds();
        if (runnable && m_lastMeasurement.runnable && *runnable >= *m_lastMeasurement.runnable)
            measurement.runnable = (*runnable - *m_lastMeasurement.runnable) / (elapsed * (m_tuner.current() + 1)); // and the collector
        m_lastMeasurement = { now, processor, m_builder.count(), runnable };
        if (auto target = m_tuner.decide(measurement))
            m_scanner.setWorkerTarget(*target);
    }

    struct MeasurementPoint {
        Clock::time_point at;
        double processor = 0;
        std::int32_t items = 0;
        std::optional<double> runnable;
    };

    FileScanner& m_scanner;
    TreeBuilder& m_builder;
    PreviewMaker::PendingFolders m_pending;
    std::string m_currentPath;
    Clock::time_point m_nextPreview;
    std::uint64_t m_previewVersion = 0;
    AdaptiveWorkers m_tuner;
    MeasurementPoint m_lastMeasurement;
};

FileScanner::FileScanner(Options options)
    : m_options(std::move(options))
{
}

FileScanner::~FileScanner()
{
    m_directories.close();
    std::scoped_lock guard(m_threadsLock);
    for (std::thread& thread : m_threads) {
        if (thread.joinable())
            thread.join();
    }
}

void FileScanner::cancel()
{
    {
        std::scoped_lock guard(m_stopLock);
        m_stopState.cancelled = true;
    }
    m_stopped.store(true);
    m_listings.wake();
}

void FileScanner::sourceLost()
{
    {
        std::scoped_lock guard(m_stopLock);
        m_stopState.sourceLost = true;
    }
    m_stopped.store(true);
    m_listings.wake();
}

FileScanner::StopState FileScanner::stopState() const
{
    std::scoped_lock guard(m_stopLock);
    return m_stopState;
}

int FileScanner::peakWorkers() const
{
    std::scoped_lock guard(m_peakLock);
    return m_peakWorkers;
}

void FileScanner::setWorkerTarget(int target)
{
    // Each worker holds one descriptor at most, so this also bounds the scan's descriptors.
    target = std::clamp(target, 1, maximumWorkers);
    int toStart = m_directories.setWorkerTarget(target);
    {
        std::scoped_lock guard(m_peakLock);
        m_peakWorkers = std::max(m_peakWorkers, target);
    }
    std::scoped_lock guard(m_threadsLock);
    for (int i = 0; i < toStart; ++i)
        m_threads.emplace_back([this] { runWorker(); });
}

void FileScanner::runWorker()
{
    ProcessResources::prepareScanThread(workerThreadName, m_options.priority);
    FolderLister::Callbacks callbacks;
    callbacks.isStopped = [this] { return isStopped(); };
    callbacks.deliver = [this](DirectoryListing listing) {
        // The collector hands out new folders, so wake it at once when anyone waits for work
        // or when a folder is done (its subfolders become work).
        bool urgent = m_directories.isStarving() || listing.wasStopped || (listing.isFinal && m_directories.waitingCount() == 0);
        m_listings.add(std::move(listing), urgent);
    };
    callbacks.entered = m_options.hooks.directoryEntered;
    callbacks.batchRead = m_options.hooks.directoryBatchRead;
    callbacks.isHomeFolder = [](const std::string& path) { return HomeFolders::isHomeFolder(path); };
    callbacks.isPackageExtension = [](std::string_view extension) { return PackageTypes::isDeclaredPackageExtension(extension); };
    FolderLister lister(std::move(callbacks), FolderLister::Root { m_rootDescriptor, m_options.root, m_budget.get() });
    while (std::optional<DirectoryTask> task = m_directories.take())
        lister.list(std::move(*task));
}

ScanOutcome FileScanner::scan()
{
    ScanOutcome outcome;
    outcome.startedAt = std::chrono::system_clock::now();
    int softLimit = ProcessResources::raiseOpenFileLimit();
    int workers = m_options.workers.mode == Workers::Mode::fixed ? std::clamp(m_options.workers.count, 1, maximumWorkers) : AdaptiveWorkers::maximum;
    m_budget = std::make_unique<DescriptorBudget>(DescriptorBudget::forProcess(softLimit, workers));
    ProcessResources::prepareScanThread("Tarnwick scan", m_options.priority);

    int descriptor = DirectoryStream::open(-1, m_options.root.c_str(), m_options.root.c_str());
    // Every folder of the scan is opened below the root, which stays open until the end.
    const OwnedDescriptor root(descriptor);
    m_rootDescriptor = descriptor;
    ListedEntry facts;
    if (descriptor >= 0)
        facts = FolderLister::entryFrom(DirectoryStream::factsOf(descriptor));
    TreeBuilder builder(displayName(m_options.root), NodeKind::directory, facts.fileID == 0 ? std::nullopt : std::optional(facts.fileID), 1024);
    builder.setMetadata(NodeID::root(), TreeDate::decode(facts.modified), TreeDate::decode(facts.created), false);
    // The root's own blocks, as du counts them.
    if (facts.allocatedSize)
        builder.addSizesWithoutNodes(NodeID::root(), *facts.allocatedSize, 0, false);
    if (descriptor < 0) {
        int error = -descriptor;
        const std::string& message = ErrorMessages::forErrorNumber(error);
        builder.recordIssue(NodeID::root(), IssueKinds::forErrorNumber(error), error, message);
        outcome.status = ScanOutcome::Status::rootUnreadable(IssueKinds::forErrorNumber(error), message);
        outcome.itemCount = 1;
        outcome.tree = std::move(builder).finalize(m_options.root, m_options.coverage, TreeBuilder::Metadata::included);
        outcome.finishedAt = std::chrono::system_clock::now();
        return outcome;
    }

    Collector collector(*this, builder);
    collector.enqueueRoot(DirectoryTask { NodeID::root(), m_options.root, nullptr, facts.device });
    setWorkerTarget(m_options.workers.mode == Workers::Mode::fixed ? std::max(1, m_options.workers.count) : AdaptiveWorkers::initial);
    collector.run();
    m_directories.close();
    {
        std::scoped_lock guard(m_threadsLock);
        for (std::thread& thread : m_threads)
            thread.join();
        m_threads.clear();
    }
    if (m_options.progress)
        m_options.progress->setState({ builder.count(), m_options.root });
    outcome.itemCount = builder.count();
    StopState stop = stopState();
    if (stop.sourceLost)
        outcome.status = ScanOutcome::Status::sourceUnavailable(std::string(sourceLostMessage));
    else if (stop.cancelled)
        outcome.status = ScanOutcome::Status::stopped();
    else
        outcome.status = ScanOutcome::Status::completed();
    outcome.tree = std::move(builder).finalize(m_options.root, m_options.coverage, TreeBuilder::Metadata::included);
    outcome.finishedAt = std::chrono::system_clock::now();
    return outcome;
}

}
