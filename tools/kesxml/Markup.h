#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

/// The text of a document taken apart without changing anything: all tokens in a row are the text.

/// One token, a part of the text that was taken apart.
struct MarkupToken
{
    enum class Kind : unsigned char
    {
        Declaration,
        DocumentType,
        Comment,
        Instruction,
        StartTag,
        EmptyTag,
        EndTag,
        /// Between two other tokens, with references as they are written.
        Text,
        CharacterData
    };

    Kind kind;
    std::string_view text;
};

/// An attribute as it is written; the value is what stands between the quotes.
struct MarkupAttribute
{
    std::string_view name;
    std::string_view value;
    char quote;
};

/// Hands out the tokens of a document in UTF-8, without byte-order mark, one after the other. What
/// is not well-formed is cut up somehow, but wholly. The text must live as long as the tokens.
class MarkupReader
{
public:
    explicit MarkupReader(std::string_view document) : m_document(document) {}

    /// False at the end; `token` is as before then.
    bool Read(MarkupToken& token);

private:
    MarkupToken::Kind FindKind(std::string_view rest) const;

    std::string_view m_document;
    std::size_t m_next = 0;
};

/// Whether it is nothing but the white space of XML.
bool IsWhitespace(std::string_view text);

/// The name of a start tag, an empty tag or an end tag.
std::string_view NameOfTag(std::string_view tag);

/// The attributes of a start tag or an empty tag in their order.
std::vector<MarkupAttribute> AttributesOf(std::string_view tag);

/// The declarations between the brackets of a document type; empty without these.
std::string_view InternalSubsetOf(std::string_view documentType);

/// Hands out the markup declarations of an internal subset, from "<!" to ">". Comments, processing
/// instructions and references to parameter entities are passed over.
class DeclarationReader
{
public:
    explicit DeclarationReader(std::string_view subset) : m_rest(subset) {}

    /// False at the end; `declaration` is as before then.
    bool Read(std::string_view& declaration);

private:
    std::string_view m_rest;
};
