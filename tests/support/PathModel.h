#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>

#include <unordered_set>
#include <vector>

/// The rules of the walk, written down as plainly as possible: a set of positions for each level,
/// shared by all siblings, and recursion.
class PathModel
{
public:
    PathModel(const DOMElement& start, const TString& path) : m_tokens(path.split(u'/'))
    {
        if (m_tokens.back().IsEmpty())
            return;
        std::unordered_set<int> positions{0};
        const DOMElement* first = &start;
        if (path[0] == u'/') {
            positions = {1};
            if (path[1] != u'/')
                first = start.GetDOMManager() ? start.GetDOMManager()->GetDocumentRoot() : nullptr;
        }
        if (first != nullptr)
            Visit(*first, positions);
    }

    const std::vector<const DOMElement*>& Matches() const { return m_matches; }

private:
    void Visit(const DOMElement& element, std::unordered_set<int>& positions)
    {
        const std::unordered_set<int> before = positions;
        for (const int i : before) {
            if (Token(i).IsEmpty())
                positions.insert(i + 1);
        }
        std::unordered_set<int> carried;
        for (const int i : positions) {
            if (Token(i).IsEmpty())
                carried.insert(i);
            else if (Token(i) == u"*" || Token(i) == element.GetName())
                carried.insert(i + 1);
        }
        if (carried.erase(static_cast<int>(m_tokens.size())) > 0)
            m_matches.push_back(&element);
        if (carried.empty())
            return;
        for (const auto& child : element.GetChildren())
            Visit(*child, carried);
    }

    const TString& Token(int i) const { return m_tokens.at(static_cast<std::size_t>(i)); }

    std::vector<TString> m_tokens;
    std::vector<const DOMElement*> m_matches;
};
