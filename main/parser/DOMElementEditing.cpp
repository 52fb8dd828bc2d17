// Insertion, removal and moving of children.

#include <kescorexml/DOMElement.h>

#include "Assertion.h"
#include "DOMElementAccess.h"
#include "KesErrors.h"

#include <kescorexml/DOM.h>
#include <kesplatform/TLog.h>

#include <utility>

namespace {

void LogMissingInsertionPoint()
{
    LogMessage(TLog::Warning, TString(u"DOMElement was asked to insert before a non-existent child."),
               TError::ErrorInfo(
                   CorvinaError(0xD78DE10E, u"LogSite_MissingDomElement_0xD78DE10E"), 2, 2));
}

} // namespace

void DOMElement::RequireNotInSubtreeOf(const DOMElement& child) const
{
    if (this == &child || (child.HasChildren() && IsChildOf(child)))
        ThrowAssertion(u"DOMElement", __LINE__,
                       u"Cannot insert an element into its own subtree.",
                       KesErrorsError::LogicAssert_0x91F3D45A());
}

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
    RequireNotInSubtreeOf(*child);
    m_children.ReserveMore(1);
    const std::size_t index = FindInsertionIndex(before);
    if (child->m_dom != m_dom) {
        if (m_dom != nullptr)
            m_dom->AdoptSubtree(*child, DOM::TopAndDescendants);
        DOMElementAccess::SetDocument(*child, m_dom);
    }
    // From here on nothing throws.
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
        ThrowAssertion(u"DOMElement", __LINE__, u"i != m_children.end()",
                       KesErrorsError::LogicAssert_0x5B1D0C37());
    newParent.RequireNotInSubtreeOf(*this);
    newParent.m_children.ReserveMore(1);
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
        ThrowAssertion(u"DOMElement", __LINE__,
                       u"Cannot adopt a child without an existing parent.",
                       KesErrorsError::LogicAssert_0x7A94E2F1());
    if (&child != this && child.m_parent != this)
        child.Move(*this, before);
}

void DOMElement::AdoptChildren(DOMElement& from, const DOMElement* before)
{
    const std::size_t count = from.m_children.size();
    if (&from == this || count == 0)
        return;
    if (IsChildOf(from))
        ThrowAssertion(u"DOMElement", __LINE__,
                       u"Cannot insert an element into its own subtree.",
                       KesErrorsError::LogicAssert_0x91F3D45A());
    m_children.ReserveMore(count);
    const std::size_t index = FindInsertionIndex(before);
    // Each child of its own looks for the insertion point, so each of them reports the miss.
    if (before != nullptr && index == m_children.size()) {
        for (std::size_t i = 1; i < count; ++i)
            LogMissingInsertionPoint();
    }
    if (from.m_dom != m_dom) {
        if (m_dom != nullptr)
            m_dom->AdoptSubtree(from, DOM::DescendantsOnly);
        for (const auto& child : from.m_children)
            DOMElementAccess::SetDocument(*child, m_dom);
    }
    // From here on nothing throws.
    ElementList children;
    children.Swap(from.m_children);
    for (const auto& child : children)
        child->m_parent = this;
    m_children.Insert(index, children.begin(), count);
    while (!children.empty())
        children.PopBack();
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
