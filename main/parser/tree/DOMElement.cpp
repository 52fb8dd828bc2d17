#include <kescorexml/DOMElement.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "slabs/SlabReferences.h"
#include "tree/ElementLife.h"
#include "tree/ParsedElements.h"
#include "tree/PrefetchElements.h"
#include "tree/TreeAssertions.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMException.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

[[noreturn]] void ThrowMissing(const TString& what, const CorvinaError& error)
{
    throw DOMException(what, TError::ErrorInfo(error, 1, 2));
}

} // namespace

DOMElement::DOMElement(const TString& name) : m_name(name) {}

DOMElement::DOMElement(TString&& name) : m_name(std::move(name)) {}

DOMElement::~DOMElement()
{
    if (m_dom != nullptr) {
        if (m_parent == nullptr)
            m_dom->ClearAllErrorsAndWarnings();
        else if (m_identity.load(std::memory_order_acquire) != nullptr)
            m_dom->EraseErrorsAndWarningsForNode(*this);
    }
    DestroyChildren();
    ElementLife::Forget(*this);
}

// Not inline: compilers that see through to the global operators take those of this class for ones
// that do not go together.
void* DOMElement::operator new(std::size_t bytes)
{
    return ::operator new(bytes);
}

void* DOMElement::operator new(std::size_t bytes, const std::nothrow_t& nothrow) noexcept
{
    return ::operator new(bytes, nothrow);
}

void DOMElement::operator delete(void* memory) noexcept
{
    ::operator delete(memory);
}

void DOMElement::operator delete(void* memory, const std::nothrow_t&) noexcept
{
    ::operator delete(memory);
}

void DOMElement::operator delete(DOMElement* element, std::destroying_delete_t) noexcept
{
    const std::uint32_t slabOffset = element->m_slabOffset;
    element->~DOMElement();
    if (slabOffset != 0)
        ParseSlab::At(element, slabOffset).Release();
    else
        ::operator delete(static_cast<void*>(element));
}

void DOMElement::DestroyChildren() noexcept
{
    SlabReferences references;
    // No TreeWalk, for that needs memory. Always down to the last leaf, so that what is destroyed
    // has no children of its own.
    DOMElement* element = this;
    for (;;) {
        while (!element->m_children.empty()) {
            PrefetchLastForDestruction(element->m_children);
            DOMElement* last = element->m_children.back().get();
            if (last != nullptr && last->HasChildren()) {
                PrefetchDescendantsForDestruction(*last);
                element = last;
            } else {
                ParsedElements::DestroyLeaf(element->m_children.PopBack(), references);
            }
        }
        if (element == this)
            return;
        element = element->m_parent;
    }
}

// Navigation

const DOMElement* DOMElement::GetParent() const noexcept
{
    return ElementLife::Parent(*this);
}

DOMElement* DOMElement::GetParent() noexcept
{
    return const_cast<DOMElement*>(std::as_const(*this).GetParent());
}

bool DOMElement::IsChildOf(const DOMElement& other) const noexcept
{
    const DOMElement* ancestor = ElementLife::Parent(*this);
    while (ancestor != nullptr && ancestor != &other)
        ancestor = ElementLife::Parent(*ancestor);
    return ancestor != nullptr;
}

const DOMElement* DOMElement::GetChild(const TString& name) const noexcept
{
    for (const auto& child : m_children) {
        if (child->m_name == name)
            return child.get();
    }
    return nullptr;
}

DOMElement* DOMElement::GetChild(const TString& name) noexcept
{
    return const_cast<DOMElement*>(std::as_const(*this).GetChild(name));
}

TString DOMElement::GetChildText(const TString& name) const noexcept
{
    const DOMElement* child = GetChild(name);
    return child == nullptr ? TString() : child->m_text;
}

const DOMElement& DOMElement::GetRequiredChild(const TString& name) const
{
    if (const DOMElement* child = GetChild(name))
        return *child;
    ThrowMissing(name, KesErrorsError::RequiredChildMissing_0x26487BC2());
}

DOMElement& DOMElement::GetRequiredChild(const TString& name)
{
    return const_cast<DOMElement&>(std::as_const(*this).GetRequiredChild(name));
}

const DOMElement& DOMElement::GetRequiredChildByAttr(const TString& attrName,
                                                     const TString& attrValue) const
{
    for (const auto& child : m_children) {
        std::u16string_view value;
        if (child->m_attributes.View(attrName, value) && value == attrValue.view())
            return *child;
    }
    ThrowMissing(attrName, KesErrorsError::RequiredChildByAttribute_0x21039DFE());
}

DOMElement& DOMElement::GetRequiredChildByAttr(const TString& attrName, const TString& attrValue)
{
    return const_cast<DOMElement&>(
        std::as_const(*this).GetRequiredChildByAttr(attrName, attrValue));
}

DOMElement::ChildIterator DOMElement::FindChild(const DOMElement& child) noexcept
{
    return m_children.begin() + IndexOf(child);
}

DOMElement::ConstChildIterator DOMElement::FindChild(const DOMElement& child) const noexcept
{
    return m_children.begin() + IndexOf(child);
}

std::size_t DOMElement::IndexOf(const DOMElement& child) const noexcept
{
    // From both ends at once: children at either end are found, and so removed, without a look at
    // all the others.
    const std::size_t count = m_children.size();
    for (std::size_t i = 0; i < (count + 1) / 2; ++i) {
        if (m_children[i].get() == &child)
            return i;
        if (m_children[count - 1 - i].get() == &child)
            return count - 1 - i;
    }
    return count;
}

// Attributes

void DOMElement::SetAttributes(const AttributeMap& attributes)
{
    m_attributes.Replace(AttributeMap(attributes));
}

void DOMElement::SetAttributes(AttributeMap&& attributes)
{
    m_attributes.Replace(std::move(attributes));
}

bool DOMElement::HasAttribute(const TString& name) const noexcept
{
    std::u16string_view value;
    return m_attributes.View(name, value);
}

DOMElement::AttributeMap::const_iterator DOMElement::RequireAttribute(const TString& name) const
{
    const AttributeMap& attributes = GetAttributes();
    const auto found = attributes.find(name);
    if (found == attributes.end())
        ThrowMissing(name, KesErrorsError::RequiredDOMAttribute_0x3473F8A4());
    return found;
}

void DOMElement::SetAttribute(const TString& name, const TString& value)
{
    m_attributes.Map().insert_or_assign(name, value);
}

void DOMElement::RemoveAttribute(const TString& name)
{
    if (HasAttribute(name))
        m_attributes.Map().erase(name);
}

TString DOMElement::GetParentAttr(const TString& name) const
{
    const DOMElement* element = this;
    while (element != nullptr && !element->HasAttribute(name))
        element = ElementLife::Parent(*element);
    return element == nullptr ? TString() : element->GetAttribute(name);
}

TString GetParentAttrIteratively(DOMElement* start, const TString& name)
{
    return start == nullptr ? TString() : start->GetParentAttr(name);
}

bool DOMElement::StringToBool(const TString& text, bool& out) noexcept
{
    const auto isOneOf = [&text](const std::array<std::u16string_view, 3>& texts) {
        return std::find(texts.begin(), texts.end(), text.view()) != texts.end();
    };
    const bool isTrue = isOneOf({u"true", u"yes", u"1"});
    if (!isTrue && !isOneOf({u"false", u"no", u"0"}))
        return false;
    out = isTrue;
    return true;
}

void DOMElement::AdoptAttribute(DOMElement& from, const TString& name)
{
    if (!from.HasAttribute(name))
        return;
    // Both maps are there before either changes, so that nothing is lost when memory runs out.
    AttributeMap& source = from.m_attributes.Map();
    m_attributes.Map().insert_or_assign(name, source.at(name));
    source.erase(name);
}

void DOMElement::AdoptAttributes(DOMElement& from, bool overwrite)
{
    AttributeMap merged = GetAttributes();
    AttributeMap& source = from.m_attributes.Map();
    for (const auto& [name, value] : source) {
        if (overwrite)
            merged.insert_or_assign(name, value);
        else
            merged.emplace(name, value);
    }
    m_attributes.Replace(std::move(merged));
    source.clear();
}

// Assertions

namespace {

/// An operation that only an attached element can be asked for.
struct AttachedOperation
{
    std::u16string_view name;
    int line;
    CorvinaError (*error)();
};

constexpr AttachedOperation c_attachedOperations[] = {
    {u"ClearErrors", __LINE__, KesErrorsError::LogicAssert_0x5333472D},
    {u"Error", __LINE__, KesErrorsError::LogicAssert_0x680C7D53},
    {u"PrefixError", __LINE__, KesErrorsError::LogicAssert_0x72791866},
    {u"HasErrors", __LINE__, KesErrorsError::LogicAssert_0x7CE5B379},
    {u"HasUnreportedErrors", __LINE__, KesErrorsError::LogicAssert_0x87524E8C},
    {u"HasCancelErrors", __LINE__, KesErrorsError::LogicAssert_0x91BEE99F},
    {u"HasOnlyCancelErrors", __LINE__, KesErrorsError::LogicAssert_0x9C2B84B2},
    {u"GetErrors", __LINE__, KesErrorsError::LogicAssert_0xA6981FC5},
    {u"GetMetadataForErrors", __LINE__, KesErrorsError::LogicAssert_0xB104BAD8},
    {u"ClearWarnings", __LINE__, KesErrorsError::LogicAssert_0x5D9FE240},
    {u"Warning", __LINE__, KesErrorsError::LogicAssert_0xBB7155EB},
    {u"PrefixWarning", __LINE__, KesErrorsError::LogicAssert_0xC5DDF0FE},
    {u"HasWarnings", __LINE__, KesErrorsError::LogicAssert_0xD04A8C11},
    {u"GetWarnings", __LINE__, KesErrorsError::LogicAssert_0xDAB72724},
    {u"GetMetadataForWarnings", __LINE__, KesErrorsError::LogicAssert_0xE523C237},
    {u"AddFieldRename", __LINE__, KesErrorsError::LogicAssert_0x3E5A1107},
    {u"AddCaptionRename", __LINE__, KesErrorsError::LogicAssert_0x48C6AC1A},
};

} // namespace

namespace TreeAssertions {

DOM& RequireDocument(DOM* dom, const char16_t* operation)
{
    if (dom != nullptr)
        return *dom;
    const auto* site = std::find_if(
        std::begin(c_attachedOperations), std::end(c_attachedOperations),
        [operation](const AttachedOperation& candidate) { return candidate.name == operation; });
    ThrowAssertion(u"DOMElement", site->line,
                   TString(u"DOMElement::") + operation +
                       u" can only be called on a DOMElement that is attached to a DOM",
                   site->error());
}

void ThrowNoElement()
{
    ThrowAssertion(u"DOMElement", __LINE__, u"child != nullptr",
                   KesErrorsError::LogicAssert_0xC4A61D58());
}

void ThrowOwnSubtree()
{
    ThrowAssertion(u"DOMElement", __LINE__, u"Cannot insert an element into its own subtree.",
                   KesErrorsError::LogicAssert_0x91F3D45A());
}

void ThrowNoChild()
{
    ThrowAssertion(u"DOMElement", __LINE__, u"i != m_children.end()",
                   KesErrorsError::LogicAssert_0x5B1D0C37());
}

void ThrowNoParent()
{
    ThrowAssertion(u"DOMElement", __LINE__, u"parent", KesErrorsError::LogicAssert_0x2C60B98D());
}

void ThrowNoParentToMoveFrom()
{
    ThrowAssertion(u"DOMElement", __LINE__, u"m_parent != nullptr",
                   KesErrorsError::LogicAssert_0x1F8C60E4());
}

void ThrowNoParentToAdoptFrom()
{
    ThrowAssertion(u"DOMElement", __LINE__, u"Cannot adopt a child without an existing parent.",
                   KesErrorsError::LogicAssert_0x7A94E2F1());
}

} // namespace TreeAssertions
