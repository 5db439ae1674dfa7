#include "HomeSummary.hpp"

#include "Agent/ByteFormat.hpp"
#include "Scanning/FileScanner.hpp"
#include "Scanning/InaccessibleSummary.hpp"
#include "Scanning/NodeStatus.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "TreeQueries/FolderSummary.hpp"

#include <chrono>
#include <cstdio>

namespace tarnwick::HomeSummary {

namespace {

constexpr int largestCount = 20;

std::string sizeText(std::int64_t bytes, bool lowerBound)
{
    return (lowerBound ? "≥" : "") + ByteFormat::format(bytes);
}

std::string shareText(double share)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%5.1f %%", share * 100.0);
    return buffer;
}

void printSummary(const ScanTree& tree, double seconds)
{
    NodeID root = NodeID::root();
    FolderSummary summary = FolderSummary::make(tree, root, largestCount);
    std::printf("%s\n", ScopeResolver::displayPath(tree.rootPath()).c_str());
    std::printf("%s on disk, %s logical, %d items, scanned in %.2f s\n\n", sizeText(summary.allocated, summary.incomplete).c_str(),
        sizeText(summary.logical, tree.flags(root).contains(NodeFlag::logicalIncomplete)).c_str(), tree.count() - 1, seconds);
    int rank = 0;
    for (const FolderSummary::Entry& entry : summary.entries) {
        auto status = NodeStatus::word(tree, entry.node);
        std::printf("%3d. %10s  %s  %s%s%s\n", ++rank, sizeText(entry.allocated, entry.incomplete).c_str(), shareText(entry.share).c_str(),
            entry.name.c_str(), isContainer(entry.kind) ? "/" : "", status ? ("  (" + std::string(*status) + ")").c_str() : "");
    }
    if (summary.otherCount > 0) {
        double share = summary.allocated > 0 ? static_cast<double>(summary.otherAllocated) / static_cast<double>(summary.allocated) : 0;
        std::printf("     %10s  %s  %d other items\n", ByteFormat::format(summary.otherAllocated).c_str(), shareText(share).c_str(), summary.otherCount);
    }
    std::vector<InaccessibleItem> unreadable = inaccessibleItems(tree, root);
    std::size_t issues = tree.issues().size();
    if (issues == 0) {
        std::printf("\nEverything could be read.\n");
        return;
    }
    std::printf("\n%zu places could not be read", issues);
    std::printf(unreadable.empty() ? ".\n" : ", %zu of them for lack of permission.\n", unreadable.size());
    int shown = 0;
    for (const ScanIssue& issue : tree.issues()) {
        if (++shown > 5)
            break;
        std::printf("  %s: %s\n", std::string(IssueTexts::label(issue.kind)).c_str(), tree.path(issue.node).c_str());
    }
}

}

int run(const std::string& path)
{
    auto scope = ScopeResolver::resolve(path);
    if (!scope) {
        std::fprintf(stderr, "%s\n%s\n", std::string(scope.error().title()).c_str(), scope.error().detail().c_str());
        return 1;
    }
    FileScanner::Options options;
    options.root = scope->scanRoot;
    options.progress = std::make_shared<ScanProgress>();
    FileScanner scanner(options);
    auto started = std::chrono::steady_clock::now();
    ScanOutcome outcome = scanner.scan();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    if (outcome.status.kind == ScanOutcome::Status::Kind::rootUnreadable || !outcome.tree) {
        std::fprintf(stderr, "%s: %s\n", std::string(IssueTexts::label(outcome.status.issueKind)).c_str(), outcome.status.message.c_str());
        return 1;
    }
    printSummary(*outcome.tree, seconds);
    return 0;
}

}
