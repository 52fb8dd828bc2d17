// The registries of errors and warnings of a document.

#include <kescorexml/DOM.h>

#include "tree/DOMElementAccess.h"
#include "tree/LockedPair.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementTraversal.h>

#include <algorithm>
#include <optional>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using ErrorMessage = DOM::DOMErrorMessage;
using WarningMessage = DOM::DOMWarningMessage;

/// The entry of an element, or the end. An element that nobody remembers has none, and an entry
/// that was made for an earlier element at the same address is not its own.
template <typename Registry>
auto FindEntry(Registry& registry, const DOMElement& element)
{
    const ElementIdentity* identity = DOMElementAccess::Identity(element);
    if (identity == nullptr)
        return registry.end();
    const auto found = registry.find(&element);
    return found != registry.end() && found->second.identity.Is(identity) ? found : registry.end();
}

/// The messages of an element, an empty sequence made for it when it has none.
template <typename Message>
MessageSequence<Message>& GetListOrDefaultForNode(const DOMElement& element,
                                                  DiagnosticsRegistry<Message>& registry)
{
    ElementIdentity& identity = DOMElementAccess::MakeIdentity(element);
    const auto [entry, isNew] =
        registry.try_emplace(&element, DiagnosticsEntry<Message>{ElementIdentityRef(identity), {}});
    if (!isNew && !entry->second.identity.Is(&identity))
        entry->second = {ElementIdentityRef(identity), {}};
    return entry->second.messages;
}

template <typename Message>
void Record(DiagnosticsRegistry<Message>& registry, const DOMElement& element, Message&& message,
            bool first)
{
    MessageSequence<Message>& messages = GetListOrDefaultForNode(element, registry);
    try {
        if (first)
            messages.PushFront(std::move(message));
        else
            messages.PushBack(std::move(message));
    } catch (...) {
        if (messages.IsEmpty())
            registry.erase(&element);
        throw;
    }
}

/// Elements that were met on the ways up from others, so that nobody goes the same way twice.
class MetElements
{
public:
    /// Whether it is met for the first time, as far as is known.
    bool Meet(const DOMElement& element)
    {
        // A few steps cost less than remembering them.
        return ++m_steps <= c_freeSteps || m_elements.insert(&element).second;
    }

private:
    static constexpr std::size_t c_freeSteps = 1024;

    std::size_t m_steps = 0;
    std::unordered_set<const DOMElement*> m_elements;
};

/// Walks over a subtree, parents before their children. A step takes the same time whatever the
/// number of children.
class SubtreeWalk
{
public:
    explicit SubtreeWalk(const DOMElement& top) : m_top(top) {}

    /// The next element, or null behind the last.
    const DOMElement* Next()
    {
        if (!m_hasBegun) {
            m_hasBegun = true;
            return Enter(m_top);
        }
        while (!m_open.empty()) {
            auto& [element, nextChild] = m_open.back();
            const ElementList& children = DOMElementAccess::Children(*element);
            if (nextChild < children.size())
                return Enter(*children[nextChild++]);
            m_open.pop_back();
        }
        return nullptr;
    }

private:
    const DOMElement* Enter(const DOMElement& element)
    {
        if (!DOMElementAccess::Children(element).empty())
            m_open.emplace_back(&element, 0);
        return &element;
    }

    const DOMElement& m_top;
    bool m_hasBegun = false;
    std::vector<std::pair<const DOMElement*, std::size_t>> m_open;
};

/// Whether an element that was removed from this one still names it as its parent.
bool HasRemovedChildren(const DOMElement& element)
{
    const ElementIdentity* identity = DOMElementAccess::Identity(element);
    return identity != nullptr && identity->removedChildren.load(std::memory_order_relaxed) > 0;
}

/// Whether an entry that qualifies belongs to the subtree of `top`, which has a parent. Goes down
/// through the subtree and up from the entries in turns, step by step: whichever has an end first
/// gives the answer. On the way down there are no elements that were removed from there, which
/// belong to the subtree as their entries tell; so that way is left where there are some.
template <typename Message, typename Qualifies>
bool AnyBelow(const DiagnosticsRegistry<Message>& registry, const DOMElement& top,
              Qualifies&& qualifies)
{
    SubtreeWalk walk(top);
    bool isWalking = true;
    const auto stepDown = [&]() -> std::optional<bool> {
        if (!isWalking)
            return std::nullopt;
        const DOMElement* element = walk.Next();
        if (element == nullptr)
            return false;
        isWalking = !HasRemovedChildren(*element);
        const auto own = FindEntry(registry, *element);
        if (own != registry.end() && qualifies(own->second.messages))
            return true;
        return std::nullopt;
    };
    MetElements met;
    for (const auto& [key, entry] : registry) {
        if (const std::optional<bool> answer = stepDown())
            return *answer;
        const DOMElement* element = entry.identity.Element();
        if (element == nullptr || !qualifies(entry.messages))
            continue;
        while (element != nullptr && element != &top && met.Meet(*element)) {
            element = DOMElementAccess::Parent(*element);
            if (const std::optional<bool> answer = stepDown())
                return *answer;
        }
        if (element == &top)
            return true;
    }
    return false;
}

/// Whether an entry that qualifies belongs to the subtree of `top`; for a `top` without parent,
/// whether there is one at all.
template <typename Message, typename Qualifies>
bool AnyInSubtree(const DiagnosticsRegistry<Message>& registry, const DOMElement& top,
                  Qualifies&& qualifies)
{
    if (!top.IsRootNode())
        return AnyBelow(registry, top, qualifies);
    return std::any_of(registry.begin(), registry.end(), [&](const auto& entry) {
        return entry.second.identity.Element() != nullptr && qualifies(entry.second.messages);
    });
}

template <typename Message, typename Matches>
bool AnyMessageInSubtree(const DiagnosticsRegistry<Message>& registry, const DOMElement& top,
                         Matches&& matches)
{
    return AnyInSubtree(registry, top, [&](const MessageSequence<Message>& messages) {
        return messages.AnyOf(matches);
    });
}

/// Calls `visit` for each message of the subtree of `top` in the order of every listing.
template <typename Message, typename Visit>
void VisitSubtree(const DiagnosticsRegistry<Message>& registry, const DOMElement& top,
                  Visit&& visit)
{
    if (registry.empty())
        return;
    DOMElementTraversal::ConstPreorderGenerator elements(top);
    while (const DOMElement* element = elements.Next()) {
        const auto entry = FindEntry(registry, *element);
        if (entry != registry.end())
            entry->second.messages.ForEach(visit);
    }
}

template <typename Message, typename Container>
void Collect(const DiagnosticsRegistry<Message>& registry, const DOMElement& top, Container& out)
{
    VisitSubtree(registry, top, [&out](const Message& message) {
        if constexpr (std::is_same_v<typename Container::value_type, TString>)
            out.push_back(message.m_message);
        else
            out.push_back(message.m_info);
    });
}

TString Join(const std::vector<TString>& messages)
{
    TString joined;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        if (i > 0)
            joined.append(u'\n');
        joined.append(messages[i]);
    }
    return joined;
}

template <typename Message>
void ClearSubtree(DiagnosticsRegistry<Message>& registry, const DOMElement& top)
{
    if (top.IsRootNode())
        registry.clear();
    if (registry.empty())
        return;
    DOMElementTraversal::ConstPreorderGenerator elements(top);
    while (const DOMElement* element = elements.Next()) {
        const auto entry = FindEntry(registry, *element);
        if (entry != registry.end())
            registry.erase(entry);
    }
}

/// What is about to go into a registry, under the keys it will have there.
template <typename Message>
using Pending = DiagnosticsRegistry<Message>;

template <typename Message>
void AddCopy(Pending<Message>& pending, const DiagnosticsRegistry<Message>& from,
             const DOMElement& node, const DOMElement& key)
{
    const auto entry = FindEntry(from, node);
    if (entry != from.end())
        pending.try_emplace(
            &key, DiagnosticsEntry<Message>{ElementIdentityRef(DOMElementAccess::MakeIdentity(key)),
                                            entry->second.messages});
}

/// Moves everything pending into the registry; entries that are there stay as they are.
template <typename Message>
void Merge(DiagnosticsRegistry<Message>& registry, Pending<Message>& pending) noexcept
{
    for (const auto& [key, entry] : pending) {
        const auto old = registry.find(key);
        if (old != registry.end() && old->second.identity.Element() == nullptr)
            registry.erase(old);
    }
    registry.merge(pending);
}

template <typename Message>
void MakeRoomFor(DiagnosticsRegistry<Message>& registry, const Pending<Message>& pending)
{
    registry.reserve(registry.size() + pending.size());
}

} // namespace

// Recording

void DOM::PushError(const DOMElement& element, const TString& message,
                    const TError::ErrorInfo& info, bool reported, bool cancel)
{
    const ScopedLock lock(m_lock);
    Record(m_errors, element, ErrorMessage{message, info, reported, cancel}, false);
}

void DOM::InsertError(const DOMElement& element, const TString& message,
                      const TError::ErrorInfo& info, bool reported)
{
    const ScopedLock lock(m_lock);
    Record(m_errors, element, ErrorMessage{message, info, reported, false}, true);
}

void DOM::PushWarning(const DOMElement& element, const TString& message,
                      const TError::ErrorInfo& info)
{
    const ScopedLock lock(m_lock);
    Record(m_warnings, element, WarningMessage{message, info}, false);
}

void DOM::InsertWarning(const DOMElement& element, const TString& message,
                        const TError::ErrorInfo& info)
{
    const ScopedLock lock(m_lock);
    Record(m_warnings, element, WarningMessage{message, info}, true);
}

// Asking

bool DOM::HasErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyMessageInSubtree(m_errors, element, [](const ErrorMessage&) { return true; });
}

bool DOM::HasErrors() const
{
    return HasErrors(*m_root);
}

bool DOM::HasUnreportedErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyMessageInSubtree(m_errors, element,
                               [](const ErrorMessage& message) { return !message.m_reported; });
}

bool DOM::HasUnreportedErrors() const
{
    return HasUnreportedErrors(*m_root);
}

bool DOM::HasCancelErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyMessageInSubtree(m_errors, element,
                               [](const ErrorMessage& message) { return message.m_cancel; });
}

bool DOM::HasCancelErrors() const
{
    return HasCancelErrors(*m_root);
}

bool DOM::HasOnlyCancelErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return !AnyMessageInSubtree(m_errors, element,
                                [](const ErrorMessage& message) { return !message.m_cancel; });
}

bool DOM::HasOnlyCancelErrors() const
{
    return HasOnlyCancelErrors(*m_root);
}

bool DOM::HasWarnings(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyInSubtree(m_warnings, element,
                        [](const MessageSequence<WarningMessage>&) { return true; });
}

bool DOM::HasWarnings() const
{
    return HasWarnings(*m_root);
}

// Listing

template <typename Container>
void DOM::GetErrors(const DOMElement& element, Container& out) const
{
    Collect(m_errors, element, out);
}

template <typename Container>
void DOM::GetWarnings(const DOMElement& element, Container& out) const
{
    Collect(m_warnings, element, out);
}

void DOM::GetErrors(const DOMElement& element, std::list<TString>& out) const
{
    const ScopedReadLock lock(m_lock);
    GetErrors<std::list<TString>>(element, out);
}

std::list<TString> DOM::GetErrors() const
{
    std::list<TString> messages;
    GetErrors(*m_root, messages);
    return messages;
}

std::list<TError::ErrorInfo> DOM::GetMetadataForErrors() const
{
    const ScopedReadLock lock(m_lock);
    std::list<TError::ErrorInfo> infos;
    GetErrors(*m_root, infos);
    return infos;
}

TString DOM::GetConcatenatedErrors() const
{
    const ScopedReadLock lock(m_lock);
    std::vector<TString> messages;
    GetErrors(*m_root, messages);
    return Join(messages);
}

void DOM::GetWarnings(const DOMElement& element, std::list<TString>& out) const
{
    const ScopedReadLock lock(m_lock);
    GetWarnings<std::list<TString>>(element, out);
}

std::list<TString> DOM::GetWarnings() const
{
    std::list<TString> messages;
    GetWarnings(*m_root, messages);
    return messages;
}

std::list<TError::ErrorInfo> DOM::GetMetadataForWarnings() const
{
    const ScopedReadLock lock(m_lock);
    std::list<TError::ErrorInfo> infos;
    GetWarnings(*m_root, infos);
    return infos;
}

TString DOM::GetConcatenatedWarnings() const
{
    const ScopedReadLock lock(m_lock);
    std::vector<TString> messages;
    GetWarnings(*m_root, messages);
    return Join(messages);
}

// Named in full, for there are overloads of these names that are no templates.
template KESCOREXML_EXPORT void DOM::GetErrors<std::list<TString>>(const DOMElement&,
                                                                   std::list<TString>&) const;
template KESCOREXML_EXPORT void
DOM::GetErrors<std::list<TError::ErrorInfo>>(const DOMElement&,
                                             std::list<TError::ErrorInfo>&) const;
template KESCOREXML_EXPORT void DOM::GetErrors<std::vector<TString>>(const DOMElement&,
                                                                     std::vector<TString>&) const;
template KESCOREXML_EXPORT void DOM::GetWarnings<std::list<TString>>(const DOMElement&,
                                                                     std::list<TString>&) const;
template KESCOREXML_EXPORT void
DOM::GetWarnings<std::list<TError::ErrorInfo>>(const DOMElement&,
                                               std::list<TError::ErrorInfo>&) const;
template KESCOREXML_EXPORT void DOM::GetWarnings<std::vector<TString>>(const DOMElement&,
                                                                       std::vector<TString>&) const;

// Clearing and moving

void DOM::ClearErrors(const DOMElement& element)
{
    const ScopedLock lock(m_lock);
    ClearSubtree(m_errors, element);
}

void DOM::ClearErrors()
{
    ClearErrors(*m_root);
}

void DOM::ClearWarnings(const DOMElement& element)
{
    const ScopedLock lock(m_lock);
    ClearSubtree(m_warnings, element);
}

void DOM::ClearWarnings()
{
    ClearWarnings(*m_root);
}

void DOM::EraseErrorsAndWarningsForNode(const DOMElement& element)
{
    const ScopedLock lock(m_lock);
    m_errors.erase(&element);
    m_warnings.erase(&element);
}

void DOM::ClearAllErrorsAndWarnings()
{
    const ScopedLock lock(m_lock);
    m_errors.clear();
    m_warnings.clear();
}

void DOM::CopyErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target)
{
    const DOM* from = node.GetDOMManager();
    if (from == nullptr)
        return;
    const LockedPair locks(m_lock, from->m_lock);
    CopyForClones(*from, {{&node, target == nullptr ? &node : target}});
}

void DOM::AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target)
{
    // The constness of the node says that the tree stays as it is; its document's diagnostics are
    // what this is about.
    DOM* from = const_cast<DOMElement&>(node).GetDOMManager();
    if (from == nullptr)
        return;
    const LockedPair locks(m_lock, from->m_lock);
    CopyForClones(*from, {{&node, target == nullptr ? &node : target}});
    from->EraseErrorsAndWarningsForNode(node);
}

void DOM::CopyForClones(const DOM& from,
                        const std::vector<std::pair<const DOMElement*, const DOMElement*>>& pairs)
{
    const LockedPair locks(m_lock, from.m_lock);
    Pending<ErrorMessage> errors;
    Pending<WarningMessage> warnings;
    for (const auto& [node, key] : pairs) {
        AddCopy(errors, from.m_errors, *node, *key);
        AddCopy(warnings, from.m_warnings, *node, *key);
    }
    MakeRoomFor(m_errors, errors);
    MakeRoomFor(m_warnings, warnings);
    Merge(m_errors, errors);
    Merge(m_warnings, warnings);
}

void DOM::AdoptSubtree(const DOMElement& top, SubtreeScope scope)
{
    DOM* from = const_cast<DOMElement&>(top).GetDOMManager();
    if (from == nullptr)
        return;
    const DOMElement* oldRoot = from->GetRoot();
    const bool rootToo = scope == TopAndDescendants ? top.m_parent == oldRoot : &top == oldRoot;
    const LockedPair locks(m_lock, from->m_lock);
    if (from->m_errors.empty() && from->m_warnings.empty())
        return;

    std::vector<std::pair<const DOMElement*, const DOMElement*>> nodes;
    DOMElementTraversal::ConstPreorderGenerator elements(top);
    if (scope == DescendantsOnly)
        elements.Next();
    while (const DOMElement* element = elements.Next()) {
        if (DOMElementAccess::Identity(*element) != nullptr)
            nodes.emplace_back(element, element);
    }
    if (rootToo && m_root != nullptr)
        nodes.emplace_back(oldRoot, m_root.get());
    CopyForClones(*from, nodes);
    for (const auto& [node, key] : nodes)
        from->EraseErrorsAndWarningsForNode(*node);
}

void DOM::MoveErrorsAndWarningsTo(DOM& other)
{
    const LockedPair locks(m_lock, other.m_lock);
    if (this == &other) {
        ClearAllErrorsAndWarnings();
        return;
    }
    other.ClearAllErrorsAndWarnings();
    other.m_errors.swap(m_errors);
    other.m_warnings.swap(m_warnings);
}
