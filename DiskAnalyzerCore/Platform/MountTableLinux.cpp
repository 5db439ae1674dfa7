#include "Platform/MountTable.hpp"

#include "Platform/FileSystemTypes.hpp"
#include "Support/UnicodeNames.hpp"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tarnwick::MountTable {

namespace {

constexpr std::uint32_t loopMajor = 7; // the block major number of loop devices

bool isOctal(char c) { return c >= '0' && c <= '7'; }

std::vector<std::string_view> splitFields(std::string_view line)
{
    std::vector<std::string_view> fields;
    std::size_t start = 0;
    while (start < line.size()) {
        std::size_t end = line.find(' ', start);
        if (end == std::string_view::npos)
            end = line.size();
        if (end > start)
            fields.push_back(line.substr(start, end - start));
        start = end + 1;
    }
    return fields;
}

bool parseNumber(std::string_view text, std::uint32_t& value)
{
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc {} && end == text.data() + text.size() && !text.empty();
}

bool hasOption(std::string_view options, std::string_view wanted)
{
    std::size_t start = 0;
    while (start <= options.size()) {
        std::size_t end = options.find(',', start);
        if (end == std::string_view::npos)
            end = options.size();
        if (options.substr(start, end - start) == wanted)
            return true;
        start = end + 1;
    }
    return false;
}

}

std::string unescape(std::string_view field)
{
    std::string text;
    text.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) && isOctal(field[i + 2]) && isOctal(field[i + 3])) {
            int value = (field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0');
            if (value <= 0xFF) {
                text += static_cast<char>(value);
                i += 3;
                continue;
            }
        }
        text += field[i];
    }
    return text;
}

std::optional<MountEntry> parseLine(std::string_view line)
{
    // "36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 - ext3 /dev/root rw,errors=continue":
    // id, parent id, major:minor, root, mount point, options, optional fields up to "-",
    // then type, source and the file system's options.
    std::vector<std::string_view> fields = splitFields(line);
    std::size_t separator = 6;
    while (separator < fields.size() && fields[separator] != "-")
        ++separator;
    if (fields.size() < 6 || separator + 2 >= fields.size())
        return std::nullopt;
    std::string_view device = fields[2];
    std::size_t colon = device.find(':');
    MountEntry entry;
    std::uint32_t id = 0;
    if (!parseNumber(fields[0], id) || !parseNumber(fields[1], id) || colon == std::string_view::npos
        || !parseNumber(device.substr(0, colon), entry.deviceMajor) || !parseNumber(device.substr(colon + 1), entry.deviceMinor))
        return std::nullopt;
    entry.root = unescape(fields[3]);
    entry.mountPoint = unescape(fields[4]);
    entry.mountOptions = unescape(fields[5]);
    entry.fileSystemType = unescape(fields[separator + 1]);
    entry.source = unescape(fields[separator + 2]);
    if (separator + 3 < fields.size())
        entry.superOptions = unescape(fields[separator + 3]);
    if (entry.mountPoint.empty() || entry.mountPoint.front() != '/')
        return std::nullopt;
    return entry;
}

std::vector<MountEntry> parse(std::string_view text)
{
    std::vector<MountEntry> mounts;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        if (auto entry = parseLine(text.substr(start, end - start)))
            mounts.push_back(std::move(*entry));
        start = end + 1;
    }
    return mounts;
}

std::optional<std::vector<MountEntry>> read(const std::string& file)
{
    // The kernel produces the table as it is read, so size it by reading, not by stat.
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        return std::nullopt;
    std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (stream.bad())
        return std::nullopt;
    return parse(text);
}

const MountEntry* holding(const std::vector<MountEntry>& mounts, std::string_view realPath)
{
    const MountEntry* best = nullptr;
    for (const MountEntry& entry : mounts) {
        if (!UnicodeNames::hasPathPrefix(realPath, entry.mountPoint))
            continue;
        if (best == nullptr || entry.mountPoint.size() >= best->mountPoint.size())
            best = &entry;
    }
    return best;
}

std::uint64_t fileSystemID(std::uint32_t major, std::uint32_t minor)
{
    return (static_cast<std::uint64_t>(major) << 32) | minor;
}

MountInfo info(const MountEntry& entry, std::uint64_t fileSystemID)
{
    MountInfo mount;
    mount.mountPoint = UnicodeNames::repaired(entry.mountPoint);
    mount.deviceName = UnicodeNames::repaired(entry.source);
    mount.fileSystemType = UnicodeNames::repaired(entry.fileSystemType);
    mount.fileSystemID = fileSystemID;
    mount.isLocal = !FileSystemTypes::isNetwork(entry.fileSystemType);
    mount.isReadOnly = hasOption(entry.mountOptions, "ro") || hasOption(entry.superOptions, "ro");
    return mount;
}

std::optional<MountInfo> lookup(const std::string& path)
{
    char resolved[PATH_MAX];
    if (path.empty() || ::realpath(path.c_str(), resolved) == nullptr)
        return std::nullopt;
    std::optional<std::vector<MountEntry>> mounts = read();
    if (!mounts)
        return std::nullopt;
    const MountEntry* entry = holding(*mounts, resolved);
    if (entry == nullptr)
        return std::nullopt;
    // The device of the path itself, which is what the scanner compares against; the
    // table's number only when the path cannot be examined.
    struct stat status {};
    std::uint64_t id = ::stat(resolved, &status) == 0 ? fileSystemID(major(status.st_dev), minor(status.st_dev))
                                                        : fileSystemID(entry->deviceMajor, entry->deviceMinor);
    return info(*entry, id);
}

bool hasSeparateDataVolume()
{
    return false;
}

std::vector<DiskMount> disks(const std::vector<MountEntry>& mounts, const std::function<bool(const MountEntry&)>& isDiskBacked)
{
    // A device mounted several times (bind mounts, btrfs subvolumes) is one disk: keep the
    // mount of its whole file system when there is one, else the first listed.
    std::vector<DiskMount> found;
    std::vector<const MountEntry*> chosen;
    for (const MountEntry& entry : mounts) {
        if (FileSystemTypes::isVirtual(entry.fileSystemType) || FileSystemTypes::isNetwork(entry.fileSystemType)
            || !entry.source.starts_with("/dev/") || !isDiskBacked(entry))
            continue;
        std::uint64_t id = fileSystemID(entry.deviceMajor, entry.deviceMinor);
        DiskMount disk { info(entry, id), entry.source.starts_with("/dev/loop") || entry.deviceMajor == loopMajor };
        auto same = std::ranges::find_if(found, [&](const DiskMount& other) { return other.mount.fileSystemID == id; });
        if (same == found.end()) {
            found.push_back(std::move(disk));
            chosen.push_back(&entry);
        } else if (entry.root == "/" && chosen[static_cast<std::size_t>(same - found.begin())]->root != "/") {
            chosen[static_cast<std::size_t>(same - found.begin())] = &entry;
            *same = std::move(disk);
        }
    }
    return found;
}

std::vector<DiskMount> disks()
{
    std::optional<std::vector<MountEntry>> mounts = read();
    if (!mounts)
        return {};
    return disks(*mounts, [](const MountEntry& entry) {
        struct stat device {};
        struct stat mountPoint {};
        return ::stat(entry.source.c_str(), &device) == 0 && S_ISBLK(device.st_mode)
            && ::stat(entry.mountPoint.c_str(), &mountPoint) == 0 && S_ISDIR(mountPoint.st_mode);
    });
}

std::optional<MountEntry> mountedAt(const std::vector<std::string>& pathForms)
{
    auto mounts = read();
    if (!mounts)
        return std::nullopt;
    for (const std::string& form : pathForms) {
        // Of mounts stacked on one mount point, the last listed is the one in sight.
        for (auto it = mounts->rbegin(); it != mounts->rend(); ++it) {
            if (it->mountPoint == form)
                return *it;
        }
    }
    return std::nullopt;
}

}
