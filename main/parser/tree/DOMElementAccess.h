#pragma once

#include "tree/ParsedElements.h"

#include <kescorexml/DOMElement.h>

#include <memory>
#include <span>
#include <utility>

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

    // ParsedElements under the names by which builders know it.

    static std::unique_ptr<DOMElement> NewParsedElement(ParseArena& arena, TString name,
                                                        AttributeStorage&& attributes, DOM* dom,
                                                        DOMElement& parent)
    {
        return ParsedElements::New(arena, std::move(name), std::move(attributes), dom, parent);
    }
    static void AttachChildren(ParseArena& arena, DOMElement& parent,
                               std::span<std::unique_ptr<DOMElement>> children)
    {
        ParsedElements::AttachChildren(arena, parent, children);
    }
    static void AppendText(DOMElement& element, ArenaText& text)
    {
        ParsedElements::AppendText(element, text);
    }
};
