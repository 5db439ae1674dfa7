#pragma once

#include "Scanning/IssueKind.hpp"
#include "Scanning/NodeID.hpp"

#include <memory>
#include <string>

namespace tarnwick {

// One thing the scan could not read, kept on the node where it happened.
struct ScanIssue {
    NodeID node;
    IssueKind kind = IssueKind::other;
    int code = 0;         // the system error number
    std::string message;  // the system's description of that error

    bool operator==(const ScanIssue&) const = default;
};

// An error that arrives as an object rather than a bare number: a domain, a code,
// its description and the error that caused it, if any.
struct ReadError {
    static constexpr std::string_view posixDomain = "posix";
    static constexpr std::string_view cocoaDomain = "cocoa";

    std::string domain;
    long code = 0;
    std::string description;
    std::shared_ptr<const ReadError> underlying;

    struct Issue {
        IssueKind kind;
        long code;
        std::string message;
        bool operator==(const Issue&) const = default;
    };
    // The first POSIX error on the chain decides the kind and the code; without one,
    // the well-known file-access codes of the cocoa domain do.
    [[nodiscard]] Issue issue() const;
};

namespace ErrorMessages {
// The system's description of an error number, made once per number and cached.
const std::string& forErrorNumber(int errorNumber);
}

}
