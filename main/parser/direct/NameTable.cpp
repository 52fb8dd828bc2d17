#include "direct/NameTable.h"

#include "base/ShortText.h"

NameTable::Name& NameTable::Find(std::string_view bytes)
{
    const std::uint32_t hash = m_names.GetSeed().Hash(bytes.data(), bytes.size());
    Name* const name = m_slots.Find(hash, [bytes](const Name& known) {
        return known.bytes.size() == bytes.size() &&
               ShortText::Equals(known.bytes.data(), bytes.data(), bytes.size());
    });
    return name != nullptr ? *name : Add(bytes, hash);
}

NameTable::Name& NameTable::Add(std::string_view bytes, std::uint32_t hash)
{
    m_slots.Reserve(m_entries.size() + 1);
    const TString units = TString::fromUtf8(bytes);
    Name& made =
        m_entries.emplace_back(Name{std::string(bytes), hash, &m_names.Find(units.view())});
    m_slots.Add(made);
    return made;
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
    m_slots.Clear();
    m_element = nullptr;
    m_entries.clear();
}
