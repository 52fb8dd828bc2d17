// Insertion, removal and moving of children.

#include <kescorexml/DOMElement.h>

#include "tree/ElementLife.h"
#include "tree/ParsedElements.h"
#include "tree/StaleLinks.h"
#include "tree/TreeAssertions.h"

#include <kescorexml/DOM.h>
#include <kesplatform/TLog.h>

#include <algorithm>
#include <utility>

namespace {

/// An insertion is under way, which a message that there is no memory for must not stop.
void LogMissingInsertionPoint() noexcept
{
    try {
        const CorvinaError error(0xD78DE10E, u"LogSite_MissingDomElement_0xD78DE10E");
        LogMessage(TLog::Warning,
                   TString(u"DOMElement was asked to insert before a non-existent child."),
                   TError::ErrorInfo(error, 2, 2));
    } catch (...) {
    }
}

/// What FindStaleLinkTo says before `child` is put below `parent`. Most children are new, and
/// nothing leads up to these.
DOMElement* FindStaleLink(DOMElement& parent, const DOMElement& child)
{
    if (&child != &parent && !child.HasChildren() && !ElementLife::IsRemembered(child))
        return nullptr;
    return FindStaleLinkTo(parent, [&child](const DOMElement& e) { return &e == &child; });
}

/// How many times this thread has put children somewhere: tells whether a log sink has.
thread_local std::size_t s_insertions = 0;

} // namespace

/// The steps of an insertion.
class ElementInsertion
{
public:
    /// Puts elements of the document of `parent` that are in no list in front of `index`. REQUIRES:
    /// room for them.
    static void PutIn(DOMElement& parent, std::size_t index, ElementList::value_type* children,
                      std::size_t count) noexcept
    {
        ++s_insertions;
        for (std::size_t i = 0; i < count; ++i)
            children[i]->m_parent = &parent;
        parent.m_children.Insert(index, children, count);
    }

    /// Attaches an element that is about to be put below `parent` to the same document, to which
    /// its diagnostics move.
    static void Attach(DOMElement& parent, DOMElement& element)
    {
        DOM* dom = parent.m_dom;
        if (element.m_dom == dom)
            return;
        if (dom != nullptr)
            dom->AdoptSubtree(element, DOM::TopAndDescendants);
        ElementLife::SetDocument(element, dom);
    }

    /// Undoes that for an insertion that then was not made.
    static void ReturnTo(DOM* dom, DOMElement& element) noexcept
    {
        if (element.m_dom == dom)
            return;
        try {
            if (dom != nullptr)
                dom->AdoptSubtree(element, DOM::TopAndDescendants);
        } catch (...) {
            // The tree counts for more than its messages, which stay where they are.
        }
        ElementLife::SetDocument(element, dom);
    }

    /// Inserts the elements of `moving`, which were children of `from` and are attached like
    /// `parent`, as InsertChild would one by one. `next` is the first that is not inserted yet.
    static void OneByOne(DOMElement& parent, DOMElement& from, ElementList& moving,
                         std::size_t& next, const DOMElement* before);
    /// Makes those of `moving` from `next` on, which were not inserted elsewhere, children of
    /// `from` again.
    static void TakeBack(DOMElement& from, ElementList& moving, std::size_t next) noexcept;
};

DOMElement* DOMElement::InsertChild(std::unique_ptr<DOMElement>&& child, const DOMElement* before)
{
    if (child == nullptr)
        TreeAssertions::ThrowNoElement();
    DOMElement* stale = FindStaleLink(*this, *child);
    m_children.ReserveMore(1);
    ElementInsertion::Attach(*this, *child);
    std::size_t index = before == nullptr ? m_children.size() : IndexOf(*before);
    if (before != nullptr && index == m_children.size()) {
        LogMissingInsertionPoint();
        // A log sink may do anything, so nothing that was found out before is relied on.
        try {
            stale = FindStaleLink(*this, *child);
            m_children.ReserveMore(1);
            ElementInsertion::Attach(*this, *child);
        } catch (...) {
            ElementInsertion::ReturnTo(ElementLife::LooseIn(*child), *child);
            throw;
        }
        index = m_children.size();
    }
    // From here on nothing throws, and nobody else is called.
    if (stale != nullptr)
        ElementLife::NameNoParent(*stale);
    ElementLife::Unloosen(*child);
    DOMElement* inserted = child.get();
    ElementInsertion::PutIn(*this, index, &child, 1);
    return inserted;
}

DOMElement* DOMElement::AppendChild(std::unique_ptr<DOMElement>&& child)
{
    return InsertChild(std::move(child), nullptr);
}

DOMElement* ParsedElements::AppendNew(ListPieces& pieces, DOMElement& parent,
                                      std::unique_ptr<DOMElement> element)
{
    parent.m_children.ReserveNext(pieces);
    // Nothing leads up to it, and it has no messages that could move.
    element->m_dom = parent.m_dom;
    DOMElement* const appended = element.get();
    ElementInsertion::PutIn(parent, parent.m_children.size(), &element, 1);
    return appended;
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
        TreeAssertions::ThrowNoChild();
    ElementLife::MakeIdentity(*this);
    ElementLife::MakeIdentity(child);
    std::unique_ptr<DOMElement> removed = m_children.Take(index);
    ElementLife::MarkRemoved(*removed, *this);
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
    ElementLife::MakeIdentity(*this);
    for (const auto& child : m_children)
        ElementLife::MakeIdentity(*child);

    ElementList children;
    children.Swap(m_children);
    for (auto& child : children) {
        ElementLife::MarkRemoved(*child, *this);
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
        TreeAssertions::ThrowNoParentToMoveFrom();
    const std::size_t index = parent->IndexOf(*this);
    std::unique_ptr<DOMElement> self = parent->RemoveChild(*this);
    try {
        newParent.InsertChild(std::move(self), before);
    } catch (...) {
        // There is room, unless a log sink has filled it meanwhile.
        parent->m_children.ReserveMore(1);
        ElementLife::Unloosen(*self);
        ElementInsertion::PutIn(*parent, std::min(index, parent->m_children.size()), &self, 1);
        throw;
    }
}

void DOMElement::Adopt(DOMElement& child, const DOMElement* before)
{
    if (child.GetParent() == nullptr)
        TreeAssertions::ThrowNoParentToAdoptFrom();
    if (&child != this && child.m_parent != this)
        child.Move(*this, before);
}

void DOMElement::AdoptChildren(DOMElement& from, const DOMElement* before)
{
    const std::size_t count = from.m_children.size();
    if (&from == this || count == 0)
        return;
    DOMElement* stale = FindStaleLinkTo(*this, [&from](const DOMElement& element) {
        return element.m_parent == &from && !ElementLife::IsRemoved(element);
    });
    m_children.ReserveMore(count);
    if (from.m_dom != m_dom) {
        if (m_dom != nullptr)
            m_dom->AdoptSubtree(from, DOM::DescendantsOnly);
        for (const auto& child : from.m_children)
            ElementLife::SetDocument(*child, m_dom);
    }
    // From here on nothing throws but for what a log sink does.
    if (stale != nullptr)
        ElementLife::NameNoParent(*stale);
    ElementList moving;
    moving.Swap(from.m_children);
    std::size_t next = 0;
    try {
        ElementInsertion::OneByOne(*this, from, moving, next, before);
    } catch (...) {
        ElementInsertion::TakeBack(from, moving, next);
        throw;
    }
    while (!moving.empty())
        moving.PopBack();
}

void ElementInsertion::OneByOne(DOMElement& parent, DOMElement& from, ElementList& moving,
                                std::size_t& next, const DOMElement* before)
{
    ElementList& children = parent.m_children;
    const std::size_t count = moving.size();
    const auto isMoving = [&](const DOMElement& element) {
        return element.m_parent == &from &&
               std::any_of(moving.begin() + next, moving.end(),
                           [&element](const auto& child) { return child.get() == &element; });
    };
    while (next < count) {
        const std::size_t index = before == nullptr ? children.size() : parent.IndexOf(*before);
        if (before == nullptr || index < children.size()) {
            PutIn(parent, index, moving.begin() + next, count - next);
            next = count;
            return;
        }
        // Each of them looks for the insertion point, and those that miss it report that. It is
        // found by those behind it when it is one of them, and when a log sink puts it here.
        bool isMissing = true;
        do {
            const std::size_t insertions = s_insertions;
            LogMissingInsertionPoint();
            children.ReserveMore(count - next);
            if (s_insertions != insertions) {
                isMissing = false;
                for (std::size_t i = next; i < count && moving[i]->m_dom != parent.m_dom; ++i)
                    Attach(parent, *moving[i]);
                if (DOMElement* stale = FindStaleLinkTo(parent, isMoving))
                    ElementLife::NameNoParent(*stale);
            }
            isMissing = isMissing && moving[next].get() != before;
            PutIn(parent, children.size(), moving.begin() + next, 1);
            ++next;
        } while (isMissing && next < count);
    }
}

void ElementInsertion::TakeBack(DOMElement& from, ElementList& moving, std::size_t next) noexcept
{
    std::move(moving.begin() + next, moving.end(), moving.begin());
    for (std::size_t inserted = 0; inserted < next; ++inserted)
        moving.PopBack();
    for (const auto& child : moving)
        ReturnTo(from.m_dom, *child);
    // What a log sink has put in meanwhile, which is nothing as a rule, goes to the end.
    moving.Swap(from.m_children);
    from.m_children.ReserveMore(moving.size());
    from.m_children.Insert(from.m_children.size(), moving.begin(), moving.size());
    while (!moving.empty())
        moving.PopBack();
}

void DOMElement::MoveToFront()
{
    DOMElement* parent = GetParent();
    if (parent == nullptr)
        TreeAssertions::ThrowNoParent();
    // Whether this element is the first one itself is not looked at: it then is no child any more
    // when it is searched for as the insertion point, and ends up last.
    if (parent->m_children.size() >= 2)
        Move(*parent, parent->m_children[0].get());
}
