#pragma once

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <unistd.h>

namespace tarnwick {

// Writes all of the bytes, however many calls it takes and through interrupted ones; false on
// any other failure, with errno telling why (ENOSPC, EFBIG, EIO).
inline bool writeWhole(int descriptor, const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const char*>(data);
    while (size > 0) {
        ssize_t written = ::write(descriptor, bytes, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            if (written == 0)
                errno = EIO;
            return false;
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

inline bool writeWhole(int descriptor, std::string_view text)
{
    return writeWhole(descriptor, text.data(), text.size());
}

}
