#include "Scanning/FolderLister.hpp"

#include "Platform/DirectoryStream.hpp"

#include <cctype>
#include <span>
#include <utility>

namespace tarnwick {

FolderLister::FolderLister(Callbacks callbacks)
    : m_callbacks(std::move(callbacks))
    , m_buffer(new std::byte[bufferSize])
{
}

DirectoryListing FolderLister::emptyListing(const DirectoryTask& task) const
{
    DirectoryListing listing;
    listing.task = task;
    return listing;
}

void FolderLister::list(DirectoryTask task)
{
    if (!m_callbacks.isStopped() && m_callbacks.entered)
        m_callbacks.entered(task.path);
    int parentDescriptor = task.parent ? task.parent->descriptor() : -1;
    int descriptor = DirectoryStream::open(parentDescriptor, task.name, task.path);
    // The parent's handle is no longer needed once this folder is open.
    task.parent.reset();
    if (descriptor < 0) {
        DirectoryListing listing = emptyListing(task);
        listing.isFinal = true;
        listing.error = -descriptor;
        m_callbacks.deliver(std::move(listing));
        return;
    }
    auto handle = std::make_shared<const DirectoryHandle>(descriptor);
    DirectoryListing pending = emptyListing(task);
    pending.handle = handle;
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
            DirectoryListing next = emptyListing(task);
            next.handle = handle;
            m_callbacks.deliver(std::exchange(pending, std::move(next)));
        }
        parseBatch(descriptor, static_cast<std::size_t>(bytes), task, pending);
        if (!m_callbacks.isStopped() && m_callbacks.batchRead)
            m_callbacks.batchRead(task.path);
    }
}

void FolderLister::parseBatch(int descriptor, std::size_t bytes, const DirectoryTask& task, DirectoryListing& listing)
{
    std::optional<bool> inHomeFolder;
    DirectoryStream::forEachName(std::span<const std::byte>(m_buffer.get(), bytes), [&](const char* rawName) {
        ListedEntry entry;
        DirectoryStream::describe(descriptor, rawName, task.device, entry);
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
