#include "sinks/AttributeAssembler.h"

#include "bytes/XercesColonSanitizer.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace {

/// Whether the sanitizer may have had to do with a name. Names like this are rare enough to be left
/// to the map, whoever wrote them.
bool MayBeSanitized(std::u16string_view name)
{
    return name.starts_with(u"IllegalColon:") || name.starts_with(u"xmlns:IllegalColon");
}

} // namespace

AttributeNames* FindOrMakeAttributeNames(const StartTag& tag)
{
    const std::span<const char16_t* const> attributes = tag.attributeNames;
    if (attributes.empty() || attributes.size() > AttributeNames::c_maxCount)
        return nullptr;
    if (AttributeNames* list = ParsedNames::FindAttributeNames(tag.element, attributes))
        return list;
    if (std::any_of(attributes.begin(), attributes.end(), MayBeSanitized))
        return nullptr;
    return tag.names.MakeAttributeNames(tag.element, attributes);
}

AttributeStorage::AttributeMap ToAttributeMap(const StartTag& tag)
{
    AttributeStorage::AttributeMap map;
    const std::size_t count = tag.attributeNames.size();
    if (count == 0)
        return map;
    map.reserve(count);
    if (const AttributeNames* names = FindOrMakeAttributeNames(tag)) {
        for (std::size_t i = 0; i < count; ++i)
            map.try_emplace(names->Name(i), TString(tag.attributeValues[i]));
        return map;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::u16string_view qualifiedName = tag.attributeNames[i];
        TString name = tag.names.Find(qualifiedName).name;
        if (MayBeSanitized(qualifiedName))
            name = XercesColonSanitizer::RestoreEncodedAttributeNames(name);
        if (!name.IsEmpty())
            map.try_emplace(std::move(name), TString(tag.attributeValues[i]));
    }
    return map;
}

AttributeStorage PackAttributes(ParseArena& arena, const StartTag& tag)
{
    AttributeStorage storage;
    if (tag.attributeNames.empty())
        return storage;
    if (AttributeNames* names = FindOrMakeAttributeNames(tag)) {
        if (AttributeBlock* block = AttributeBlock::Create(arena, *names, tag.attributeValues)) {
            storage.Adopt(block);
            return storage;
        }
    }
    storage.Replace(ToAttributeMap(tag));
    return storage;
}
