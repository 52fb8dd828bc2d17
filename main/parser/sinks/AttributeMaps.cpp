#include "sinks/AttributeMaps.h"

#include "base/ShortText.h"
#include "sinks/AttributeAssembler.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t c_kept = 16;
/// A longer name or value is not worth keeping its memory.
constexpr std::size_t c_long = 256;

bool HasLongValue(const StartTag& tag) noexcept
{
    return std::any_of(tag.attributeValues.begin(), tag.attributeValues.end(),
                       [](std::u16string_view value) { return value.size() > c_long; });
}

void Assign(TString& text, std::u16string_view value)
{
    char16_t* const units = text.resizeForOverwrite(static_cast<TString::size_type>(value.size()));
    ShortText::Copy(value.data(), units, value.size());
}

bool HasLongName(const AttributeNames& names) noexcept
{
    for (std::size_t i = 0; i < names.Count(); ++i) {
        if (static_cast<std::size_t>(names.Name(i).length()) > c_long)
            return true;
    }
    return false;
}

/// Nobody can have changed the text of a name without a copy of it.
bool IsVery(const TString& text, const TString& name) noexcept
{
    return text.utf16() == name.utf16();
}

} // namespace

AttributeMaps::~AttributeMaps()
{
    for (const Kept& kept : m_kept) {
        if (kept.names != nullptr)
            kept.names->Release();
    }
}

AttributeMaps::AttributeMap* AttributeMaps::Fill(const StartTag& tag)
{
    if (tag.attributeNames.empty() || HasLongValue(tag))
        return nullptr;
    AttributeNames* const names = FindOrMakeAttributeNames(tag);
    if (names == nullptr)
        return nullptr;
    Kept* const kept = GetKept(*names);
    if (kept == nullptr)
        return nullptr;
    if (!Refill(*kept, tag)) {
        kept->map = ToAttributeMap(tag);
        kept->buckets = kept->map.bucket_count();
    }
    return &kept->map;
}

/// Null when the names are not worth keeping.
AttributeMaps::Kept* AttributeMaps::GetKept(AttributeNames& names)
{
    if (m_kept.empty())
        m_kept.resize(c_kept);
    // Objects of its size do not begin nearer to each other.
    const auto address = reinterpret_cast<std::uintptr_t>(&names) / sizeof(AttributeNames);
    Kept& kept = m_kept[address % c_kept];
    if (kept.names != &names) {
        if (HasLongName(names))
            return nullptr;
        names.Retain();
        if (kept.names != nullptr)
            kept.names->Release();
        kept.names = &names;
        kept.map.clear();
        kept.order = {};
    }
    return &kept;
}

/// False, and the map is anything, unless it is as it was made, but for the values.
bool AttributeMaps::Refill(Kept& kept, const StartTag& tag)
{
    const AttributeNames& names = *kept.names;
    if (kept.map.size() != names.Count() || kept.map.bucket_count() != kept.buckets ||
        kept.map.max_load_factor() != 1.0F)
        return false;
    std::uint8_t* place = kept.order.data();
    for (auto& [name, value] : kept.map) {
        if (*place >= names.Count() || !IsVery(name, names.Name(*place))) {
            *place = 0;
            while (*place < names.Count() && !IsVery(name, names.Name(*place)))
                ++*place;
            if (*place == names.Count()) {
                *place = 0;
                return false;
            }
        }
        Assign(value, tag.attributeValues[*place++]);
    }
    return true;
}
