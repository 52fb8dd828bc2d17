#pragma once

#include "writing/XMLFormatterAssertions.h"

#include <kescorexml/DOMElement.h>

#include <cstddef>

/// The children that an element has at one moment, handed out one by one while operations that a
/// caller has replaced run in between. What these add behind the children is left out; any other
/// change of the list is a logic assertion.
template <typename List>
class ChildrenInTurn
{
public:
    explicit ChildrenInTurn(const List& list) : ChildrenInTurn(list, list.size()) {}
    /// The first `count` of them. The list must outlive this object.
    ChildrenInTurn(const List& list, std::size_t count) : m_list(list), m_count(count)
    {
        if (m_count > m_list.size())
            ThrowChildrenChanged();
        m_last = m_count == 0 ? nullptr : m_list.begin()[m_count - 1].get();
    }

    /// Null behind the last.
    const DOMElement* Next()
    {
        if (m_next == m_count)
            return nullptr;
        // What is put in or taken out before the last child moves that one.
        if (m_count > m_list.size() || m_list.begin()[m_count - 1].get() != m_last)
            ThrowChildrenChanged();
        return m_list.begin()[m_next++].get();
    }

private:
    const List& m_list;
    std::size_t m_count;
    std::size_t m_next = 0;
    const DOMElement* m_last;
};
