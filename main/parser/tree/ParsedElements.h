#pragma once

#include "slabs/ArenaText.h"
#include "slabs/ListPieces.h"
#include "slabs/ParseArena.h"
#include "slabs/SlabReferences.h"

#include <kescorexml/DOMElement.h>

#include <memory>
#include <span>

/// Elements as a parse makes them: in the slabs of an arena, attached from the beginning, and put
/// into a list of just their number once their parent ends. From then on they are like any other.
class ParsedElements
{
public:
    /// A new element that is attached to nothing.
    static std::unique_ptr<DOMElement> New(ParseArena& arena, TString name,
                                           AttributeStorage&& attributes);
    /// A new element, attached to `dom`, in no list yet; `parent` is its parent to be.
    static std::unique_ptr<DOMElement> New(ParseArena& arena, TString name,
                                           AttributeStorage&& attributes, DOM* dom,
                                           DOMElement& parent);
    /// Puts children that belong to nobody yet at the end, without looking at diagnostics.
    /// REQUIRES: they and their descendants are attached to the document of `parent`.
    static void AttachChildren(ParseArena& arena, DOMElement& parent,
                               std::span<std::unique_ptr<DOMElement>> children);
    /// What AppendChild does, in a list that grows with the parse. REQUIRES: an element that New
    /// has just made.
    static DOMElement* AppendNew(ListPieces& pieces, DOMElement& parent,
                                 std::unique_ptr<DOMElement> element);
    /// Puts a run of text at the end of the element's and ends it.
    static void AppendText(DOMElement& element, ArenaText& text);
    /// Destroys an element without children, or null, and leaves to `references` what it referred
    /// to. REQUIRES: it was in a list.
    static void DestroyLeaf(std::unique_ptr<DOMElement> element,
                            SlabReferences& references) noexcept;
};
