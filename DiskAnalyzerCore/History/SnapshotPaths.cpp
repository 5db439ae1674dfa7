#include "History/SnapshotPaths.hpp"

#include "History/Snapshot.hpp"
#include "Support/UnicodeNames.hpp"

namespace tarnwick::SnapshotPaths {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

std::optional<std::int32_t> child(const Snapshot& snapshot, std::int32_t parent, std::string_view name)
{
    const std::int32_t count = snapshot.nodeCount();
    for (std::int32_t i = parent + 1; i < count; ++i) {
        if (snapshot.parents[static_cast<std::size_t>(i)] == parent && snapshot.names[static_cast<std::size_t>(i)] == name)
            return i;
    }
    std::string wanted = UnicodeNames::normalized(name);
    for (std::int32_t i = parent + 1; i < count; ++i) {
        if (snapshot.parents[static_cast<std::size_t>(i)] == parent
            && UnicodeNames::normalized(snapshot.names[static_cast<std::size_t>(i)]) == wanted)
            return i;
    }
    return std::nullopt;
}

}

std::optional<std::vector<std::string_view>> components(std::string_view rootPath, std::string_view atPath)
{
    std::string_view root = withoutTrailingSlashes(rootPath);
    std::string_view rest = atPath;
    if (!rest.empty() && rest.front() == '/') {
        if (root == "/") {
            rest.remove_prefix(1);
        } else {
            if (!UnicodeNames::hasPathPrefix(withoutTrailingSlashes(rest), root))
                return std::nullopt;
            rest = UnicodeNames::dropPathPrefix(withoutTrailingSlashes(rest), root);
        }
    }
    std::vector<std::string_view> result;
    while (!rest.empty()) {
        std::size_t slash = rest.find('/');
        std::string_view component = rest.substr(0, slash);
        rest = slash == std::string_view::npos ? std::string_view {} : rest.substr(slash + 1);
        if (!component.empty() && component != ".")
            result.push_back(component);
    }
    return result;
}

Location locate(const Snapshot& snapshot, const std::vector<std::string_view>& components)
{
    Location location;
    if (snapshot.nodeCount() == 0)
        return location;
    for (std::string_view component : components) {
        std::optional<std::int32_t> next = child(snapshot, location.deepest, component);
        if (!next)
            break;
        location.deepest = *next;
        ++location.matched;
    }
    return location;
}

}
