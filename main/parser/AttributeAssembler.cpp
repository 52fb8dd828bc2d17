#include "AttributeAssembler.h"

#include "XercesColonSanitizer.h"

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

AttributeStorage::AttributeMap ToAttributeMap(const xercesc::Attributes& attributes)
{
    AttributeStorage::AttributeMap map;
    const XMLSize_t count = attributes.getLength();
    map.reserve(count);
    for (XMLSize_t i = 0; i < count; ++i) {
        TString name =
            XercesColonSanitizer::RestoreEncodedAttributeNames(TString(attributes.getQName(i)));
        if (!name.IsEmpty())
            map.emplace(std::move(name), TString(attributes.getValue(i)));
    }
    return map;
}

AttributeStorage PackAttributes(ParsedNames& names, ParsedNames::Entry& element,
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
        qualifiedNames[i] = attributes.getQName(i);
        values[i] = attributes.getValue(i);
        packable = !MayBeSanitized(qualifiedNames[i]);
    }
    if (packable) {
        AttributeNames* list =
            names.FindAttributeNames(element, std::span(qualifiedNames.data(), count));
        AttributeBlock* block =
            list == nullptr ? nullptr
                            : AttributeBlock::Create(*list, std::span(values.data(), count));
        if (block != nullptr) {
            storage.Adopt(block);
            return storage;
        }
    }
    storage.Replace(ToAttributeMap(attributes));
    return storage;
}
