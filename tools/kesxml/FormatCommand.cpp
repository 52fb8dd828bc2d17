#include "Command.h"
#include "Console.h"
#include "Document.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/XMLStringFormatter.h>

namespace {

constexpr const char* c_examples = "  kesxml format settings.xml >pretty.xml\n"
                                   "  kesxml format --no-header - <fragment.xml\n";

/// An element keeps one text, so text between its children cannot be written back where it was.
const DOMElement* FindMixedContent(const DOM& document)
{
    for (const DOMElement& element :
         DOMElementTraversal::ConstPreorderTraversal(*document.GetRoot())) {
        if (element.HasText() && element.HasChildren())
            return &element;
    }
    return nullptr;
}

TString Format(const DOM& document, bool escapeAll, bool header)
{
    XMLStringFormatter formatter(u"  ", false);
    formatter.SetFormatMode(escapeAll ? FormatMode::EscapeAll : FormatMode::Content);
    XMLFormatter::FormatDOM(formatter, document, nullptr, header);
    return formatter.GetOutput();
}

} // namespace

int RunFormat(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription("Writes a document formatted to standard output.");
    parser.addPositionalArgument("FILE", "The document, or - for standard input.");
    const QCommandLineOption escapeAll(
        "escape-all", "Write text with references only, and tabs and line ends as references.");
    const QCommandLineOption noHeader("no-header", "Leave the XML declaration out.");
    parser.addOptions({escapeAll, noHeader});
    if (!ReadArguments(parser, arguments, 1, 1, c_examples))
        return UsageOrUnreadable;

    const QString file = parser.positionalArguments().front();
    const std::unique_ptr<InputSource> source = OpenDocument(file);
    const ReadDocument document = DocumentReader({}).Read(*source);
    PrintDiagnostics(document.diagnostics);
    if (HasErrors(document.diagnostics))
        return DocumentHasErrors;
    if (const DOMElement* mixed = FindMixedContent(*document.dom)) {
        const TString message =
            TString(u"text between child elements is written after them (in <") + mixed->GetName() +
            u">)";
        PrintDiagnostics({{false, file, 0, 0, message, {}}});
    }
    Print(Format(*document.dom, parser.isSet(escapeAll), !parser.isSet(noHeader)));
    return Fine;
}
