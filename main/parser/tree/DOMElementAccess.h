#pragma once

#include <kescorexml/DOMElement.h>

/// Looks at an element's parts as they are kept, which callers may not.
class DOMElementAccess
{
public:
    static const AttributeStorage& Attributes(const DOMElement& element) noexcept
    {
        return element.m_attributes;
    }
    static const ElementList& Children(const DOMElement& element) noexcept
    {
        return element.m_children;
    }
    static ElementList& Children(DOMElement& element) noexcept { return element.m_children; }
};
