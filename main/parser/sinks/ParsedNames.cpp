#include "sinks/ParsedNames.h"

#include <kesplatform/detail/TStringBlock.h>

#include <QHashFunctions>

#include <algorithm>
#include <cstring>

namespace {

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

ParsedNames::ParsedNames() : m_seed(QHashSeed::globalSeed()) {}

ParsedNames::Entry& ParsedNames::Find(std::u16string_view name)
{
    const std::uint32_t hash = m_seed.Hash(name.data(), name.size() * sizeof(char16_t));
    Entry* const entry = m_slots.Find(hash, [name](const Entry& known) {
        return known.name.view().size() == name.size() &&
               std::memcmp(known.name.utf16(), name.data(), name.size() * sizeof(char16_t)) == 0;
    });
    if (entry != nullptr)
        return *entry;
    m_slots.Reserve(m_entries.size() + 1);
    Entry& made = m_entries.emplace_back(TString(name), hash);
    m_slots.Add(made);
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

void ParsedNames::Forget() noexcept
{
    m_slots.Clear();
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
