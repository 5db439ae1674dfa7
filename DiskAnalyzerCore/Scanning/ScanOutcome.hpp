#pragma once

#include "Scanning/IssueKind.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeDate.hpp"

#include <memory>
#include <string>

namespace tarnwick {

// What a finished, stopped or failed scan hands back.
struct ScanOutcome {
    struct Status {
        enum class Kind { sourceUnavailable, rootUnreadable, completed, stopped };
        Kind kind = Kind::completed;
        IssueKind issueKind = IssueKind::other; // rootUnreadable only
        std::string message;                     // sourceUnavailable and rootUnreadable

        static Status completed() { return { Kind::completed, IssueKind::other, {} }; }
        static Status stopped() { return { Kind::stopped, IssueKind::other, {} }; }
        static Status sourceUnavailable(std::string message) { return { Kind::sourceUnavailable, IssueKind::other, std::move(message) }; }
        static Status rootUnreadable(IssueKind kind, std::string message) { return { Kind::rootUnreadable, kind, std::move(message) }; }
        bool operator==(const Status&) const = default;
    };

    Status status;
    std::shared_ptr<const ScanTree> tree;
    Date startedAt;
    Date finishedAt;
    std::int64_t itemCount = 0;
};

}
