#pragma once

#include <atomic>
#include <cstdint>

class DOM;
class DOMElement;

/// Tells whether an element still lives, to those who remember it longer than that: the registries
/// that hold its diagnostics, and elements that were removed from it. Elements that are neither
/// have no identity. Counted; the element itself holds one reference.
///
/// The atomic members may be used from several threads. The lock of its document guards the list of
/// loose elements, and the rest changes with the tree.
struct ElementIdentity
{
    constexpr explicit ElementIdentity(DOMElement* itself) noexcept : element(itself) {}

    void Retain() noexcept { references.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept
    {
        if (references.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    std::atomic<std::uint32_t> references{1};
    /// How many elements name this one as their former parent.
    std::atomic<std::uint32_t> removedChildren{0};
    /// Null once the element is gone.
    std::atomic<DOMElement*> element;
    /// Of the element that this one was removed from and still names as its parent; else null.
    ElementIdentity* formerParent = nullptr;

    /// The document in whose list of loose elements (attached, but owned by a caller) this one is.
    DOM* looseIn = nullptr;
    ElementIdentity* previousLoose = nullptr;
    ElementIdentity* nextLoose = nullptr;
};

/// One counted reference. Different objects may be used from different threads, even when they
/// refer to the same identity.
class ElementIdentityRef
{
public:
    explicit ElementIdentityRef(ElementIdentity& identity) noexcept : m_identity(&identity)
    {
        identity.Retain();
    }
    ElementIdentityRef(const ElementIdentityRef& other) noexcept : m_identity(other.m_identity)
    {
        m_identity->Retain();
    }
    ElementIdentityRef& operator=(const ElementIdentityRef& other) noexcept
    {
        other.m_identity->Retain();
        m_identity->Release();
        m_identity = other.m_identity;
        return *this;
    }
    ~ElementIdentityRef() { m_identity->Release(); }

    /// Null once the element is gone.
    const DOMElement* Element() const noexcept
    {
        return m_identity->element.load(std::memory_order_acquire);
    }

private:
    ElementIdentity* m_identity;
};
