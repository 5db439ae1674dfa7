#include "Scanning/FolderLister.hpp"

#include "Platform/OwnedDescriptor.hpp"
#include "Scanning/TreeDate.hpp"

#include <cctype>
#include <chrono>
#include <span>
#include <thread>
#include <utility>

namespace tarnwick {

FolderLister::FolderLister(Callbacks callbacks, Root root)
    : m_callbacks(std::move(callbacks))
    , m_root(std::move(root))
    , m_buffer(new std::byte[bufferSize])
{
}

DirectoryListing FolderLister::emptyListing(const DirectoryTask& task) const
{
    DirectoryListing listing;
    listing.task = task;
    return listing;
}

ListedEntry FolderLister::entryFrom(const DirectoryStream::EntryFacts& facts)
{
    using Type = DirectoryStream::EntryFacts::Type;
    ListedEntry entry;
    entry.error = facts.error;
    if (facts.error != 0) {
        entry.kind = NodeKind::other;
        entry.modified = TreeDate::noDate;
        entry.created = TreeDate::noDate;
        return entry;
    }
    switch (facts.type) {
    case Type::directory:
        entry.kind = facts.isMountPoint ? NodeKind::mountPoint : NodeKind::directory;
        break;
    case Type::file:
        entry.kind = NodeKind::file;
        break;
    case Type::symlink:
        entry.kind = NodeKind::symlink;
        break;
    case Type::other:
        entry.kind = NodeKind::other;
        break;
    }
    entry.fileID = facts.fileID;
    entry.device = facts.device;
    entry.linkCount = facts.linkCount;
    entry.modified = facts.modifiedUnixSeconds == facts.noTime ? TreeDate::noDate : TreeDate::encodeUnixSeconds(facts.modifiedUnixSeconds);
    entry.created = facts.createdUnixSeconds == facts.noTime ? TreeDate::noDate : TreeDate::encodeUnixSeconds(facts.createdUnixSeconds);
    // Another file system's root counts nothing here: its blocks belong to that disk.
    if (entry.kind == NodeKind::mountPoint)
        return entry;
    if (facts.hasAllocatedSize)
        entry.allocatedSize = facts.allocatedSize;
    if (facts.hasLogicalSize && entry.kind != NodeKind::directory)
        entry.logicalSize = facts.logicalSize;
    return entry;
}

int FolderLister::open(const DirectoryTask& task) const
{
    // The name and the path below the root are ends of the task's path, zero-terminated.
    const char* name = task.path.c_str() + task.path.rfind('/') + 1;
    const char* relative = ".";
    if (task.path != m_root.path)
        relative = task.path.c_str() + (m_root.path == "/" ? 1 : m_root.path.size() + 1);
    using namespace std::chrono_literals;
    constexpr auto longestWait = 60s;
    auto waited = 0ms;
    auto pause = 1ms;
    for (;;) {
        int descriptor = task.parent ? DirectoryStream::open(task.parent->descriptor(), name, task.path.c_str())
                                     : DirectoryStream::openBelow(m_root.descriptor, relative);
        if (descriptor >= 0 || !DirectoryStream::isDescriptorShortage(-descriptor) || waited >= longestWait || m_callbacks.isStopped())
            return descriptor;
        // Another part of the process holds the descriptors; they come back.
        std::this_thread::sleep_for(pause);
        waited += pause;
        pause = std::min(pause * 2, std::chrono::milliseconds(100));
    }
}

void FolderLister::list(DirectoryTask task)
{
    if (!m_callbacks.isStopped() && m_callbacks.entered)
        m_callbacks.entered(task.path);
    int opened = open(task);
    // The parent's place in the budget is given back as soon as its last subfolder is open.
    task.parent.reset();
    if (opened < 0) {
        DirectoryListing listing = emptyListing(task);
        listing.isFinal = true;
        listing.error = -opened;
        m_callbacks.deliver(std::move(listing));
        return;
    }
    OwnedDescriptor folder;
    std::shared_ptr<const FolderHandle> handle;
    if (m_root.budget && m_root.budget->tryAcquire())
        handle = std::make_shared<const FolderHandle>(opened, *m_root.budget);
    else
        folder = OwnedDescriptor(opened);
    const int descriptor = opened;
    auto emptyListing = [&] {
        DirectoryListing listing = this->emptyListing(task);
        listing.handle = handle;
        return listing;
    };
    DirectoryListing pending = emptyListing();
    bool hadEntries = false;
    for (;;) {
        if (m_callbacks.isStopped()) {
            pending.isFinal = true;
            pending.wasStopped = true;
            pending.hadEntries = hadEntries;
            m_callbacks.deliver(std::move(pending));
            return;
        }
        long bytes = DirectoryStream::readBatch(descriptor, std::span(m_buffer.get(), bufferSize));
        if (bytes <= 0) {
            pending.isFinal = true;
            pending.hadEntries = hadEntries;
            pending.error = bytes < 0 ? static_cast<int>(-bytes) : 0;
            m_callbacks.deliver(std::move(pending));
            return;
        }
        if (!pending.entries.empty()) {
            pending.hadEntries = hadEntries;
            hadEntries = true;
            m_callbacks.deliver(std::exchange(pending, emptyListing()));
        }
        parseBatch(descriptor, static_cast<std::size_t>(bytes), task, pending);
        if (!m_callbacks.isStopped() && m_callbacks.batchRead)
            m_callbacks.batchRead(task.path);
    }
}

void FolderLister::parseBatch(int descriptor, std::size_t bytes, const DirectoryTask& task, DirectoryListing& listing)
{
    std::optional<bool> inHomeFolder;
    // A raw entry takes at least 24 bytes and holds its name: room for the batch at once.
    listing.entries.reserve(listing.entries.size() + bytes / 24);
    listing.names.reserve(listing.names.size() + bytes);
    DirectoryStream::forEachName(std::span<const std::byte>(m_buffer.get(), bytes), [&](const char* rawName) {
        ListedEntry entry = entryFrom(DirectoryStream::describe(descriptor, rawName, task.device));
        std::string_view name(rawName);
        entry.nameOffset = static_cast<std::uint32_t>(listing.names.size());
        listing.names.append(name);
        entry.nameLength = static_cast<std::uint32_t>(name.size());
        if (entry.kind == NodeKind::directory)
            entry.kind = folderKind(name);
        if (entry.error == 0 && name == "Library" && m_callbacks.isHomeFolder) {
            if (!inHomeFolder)
                inHomeFolder = m_callbacks.isHomeFolder(task.path);
            entry.hidden = *inHomeFolder;
        }
        listing.entries.push_back(entry);
    });
}

NodeKind FolderLister::folderKind(std::string_view name) const
{
    std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot + 1 == name.size() || !m_callbacks.isPackageExtension)
        return NodeKind::directory;
    char lowered[32];
    std::string_view extension = name.substr(dot + 1);
    if (extension.size() > sizeof lowered)
        return NodeKind::directory;
    for (std::size_t i = 0; i < extension.size(); ++i)
        lowered[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(extension[i])));
    return m_callbacks.isPackageExtension(std::string_view(lowered, extension.size())) ? NodeKind::package : NodeKind::directory;
}

}
