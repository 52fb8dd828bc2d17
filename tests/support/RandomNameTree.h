#pragma once

#include <kescorexml/DOMElement.h>
#include <kesplatform/TString.h>

#include <initializer_list>
#include <memory>
#include <random>
#include <vector>

/// Makes trees and choices that are the same in every run with the same seed.
class RandomNameTree
{
public:
    explicit RandomNameTree(unsigned seed) : m_random(seed) {}

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    const TString& Pick(const std::vector<TString>& choices)
    {
        return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
    }

    /// A tree of elements with names out of `names`, at most `depth` levels below the top, with at
    /// most `width` children each.
    std::unique_ptr<DOMElement> Make(const std::vector<TString>& names, int depth, int width)
    {
        auto element = std::make_unique<DOMElement>(Pick(names));
        for (int count = depth == 0 ? 0 : Below(width + 1); count > 0; --count)
            element->AppendChild(Make(names, depth - 1, width));
        return element;
    }

private:
    std::mt19937 m_random;
};
