#pragma once

#include "tree/ElementLife.h"
#include "tree/RegistryMessages.h"
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

/// Whether messages that qualify belong to the subtree of `top`, which has a parent. Goes down
/// through the subtree and up from the elements of the registry in turns, step by step: whichever
/// has an end first gives the answer. On the way down there are no elements that were removed from
/// there, which belong to the subtree as seen from below; so that way is left where there are some.
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
        const auto own = FindMessages(registry, element);
        if (own != registry.end() && qualifies(own->second.messages))
            return true;
        return std::nullopt;
    };
    MetElements met;
    for (const auto& [key, held] : registry) {
        if (const std::optional<bool> answer = stepDown())
            return *answer;
        // One that is gone lies in no subtree.
        const DOMElement* element = held.identity.Element();
        if (element == nullptr || !qualifies(held.messages))
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

/// Whether messages that qualify belong to the subtree of `top`; for a `top` without parent,
/// whether there are some at all, of whichever tree and even of an element that is gone.
template <typename Message, typename Qualifies>
bool AnyInSubtree(const DiagnosticsRegistry<Message>& registry, const DOMElement& top,
                  Qualifies&& qualifies)
{
    if (!top.IsRootNode())
        return AnyBelow(registry, top, qualifies);
    return std::any_of(registry.begin(), registry.end(),
                       [&](const auto& place) { return qualifies(place.second.messages); });
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
        const auto place = FindMessages(registry, *element);
        if (place != registry.end())
            place->second.messages.ForEach(visit);
    }
}

/// Erases the messages of the subtree of `top`; all there are when that has no parent.
template <typename Message>
void ClearSubtree(DiagnosticsRegistry<Message>& registry, const DOMElement& top)
{
    if (top.IsRootNode())
        registry.clear();
    if (registry.empty())
        return;
    DOMElementTraversal::ConstPreorderGenerator elements(top);
    while (const DOMElement* element = elements.Next())
        EraseMessages(registry, *element);
}
