#include "MarkupFormatter.h"

#include "DeclaredSpace.h"
#include "Markup.h"
#include "Utf8Declaration.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

using Kind = MarkupToken::Kind;

std::string NormaliseLineEnds(std::string_view text)
{
    std::string normal;
    normal.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r')
            normal += text[i];
        else if (i + 1 == text.size() || text[i + 1] != '\n')
            normal += '\n';
    }
    return normal;
}

/// For each start tag, in their order, whether its element may have its children on lines: these
/// are there, and with them nothing but white space.
std::vector<bool> FindElementContent(std::string_view document)
{
    struct OpenElement
    {
        std::size_t number;
        bool hasMarkup = false;
        bool hasText = false;
    };

    std::vector<bool> isElementContent;
    // The document itself is the outermost.
    std::vector<OpenElement> open{{0}};
    MarkupReader reader(document);
    for (MarkupToken token; reader.Read(token);) {
        if (token.kind == Kind::CharacterData || token.kind == Kind::Text) {
            if (token.kind == Kind::CharacterData || !IsWhitespace(token.text))
                open.back().hasText = true;
        } else if (token.kind == Kind::EndTag) {
            const OpenElement& ended = open.back();
            isElementContent[ended.number] = ended.hasMarkup && !ended.hasText;
            open.pop_back();
        } else {
            open.back().hasMarkup = true;
            if (token.kind == Kind::StartTag) {
                open.push_back({isElementContent.size()});
                isElementContent.push_back(false);
            }
        }
    }
    return isElementContent;
}

/// What xml:space says in a tag; empty when it says nothing.
std::string_view SpaceOf(std::string_view tag)
{
    if (tag.find("xml:space") == std::string_view::npos)
        return {};
    for (const MarkupAttribute& attribute : AttributesOf(tag)) {
        if (attribute.name == "xml:space")
            return attribute.value;
    }
    return {};
}

class Formatter
{
public:
    Formatter(std::string_view document, bool header)
        : m_document(document), m_isElementContent(FindElementContent(document)),
          m_writesHeader(header)
    {
        m_out.reserve(document.size() + document.size() / 8);
    }

    std::string Format()
    {
        MarkupReader reader(m_document);
        for (MarkupToken token; reader.Read(token);)
            Add(token);
        m_out += '\n';
        return std::move(m_out);
    }

private:
    /// How the content of an element is written.
    enum class Content : unsigned char
    {
        Lines,
        /// As it is, because xml:space says so.
        Preserved,
        /// As it is, with all elements in it.
        Kept
    };

    Content Outer() const { return m_open.empty() ? Content::Lines : m_open.back(); }

    Content ContentOf(std::string_view tag, bool isElementContent) const
    {
        if (Outer() == Content::Kept)
            return Content::Kept;
        const std::string_view name = NameOfTag(tag);
        std::string_view space = SpaceOf(tag);
        if (space.empty() && m_declared.IsPreserved(name))
            space = "preserve";
        if (space == "preserve" || (space != "default" && Outer() == Content::Preserved))
            return Content::Preserved;
        return isElementContent && !m_declared.IsMixed(name) ? Content::Lines : Content::Kept;
    }

    void Add(const MarkupToken& token)
    {
        if (token.kind == Kind::Text && Outer() == Content::Lines) {
            m_lineEnds += std::count(token.text.begin(), token.text.end(), '\n');
            return;
        }
        if (token.kind == Kind::Declaration && !m_writesHeader)
            return;
        if (token.kind == Kind::EndTag)
            AddEndTag(token.text);
        else if (Outer() == Content::Lines)
            AddOnLine(token);
        else
            m_out += token.text;
        if (token.kind == Kind::DocumentType)
            m_declared = DeclaredSpace(token.text);
        if (token.kind == Kind::StartTag)
            m_open.push_back(ContentOf(token.text, m_isElementContent[m_nextElement++]));
        m_last = token.kind;
        m_lineEnds = 0;
    }

    void AddEndTag(std::string_view tag)
    {
        if (Outer() == Content::Lines)
            BreakLine(m_open.size() - 1);
        m_open.pop_back();
        if (Outer() == Content::Lines)
            m_out.append("</").append(NameOfTag(tag)).append(">");
        else
            m_out += tag;
    }

    void AddOnLine(const MarkupToken& token)
    {
        const bool isBehindTag = m_last == Kind::EndTag || m_last == Kind::EmptyTag;
        if (token.kind == Kind::Comment && isBehindTag && m_lineEnds == 0) {
            m_out += ' ';
        } else {
            if (m_lineEnds > 1 && m_last != Kind::StartTag && !m_out.empty())
                m_out += '\n';
            BreakLine(m_open.size());
        }
        if (token.kind == Kind::Declaration)
            m_out += ToUtf8Declaration(token.text);
        else if (token.kind == Kind::StartTag || token.kind == Kind::EmptyTag)
            AddTag(token);
        else
            m_out += token.text;
    }

    void AddTag(const MarkupToken& token)
    {
        m_out.append("<").append(NameOfTag(token.text));
        for (const MarkupAttribute& attribute : AttributesOf(token.text)) {
            m_out.append(" ").append(attribute.name).append("=");
            (m_out += attribute.quote).append(attribute.value) += attribute.quote;
        }
        m_out += token.kind == Kind::EmptyTag ? "/>" : ">";
    }

    void BreakLine(std::size_t depth)
    {
        if (m_out.empty())
            return;
        m_out += '\n';
        m_out.append(2 * depth, ' ');
    }

    std::string_view m_document;
    std::vector<bool> m_isElementContent;
    std::size_t m_nextElement = 0;
    bool m_writesHeader;
    DeclaredSpace m_declared;
    std::vector<Content> m_open;
    std::string m_out;
    /// What was written last, and how many line ends of the document stood behind it.
    Kind m_last = Kind::Declaration;
    std::ptrdiff_t m_lineEnds = 0;
};

} // namespace

std::string FormatMarkup(std::string_view document, bool header)
{
    const std::string normal = NormaliseLineEnds(document);
    return Formatter(normal, header).Format();
}
