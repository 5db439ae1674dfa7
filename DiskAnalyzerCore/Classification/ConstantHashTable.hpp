#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <functional>
#include <vector>

namespace tarnwick {

// An open-addressing hash table for the classifier's constant tables: filled once while a
// table is built, then only read, from any number of threads. Linear probing over a table
// kept at most half full keeps lookups to one or two probes.
template <typename Key, typename Value, typename Hash = std::hash<Key>>
class ConstantHashTable {
public:
    const Value* find(const Key& key) const
    {
        if (m_slots.empty())
            return nullptr;
        std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = Hash {}(key) & mask;; i = (i + 1) & mask) {
            const Slot& slot = m_slots[i];
            if (!slot.used)
                return nullptr;
            if (slot.key == key)
                return &slot.value;
        }
    }

    // Stores the value under the key, replacing an earlier one.
    void insertOrAssign(const Key& key, Value value)
    {
        if (Value* existing = const_cast<Value*>(find(key))) {
            *existing = std::move(value);
            return;
        }
        if ((m_count + 1) * 2 > m_slots.size())
            rehash(std::max<std::size_t>(16, std::bit_ceil((m_count + 1) * 2)));
        place(key, std::move(value));
        ++m_count;
    }

    [[nodiscard]] std::size_t size() const { return m_count; }

    template <typename Visit>
    void forEach(Visit visit) const
    {
        for (const Slot& slot : m_slots) {
            if (slot.used)
                visit(slot.key, slot.value);
        }
    }

private:
    struct Slot {
        Key key {};
        Value value {};
        bool used = false;
    };

    void place(const Key& key, Value value)
    {
        std::size_t mask = m_slots.size() - 1;
        std::size_t i = Hash {}(key) & mask;
        while (m_slots[i].used)
            i = (i + 1) & mask;
        m_slots[i] = Slot { key, std::move(value), true };
    }

    void rehash(std::size_t capacity)
    {
        std::vector<Slot> old = std::move(m_slots);
        m_slots.assign(capacity, Slot {});
        for (Slot& slot : old) {
            if (slot.used)
                place(slot.key, std::move(slot.value));
        }
    }

    std::vector<Slot> m_slots;
    std::size_t m_count = 0;
};

}
