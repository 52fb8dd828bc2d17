#include "scanner/AttributeAssembler.h"

#include "bytes/XercesColonSanitizer.h"
#include "bytes/XercesText.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace {

/// Whether the sanitizer may have had to do with a name. Names like this are rare enough to be left
/// to the map, whoever wrote them.
bool MayBeSanitized(std::u16string_view name)
{
    return name.starts_with(u"IllegalColon:") || name.starts_with(u"xmlns:IllegalColon");
}

/// Null gives the empty text.
const char16_t* ToTerminated(const XMLCh* text) noexcept
{
    return text == nullptr ? u"" : reinterpret_cast<const char16_t*>(text);
}

/// The list of these names, all of which the attributes keep; null when they are left to the map.
AttributeNames* FindOrMakeNames(ParsedNames& names, ParsedNames::Entry& element,
                                std::span<const char16_t* const> qualifiedNames)
{
    if (AttributeNames* list = ParsedNames::FindAttributeNames(element, qualifiedNames))
        return list;
    if (std::any_of(qualifiedNames.begin(), qualifiedNames.end(), MayBeSanitized))
        return nullptr;
    return names.MakeAttributeNames(element, qualifiedNames);
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

std::size_t CountUnits(const xercesc::Attributes& attributes)
{
    std::size_t units = attributes.getLength();
    for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
        units += ViewXMLCh(attributes.getQName(i)).size();
        units += ViewXMLCh(attributes.getValue(i)).size();
    }
    return units;
}

std::size_t CountUnits(const xercesc::Attributes& attributes, const AttributeStorage& packed)
{
    const AttributeBlock* block = packed.GetBlock();
    return block == nullptr ? CountUnits(attributes) : block->CountUnits();
}

AttributeStorage PackAttributes(ParseArena& arena, ParsedNames& names, ParsedNames::Entry& element,
                                const xercesc::Attributes& attributes)
{
    const XMLSize_t count = attributes.getLength();
    AttributeStorage storage;
    if (count == 0)
        return storage;
    if (count <= AttributeNames::maxCount) {
        // Not initialised, which would cost more than to fill in the few that are used.
        std::array<const char16_t*, AttributeNames::maxCount> texts;
        const std::span<const char16_t* const> used(texts.data(), count);
        for (XMLSize_t i = 0; i < count; ++i)
            texts[i] = ToTerminated(attributes.getQName(i));
        if (AttributeNames* list = FindOrMakeNames(names, element, used)) {
            for (XMLSize_t i = 0; i < count; ++i)
                texts[i] = ToTerminated(attributes.getValue(i));
            if (AttributeBlock* block = AttributeBlock::Create(arena, *list, used)) {
                storage.Adopt(block);
                return storage;
            }
        }
    }
    storage.Replace(ToAttributeMap(names, attributes));
    return storage;
}
