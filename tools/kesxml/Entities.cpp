#include "Entities.h"

#include "Document.h"
#include "Markup.h"
#include "TextPosition.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

constexpr std::array<std::string_view, 5> c_predefined{"amp", "lt", "gt", "quot", "apos"};

struct Skipped
{
    std::string_view name;
    std::size_t offset;
    std::size_t count;
};

/// Whether the start of a document shows that it has no document type.
bool HasNoDocumentType(InputSource& source)
{
    std::string head;
    source.ResetToStart();
    source.GetBytes(head, 1U << 16);
    source.ResetToStart();
    MarkupReader reader(head);
    for (MarkupToken token; reader.Read(token);) {
        if (token.kind == MarkupToken::Kind::DocumentType)
            return false;
        if (token.kind == MarkupToken::Kind::StartTag || token.kind == MarkupToken::Kind::EmptyTag)
            return token.text.ends_with('>');
    }
    return false;
}

/// What is declared anywhere in it, in the values of parameter entities too.
std::unordered_set<std::string_view> NamesDeclaredIn(std::string_view subset)
{
    constexpr std::string_view c_declaration = "<!ENTITY";
    std::unordered_set<std::string_view> names;
    for (std::size_t i = subset.find(c_declaration); i != std::string_view::npos;
         i = subset.find(c_declaration, i)) {
        i += c_declaration.size();
        const std::size_t start = std::min(subset.find_first_not_of(" \t\r\n", i), subset.size());
        const std::size_t end = std::min(subset.find_first_of(" \t\r\n", start), subset.size());
        names.insert(subset.substr(start, end - start));
    }
    return names;
}

class SkippedEntities
{
public:
    SkippedEntities(std::string_view document, bool mayBeDeclared) : m_document(document)
    {
        m_declared.insert(c_predefined.begin(), c_predefined.end());
        MarkupReader reader(document);
        for (MarkupToken token; reader.Read(token);) {
            using Kind = MarkupToken::Kind;
            if (token.kind == Kind::DocumentType && mayBeDeclared)
                m_declared.merge(NamesDeclaredIn(InternalSubsetOf(token.text)));
            if (token.kind == Kind::Text || token.kind == Kind::StartTag ||
                token.kind == Kind::EmptyTag)
                AddReferencesIn(token.text);
        }
    }

    /// In the order of the first references.
    const std::vector<Skipped>& Get() const { return m_skipped; }

private:
    void AddReferencesIn(std::string_view text)
    {
        for (std::size_t i = text.find('&'); i != std::string_view::npos; i = text.find('&', i)) {
            const std::size_t end = std::min(text.find(';', ++i), text.size());
            const std::string_view name = text.substr(i, end - i);
            if (!name.starts_with('#') && !m_declared.contains(name))
                Add(name);
        }
    }

    void Add(std::string_view name)
    {
        const auto [found, isNew] = m_places.try_emplace(name, m_skipped.size());
        if (isNew) {
            const auto offset = static_cast<std::size_t>(name.data() - m_document.data()) - 1;
            m_skipped.push_back({name, offset, 0});
        }
        ++m_skipped[found->second].count;
    }

    std::string_view m_document;
    std::unordered_set<std::string_view> m_declared;
    std::unordered_map<std::string_view, std::size_t> m_places;
    std::vector<Skipped> m_skipped;
};

TString MessageOf(const Skipped& skipped)
{
    const TString references = skipped.count == 1
                                   ? TString(u"1 reference to it is left out")
                                   : TString::number(static_cast<unsigned long>(skipped.count)) +
                                         u" references to it are left out";
    return u"the entity '" + TString::fromStdString(std::string(skipped.name)) +
           u"' is declared nowhere in the document: " + references;
}

} // namespace

Diagnostics FindSkippedEntities(InputSource& source, bool mayBeDeclared)
{
    if (HasNoDocumentType(source))
        return {};
    const std::string document = ReadText(source);
    const SkippedEntities entities(document, mayBeDeclared);
    Diagnostics diagnostics;
    TextPositions positions(document);
    for (const Skipped& skipped : entities.Get()) {
        const TextPosition position = positions.At(skipped.offset);
        Diagnostic diagnostic;
        diagnostic.isError = false;
        diagnostic.file = source.Id();
        diagnostic.line = position.line;
        diagnostic.column = position.column;
        diagnostic.message = MessageOf(skipped);
        diagnostics.push_back(diagnostic);
    }
    return diagnostics;
}

void NameEntityOption(Diagnostics& diagnostics)
{
    for (Diagnostic& diagnostic : diagnostics) {
        if (diagnostic.message.contains(u"more than '0' entity expansions"))
            diagnostic.message += u"; --allow-entities lifts it";
    }
}
