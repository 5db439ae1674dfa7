#pragma once

#include <cstdint>
#include <optional>
#include <string>

// Who is on the other end of the app's socket. Only the app's own executable, run by the same
// user, may send it commands: another program on the account must not drive the app.
namespace tarnwick::CodeIdentity {

// A running program's identity: its user and the file it was started from (device and inode,
// so that links and other names of the same file compare equal).
struct Signer {
    std::uint32_t userID = 0;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const Signer&) const = default;
};

// This process. Absent when its executable cannot be looked at.
std::optional<Signer> own();
// The process connected on a Unix-domain socket, as the kernel recorded it at connect time.
// Absent when the kernel has no credentials or the peer's executable cannot be looked at (it
// belongs to another user, or has exited).
std::optional<Signer> peer(int socketDescriptor);
// The executable file at path, as if this user ran it.
std::optional<Signer> ofExecutable(const std::string& path);

// The full path of this process's executable, symbolic links resolved.
std::optional<std::string> ownExecutablePath();

}
