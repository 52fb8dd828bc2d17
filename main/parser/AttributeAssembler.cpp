#include "AttributeAssembler.h"

#include "XercesColonSanitizer.h"
#include "XercesText.h"

#include <array>
#include <string_view>

namespace {

/// Whether the sanitizer may have had to do with a name. Names like this are rare enough to be left
/// to the map, whoever wrote them.
bool MayBeSanitized(std::u16string_view name)
{
    return name.starts_with(u"IllegalColon:") || name.starts_with(u"xmlns:IllegalColon");
}

} // namespace

AttributeStorage::AttributeMap ToAttributeMap(ParsedNames& names,
                                              const xercesc::Attributes& attributes)
{
    AttributeStorage::AttributeMap map;
    const XMLSize_t count = attributes.getLength();
    map.reserve(count);
    for (XMLSize_t i = 0; i < count; ++i) {
        const std::u16string_view qualifiedName = ViewXMLCh(attributes.getQName(i));
        TString name = names.Find(qualifiedName).name;
        if (MayBeSanitized(qualifiedName))
            name = XercesColonSanitizer::RestoreEncodedAttributeNames(name);
        if (!name.IsEmpty())
            map.try_emplace(std::move(name), ViewXMLCh(attributes.getValue(i)));
    }
    return map;
}

AttributeStorage PackAttributes(ParseArena& arena, ParsedNames& names, ParsedNames::Entry& element,
                                const xercesc::Attributes& attributes)
{
    const XMLSize_t count = attributes.getLength();
    AttributeStorage storage;
    if (count == 0)
        return storage;
    std::array<std::u16string_view, AttributeNames::maxCount> qualifiedNames;
    std::array<std::u16string_view, AttributeNames::maxCount> values;
    bool packable = count <= AttributeNames::maxCount;
    for (XMLSize_t i = 0; packable && i < count; ++i) {
        qualifiedNames[i] = ViewXMLCh(attributes.getQName(i));
        values[i] = ViewXMLCh(attributes.getValue(i));
        packable = !MayBeSanitized(qualifiedNames[i]);
    }
    if (packable) {
        AttributeNames* list =
            names.FindAttributeNames(element, std::span(qualifiedNames.data(), count));
        AttributeBlock* block =
            list == nullptr ? nullptr
                            : AttributeBlock::Create(arena, *list, std::span(values.data(), count));
        if (block != nullptr) {
            storage.Adopt(block);
            return storage;
        }
    }
    storage.Replace(ToAttributeMap(names, attributes));
    return storage;
}
