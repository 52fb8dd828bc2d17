#include "Markup.h"

#include <kesplatform/XmlDeclaration.h>

#include <algorithm>

namespace {

constexpr std::string_view c_commentStart = "<!--";
constexpr std::string_view c_instructionStart = "<?";

/// The offset behind the next `end`, or the length of the text.
std::size_t FindBehind(std::string_view text, std::string_view end, std::size_t from)
{
    const std::size_t found = text.find(end, std::min(from, text.size()));
    return found == std::string_view::npos ? text.size() : found + end.size();
}

/// The length of a tag or a declaration, at whose ">" no quote is open.
std::size_t LengthOfTag(std::string_view text)
{
    std::size_t i = text.find_first_of(">\"'");
    while (i < text.size() && text[i] != '>')
        i = text.find_first_of(">\"'", FindBehind(text, text.substr(i, 1), i + 1));
    return i < text.size() ? i + 1 : text.size();
}

std::size_t LengthOfComment(std::string_view text)
{
    return FindBehind(text, "-->", c_commentStart.size());
}

std::size_t LengthOfInstruction(std::string_view text)
{
    return FindBehind(text, "?>", c_instructionStart.size());
}

/// The length of what stands in an internal subset here: one piece of markup, or one character.
std::size_t LengthInSubset(std::string_view text)
{
    if (text.starts_with(c_commentStart))
        return LengthOfComment(text);
    if (text.starts_with(c_instructionStart))
        return LengthOfInstruction(text);
    return text.front() == '<' ? LengthOfTag(text) : 1;
}

/// The offset of the "]" that ends an internal subset, which begins at `from`.
std::size_t FindEndOfSubset(std::string_view text, std::size_t from)
{
    while (from < text.size() && text[from] != ']')
        from += LengthInSubset(text.substr(from));
    return std::min(from, text.size());
}

/// The offset of the "[" of an internal subset; the length where there is none.
std::size_t FindStartOfSubset(std::string_view text)
{
    std::size_t i = text.find_first_of("[>\"'");
    while (i < text.size() && text[i] != '[' && text[i] != '>')
        i = text.find_first_of("[>\"'", FindBehind(text, text.substr(i, 1), i + 1));
    return i < text.size() && text[i] == '[' ? i : text.size();
}

std::size_t LengthOfDocumentType(std::string_view text)
{
    const std::size_t subset = FindStartOfSubset(text);
    if (subset == text.size())
        return LengthOfTag(text);
    return FindBehind(text, ">", FindEndOfSubset(text, subset + 1));
}

std::size_t LengthOf(MarkupToken::Kind kind, std::string_view text)
{
    using Kind = MarkupToken::Kind;
    switch (kind) {
    case Kind::Declaration:
    case Kind::Instruction:
        return LengthOfInstruction(text);
    case Kind::DocumentType:
        return LengthOfDocumentType(text);
    case Kind::Comment:
        return LengthOfComment(text);
    case Kind::CharacterData:
        return FindBehind(text, "]]>", 0);
    case Kind::Text:
        return std::min(text.find('<'), text.size());
    default:
        return LengthOfTag(text);
    }
}

} // namespace

bool MarkupReader::Read(MarkupToken& token)
{
    if (m_next == m_document.size())
        return false;
    const std::string_view rest = m_document.substr(m_next);
    token.kind = FindKind(rest);
    token.text = rest.substr(0, LengthOf(token.kind, rest));
    if (token.kind == MarkupToken::Kind::StartTag && token.text.ends_with("/>"))
        token.kind = MarkupToken::Kind::EmptyTag;
    m_next += token.text.size();
    return true;
}

MarkupToken::Kind MarkupReader::FindKind(std::string_view rest) const
{
    using Kind = MarkupToken::Kind;
    if (rest.front() != '<')
        return Kind::Text;
    if (rest.starts_with(c_commentStart))
        return Kind::Comment;
    if (rest.starts_with("<![CDATA["))
        return Kind::CharacterData;
    if (rest.starts_with("<!"))
        return Kind::DocumentType;
    if (rest.starts_with("</"))
        return Kind::EndTag;
    if (!rest.starts_with(c_instructionStart))
        return Kind::StartTag;
    const bool isDeclaration = m_next == 0 && rest.starts_with(XmlDeclaration::c_start) &&
                               IsWhitespace(rest.substr(XmlDeclaration::c_start.size(), 1));
    return isDeclaration ? Kind::Declaration : Kind::Instruction;
}

bool IsWhitespace(std::string_view text)
{
    return text.find_first_not_of(XmlDeclaration::c_whitespace) == std::string_view::npos;
}

std::string_view NameOfTag(std::string_view tag)
{
    tag.remove_prefix(tag.starts_with("</") ? 2 : 1);
    return tag.substr(0, tag.find_first_of(" \t\r\n/>"));
}

std::vector<MarkupAttribute> AttributesOf(std::string_view tag)
{
    std::vector<MarkupAttribute> attributes;
    std::size_t i = 1 + NameOfTag(tag).size();
    for (;;) {
        i = std::min(tag.find_first_not_of(XmlDeclaration::c_whitespace, i), tag.size());
        const std::size_t nameEnd = tag.find_first_of(" \t\r\n=", i);
        const std::size_t quote = tag.find_first_of("\"'", i);
        if (quote == std::string_view::npos || nameEnd > quote)
            return attributes;
        const std::size_t end = std::min(tag.find(tag[quote], quote + 1), tag.size());
        attributes.push_back(
            {tag.substr(i, nameEnd - i), tag.substr(quote + 1, end - quote - 1), tag[quote]});
        i = end + 1;
    }
}

std::string_view InternalSubsetOf(std::string_view documentType)
{
    const std::size_t start = FindStartOfSubset(documentType);
    if (start == documentType.size())
        return {};
    return documentType.substr(start + 1, FindEndOfSubset(documentType, start + 1) - start - 1);
}

bool DeclarationReader::Read(std::string_view& declaration)
{
    while (!m_rest.empty()) {
        const std::string_view piece = m_rest.substr(0, LengthInSubset(m_rest));
        m_rest.remove_prefix(piece.size());
        if (!piece.starts_with("<!") || piece.starts_with(c_commentStart))
            continue;
        declaration = piece;
        return true;
    }
    return false;
}
