#include "tree/ElementLife.h"

#include <kescorexml/DOM.h>

#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace {

void Unlink(ElementIdentity& identity, ElementIdentity*& first) noexcept
{
    if (identity.previousLoose != nullptr)
        identity.previousLoose->nextLoose = identity.nextLoose;
    else
        first = identity.nextLoose;
    if (identity.nextLoose != nullptr)
        identity.nextLoose->previousLoose = identity.previousLoose;
    identity.looseIn = nullptr;
}

void ForgetFormerParent(ElementIdentity& identity) noexcept
{
    if (ElementIdentity* former = std::exchange(identity.formerParent, nullptr)) {
        former->removedChildren.fetch_sub(1, std::memory_order_relaxed);
        former->Release();
    }
}

void SetFormerParent(ElementIdentity& identity, ElementIdentity& former) noexcept
{
    former.Retain();
    former.removedChildren.fetch_add(1, std::memory_order_relaxed);
    identity.formerParent = &former;
}

} // namespace

// Being remembered

ElementIdentity& ElementLife::MakeIdentity(const DOMElement& element)
{
    if (ElementIdentity* known = Identity(element))
        return *known;
    auto made = std::make_unique<ElementIdentity>(const_cast<DOMElement*>(&element));
    ElementIdentity* expected = nullptr;
    if (!element.m_identity.compare_exchange_strong(expected, made.get(),
                                                    std::memory_order_acq_rel))
        return *expected;
    return *made.release();
}

bool ElementLife::IsRemembered(const DOMElement& element) noexcept
{
    const ElementIdentity* identity = Identity(element);
    return identity != nullptr && identity->references.load(std::memory_order_relaxed) > 1;
}

// Parents

const DOMElement* ElementLife::Parent(const DOMElement& element) noexcept
{
    if (const ElementIdentity* identity = Identity(element);
        identity != nullptr && identity->formerParent != nullptr)
        return identity->formerParent->element.load(std::memory_order_acquire);
    return element.m_parent;
}

bool ElementLife::IsRemoved(const DOMElement& element) noexcept
{
    const ElementIdentity* identity = Identity(element);
    return identity != nullptr && identity->formerParent != nullptr;
}

bool ElementLife::HasRemovedChildren(const DOMElement& element) noexcept
{
    const ElementIdentity* identity = Identity(element);
    return identity != nullptr && identity->removedChildren.load(std::memory_order_relaxed) > 0;
}

// From state to state

void ElementLife::SetDocument(DOMElement& element, DOM* dom) noexcept
{
    // No TreeWalk, for that needs memory. On the way through the subtree, the document pointer of
    // each element that is still being visited serves as the index of its next child.
    const auto setIndex = [](DOMElement& e, std::uintptr_t index) {
        e.m_dom = reinterpret_cast<DOM*>(index);
    };
    DOMElement* current = &element;
    setIndex(element, 0);
    for (;;) {
        const auto index = reinterpret_cast<std::uintptr_t>(current->m_dom);
        if (index < current->m_children.size()) {
            setIndex(*current, index + 1);
            current = current->m_children[index].get();
            setIndex(*current, 0);
            continue;
        }
        current->m_dom = dom;
        if (current == &element)
            return;
        current = current->m_parent;
    }
}

void ElementLife::LinkLoose(const DOMElement& element) noexcept
{
    ElementIdentity& identity = *Identity(element);
    DOM& dom = *element.m_dom;
    const ScopedLock lock(dom.m_lock);
    identity.looseIn = &dom;
    identity.previousLoose = nullptr;
    identity.nextLoose = dom.m_firstLoose;
    if (dom.m_firstLoose != nullptr)
        dom.m_firstLoose->previousLoose = &identity;
    dom.m_firstLoose = &identity;
}

DOM* ElementLife::LooseIn(const DOMElement& element) noexcept
{
    const ElementIdentity* identity = Identity(element);
    return identity == nullptr ? nullptr : identity->looseIn;
}

void ElementLife::MarkRemoved(DOMElement& child, DOMElement& parent) noexcept
{
    SetFormerParent(*Identity(child), *Identity(parent));
    if (child.m_dom != nullptr)
        LinkLoose(child);
}

void ElementLife::Succeed(DOMElement& to, DOMElement& from) noexcept
{
    const bool isChild = from.m_parent != nullptr && !IsRemoved(from);
    const bool isRoot = from.m_dom != nullptr && from.m_dom->GetRoot() == &from;
    const bool staysInTree = isChild || isRoot;
    to.m_dom = from.m_dom;
    if (!staysInTree) {
        to.m_parent = std::exchange(from.m_parent, nullptr);
        from.m_dom = nullptr;
    } else if (from.m_dom == nullptr) {
        return;
    }
    if (ElementIdentity* identity = from.m_identity.exchange(nullptr, std::memory_order_acq_rel)) {
        identity->element.store(&to, std::memory_order_release);
        to.m_identity.store(identity, std::memory_order_release);
    }
    if (!staysInTree)
        return;
    try {
        MakeIdentity(to);
        LinkLoose(to);
    } catch (const std::bad_alloc&) {
        SetDocument(to, nullptr);
    }
}

void ElementLife::NameNoParent(DOMElement& element) noexcept
{
    // The identity of an element that has always been gone. It keeps its first reference.
    static constinit ElementIdentity s_nobody(nullptr);

    ElementIdentity& identity = *Identity(element);
    ForgetFormerParent(identity);
    SetFormerParent(identity, s_nobody);
}

void ElementLife::Unloosen(DOMElement& element) noexcept
{
    ElementIdentity* identity = Identity(element);
    if (identity == nullptr)
        return;
    if (DOM* dom = identity->looseIn) {
        const ScopedLock lock(dom->m_lock);
        Unlink(*identity, dom->m_firstLoose);
    }
    ForgetFormerParent(*identity);
}

void ElementLife::DetachAllLoose(DOM& dom) noexcept
{
    while (ElementIdentity* identity = dom.m_firstLoose) {
        Unlink(*identity, dom.m_firstLoose);
        SetDocument(*identity->element.load(std::memory_order_acquire), nullptr);
    }
}

void ElementLife::Forget(DOMElement& element) noexcept
{
    ElementIdentity* identity = Identity(element);
    if (identity == nullptr)
        return;
    Unloosen(element);
    identity->element.store(nullptr, std::memory_order_release);
    identity->Release();
}
