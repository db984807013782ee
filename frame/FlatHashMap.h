#pragma once
// A hash map in one array, for small keys looked up on every signal: linear
// probing, and removal by shifting the rows behind back, so that no tombstones
// pile up in a map that sees an insert and a removal per timer expiry. Memory
// is taken only when the map grows; in a steady state nothing is allocated.
// The key's hash is spread by a multiplication whose high bits pick the row,
// so a plain hash (a reference counting up, a pointer) is good enough.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

template <typename Key, typename Value, typename Hash>
class FlatHashMap {
public:
    // A new key only; false (and nothing changed) when the key is there.
    bool insert(const Key& key, const Value& value)
    {
        if (2 * (m_size + 1) > m_rows.size()) grow();
        std::size_t index = home(key);
        while (m_rows[index].used) {
            if (m_rows[index].key == key) return false;
            index = (index + 1) & mask();
        }
        m_rows[index] = {key, value, true};
        ++m_size;
        return true;
    }

    Value* find(const Key& key) { return const_cast<Value*>(std::as_const(*this).find(key)); }
    const Value* find(const Key& key) const
    {
        if (m_size == 0) return nullptr;
        for (std::size_t index = home(key); m_rows[index].used; index = (index + 1) & mask())
            if (m_rows[index].key == key) return &m_rows[index].value;
        return nullptr;
    }

    bool erase(const Key& key)
    {
        if (m_size == 0) return false;
        std::size_t index = home(key);
        while (m_rows[index].used && !(m_rows[index].key == key)) index = (index + 1) & mask();
        if (!m_rows[index].used) return false;
        shiftBackFrom(index);
        --m_size;
        return true;
    }

    void clear()
    {
        for (Row& row : m_rows) row.used = false;
        m_size = 0;
    }

    std::size_t size() const { return m_size; }

private:
    struct Row {
        Key key{};
        Value value{};
        bool used = false;
    };

    std::size_t mask() const { return m_rows.size() - 1; }
    std::size_t home(const Key& key) const
    {
        return static_cast<std::size_t>((static_cast<std::uint64_t>(Hash{}(key)) * 0x9E3779B97F4A7C15ULL) >> m_shift);
    }

    // The row at `hole` is gone: each row behind it in the same run moves
    // into the hole unless its home lies between the hole and itself.
    void shiftBackFrom(std::size_t hole)
    {
        std::size_t index = hole;
        for (;;) {
            index = (index + 1) & mask();
            if (!m_rows[index].used) break;
            std::size_t wanted = home(m_rows[index].key);
            bool homeInGap = ((index - wanted) & mask()) < ((index - hole) & mask());
            if (homeInGap) continue;
            m_rows[hole] = m_rows[index];
            hole = index;
        }
        m_rows[hole].used = false;
    }

    void grow()
    {
        std::vector<Row> old;
        old.swap(m_rows);
        m_rows.resize(old.empty() ? 16 : 2 * old.size());
        m_shift = 64 - static_cast<unsigned>(std::countr_zero(m_rows.size()));
        m_size = 0;
        for (const Row& row : old)
            if (row.used) insert(row.key, row.value);
    }

    std::vector<Row> m_rows;
    std::size_t m_size = 0;
    unsigned m_shift = 64;
};
