#include "direct/AttributeDeclarations.h"

#include <algorithm>
#include <utility>

bool AttributeDeclarations::DeclareAttribute(const NameTable::Name& element, Attribute&& attribute)
{
    std::vector<Attribute>& declared = m_attributes[&element];
    const bool isKnown =
        std::any_of(declared.begin(), declared.end(),
                    [&attribute](const Attribute& other) { return other.name == attribute.name; });
    if (!isKnown)
        declared.push_back(std::move(attribute));
    return !isKnown;
}

const std::vector<AttributeDeclarations::Attribute>*
AttributeDeclarations::Find(const NameTable::Name& element) const
{
    const auto found = m_attributes.find(&element);
    return found == m_attributes.end() ? nullptr : &found->second;
}

void AttributeDeclarations::CollapseBlanks(std::u16string& value)
{
    const auto end = std::unique(value.begin(), value.end(),
                                 [](char16_t a, char16_t b) { return a == u' ' && b == u' '; });
    value.erase(end, value.end());
    if (value.ends_with(u' '))
        value.pop_back();
    if (value.starts_with(u' '))
        value.erase(0, 1);
}
