#include "History/FolderListing.hpp"

#include "Classification/ContentClassifier.hpp"
#include "Classification/PackageTypes.hpp"
#include "Platform/DirectoryStream.hpp"
#include "Platform/OwnedDescriptor.hpp"
#include "Scanning/DirectoryListing.hpp"
#include "Scanning/FolderLister.hpp"
#include "Scanning/HomeFolders.hpp"
#include "Scanning/ScanIssue.hpp"

#include <algorithm>
#include <cctype>
#include <memory>

namespace tarnwick::FolderListing {

namespace {

// A folder whose extension is a declared package type is one item, as in a scan.
NodeKind folderKind(std::string_view name)
{
    std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size())
        return NodeKind::directory;
    std::string extension(name.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return PackageTypes::isDeclaredPackageExtension(extension) ? NodeKind::package : NodeKind::directory;
}

LiveEntry entryFrom(std::string_view name, ListedEntry listed)
{
    LiveEntry entry;
    entry.name = std::string(name);
    entry.kind = listed.kind == NodeKind::directory ? folderKind(name) : listed.kind;
    entry.modified = TreeDate::decode(listed.modified);
    entry.created = TreeDate::decode(listed.created);
    if (listed.error != 0) {
        entry.flags = NodeFlags(static_cast<std::uint8_t>(NodeFlag::hasIssue) | static_cast<std::uint8_t>(NodeFlag::allocatedUnknown)
            | static_cast<std::uint8_t>(NodeFlag::logicalUnknown) | static_cast<std::uint8_t>(NodeFlag::incomplete)
            | static_cast<std::uint8_t>(NodeFlag::logicalIncomplete));
        return entry;
    }
    if (isContainer(entry.kind)) {
        entry.flags = NodeFlags(static_cast<std::uint8_t>(NodeFlag::contentsUnread) | static_cast<std::uint8_t>(NodeFlag::incomplete)
            | static_cast<std::uint8_t>(NodeFlag::logicalIncomplete));
        return entry;
    }
    // A leaf is dated by its own creation, as in a scan tree.
    entry.oldestItem = entry.created;
    if (entry.kind == NodeKind::mountPoint)
        return entry;
    if (listed.allocatedSize) {
        entry.allocated = *listed.allocatedSize;
    } else {
        entry.flags.insert(NodeFlag::allocatedUnknown);
        entry.flags.insert(NodeFlag::incomplete);
    }
    if (listed.logicalSize) {
        entry.logical = *listed.logicalSize;
    } else {
        entry.flags.insert(NodeFlag::logicalUnknown);
        entry.flags.insert(NodeFlag::logicalIncomplete);
    }
    std::optional<ContentCategory> category = ContentClassifier::classifyFile(name);
    entry.rests = std::vector<RestPart> { RestPart { RestMode::content, ContentCategories::raw(category.value_or(ContentCategory::other)),
        entry.allocated } };
    return entry;
}

bool displayOrder(const LiveEntry& a, const LiveEntry& b)
{
    return a.allocated != b.allocated ? a.allocated > b.allocated : a.name < b.name;
}

}

std::string Error::message() const
{
    return "Couldn't read \u201C" + path + "\u201D: " + ErrorMessages::forErrorNumber(errorNumber);
}

std::expected<std::vector<LiveEntry>, Error> list(const std::string& path, Visibility folder)
{
    int descriptor = DirectoryStream::open(-1, path.c_str(), path.c_str());
    if (descriptor < 0)
        return std::unexpected(Error { path, -descriptor });
    const OwnedDescriptor handle(descriptor); // closes it on every way out
    const std::uint64_t device = DirectoryStream::factsOf(descriptor).device;
    const bool insideHidden = folder == Visibility::hidden;
    std::optional<bool> isHome;
    auto buffer = std::make_unique<std::byte[]>(FolderLister::bufferSize);
    std::vector<LiveEntry> entries;
    for (;;) {
        long bytes = DirectoryStream::readBatch(descriptor, std::span(buffer.get(), FolderLister::bufferSize));
        if (bytes < 0)
            return std::unexpected(Error { path, static_cast<int>(-bytes) });
        if (bytes == 0)
            break;
        DirectoryStream::forEachName(std::span<const std::byte>(buffer.get(), static_cast<std::size_t>(bytes)), [&](const char* rawName) {
            ListedEntry listed = FolderLister::entryFrom(DirectoryStream::describe(descriptor, rawName, device));
            std::string_view name(rawName);
            LiveEntry entry = entryFrom(name, listed);
            entry.hidden = insideHidden || name.front() == '.';
            if (!entry.hidden && name == "Library") {
                if (!isHome)
                    isHome = HomeFolders::isHomeFolder(path);
                entry.hidden = *isHome;
            }
            entries.push_back(std::move(entry));
        });
    }
    std::sort(entries.begin(), entries.end(), displayOrder);
    return entries;
}

}
