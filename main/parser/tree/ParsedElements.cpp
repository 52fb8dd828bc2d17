#include "tree/ParsedElements.h"

#include "slabs/AttributeBlock.h"
#include "tree/ElementLife.h"

#include <kesplatform/detail/TStringBlock.h>

#include <cstddef>
#include <new>
#include <utility>

std::unique_ptr<DOMElement> ParsedElements::New(ParseArena& arena, TString name,
                                                AttributeStorage&& attributes)
{
    ParseSlab* slab = nullptr;
    std::byte* memory = arena.Allocate(sizeof(DOMElement), slab);
    std::unique_ptr<DOMElement> element(::new (memory) DOMElement(std::move(name)));
    element->m_slabOffset = slab->OffsetOf(memory);
    element->m_attributes.Take(std::move(attributes));
    return element;
}

std::unique_ptr<DOMElement> ParsedElements::New(ParseArena& arena, TString name,
                                                AttributeStorage&& attributes, DOM* dom,
                                                DOMElement& parent)
{
    std::unique_ptr<DOMElement> element = New(arena, std::move(name), std::move(attributes));
    element->m_dom = dom;
    element->m_parent = &parent;
    return element;
}

void ParsedElements::AttachChildren(ParseArena& arena, DOMElement& parent,
                                    std::span<std::unique_ptr<DOMElement>> children)
{
    for (const auto& child : children)
        child->m_parent = &parent;
    parent.m_children.FillIn(arena, children.data(), children.size());
}

void ParsedElements::AppendText(DOMElement& element, ArenaText& text)
{
    if (element.m_text.IsEmpty()) {
        element.m_text = text.Take();
    } else {
        element.m_text.append(text.View());
        text.Drop();
    }
    element.m_encoded = false;
}

void ParsedElements::DestroyLeaf(std::unique_ptr<DOMElement> element,
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
    if (leaf->m_parent == nullptr || ElementLife::Identity(*leaf) != nullptr) {
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
