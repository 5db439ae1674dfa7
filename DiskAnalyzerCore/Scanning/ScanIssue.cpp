#include "Scanning/ScanIssue.hpp"

#include <cstring>
#include <mutex>
#include <unordered_map>

namespace tarnwick {

ReadError::Issue ReadError::issue() const
{
    for (const ReadError* error = this; error != nullptr; error = error->underlying.get()) {
        if (error->domain == posixDomain)
            return { IssueKinds::forErrorNumber(static_cast<int>(error->code)), error->code, description };
    }
    IssueKind kind = IssueKind::other;
    if (domain == cocoaDomain) {
        switch (code) {
        case 4:
        case 260:
            kind = IssueKind::notFound;
            break;
        case 257:
        case 513:
            kind = IssueKind::permissionDenied;
            break;
        default:
            break;
        }
    }
    return { kind, code, description };
}

namespace ErrorMessages {

const std::string& forErrorNumber(int errorNumber)
{
    static std::mutex lock;
    static std::unordered_map<int, std::string> cache;
    std::scoped_lock guard(lock);
    auto found = cache.find(errorNumber);
    if (found != cache.end())
        return found->second;
    char buffer[256];
    const char* text = strerror_r(errorNumber, buffer, sizeof buffer);
    return cache.emplace(errorNumber, std::string(text)).first->second;
}

}

}
