#include "TreeComparison.h"

#include "OneLine.h"
#include "SortedAttributes.h"

#include <kescorexml/DOMElementTraversal.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>

namespace {

/// How many pairs of children of two elements are looked at.
constexpr std::size_t c_maxPairs = 4'000'000;

using Children = std::vector<const DOMElement*>;
Children ChildrenOf(const DOMElement& element)
{
    Children children;
    for (const auto& child : element.GetChildren())
        children.push_back(child.get());
    return children;
}

TString TextOf(const DOMElement& element)
{
    return element.HasChildren() ? element.GetText().trimmed() : element.GetText();
}

/// Gives elements the same number when they are equal with all below them, and only then.
class Numbering
{
public:
    void Add(const DOMElement& root)
    {
        Children inOrder;
        for (const DOMElement& element : DOMElementTraversal::ConstPreorderTraversal(root))
            inOrder.push_back(&element);
        // Children come before their parents.
        for (auto i = inOrder.rbegin(); i != inOrder.rend(); ++i) {
            const auto number = m_numbers.try_emplace(Spell(**i), m_numbers.size()).first->second;
            m_elements.emplace(*i, number);
        }
    }

    std::size_t Get(const DOMElement* element) const { return m_elements.at(element); }

private:
    /// All that an element is, written so that different ones differ.
    std::u16string Spell(const DOMElement& element) const
    {
        std::u16string spelled;
        const auto addNumber = [&](std::size_t number) {
            for (int shift = 0; shift < 64; shift += 16)
                spelled += static_cast<char16_t>(number >> shift);
        };
        const auto add = [&](const TString& text) {
            addNumber(text.view().size());
            spelled += text.view();
        };
        add(element.GetName());
        add(TextOf(element));
        const auto attributes = SortByName(element.GetAttributes());
        addNumber(attributes.size());
        for (const auto* attribute : attributes) {
            add(attribute->first);
            add(attribute->second);
        }
        for (const auto& child : element.GetChildren())
            addNumber(m_elements.at(child.get()));
        return spelled;
    }

    std::unordered_map<std::u16string, std::size_t> m_numbers;
    std::unordered_map<const DOMElement*, std::size_t> m_elements;
};

struct Pair
{
    const DOMElement* first;
    const DOMElement* second;
};

class Comparison
{
public:
    Comparison(const DOMElement& first, const DOMElement& second)
    {
        m_numbers.Add(first);
        m_numbers.Add(second);
        AddPairs({&first}, {&second});
        while (!m_open.empty()) {
            const Pair pair = m_open.back();
            m_open.pop_back();
            Compare(pair);
        }
    }

    std::vector<TreeDifference> differences;

private:
    bool IsEqual(const DOMElement* a, const DOMElement* b) const
    {
        return m_numbers.Get(a) == m_numbers.Get(b);
    }

    void Compare(const Pair& pair)
    {
        if (pair.first == nullptr || pair.second == nullptr) {
            differences.push_back({pair.first, pair.second, {}});
            return;
        }
        if (IsEqual(pair.first, pair.second))
            return;
        CompareAttributes(pair);
        const TString before = TextOf(*pair.first);
        const TString after = TextOf(*pair.second);
        if (!(before == after))
            Add(pair, u"text \"" + ToOneLine(before, c_shownUnits) + u"\" | \"" +
                          ToOneLine(after, c_shownUnits) + u"\"");
        AddPairs(ChildrenOf(*pair.first), ChildrenOf(*pair.second));
    }

    void CompareAttributes(const Pair& pair)
    {
        const auto& before = pair.first->GetAttributes();
        const auto& after = pair.second->GetAttributes();
        const auto quote = [](const TString& value) {
            return u"'" + ToAttributeText(value) + u"'";
        };
        for (const auto* attribute : SortByName(before)) {
            const auto other = after.find(attribute->first);
            const bool isThere = other != after.end();
            if (!isThere || !(other->second == attribute->second))
                Add(pair, u"attribute " + attribute->first + u" " + quote(attribute->second) +
                              u" | " + (isThere ? quote(other->second) : TString(u"none")));
        }
        for (const auto* attribute : SortByName(after)) {
            if (before.find(attribute->first) == before.end())
                Add(pair,
                    u"attribute " + attribute->first + u" none | " + quote(attribute->second));
        }
    }

    void Add(const Pair& pair, const TString& what)
    {
        differences.push_back({pair.first, pair.second, what});
    }

    /// Pairs the children of two elements and has these compared before all others.
    void AddPairs(const Children& first, const Children& second)
    {
        std::vector<Pair> pairs;
        std::span<const DOMElement* const> before = first;
        std::span<const DOMElement* const> after = second;
        while (!before.empty() && !after.empty() && IsEqual(before.front(), after.front())) {
            before = before.subspan(1);
            after = after.subspan(1);
        }
        while (!before.empty() && !after.empty() && IsEqual(before.back(), after.back())) {
            before = before.first(before.size() - 1);
            after = after.first(after.size() - 1);
        }
        std::size_t i = 0;
        std::size_t j = 0;
        for (const auto& [nextI, nextJ] : FindCommon(before, after)) {
            PairByName(before.subspan(i, nextI - i), after.subspan(j, nextJ - j), pairs);
            i = nextI + 1;
            j = nextJ + 1;
        }
        PairByName(before.subspan(i), after.subspan(j), pairs);
        m_open.insert(m_open.end(), pairs.rbegin(), pairs.rend());
    }

    /// The indices of a longest common subsequence.
    std::vector<std::pair<std::size_t, std::size_t>>
    FindCommon(std::span<const DOMElement* const> before,
               std::span<const DOMElement* const> after) const
    {
        const std::size_t width = after.size() + 1;
        if (before.empty() || after.size() > c_maxPairs / before.size())
            return {};
        // How many are common behind each pair of indices.
        std::vector<unsigned int> counts((before.size() + 1) * width);
        for (std::size_t i = before.size(); i-- > 0;) {
            for (std::size_t j = after.size(); j-- > 0;) {
                counts[i * width + j] =
                    IsEqual(before[i], after[j])
                        ? counts[(i + 1) * width + j + 1] + 1
                        : std::max(counts[(i + 1) * width + j], counts[i * width + j + 1]);
            }
        }
        std::vector<std::pair<std::size_t, std::size_t>> common;
        for (std::size_t i = 0, j = 0; i < before.size() && j < after.size();) {
            if (IsEqual(before[i], after[j]))
                common.emplace_back(i++, j++);
            else if (counts[(i + 1) * width + j] >= counts[i * width + j + 1])
                ++i;
            else
                ++j;
        }
        return common;
    }

    /// Pairs each of the first with the next of its name; those that are passed over stand alone.
    static void PairByName(std::span<const DOMElement* const> before,
                           std::span<const DOMElement* const> after, std::vector<Pair>& pairs)
    {
        std::unordered_map<TString, Children> places;
        for (auto i = after.rbegin(); i != after.rend(); ++i)
            places[(*i)->GetName()].push_back(*i);
        std::unordered_map<const DOMElement*, std::size_t> indices;
        for (std::size_t i = 0; i < after.size(); ++i)
            indices.emplace(after[i], i);
        std::size_t next = 0;
        for (const DOMElement* const element : before) {
            Children& left = places[element->GetName()];
            while (!left.empty() && indices.at(left.back()) < next)
                left.pop_back();
            if (left.empty()) {
                pairs.push_back({element, nullptr});
                continue;
            }
            for (const std::size_t found = indices.at(left.back()); next < found; ++next)
                pairs.push_back({nullptr, after[next]});
            pairs.push_back({element, after[next++]});
        }
        for (; next < after.size(); ++next)
            pairs.push_back({nullptr, after[next]});
    }

    Numbering m_numbers;
    /// What is still to be compared, the next one last.
    std::vector<Pair> m_open;
};

} // namespace

std::vector<TreeDifference> CompareTrees(const DOMElement& first, const DOMElement& second)
{
    return Comparison(first, second).differences;
}
