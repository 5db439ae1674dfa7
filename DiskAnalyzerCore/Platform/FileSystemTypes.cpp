#include "Platform/FileSystemTypes.hpp"

#include <algorithm>
#include <array>

namespace tarnwick::FileSystemTypes {

namespace {

constexpr std::array<std::string_view, 12> networkTypes {
    "smbfs", "nfs", "afpfs", "webdav", "ftp", "cifs",
    // Linux
    "nfs4", "smb3", "ceph", "glusterfs", "9p", "afs",
};

constexpr std::array<std::string_view, 27> virtualTypes {
    "devfs", "autofs", "fdesc", "nullfs", "bindfs", "cddafs", "osxfuse", "macfuse",
    // Linux
    "proc", "sysfs", "devtmpfs", "devpts", "cgroup", "cgroup2", "debugfs", "tracefs", "securityfs",
    "pstore", "bpf", "configfs", "fusectl", "mqueue", "hugetlbfs", "binfmt_misc", "efivarfs", "nsfs",
    "rpc_pipefs",
};

}

bool isNetwork(std::string_view type)
{
    return std::ranges::find(networkTypes, type) != networkTypes.end();
}

bool isVirtual(std::string_view type)
{
    return type.starts_with("fuse") || std::ranges::find(virtualTypes, type) != virtualTypes.end();
}

}
