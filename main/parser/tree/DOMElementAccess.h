#pragma once

#include "slabs/ArenaText.h"
#include "slabs/ParseArena.h"
#include "tree/SlabReferences.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/detail/ElementIdentity.h>

#include <memory>
#include <span>

/// What the module's own sources may do with an element that callers may not.
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

    /// Null when nobody remembers the element, which then cannot have diagnostics.
    static ElementIdentity* Identity(const DOMElement& element) noexcept
    {
        return element.m_identity.load(std::memory_order_acquire);
    }
    /// Makes the identity on first use; safe from several threads.
    static ElementIdentity& MakeIdentity(const DOMElement& element);

    /// The parent as IsChildOf goes: null for one that is gone.
    static const DOMElement* Parent(const DOMElement& element) noexcept;

    /// Whether the element was removed from a parent and is in no list since; what it names as its
    /// parent then does not hold it.
    static bool IsRemoved(const DOMElement& element) noexcept;
    /// Whether anybody but the element itself refers to its identity.
    static bool IsRemembered(const DOMElement& element) noexcept;

    /// Attaches the whole subtree to `dom` (null detaches it) without touching diagnostics.
    /// Allocates nothing.
    static void SetDocument(DOMElement& element, DOM* dom) noexcept;

    /// Registers an attached element that is in no tree with its document, so that it does not
    /// outlive it unnoticed. REQUIRES: an identity.
    static void LinkLoose(const DOMElement& element) noexcept;
    /// Undoes LinkLoose and forgets the former parent. Nothing when there is nothing to undo.
    static void Unloosen(DOMElement& element) noexcept;
    /// REQUIRES: identities of both; `child` was just taken out of the children of `parent`.
    static void MarkRemoved(DOMElement& child, DOMElement& parent) noexcept;
    /// Makes a removed element name nobody as its parent, as when that one is gone.
    static void NameNoParent(DOMElement& element) noexcept;
    /// Detaches every loose element of a document that ends.
    static void DetachAllLoose(DOM& dom) noexcept;
    /// Destroys an element without children, or null, and leaves to `references` what it referred
    /// to.
    static void DestroyLeaf(std::unique_ptr<DOMElement> element,
                            SlabReferences& references) noexcept;
    /// Tells those who remember the element that it is gone.
    static void ForgetElement(DOMElement& element) noexcept;

    /// Puts children that belong to nobody yet at the end, without looking at diagnostics.
    /// REQUIRES: they and their descendants are attached to the document of `parent`.
    static void AttachChildren(ParseArena& arena, DOMElement& parent,
                               std::span<std::unique_ptr<DOMElement>> children);
    /// A new element of a parse, attached to `dom`, in no list yet; `parent` is its parent to be.
    static std::unique_ptr<DOMElement> NewParsedElement(ParseArena& arena, TString name,
                                                        AttributeStorage&& attributes, DOM* dom,
                                                        DOMElement& parent);
    /// Puts a run of text at the end of the element's and ends it.
    static void AppendText(DOMElement& element, ArenaText& text);

    /// Copies `source`'s descendants to `target`, which has none. The copies are attached to `dom`;
    /// unless that is null, they get the diagnostics of what they are copies of, and
    /// `diagnosticsTarget` those of `source`. Happens whole or not at all.
    static void CloneDescendants(DOMElement& target, const DOMElement& source, DOM* dom,
                                 const DOMElement& diagnosticsTarget);
};
