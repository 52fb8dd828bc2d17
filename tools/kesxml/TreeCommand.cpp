#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "Entities.h"
#include "Excerpt.h"
#include "TreePicture.h"

#include <kescorexml/StandaloneDOMParser.h>

namespace {

constexpr const char* c_examples = "  kesxml tree page.xml\n"
                                   "  kesxml tree --depth 2 catalogue.xml | less\n";

/// The number that an option gives, or 0 for what is no number from 1 on.
std::size_t ToDepth(const QString& text)
{
    bool isNumber = false;
    const uint depth = text.toUInt(&isNumber);
    return isNumber ? depth : 0;
}

} // namespace

int RunTree(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Draws the elements and texts of a document in their order. Long texts are cut.\n"
        "Colours are used on a terminal, unless NO_COLOR is set in the environment.");
    parser.addPositionalArgument("FILE", "The document, or - for standard input.");
    const QCommandLineOption depth("depth", "Draw this many levels of elements, 64 unless given.",
                                   "N", "64");
    const QCommandLineOption allowEntities("allow-entities",
                                           "Let the document use entities that it defines itself.");
    parser.addOptions({depth, allowEntities});
    if (!ReadArguments(parser, arguments, 1, 1, c_examples))
        return UsageOrUnreadable;
    const std::size_t maxDepth = ToDepth(parser.value(depth));
    if (maxDepth == 0)
        return FailUsage(arguments, "'" + parser.value(depth) + "' is no number of levels.");

    StandaloneDOMParser standaloneParser;
    if (parser.isSet(allowEntities))
        standaloneParser.AllowEntityExpansion_Insecure();
    const std::unique_ptr<InputSource> source = OpenDocument(parser.positionalArguments().front());
    const StandaloneParseResult result = standaloneParser.ParseXmlInputSource(*source, false);
    Diagnostics diagnostics;
    AddDiagnostics(diagnostics, result.diagnostics, source->Id());
    AddExcerpts(diagnostics, *source);
    if (!parser.isSet(allowEntities))
        NameEntityOption(diagnostics);
    PrintDiagnostics(diagnostics);
    if (HasErrors(diagnostics))
        return DocumentHasErrors;

    TreePicture picture(maxDepth, HasColours());
    for (const StandaloneDOMElement& element : result.root->GetChildren())
        picture.Draw(element);
    return Fine;
}
