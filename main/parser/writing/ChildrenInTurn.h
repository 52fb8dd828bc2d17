#pragma once

#include "writing/XMLFormatterAssertions.h"

#include <kescorexml/DOMElement.h>

#include <cstddef>
#include <vector>

/// The children that an element has at one moment, handed out one by one while operations that a
/// caller has replaced run in between. What these add behind the children is left out; any other
/// change of the list is a logic assertion, at the latest when the turn of a child comes that is no
/// longer in its place.
template <typename List>
class ChildrenInTurn
{
public:
    explicit ChildrenInTurn(const List& list) : ChildrenInTurn(list, list.size()) {}
    /// The first `count` of them. The list must outlive this object.
    ChildrenInTurn(const List& list, std::size_t count) : m_list(list)
    {
        if (count > m_list.size())
            ThrowChildrenChanged();
        m_children.reserve(count);
        for (std::size_t i = 0; i < count; ++i)
            m_children.push_back(m_list.begin()[i].get());
    }

    /// Null behind the last.
    const DOMElement* Next()
    {
        if (m_next == m_children.size())
            return nullptr;
        // What is put in or taken out before the last child moves that one.
        if (m_children.size() > m_list.size() || !IsInPlace(m_children.size() - 1) ||
            !IsInPlace(m_next))
            ThrowChildrenChanged();
        return m_children[m_next++];
    }

private:
    bool IsInPlace(std::size_t index) const
    {
        return m_list.begin()[index].get() == m_children[index];
    }

    const List& m_list;
    std::vector<const DOMElement*> m_children;
    std::size_t m_next = 0;
};
