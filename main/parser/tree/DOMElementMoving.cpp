// Moving what an element holds into another one.

#include <kescorexml/DOMElement.h>

#include "slabs/AttributeBlock.h"
#include "tree/ElementLife.h"
#include "tree/StaleLinks.h"

#include <kescorexml/DOM.h>

#include <utility>

namespace {

/// Whether `element` is `top` or hangs below it, which no former parent makes it.
bool IsInSubtree(const DOMElement& element, const DOMElement& top)
{
    const DOMElement* next = &element;
    while (next != nullptr && next != &top)
        next = ElementLife::IsRemoved(*next) ? nullptr : next->GetParent();
    return next != nullptr;
}

} // namespace

DOMElement::DOMElement(DOMElement&& other) noexcept
    : m_name(other.m_name), m_text(std::move(other.m_text)),
      m_attributes(std::move(other.m_attributes)), m_startLine(std::exchange(other.m_startLine, 0)),
      m_startColumn(std::exchange(other.m_startColumn, 0)),
      m_endLine(std::exchange(other.m_endLine, 0)),
      m_endColumn(std::exchange(other.m_endColumn, 0)),
      m_encoded(std::exchange(other.m_encoded, false))
{
    m_children.Swap(other.m_children);
    for (const auto& child : m_children)
        child->m_parent = this;
    ElementLife::Succeed(*this, other);
}

DOMElement& DOMElement::operator=(DOMElement&& other)
{
    if (this == &other)
        return *this;
    if (IsInSubtree(*this, other))
        return *this = std::as_const(other);
    if (other.m_dom != nullptr && other.m_dom != m_dom) {
        // The messages of all descendants would have to move along, or none.
        *this = std::as_const(other);
        other.m_dom->EraseErrorsAndWarningsForNode(other);
        other.DropContent();
        return *this;
    }
    DOMElement* stale = FindStaleLinkTo(*this, [&other](const DOMElement& element) {
        return element.m_parent == &other && !ElementLife::IsRemoved(element);
    });
    AttributeStorage attributes = m_attributes.PrepareReplacement(other.m_attributes);
    if (m_dom != nullptr)
        m_dom->AdoptErrorsAndWarningsForNode(other, this);

    // From here on nothing throws.
    if (stale != nullptr)
        ElementLife::NameNoParent(*stale);
    m_name = other.m_name;
    m_text = other.m_text;
    m_encoded = false;
    m_attributes.Take(std::move(attributes));
    ElementList children;
    children.Swap(other.m_children);
    other.DropContent();
    // The end of `other`, when it is below this element.
    DestroyChildren();
    m_children.Swap(children);
    for (const auto& child : m_children) {
        child->m_parent = this;
        if (child->m_dom != m_dom)
            ElementLife::SetDocument(*child, m_dom);
    }
    return *this;
}

/// The map stays, to which references lead.
void DOMElement::DropContent() noexcept
{
    m_text = TString();
    m_encoded = false;
    if (AttributeBlock* block = m_attributes.TakeBlock())
        block->Release();
    else if (!m_attributes.IsEmpty())
        m_attributes.Map().clear();
    DestroyChildren();
}
