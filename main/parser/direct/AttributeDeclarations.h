#pragma once

#include "direct/NameTable.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// What the internal subset of a document type says about attributes, as far as readers that do not
/// validate go by it: default values, and types whose values lose blanks.
class AttributeDeclarations
{
public:
    struct Attribute
    {
        NameTable::Name* name;
        /// Any type but CDATA: blanks at both ends go, and others become one.
        bool isTokenized;
        /// Normalised; nothing without default.
        std::optional<std::u16string> defaultValue;
    };

    bool IsEmpty() const noexcept { return m_attributes.empty(); }
    /// Gives back what a document has made this take: emptied containers would keep their buckets.
    void Clear() noexcept
    {
        if (!m_attributes.empty())
            decltype(m_attributes)().swap(m_attributes);
        if (!m_elements.empty())
            decltype(m_elements)().swap(m_elements);
    }

    /// False when the element is declared already.
    bool DeclareElement(const NameTable::Name& element)
    {
        return m_elements.insert(&element).second;
    }
    /// False when the element has a declared attribute of that name already.
    bool DeclareAttribute(const NameTable::Name& element, Attribute&& attribute);
    /// In the order of their declarations; null for none.
    const std::vector<Attribute>* Find(const NameTable::Name& element) const;

    /// Takes away what is too much of the blanks of a tokenized value.
    static void CollapseBlanks(std::u16string& value);

private:
    std::unordered_map<const NameTable::Name*, std::vector<Attribute>> m_attributes;
    std::unordered_set<const NameTable::Name*> m_elements;
};
