#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A hash table that finds objects which somebody else owns by a hash that they carry in `hash`.
/// Open addressing with linear probing, at most half full.
///
/// Different objects may be used from different threads.
template <typename T>
class HashSlots
{
public:
    /// The object with that hash for which `equals` is true; null when there is none.
    template <typename Equals>
    T* Find(std::uint32_t hash, const Equals& equals) const noexcept
    {
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t slot = hash & mask; T* object = m_slots[slot]; slot = (slot + 1) & mask) {
            if (object->hash == hash && equals(*object))
                return object;
        }
        return nullptr;
    }
    /// Makes room for so many objects in all, one more than there are. Takes amortised constant
    /// time.
    void Reserve(std::size_t count)
    {
        if (count * 2 <= m_slots.size())
            return;
        std::vector<T*> old(m_slots.size() * 2);
        old.swap(m_slots);
        for (T* object : old) {
            if (object != nullptr)
                Add(*object);
        }
    }
    /// Adds an object, which must stay where it is. REQUIRES: room was made for it.
    void Add(T& object) noexcept
    {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t slot = object.hash & mask;
        while (m_slots[slot] != nullptr)
            slot = (slot + 1) & mask;
        m_slots[slot] = &object;
    }
    /// Forgets all, and gives back what unusually many have made it take.
    void Clear() noexcept
    {
        if (m_slots.size() > c_kept) {
            m_slots.resize(c_initial);
            m_slots.shrink_to_fit();
        }
        std::fill(m_slots.begin(), m_slots.end(), nullptr);
    }

private:
    static constexpr std::size_t c_initial = 64;
    static constexpr std::size_t c_kept = 4096;

    /// Their number is a power of two.
    std::vector<T*> m_slots = std::vector<T*>(c_initial);
};
