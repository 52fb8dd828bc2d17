#include "sinks/ParsedNames.h"

#include <kesplatform/TStringBlock.h>

#include <QHashFunctions>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t c_initialSlots = 64;
/// A single tag can have any number of names.
constexpr std::size_t c_slotsKept = 4096;

bool HasNames(const AttributeNames& list, std::span<const char16_t* const> names)
{
    if (list.Count() != names.size())
        return false;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const TString& name = list.Name(i);
        if (names[i] != name.utf16() && !TerminatedText::Equals(names[i], name.view()))
            return false;
    }
    return true;
}

} // namespace

ParsedNames::Entry::~Entry()
{
    for (AttributeNames* list : attributeNames) {
        if (list != nullptr)
            list->Release();
    }
}

ParsedNames::ParsedNames() : m_seed(QHashSeed::globalSeed()), m_slots(c_initialSlots) {}

ParsedNames::Entry& ParsedNames::Find(std::u16string_view name)
{
    const std::uint32_t hash = m_seed.Hash(name.data(), name.size() * sizeof(char16_t));
    std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    while (Entry* entry = m_slots[slot]) {
        if (entry->hash == hash && entry->name.view().size() == name.size() &&
            std::memcmp(entry->name.utf16(), name.data(), name.size() * sizeof(char16_t)) == 0)
            return *entry;
        slot = (slot + 1) & mask;
    }
    if ((m_entries.size() + 1) * 2 > m_slots.size()) {
        Grow();
        mask = m_slots.size() - 1;
        slot = hash & mask;
        while (m_slots[slot] != nullptr)
            slot = (slot + 1) & mask;
    }
    Entry& made = m_entries.emplace_back(TString(name), hash);
    m_slots[slot] = &made;
    m_units += name.size() + c_unitsAnEntry;
    return made;
}

TString ParsedNames::GetNameIn(ParseArena& arena, Entry& entry)
{
    if (entry.slabNumber == arena.GetSlabNumber())
        return arena.ShareText(entry.slot);
    if (!ParseArena::IsTextForSlab(entry.name.view()))
        return entry.name;
    TString name = arena.MakeText(entry.name.view());
    entry.slot = TStringBlock::SlotOf(name);
    entry.slabNumber = arena.GetSlabNumber();
    return name;
}

void ParsedNames::Grow()
{
    std::vector<Entry*> slots(m_slots.size() * 2);
    const std::size_t mask = slots.size() - 1;
    for (Entry& entry : m_entries) {
        std::size_t slot = entry.hash & mask;
        while (slots[slot] != nullptr)
            slot = (slot + 1) & mask;
        slots[slot] = &entry;
    }
    m_slots.swap(slots);
}

void ParsedNames::Forget() noexcept
{
    if (m_slots.size() > c_slotsKept) {
        m_slots.resize(c_initialSlots);
        m_slots.shrink_to_fit();
    }
    std::fill(m_slots.begin(), m_slots.end(), nullptr);
    m_entries.clear();
    m_units = 0;
    ++m_generation;
    m_byAddress.fill(nullptr);
}

AttributeNames* ParsedNames::FindAttributeNames(Entry& element,
                                                std::span<const char16_t* const> names)
{
    auto& lists = element.attributeNames;
    for (std::size_t i = 0; i < lists.size() && lists[i] != nullptr; ++i) {
        if (HasNames(*lists[i], names)) {
            if (i > 0)
                std::rotate(lists.begin(), lists.begin() + static_cast<std::ptrdiff_t>(i),
                            lists.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            return lists[0];
        }
    }
    return nullptr;
}

AttributeNames* ParsedNames::MakeAttributeNames(Entry& element,
                                                std::span<const char16_t* const> names)
{
    std::array<TString, AttributeNames::c_maxCount> texts;
    for (std::size_t i = 0; i < names.size(); ++i) {
        texts[i] = Find(names[i]).name;
        if (std::find(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(i), texts[i]) !=
            texts.begin() + static_cast<std::ptrdiff_t>(i))
            return nullptr;
    }
    auto* made = new AttributeNames(std::span<const TString>(texts.data(), names.size()));
    auto& lists = element.attributeNames;
    if (lists.back() != nullptr)
        lists.back()->Release();
    std::rotate(lists.begin(), lists.end() - 1, lists.end());
    lists[0] = made;
    return made;
}
