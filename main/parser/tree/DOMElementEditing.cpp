// Insertion, removal and moving of children.

#include <kescorexml/DOMElement.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "tree/DOMElementAccess.h"

#include <kescorexml/DOM.h>
#include <kesplatform/TLog.h>

#include <algorithm>
#include <utility>

namespace {

void LogMissingInsertionPoint()
{
    LogMessage(
        TLog::Warning, TString(u"DOMElement was asked to insert before a non-existent child."),
        TError::ErrorInfo(CorvinaError(0xD78DE10E, u"LogSite_MissingDomElement_0xD78DE10E"), 2, 2));
}

/// Looks at `parent` and all that it names as its parents before elements that `moves` accepts are
/// put below it. Meeting one of these means that it would get into its own subtree. Meeting one
/// beyond an element that was removed from there is fine, but that element must not go on to name
/// its former parent, or the way upwards would lead in a circle: it is returned. Else null.
template <typename Moves>
DOMElement* FindStaleLinkTo(DOMElement& parent, Moves&& moves)
{
    DOMElement* removed = nullptr;
    for (DOMElement* element = &parent; element != nullptr; element = element->GetParent()) {
        if (moves(*element)) {
            if (removed == nullptr)
                ThrowAssertion(u"DOMElement", __LINE__,
                               u"Cannot insert an element into its own subtree.",
                               KesErrorsError::LogicAssert_0x91F3D45A());
            return removed;
        }
        if (DOMElementAccess::IsRemoved(*element))
            removed = element;
    }
    return nullptr;
}

} // namespace

std::size_t DOMElement::FindInsertionIndex(const DOMElement* before) const
{
    if (before == nullptr)
        return m_children.size();
    const std::size_t index = IndexOf(*before);
    if (index == m_children.size())
        LogMissingInsertionPoint();
    return index;
}

DOMElement* DOMElement::InsertChild(std::unique_ptr<DOMElement>&& child, const DOMElement* before)
{
    if (child == nullptr)
        ThrowAssertion(u"DOMElement", __LINE__, u"child != nullptr",
                       KesErrorsError::LogicAssert_0xC4A61D58());
    // Most children are new, and nothing leads up to these.
    DOMElement* stale = nullptr;
    if (child.get() == this || child->HasChildren() || DOMElementAccess::IsRemembered(*child))
        stale = FindStaleLinkTo(
            *this, [&child](const DOMElement& element) { return &element == child.get(); });
    const std::size_t index = FindInsertionIndex(before);
    m_children.ReserveMore(1);
    if (child->m_dom != m_dom) {
        if (m_dom != nullptr)
            m_dom->AdoptSubtree(*child, DOM::TopAndDescendants);
        DOMElementAccess::SetDocument(*child, m_dom);
    }
    // From here on nothing throws.
    if (stale != nullptr)
        DOMElementAccess::NameNoParent(*stale);
    DOMElementAccess::Unloosen(*child);
    child->m_parent = this;
    DOMElement* inserted = child.get();
    m_children.Insert(index, std::move(child));
    return inserted;
}

DOMElement* DOMElement::AppendChild(std::unique_ptr<DOMElement>&& child)
{
    return InsertChild(std::move(child), nullptr);
}

DOMElement* DOMElement::AddNewChild(const TString& name, const DOMElement* before)
{
    return InsertChild(std::make_unique<DOMElement>(name), before);
}

DOMElement* DOMElement::GetOrNewChild(const TString& name)
{
    DOMElement* child = GetChild(name);
    return child != nullptr ? child : AddNewChild(name, nullptr);
}

std::unique_ptr<DOMElement> DOMElement::RemoveChild(DOMElement& child)
{
    const std::size_t index = IndexOf(child);
    if (index == m_children.size())
        ThrowAssertion(u"DOMElement", __LINE__, u"i != m_children.end()",
                       KesErrorsError::LogicAssert_0x5B1D0C37());
    DOMElementAccess::MakeIdentity(*this);
    DOMElementAccess::MakeIdentity(child);
    std::unique_ptr<DOMElement> removed = m_children.Take(index);
    DOMElementAccess::MarkRemoved(*removed, *this);
    return removed;
}

std::unique_ptr<DOMElement> DOMElement::RemoveChild(const TString& name)
{
    DOMElement* child = GetChild(name);
    return child == nullptr ? nullptr : RemoveChild(*child);
}

std::vector<std::unique_ptr<DOMElement>> DOMElement::RemoveChildren()
{
    std::vector<std::unique_ptr<DOMElement>> removed;
    removed.reserve(m_children.size());
    DOMElementAccess::MakeIdentity(*this);
    for (const auto& child : m_children)
        DOMElementAccess::MakeIdentity(*child);

    ElementList children;
    children.Swap(m_children);
    for (auto& child : children) {
        DOMElementAccess::MarkRemoved(*child, *this);
        removed.push_back(std::move(child));
    }
    while (!children.empty())
        children.PopBack();
    return removed;
}

std::unique_ptr<DOMElement> DOMElement::RemoveIfEmpty(DOMElement& child)
{
    return child.IsEmpty() ? RemoveChild(child) : nullptr;
}

std::unique_ptr<DOMElement> DOMElement::RemoveIfEmpty(const TString& name)
{
    DOMElement* child = GetChild(name);
    return child == nullptr ? nullptr : RemoveIfEmpty(*child);
}

void DOMElement::Move(DOMElement& newParent, const DOMElement* before)
{
    DOMElement* parent = GetParent();
    if (parent == nullptr)
        ThrowAssertion(u"DOMElement", __LINE__, u"m_parent != nullptr",
                       KesErrorsError::LogicAssert_0x1F8C60E4());
    const std::size_t index = parent->IndexOf(*this);
    std::unique_ptr<DOMElement> self = parent->RemoveChild(*this);
    try {
        newParent.InsertChild(std::move(self), before);
    } catch (...) {
        DOMElementAccess::Unloosen(*self);
        parent->m_children.Insert(index, std::move(self));
        throw;
    }
}

void DOMElement::Adopt(DOMElement& child, const DOMElement* before)
{
    if (child.GetParent() == nullptr)
        ThrowAssertion(u"DOMElement", __LINE__, u"Cannot adopt a child without an existing parent.",
                       KesErrorsError::LogicAssert_0x7A94E2F1());
    if (&child != this && child.m_parent != this)
        child.Move(*this, before);
}

void DOMElement::AdoptChildren(DOMElement& from, const DOMElement* before)
{
    const std::size_t count = from.m_children.size();
    if (&from == this || count == 0)
        return;
    DOMElement* stale = FindStaleLinkTo(*this, [&from](const DOMElement& element) {
        return element.m_parent == &from && !DOMElementAccess::IsRemoved(element);
    });
    // Each child of its own looks for the insertion point, so each of them reports the miss. One
    // that is among the children itself is found by those behind it.
    const std::size_t index = FindInsertionIndex(before);
    const std::size_t moving = before == nullptr ? count : from.IndexOf(*before);
    if (before != nullptr && index == m_children.size()) {
        for (std::size_t misses = std::min(moving + 1, count); misses > 1; --misses)
            LogMissingInsertionPoint();
    }
    m_children.ReserveMore(count);
    if (from.m_dom != m_dom) {
        if (m_dom != nullptr)
            m_dom->AdoptSubtree(from, DOM::DescendantsOnly);
        for (const auto& child : from.m_children)
            DOMElementAccess::SetDocument(*child, m_dom);
    }
    // From here on nothing throws.
    if (stale != nullptr)
        DOMElementAccess::NameNoParent(*stale);
    ElementList children;
    children.Swap(from.m_children);
    for (const auto& child : children)
        child->m_parent = this;
    m_children.Insert(index, children.begin(), count);
    while (!children.empty())
        children.PopBack();
    if (moving < count) {
        ElementList::Owner* first = m_children.begin() + index;
        std::rotate(first + moving, first + moving + 1, first + count);
    }
}

void DOMElement::MoveToFront()
{
    DOMElement* parent = GetParent();
    if (parent == nullptr)
        ThrowAssertion(u"DOMElement", __LINE__, u"parent",
                       KesErrorsError::LogicAssert_0x2C60B98D());
    // Whether this element is the first one itself is not looked at: it then is no child any more
    // when it is searched for as the insertion point, and ends up last.
    if (parent->m_children.size() >= 2)
        Move(*parent, parent->m_children[0].get());
}
