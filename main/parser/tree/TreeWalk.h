#pragma once

#include "tree/DOMElementAccess.h"

#include <kescorexml/DOMElement.h>

#include <cstddef>
#include <utility>
#include <vector>

/// Nothing recurses on the depth of a tree: use this. Walks down through the children of whichever
/// elements it is told to enter, in document order:
///
///     TreeWalk<const DOMElement> walk;
///     walk.Enter(top);
///     while (const DOMElement* element = walk.Next()) {
///         ... // parents come before their children
///         walk.Enter(*element);
///     }
///
/// T is DOMElement or const DOMElement. The lists of children that a walk is in must not change.
template <typename T>
class TreeWalk
{
public:
    /// The children of `element` come next, and then what was left before.
    void Enter(T& element)
    {
        const ElementList& children = DOMElementAccess::Children(std::as_const(element));
        if (!children.empty())
            m_open.push_back({children.begin(), children.end()});
    }

    /// The next child, or null when all that were entered have none left.
    T* Next()
    {
        while (!m_open.empty()) {
            Level& level = m_open.back();
            if (level.next != level.end)
                return (level.next++)->get();
            m_open.pop_back();
        }
        return nullptr;
    }

    /// How many of the elements that were entered lie above the one that Next() gave last.
    std::size_t Depth() const noexcept { return m_open.size(); }

private:
    struct Level
    {
        ElementList::const_iterator next;
        ElementList::const_iterator end;
    };

    std::vector<Level> m_open;
};
