#pragma once

#include <kescorexml/DOMElement.h>
#include <kescorexml/detail/ElementIdentity.h>

#include <atomic>

/// What becomes of an element between its making and its end, and who is told. docs/architecture.md
/// has the table of states; each of the functions that move an element from one to another is here.
class ElementLife
{
public:
    // Being remembered

    /// Null when nobody remembers the element, which then cannot have diagnostics.
    static ElementIdentity* Identity(const DOMElement& element) noexcept
    {
        return element.m_identity.load(std::memory_order_acquire);
    }
    /// Makes the identity on first use; safe from several threads.
    static ElementIdentity& MakeIdentity(const DOMElement& element);
    /// Whether anybody but the element itself refers to its identity.
    static bool IsRemembered(const DOMElement& element) noexcept;

    // Parents

    /// The parent as IsChildOf goes: null for one that is gone.
    static const DOMElement* Parent(const DOMElement& element) noexcept;
    /// Whether the element was removed from a parent and is in no list since; what it names as its
    /// parent then does not hold it.
    static bool IsRemoved(const DOMElement& element) noexcept;
    /// Whether an element that was removed from this one still names it as its parent.
    static bool HasRemovedChildren(const DOMElement& element) noexcept;

    // From state to state

    /// Attaches the whole subtree to `dom` (null detaches it) without touching diagnostics.
    /// Allocates nothing.
    static void SetDocument(DOMElement& element, DOM* dom) noexcept;
    /// Makes an attached element that is in no tree a loose one of its document, so that it does
    /// not outlive it unnoticed. REQUIRES: an identity.
    static void LinkLoose(const DOMElement& element) noexcept;
    /// The document in whose list of loose elements this one is, or null.
    static DOM* LooseIn(const DOMElement& element) noexcept;
    /// Makes a child that was just taken out of the children of `parent` a removed element, and a
    /// loose one when it is attached. REQUIRES: identities of both.
    static void MarkRemoved(DOMElement& child, DOMElement& parent) noexcept;
    /// Makes `to`, a new element, what `from` was to others: it takes over what remembers that, its
    /// diagnostics included, its document, and the parent that it was removed from. An element that
    /// somebody else owns, its parent or its document, stays where it is; `to` is then in no tree,
    /// and detached when there is no memory to make it a loose element.
    static void Succeed(DOMElement& to, DOMElement& from) noexcept;
    /// Makes a removed element nobody's child: it names no parent, as when that one is gone.
    static void NameNoParent(DOMElement& element) noexcept;
    /// What comes before an insertion: the element is not loose and not removed any more. Nothing
    /// when it was neither.
    static void Unloosen(DOMElement& element) noexcept;
    /// Detaches every loose element of a document that ends.
    static void DetachAllLoose(DOM& dom) noexcept;
    /// Tells those who remember the element that it is gone.
    static void Forget(DOMElement& element) noexcept;
};
