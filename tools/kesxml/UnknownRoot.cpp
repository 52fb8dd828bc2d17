#include "UnknownRoot.h"

#include "Markup.h"
#include "TextPosition.h"

#include <kescorexml/Utf8InputSource.h>
#include <kesplatform/EncodingTable.h>

#include <set>
#include <string>
#include <string_view>

namespace {

/// A name of no element, in no namespace.
constexpr std::string_view c_nobody = "kesxml-nobody";

/// The start tag of the document element behind a document type; empty without these.
std::string_view FindTag(std::string_view document)
{
    using Kind = MarkupToken::Kind;

    bool hasDocumentType = false;
    MarkupReader reader(document);
    for (MarkupToken token; reader.Read(token);) {
        hasDocumentType = hasDocumentType || token.kind == Kind::DocumentType;
        if (token.kind == Kind::StartTag || token.kind == Kind::EmptyTag)
            return hasDocumentType && token.text.ends_with('>') ? token.text : std::string_view();
    }
    return {};
}

/// What is said of a tag by itself, without what stands in the element and without document type.
std::set<TString> MessagesAbout(std::string tag, DocumentReader& reader)
{
    if (tag.ends_with("/>"))
        tag.erase(tag.size() - 2, 1);
    const TextPosition end = TextPositions(tag).At(tag.size());
    // That the element does not end is said elsewhere.
    Utf8InputSource source(tag + "\n\n", u"tag", false);
    std::set<TString> messages;
    for (const Diagnostic& diagnostic : reader.Check(source)) {
        if (diagnostic.line == end.line && diagnostic.column == end.column)
            messages.insert(diagnostic.message);
    }
    return messages;
}

} // namespace

Diagnostics FindUnknownRoot(InputSource& source, DocumentReader& reader)
{
    std::string head;
    source.ResetToStart();
    source.GetBytes(head, 1U << 20);
    source.ResetToStart();
    const std::string_view tag = FindTag(EncodingTable::SkipByteOrderMark(head));
    if (tag.empty())
        return {};
    const TString name = TString::fromStdString(std::string(NameOfTag(tag)));
    const TString nobody = TString::fromStdString(std::string(c_nobody));
    // What is said of an element that is surely unknown is looked for in what is said of this one.
    const std::set<TString> said = MessagesAbout(std::string(tag), reader);
    for (TString message : MessagesAbout("<" + std::string(c_nobody) + ">", reader)) {
        message.replace(nobody, name);
        if (!said.contains(message))
            continue;
        const auto end = static_cast<std::size_t>(tag.data() + tag.size() - head.data());
        const TextPosition position = TextPositions(head).At(end);
        const TString warning = u"no schema declares the element '" + name +
                                u"': the document was validated against its document type instead";
        return {{false, source.Id(), position.line, position.column, warning, {}}};
    }
    return {};
}
