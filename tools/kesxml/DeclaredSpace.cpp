#include "DeclaredSpace.h"

#include "Markup.h"

#include <algorithm>

namespace {

void TakeWhitespace(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

/// Takes white space and the word behind it off the start of `text`.
std::string_view TakeWord(std::string_view& text)
{
    TakeWhitespace(text);
    const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n>"));
    text.remove_prefix(word.size());
    return word;
}

/// Whether a content model begins with "(#PCDATA".
bool HasText(std::string_view model)
{
    TakeWhitespace(model);
    if (!model.starts_with('('))
        return false;
    model.remove_prefix(1);
    TakeWhitespace(model);
    return model.starts_with("#PCDATA");
}

/// Whether a list of attributes has xml:space with the default "preserve". The type of it is a list
/// in parentheses.
bool HasPreserve(std::string_view attributes)
{
    const std::size_t name = attributes.find("xml:space");
    const std::size_t typeEnd = attributes.find(')', std::min(name, attributes.size()));
    if (typeEnd == std::string_view::npos)
        return false;
    attributes.remove_prefix(typeEnd + 1);
    TakeWhitespace(attributes);
    if (attributes.starts_with("#FIXED")) {
        attributes.remove_prefix(std::string_view("#FIXED").size());
        TakeWhitespace(attributes);
    }
    return attributes.starts_with("'preserve'") || attributes.starts_with("\"preserve\"");
}

} // namespace

DeclaredSpace::DeclaredSpace(std::string_view documentType)
{
    DeclarationReader reader(InternalSubsetOf(documentType));
    for (std::string_view declaration; reader.Read(declaration);) {
        const std::string_view kind = TakeWord(declaration);
        const std::string_view element = TakeWord(declaration);
        if (kind == "<!ELEMENT" && HasText(declaration))
            m_mixed.insert(element);
        if (kind == "<!ATTLIST" && HasPreserve(declaration))
            m_preserved.insert(element);
    }
}
