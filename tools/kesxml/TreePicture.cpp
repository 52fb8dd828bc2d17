#include "TreePicture.h"

#include "Console.h"
#include "OneLine.h"
#include "SortedAttributes.h"

namespace {

constexpr const char16_t* c_between = u"\u2502  ";
constexpr const char16_t* c_none = u"   ";
constexpr const char16_t* c_branch = u"\u251C\u2500 ";
constexpr const char16_t* c_lastBranch = u"\u2514\u2500 ";

// Select Graphic Rendition of ECMA-48.
constexpr const char16_t* c_faint = u"2";
constexpr const char16_t* c_bold = u"1";
constexpr const char16_t* c_green = u"32";
constexpr const char16_t* c_cyan = u"36";

} // namespace

void TreePicture::Draw(const StandaloneDOMElement& top)
{
    m_indent.clear();
    Print(Describe(top) + u"\n");
    std::vector<Level> levels;
    Open(levels, top, u"");
    while (!levels.empty()) {
        if (levels.back().next < levels.back().nodes.size()) {
            DrawNext(levels);
            continue;
        }
        m_indent = m_indent.left(levels.back().indentBefore);
        levels.pop_back();
    }
}

void TreePicture::DrawNext(std::vector<Level>& levels)
{
    Level& level = levels.back();
    const Node node = level.nodes[level.next++];
    const bool isLast = level.next == level.nodes.size();
    const TString lead = Colour(c_faint, m_indent + (isLast ? c_lastBranch : c_branch));
    if (node.element == nullptr) {
        const TString text = u"\"" + ToOneLine(*node.text, c_shownUnits) + u"\"";
        Print(lead + Colour(c_green, text) + u"\n");
        return;
    }
    Print(lead + Describe(*node.element) + u"\n");
    Open(levels, *node.element, isLast ? c_none : c_between);
}

void TreePicture::Open(std::vector<Level>& levels, const StandaloneDOMElement& element,
                       const char16_t* indent)
{
    if (!element.HasTextOrChildren())
        return;
    const TString::size_type before = m_indent.length();
    m_indent += indent;
    if (levels.size() + 1 < m_maxDepth) {
        levels.push_back({GetNodes(element), 0, before});
        return;
    }
    const TString count = TString::number(static_cast<unsigned long>(CountBelow(element)));
    Print(Colour(c_faint, m_indent + c_lastBranch + u"\u2026 " + count + u" more below") + u"\n");
    m_indent = m_indent.left(before);
}

std::vector<TreePicture::Node> TreePicture::GetNodes(const StandaloneDOMElement& element)
{
    std::vector<Node> nodes;
    element.WalkNodes(
        [&](const StandaloneDOMElement& child) {
            nodes.push_back({&child, nullptr});
        },
        [&](const TString& text) {
            nodes.push_back({nullptr, &text});
        });
    return nodes;
}

std::size_t TreePicture::CountBelow(const StandaloneDOMElement& element)
{
    std::size_t count = 0;
    std::vector<const StandaloneDOMElement*> open{&element};
    while (!open.empty()) {
        const StandaloneDOMElement& parent = *open.back();
        open.pop_back();
        parent.WalkNodes(
            [&](const StandaloneDOMElement& child) {
                ++count;
                open.push_back(&child);
            },
            [&](const TString&) { ++count; });
    }
    return count;
}

TString TreePicture::Colour(const char16_t* code, const TString& text) const
{
    if (!m_hasColours || text.IsEmpty())
        return text;
    return ::Colour(code, text);
}

TString TreePicture::Describe(const StandaloneDOMElement& element) const
{
    TString line = Colour(c_bold, element.GetName());
    for (const auto* attribute : SortByName(element.GetAttributes())) {
        const TString value = u"='" + ToAttributeText(attribute->second, c_shownUnits) + u"'";
        line += u" " + Colour(c_cyan, attribute->first) + value;
    }
    return line;
}
