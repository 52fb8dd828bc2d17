#pragma once

#include <kescorexml/detail/ElementIdentity.h>

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

/// Messages in order, growing at both ends in amortised constant time. Const operations may run
/// side by side.
template <typename Message>
class MessageSequence
{
public:
    bool IsEmpty() const noexcept { return m_prefixed.empty() && m_pushed.empty(); }
    void PushBack(Message&& message) { m_pushed.push_back(std::move(message)); }
    void PushFront(Message&& message) { m_prefixed.push_back(std::move(message)); }

    template <typename Visit>
    void ForEach(Visit&& visit) const
    {
        for (auto i = m_prefixed.rbegin(); i != m_prefixed.rend(); ++i)
            visit(*i);
        for (const Message& message : m_pushed)
            visit(message);
    }

    template <typename Predicate>
    bool AnyOf(Predicate&& predicate) const
    {
        for (const auto* messages : {&m_prefixed, &m_pushed}) {
            for (const Message& message : *messages) {
                if (predicate(message))
                    return true;
            }
        }
        return false;
    }

private:
    /// The last one comes first.
    std::vector<Message> m_prefixed;
    std::vector<Message> m_pushed;
};

/// What a registry holds for one element, which may be gone by now.
template <typename Message>
struct ElementMessages
{
    /// Keeps the key alive.
    ElementIdentityRef identity;
    MessageSequence<Message> messages;
};

/// Messages by element. What an element is known by outlives it, so that its messages never show on
/// another one that has come to live at its address. Const operations may run side by side; the
/// lock of its document guards a registry.
template <typename Message>
using DiagnosticsRegistry = std::unordered_map<const ElementIdentity*, ElementMessages<Message>>;
