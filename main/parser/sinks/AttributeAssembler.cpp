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

/// The list of the tag's attribute names, all of which the attributes keep; null when they are left
/// to the map.
AttributeNames* FindOrMakeNames(const StartTag& tag)
{
    const std::span<const char16_t* const> attributes = tag.attributeNames;
    if (AttributeNames* list = ParsedNames::FindAttributeNames(tag.element, attributes))
        return list;
    if (std::any_of(attributes.begin(), attributes.end(), MayBeSanitized))
        return nullptr;
    return tag.names.MakeAttributeNames(tag.element, attributes);
}

} // namespace

AttributeStorage::AttributeMap ToAttributeMap(const StartTag& tag)
{
    AttributeStorage::AttributeMap map;
    map.reserve(tag.attributeNames.size());
    for (std::size_t i = 0; i < tag.attributeNames.size(); ++i) {
        const std::u16string_view qualifiedName = tag.attributeNames[i];
        TString name = tag.names.Find(qualifiedName).name;
        if (MayBeSanitized(qualifiedName))
            name = XercesColonSanitizer::RestoreEncodedAttributeNames(name);
        if (!name.IsEmpty())
            map.try_emplace(std::move(name), tag.attributeValues[i]);
    }
    return map;
}

AttributeStorage PackAttributes(ParseArena& arena, const StartTag& tag)
{
    AttributeStorage storage;
    if (tag.attributeNames.empty())
        return storage;
    if (tag.attributeNames.size() <= AttributeNames::maxCount) {
        if (AttributeNames* names = FindOrMakeNames(tag)) {
            if (AttributeBlock* block =
                    AttributeBlock::Create(arena, *names, tag.attributeValues)) {
                storage.Adopt(block);
                return storage;
            }
        }
    }
    storage.Replace(ToAttributeMap(tag));
    return storage;
}
