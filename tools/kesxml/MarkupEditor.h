#pragma once

#include "TextPosition.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What is done to elements.
struct MarkupEdit
{
    std::optional<std::string> text;
    std::optional<std::string> name;
    /// Names and values of attributes to set.
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<std::string> removedAttributes;
    bool removes = false;
};

/// Does the same to some elements of a well-formed document in UTF-8, without byte-order mark,
/// which must live as long; all else stays as it is written. Elements are named by the positions
/// where a parser says that their start tags end. The cost is linear.
class MarkupEditor
{
public:
    MarkupEditor(std::string_view document, const MarkupEdit& edit)
        : m_document(document), m_edit(edit)
    {
    }

    /// The document with the elements edited whose start tags end at `ends`, in the order of the
    /// document. Throws a CorvinaException when one of them stands in an entity, or is to have text
    /// in place of more than text. What names and texts make of the document is not looked at.
    std::string Apply(const std::vector<TextPosition>& ends);

private:
    /// Where an element stands: offsets.
    struct Element
    {
        std::size_t tag;
        std::size_t content;
        std::size_t endTag;
        std::size_t end;
        /// Whether there is anything but text in it.
        bool hasMarkup;
    };

    struct Replacement
    {
        std::size_t start;
        std::size_t end;
        std::string text;
    };

    std::vector<Element> Find(const std::vector<TextPosition>& ends) const;
    void Edit(const Element& element);
    void EditTag(const Element& element);
    void EditContent(const Element& element);
    void Remove(const Element& element);
    void Replace(std::size_t start, std::size_t end, std::string text);
    std::size_t OffsetOf(std::string_view part) const;
    std::string Write();

    std::string_view m_document;
    const MarkupEdit& m_edit;
    std::vector<Replacement> m_replacements;
};
