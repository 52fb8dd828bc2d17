#pragma once

#include "tree/ElementLife.h"
#include "tree/RegistryEntries.h"
#include "tree/TreeWalk.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/detail/Diagnostics.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <unordered_set>

// What a registry of errors or of warnings holds for a subtree. The caller holds the lock of the
// document whose registry it is.

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

/// Whether an entry that qualifies belongs to the subtree of `top`, which has a parent. Goes down
/// through the subtree and up from the entries in turns, step by step: whichever has an end first
/// gives the answer. On the way down there are no elements that were removed from there, which
/// belong to the subtree as their entries tell; so that way is left where there are some.
template <typename Message, typename Qualifies>
bool AnyBelow(const DiagnosticsRegistry<Message>& registry, const DOMElement& top,
              Qualifies&& qualifies)
{
    TreeWalk<const DOMElement> walk;
    const DOMElement* next = &top;
    bool isWalking = true;
    const auto stepDown = [&]() -> std::optional<bool> {
        if (!isWalking)
            return std::nullopt;
        if (next == nullptr)
            return false;
        const DOMElement& element = *next;
        walk.Enter(element);
        next = walk.Next();
        isWalking = !ElementLife::HasRemovedChildren(element);
        const auto own = FindEntry(registry, element);
        if (own != registry.end() && qualifies(own->second.messages))
            return true;
        return std::nullopt;
    };
    MetElements met;
    for (const auto& [key, entry] : registry) {
        if (const std::optional<bool> answer = stepDown())
            return *answer;
        // One that is gone lies in no subtree.
        const DOMElement* element = entry.identity.Element();
        if (element == nullptr || !qualifies(entry.messages))
            continue;
        while (element != nullptr && element != &top && met.Meet(*element)) {
            element = ElementLife::Parent(*element);
            if (const std::optional<bool> answer = stepDown())
                return *answer;
        }
        if (element == &top)
            return true;
    }
    return false;
}

/// Whether an entry that qualifies belongs to the subtree of `top`; for a `top` without parent,
/// whether there is one at all, of whichever tree and even of an element that is gone.
template <typename Message, typename Qualifies>
bool AnyInSubtree(const DiagnosticsRegistry<Message>& registry, const DOMElement& top,
                  Qualifies&& qualifies)
{
    if (!top.IsRootNode())
        return AnyBelow(registry, top, qualifies);
    return std::any_of(registry.begin(), registry.end(),
                       [&](const auto& entry) { return qualifies(entry.second.messages); });
}

/// The same for a message that matches.
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

/// Erases the entries of the subtree of `top`; all there are when that has no parent.
template <typename Message>
void ClearSubtree(DiagnosticsRegistry<Message>& registry, const DOMElement& top)
{
    if (top.IsRootNode())
        registry.clear();
    if (registry.empty())
        return;
    DOMElementTraversal::ConstPreorderGenerator elements(top);
    while (const DOMElement* element = elements.Next())
        EraseEntry(registry, *element);
}
