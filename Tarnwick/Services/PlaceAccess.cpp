#include "PlaceAccess.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentMessages.hpp"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnwick::PlaceAccess {

std::optional<AgentResult> refusal(const std::string& path)
{
    struct stat status;
    if (::stat(path.c_str(), &status) != 0) {
        if (errno == EACCES)
            return AgentResult::failure(AgentErrorCode::noAccess, AgentMessages::noPermission(path, "search (x) permission on a folder above it", nullptr));
        return AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::noSuchPlace(path));
    }
    if (!S_ISDIR(status.st_mode))
        return AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::notAFolder(path));
    if (::access(path.c_str(), R_OK | X_OK) != 0) {
        bool readable = ::access(path.c_str(), R_OK) == 0;
        std::string missing = readable ? "search (x) permission on it" : "read (r) permission on it";
        return AgentResult::failure(AgentErrorCode::noAccess, AgentMessages::noPermission(path, missing, &status));
    }
    return std::nullopt;
}

}
