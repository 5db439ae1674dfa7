#pragma once

#include <unistd.h>
#include <utility>

namespace tarnwick {

// A file descriptor closed on every way out of its scope.
class OwnedDescriptor {
public:
    OwnedDescriptor() = default;
    explicit OwnedDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~OwnedDescriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    OwnedDescriptor(OwnedDescriptor&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    OwnedDescriptor(const OwnedDescriptor&) = delete;
    OwnedDescriptor& operator=(const OwnedDescriptor&) = delete;

    [[nodiscard]] int get() const { return m_descriptor; }

private:
    int m_descriptor = -1;
};

}
