#pragma once

#include <cassert>
#include <cstddef>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

namespace tarnwick {

// A growable array of trivially copyable values backed by anonymous memory maps.
// Growing remaps the pages instead of copying them, and capacity that was reserved
// but never written costs address space only, so a column of millions of entries
// never holds two copies of itself or a half-empty doubled buffer in resident memory.
template <typename T>
class MappedColumn {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    MappedColumn() = default;
    MappedColumn(const MappedColumn& other) { *this = other; }
    MappedColumn(MappedColumn&& other) noexcept { swap(other); }
    MappedColumn& operator=(const MappedColumn& other)
    {
        if (this == &other)
            return *this;
        clear();
        reserve(other.m_size);
        if (other.m_size > 0)
            std::memcpy(m_data, other.m_data, other.m_size * sizeof(T));
        m_size = other.m_size;
        return *this;
    }
    MappedColumn& operator=(MappedColumn&& other) noexcept
    {
        MappedColumn(std::move(other)).swap(*this);
        return *this;
    }
    ~MappedColumn() { release(); }

    void swap(MappedColumn& other) noexcept
    {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
    }

    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] bool empty() const { return m_size == 0; }
    [[nodiscard]] T* data() { return m_data; }
    [[nodiscard]] const T* data() const { return m_data; }
    T& operator[](std::size_t index)
    {
        assert(index < m_size && "column index out of range");
        return m_data[index];
    }
    const T& operator[](std::size_t index) const
    {
        assert(index < m_size && "column index out of range");
        return m_data[index];
    }
    [[nodiscard]] std::span<const T> span() const { return { m_data, m_size }; }
    [[nodiscard]] std::span<T> span() { return { m_data, m_size }; }
    T* begin() { return m_data; }
    T* end() { return m_data + m_size; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_size; }
    T& back() { return m_data[m_size - 1]; }

    void push_back(const T& value)
    {
        if (m_size == m_capacity)
            grow(m_size + 1);
        m_data[m_size++] = value;
    }
    // Appends count values and returns a pointer to the first of them.
    T* append(const T* values, std::size_t count)
    {
        if (m_size + count > m_capacity)
            grow(m_size + count);
        T* start = m_data + m_size;
        if (count > 0)
            std::memcpy(start, values, count * sizeof(T));
        m_size += count;
        return start;
    }
    // Resizes; new elements are filled with value.
    void resize(std::size_t count, const T& value = T {})
    {
        if (count > m_capacity)
            grow(count);
        for (std::size_t i = m_size; i < count; ++i)
            m_data[i] = value;
        m_size = count;
    }
    void reserve(std::size_t count)
    {
        if (count > m_capacity)
            grow(count);
    }
    void clear() { m_size = 0; }
    // Gives back the pages past the last element.
    void shrinkToFit();
    [[nodiscard]] std::size_t capacity() const { return m_capacity; }

private:
    void grow(std::size_t minimum);
    void release();

    T* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

namespace MappedMemory {
// Returns nullptr and aborts with a message only when the system refuses memory,
// the same outcome as std::bad_alloc escaping a scan.
void* reallocate(void* old, std::size_t oldBytes, std::size_t newBytes);
void release(void* memory, std::size_t bytes);
std::size_t pageRounded(std::size_t bytes);
}

template <typename T>
void MappedColumn<T>::grow(std::size_t minimum)
{
    std::size_t wanted = m_capacity < 1024 ? 1024 : m_capacity * 2;
    if (wanted < minimum)
        wanted = minimum;
    std::size_t bytes = MappedMemory::pageRounded(wanted * sizeof(T));
    m_data = static_cast<T*>(MappedMemory::reallocate(m_data, m_capacity * sizeof(T), bytes));
    m_capacity = bytes / sizeof(T);
}

template <typename T>
void MappedColumn<T>::shrinkToFit()
{
    if (m_data == nullptr)
        return;
    if (m_size == 0) {
        release();
        return;
    }
    std::size_t bytes = MappedMemory::pageRounded(m_size * sizeof(T));
    if (bytes / sizeof(T) >= m_capacity)
        return;
    m_data = static_cast<T*>(MappedMemory::reallocate(m_data, MappedMemory::pageRounded(m_capacity * sizeof(T)), bytes));
    m_capacity = bytes / sizeof(T);
}

template <typename T>
void MappedColumn<T>::release()
{
    if (m_data != nullptr)
        MappedMemory::release(m_data, MappedMemory::pageRounded(m_capacity * sizeof(T)));
    m_data = nullptr;
    m_size = 0;
    m_capacity = 0;
}

}
