#include "MarkupEditor.h"

#include "Markup.h"

#include <kesplatform/CorvinaException.h>

#include <algorithm>

namespace {

constexpr std::size_t c_none = std::string_view::npos;

[[noreturn]] void Fail(TextPosition position, const char* reason)
{
    throw CorvinaException(TString::number(position.line) + u":" +
                           TString::number(position.column) + u": " + TString(reason));
}

/// Fit for text, and for a value between quotes of either kind. Line ends and tabs are written as
/// references in a value, where they would be read as blanks.
std::string Escape(std::string_view text, bool isValue)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '\r':
            escaped += "&#13;";
            break;
        case '"':
            escaped += isValue ? "&quot;" : "\"";
            break;
        case '\'':
            escaped += isValue ? "&apos;" : "'";
            break;
        case '\n':
            escaped += isValue ? "&#10;" : "\n";
            break;
        case '\t':
            escaped += isValue ? "&#9;" : "\t";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

bool Contains(const std::vector<std::string>& names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

std::string MarkupEditor::Apply(const std::vector<TextPosition>& ends)
{
    for (const Element& element : Find(ends))
        Edit(element);
    return Write();
}

std::vector<MarkupEditor::Element> MarkupEditor::Find(const std::vector<TextPosition>& ends) const
{
    using Kind = MarkupToken::Kind;
    std::vector<Element> found;
    // For each open element, its index in `found`, or none.
    std::vector<std::size_t> open;
    TextPositions positions(m_document);
    MarkupReader reader(m_document);
    for (MarkupToken token; reader.Read(token);) {
        const std::size_t start = OffsetOf(token.text);
        const std::size_t end = start + token.text.size();
        if (token.kind == Kind::EndTag) {
            if (open.back() != c_none) {
                found[open.back()].endTag = start;
                found[open.back()].end = end;
            }
            open.pop_back();
            continue;
        }
        const bool isText = token.kind == Kind::Text || token.kind == Kind::CharacterData;
        if (!isText && !open.empty() && open.back() != c_none)
            found[open.back()].hasMarkup = true;
        if (token.kind != Kind::StartTag && token.kind != Kind::EmptyTag)
            continue;
        const TextPosition position = positions.At(end);
        const bool isWanted = found.size() < ends.size() && ends[found.size()] == position;
        if (found.size() < ends.size() && ends[found.size()] < position)
            Fail(ends[found.size()], "an element that stands in an entity cannot be edited");
        if (token.kind == Kind::StartTag)
            open.push_back(isWanted ? found.size() : c_none);
        if (isWanted)
            found.push_back({start, end, end, end, false});
    }
    if (found.size() < ends.size())
        Fail(ends[found.size()], "an element that stands in an entity cannot be edited");
    return found;
}

void MarkupEditor::Edit(const Element& element)
{
    if (m_edit.removes)
        return Remove(element);
    EditTag(element);
    if (m_edit.text)
        EditContent(element);
    if (m_edit.name && element.endTag < element.end) {
        const std::string_view name = NameOfTag(m_document.substr(element.endTag));
        Replace(OffsetOf(name), OffsetOf(name) + name.size(), *m_edit.name);
    }
}

void MarkupEditor::EditTag(const Element& element)
{
    const std::string_view tag = m_document.substr(element.tag, element.content - element.tag);
    const std::string_view name = NameOfTag(tag);
    std::size_t last = OffsetOf(name) + name.size();
    if (m_edit.name)
        Replace(OffsetOf(name), last, *m_edit.name);
    std::vector<std::pair<std::string, std::string>> missing = m_edit.attributes;
    for (const MarkupAttribute& attribute : AttributesOf(tag)) {
        const std::size_t value = OffsetOf(attribute.value);
        const std::size_t end = value + attribute.value.size() + 1;
        const auto set = std::find_if(missing.begin(), missing.end(),
                                      [&](const auto& s) { return s.first == attribute.name; });
        if (Contains(m_edit.removedAttributes, attribute.name))
            Replace(last, end, "");
        else if (set != missing.end())
            Replace(value, end - 1, Escape(set->second, true));
        if (set != missing.end())
            missing.erase(set);
        last = end;
    }
    for (const auto& [attribute, value] : missing)
        Replace(last, last, " " + attribute + "=\"" + Escape(value, true) + "\"");
}

void MarkupEditor::EditContent(const Element& element)
{
    if (element.hasMarkup)
        Fail(TextPositions(m_document).At(element.tag), "this element holds more than text");
    const std::string text = Escape(*m_edit.text, false);
    if (element.endTag < element.end)
        return Replace(element.content, element.endTag, text);
    const std::string_view tag = m_document.substr(element.tag, element.content - element.tag);
    const std::string name(m_edit.name ? *m_edit.name : NameOfTag(tag));
    Replace(element.content - 2, element.content, ">" + text + "</" + name + ">");
}

void MarkupEditor::Remove(const Element& element)
{
    // What stands in an element that is gone is gone.
    if (!m_replacements.empty() && element.tag < m_replacements.back().end)
        return;
    // An element that has lines of its own goes with these.
    std::size_t start = element.tag;
    while (start > 0 && (m_document[start - 1] == ' ' || m_document[start - 1] == '\t'))
        --start;
    const bool isAlone = start > 0 && m_document[start - 1] == '\n' &&
                         m_document.substr(element.end).starts_with('\n');
    if (isAlone)
        Replace(start, element.end + 1, "");
    else
        Replace(element.tag, element.end, "");
}

void MarkupEditor::Replace(std::size_t start, std::size_t end, std::string text)
{
    m_replacements.push_back({start, end, std::move(text)});
}

std::size_t MarkupEditor::OffsetOf(std::string_view part) const
{
    return static_cast<std::size_t>(part.data() - m_document.data());
}

std::string MarkupEditor::Write()
{
    // An element's end tag comes behind what is in it.
    std::stable_sort(m_replacements.begin(), m_replacements.end(),
                     [](const Replacement& a, const Replacement& b) { return a.start < b.start; });
    std::string written;
    std::size_t next = 0;
    for (const Replacement& replacement : m_replacements) {
        written += m_document.substr(next, replacement.start - next);
        written += replacement.text;
        next = replacement.end;
    }
    return written += m_document.substr(next);
}
