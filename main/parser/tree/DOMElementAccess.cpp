#include "tree/DOMElementAccess.h"

#include "slabs/AttributeBlock.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

ElementIdentity& DOMElementAccess::MakeIdentity(const DOMElement& element)
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

const DOMElement* DOMElementAccess::Parent(const DOMElement& element) noexcept
{
    if (const ElementIdentity* identity = Identity(element);
        identity != nullptr && identity->formerParent != nullptr)
        return identity->formerParent->element.load(std::memory_order_acquire);
    return element.m_parent;
}

bool DOMElementAccess::IsRemoved(const DOMElement& element) noexcept
{
    const ElementIdentity* identity = Identity(element);
    return identity != nullptr && identity->formerParent != nullptr;
}

bool DOMElementAccess::IsRemembered(const DOMElement& element) noexcept
{
    const ElementIdentity* identity = Identity(element);
    return identity != nullptr && identity->references.load(std::memory_order_relaxed) > 1;
}

void DOMElementAccess::SetDocument(DOMElement& element, DOM* dom) noexcept
{
    // On the way through the subtree, the document pointer of each element that is still being
    // visited serves as the index of its next child; so the walk needs no memory of its own.
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

void DOMElementAccess::LinkLoose(const DOMElement& element) noexcept
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

void DOMElementAccess::Unloosen(DOMElement& element) noexcept
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

void DOMElementAccess::MarkRemoved(DOMElement& child, DOMElement& parent) noexcept
{
    SetFormerParent(*Identity(child), *Identity(parent));
    if (child.m_dom != nullptr)
        LinkLoose(child);
}

void DOMElementAccess::NameNoParent(DOMElement& element) noexcept
{
    // The identity of an element that has always been gone. It keeps its first reference.
    static constinit ElementIdentity s_nobody(nullptr);

    ElementIdentity& identity = *Identity(element);
    ForgetFormerParent(identity);
    SetFormerParent(identity, s_nobody);
}

void DOMElementAccess::DetachAllLoose(DOM& dom) noexcept
{
    while (ElementIdentity* identity = dom.m_firstLoose) {
        Unlink(*identity, dom.m_firstLoose);
        SetDocument(*identity->element.load(std::memory_order_acquire), nullptr);
    }
}

void DOMElementAccess::ForgetElement(DOMElement& element) noexcept
{
    ElementIdentity* identity = Identity(element);
    if (identity == nullptr)
        return;
    Unloosen(element);
    identity->element.store(nullptr, std::memory_order_release);
    identity->Release();
}

void DOMElementAccess::DestroyLeaf(std::unique_ptr<DOMElement> element,
                                   SlabReferences& references) noexcept
{
    if (element == nullptr || element->m_slabOffset == 0)
        return;
    DOMElement* leaf = element.release();
    ParseSlab& slab = ParseSlab::At(leaf, leaf->m_slabOffset);
    references.Add(TStringBlock::TakeReference(leaf->m_name));
    references.Add(TStringBlock::TakeReference(leaf->m_text));
    if (const AttributeBlock* block = leaf->m_attributes.TakeBlock())
        references.Add(&block->GetSlab());
    references.Add(leaf->m_children.TakeSlab());
    if (leaf->m_parent == nullptr || Identity(*leaf) != nullptr) {
        leaf->~DOMElement();
    } else {
        // All that the destructor has left to do for an element that nobody remembers.
        std::destroy_at(&leaf->m_name);
        std::destroy_at(&leaf->m_text);
        std::destroy_at(&leaf->m_attributes);
        if (leaf->m_children.HasMemory())
            std::destroy_at(&leaf->m_children);
    }
    references.Add(&slab);
}

void DOMElementAccess::AttachChildren(ParseArena& arena, DOMElement& parent,
                                      std::span<std::unique_ptr<DOMElement>> children)
{
    for (const auto& child : children)
        child->m_parent = &parent;
    parent.m_children.FillIn(arena, children.data(), children.size());
}

std::unique_ptr<DOMElement> DOMElementAccess::NewParsedElement(ParseArena& arena, TString name,
                                                               AttributeStorage&& attributes,
                                                               DOM* dom, DOMElement& parent)
{
    ParseSlab* slab = nullptr;
    std::byte* memory = arena.Allocate(sizeof(DOMElement), slab);
    std::unique_ptr<DOMElement> element(::new (memory) DOMElement(std::move(name)));
    element->m_slabOffset = slab->OffsetOf(memory);
    element->m_attributes.Take(std::move(attributes));
    element->m_dom = dom;
    element->m_parent = &parent;
    return element;
}

void DOMElementAccess::AppendText(DOMElement& element, ArenaText& text)
{
    if (element.m_text.IsEmpty()) {
        element.m_text = text.Take();
    } else {
        element.m_text.append(text.View());
        text.Drop();
    }
    element.m_encoded = false;
}
