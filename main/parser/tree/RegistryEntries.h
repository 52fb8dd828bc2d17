#pragma once

#include "tree/ElementLife.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/detail/Diagnostics.h>

#include <utility>

// The entries of the registries of errors and of warnings, which are alike. The caller holds the
// lock of the document whose registry it is.

/// The entry of an element, or the end.
template <typename Registry>
auto FindEntry(Registry& registry, const DOMElement& element)
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
    const auto [entry, isNew] = registry.try_emplace(
        &identity, DiagnosticsEntry<Message>{ElementIdentityRef(identity), {}});
    return entry->second.messages;
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
            registry.erase(FindEntry(registry, element));
        throw;
    }
}

template <typename Message>
void EraseEntry(DiagnosticsRegistry<Message>& registry, const DOMElement& element) noexcept
{
    if (const ElementIdentity* identity = ElementLife::Identity(element))
        registry.erase(identity);
}

/// What is about to go into a registry, under the keys it will have there.
template <typename Message>
using Pending = DiagnosticsRegistry<Message>;

/// Copies the entry of `node`, if it has one, for `key`, unless that has one waiting already.
template <typename Message>
void AddCopy(Pending<Message>& pending, const DiagnosticsRegistry<Message>& from,
             const DOMElement& node, const DOMElement& key)
{
    const auto entry = FindEntry(from, node);
    if (entry == from.end())
        return;
    ElementIdentity& identity = ElementLife::MakeIdentity(key);
    pending.try_emplace(
        &identity, DiagnosticsEntry<Message>{ElementIdentityRef(identity), entry->second.messages});
}

/// What Merge needs so as not to fail.
template <typename Message>
void MakeRoomFor(DiagnosticsRegistry<Message>& registry, const Pending<Message>& pending)
{
    registry.reserve(registry.size() + pending.size());
}

/// Moves everything pending into the registry; entries that are there stay as they are.
template <typename Message>
void Merge(DiagnosticsRegistry<Message>& registry, Pending<Message>& pending) noexcept
{
    registry.merge(pending);
}
