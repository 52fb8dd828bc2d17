#include "direct/NameTable.h"

#include "base/ShortText.h"

#include <algorithm>

NameTable::Name& NameTable::Find(std::string_view bytes)
{
    const std::uint32_t hash = m_names.GetSeed().Hash(bytes.data(), bytes.size());
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t slot = hash & mask; Name* name = m_slots[slot]; slot = (slot + 1) & mask) {
        if (name->hash == hash && name->bytes.size() == bytes.size() &&
            ShortText::Equals(name->bytes.data(), bytes.data(), bytes.size()))
            return *name;
    }
    return Add(bytes, hash);
}

NameTable::Name& NameTable::Add(std::string_view bytes, std::uint32_t hash)
{
    if ((m_entries.size() + 1) * 2 > m_slots.size())
        Grow();
    const TString units = TString::fromUtf8(bytes);
    Name& made =
        m_entries.emplace_back(Name{std::string(bytes), hash, &m_names.Find(units.view())});
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    while (m_slots[slot] != nullptr)
        slot = (slot + 1) & mask;
    m_slots[slot] = &made;
    return made;
}

void NameTable::Grow()
{
    std::vector<Name*> slots(m_slots.size() * 2);
    const std::size_t mask = slots.size() - 1;
    for (Name& name : m_entries) {
        std::size_t slot = name.hash & mask;
        while (slots[slot] != nullptr)
            slot = (slot + 1) & mask;
        slots[slot] = &name;
    }
    m_slots.swap(slots);
}

void NameTable::ForgetIfLarge() noexcept
{
    m_names.ForgetIfLarge();
    ForgetWhatIsGone();
}

void NameTable::ForgetWhatIsGone() noexcept
{
    if (m_generation == m_names.GetGeneration()) [[likely]]
        return;
    m_generation = m_names.GetGeneration();
    if (m_slots.size() > c_slotsKept) {
        m_slots.resize(c_initialSlots);
        m_slots.shrink_to_fit();
    }
    std::fill(m_slots.begin(), m_slots.end(), nullptr);
    m_element = nullptr;
    m_entries.clear();
}
