#pragma once

#include "tree/ElementLife.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/detail/Diagnostics.h>

#include <utility>

// What the registries of errors and of warnings, which are alike, hold for each element. The caller
// holds the lock of the document whose registry it is.

/// The element's place in a registry, or the end.
template <typename Registry>
auto FindMessages(Registry& registry, const DOMElement& element)
{
    const ElementIdentity* identity = ElementLife::Identity(element);
    return identity == nullptr ? registry.end() : registry.find(identity);
}

/// The messages of an element, an empty sequence made for it when it has none.
template <typename Message>
MessageSequence<Message>& GetListOrDefaultForNode(const DOMElement& element,
                                                  DiagnosticsRegistry<Message>& registry)
{
    ElementIdentity& identity = ElementLife::MakeIdentity(element);
    const auto [place, isNew] =
        registry.try_emplace(&identity, ElementMessages<Message>{ElementIdentityRef(identity), {}});
    return place->second.messages;
}

/// Adds a message to those of an element, in front of them or behind.
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
            registry.erase(FindMessages(registry, element));
        throw;
    }
}

/// With the element's place.
template <typename Message>
void EraseMessages(DiagnosticsRegistry<Message>& registry, const DOMElement& element) noexcept
{
    if (const ElementIdentity* identity = ElementLife::Identity(element))
        registry.erase(identity);
}

/// What is about to go into a registry, under the keys it will have there.
template <typename Message>
using Pending = DiagnosticsRegistry<Message>;

/// Copies the messages of `node`, if it has a place, for `key`, unless that has some waiting.
template <typename Message>
void AddCopy(Pending<Message>& pending, const DiagnosticsRegistry<Message>& from,
             const DOMElement& node, const DOMElement& key)
{
    const auto place = FindMessages(from, node);
    if (place == from.end())
        return;
    ElementIdentity& identity = ElementLife::MakeIdentity(key);
    pending.try_emplace(
        &identity, ElementMessages<Message>{ElementIdentityRef(identity), place->second.messages});
}

/// What Merge needs so as not to fail.
template <typename Message>
void MakeRoomFor(DiagnosticsRegistry<Message>& registry, const Pending<Message>& pending)
{
    registry.reserve(registry.size() + pending.size());
}

/// Moves everything pending into the registry; elements that have a place there keep what it holds.
template <typename Message>
void Merge(DiagnosticsRegistry<Message>& registry, Pending<Message>& pending) noexcept
{
    registry.merge(pending);
}
