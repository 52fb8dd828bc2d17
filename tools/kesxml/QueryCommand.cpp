#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "ElementPath.h"
#include "Json.h"
#include "OneLine.h"
#include "SortedAttributes.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMPath.h>

#include <QRegularExpression>

#include <vector>

namespace {

constexpr const char* c_examples = "  kesxml query //sensor stations.xml\n"
                                   "  kesxml query '/stations/*/note' stations.xml\n"
                                   "  kesxml query --count //item - <feed.xml\n"
                                   "  kesxml query --json //sensor stations.xml | jq '.[].text'\n";

constexpr std::size_t c_textUnits = 60;

/// One line: where the start tag ends, the path, the attributes and the start of the text.
TString Describe(const DOMElement& element, ElementPaths& paths)
{
    TString line = TString::number(element.GetStartLine()) + u":" +
                   TString::number(element.GetStartColumn()) + u" " + paths.Get(element);
    for (const auto* attribute : SortByName(element.GetAttributes()))
        line += u" " + attribute->first + u"='" + ToAttributeText(attribute->second) + u"'";
    if (element.HasText())
        line += u" \"" + ToOneLine(element.GetText(), c_textUnits) + u"\"";
    return line + u"\n";
}

QJsonObject ToJson(const DOMElement& element, ElementPaths& paths)
{
    QJsonObject attributes;
    for (const auto& [name, value] : element.GetAttributes())
        attributes[name] = QString(value);
    return {{"line", element.GetStartLine()},
            {"column", element.GetStartColumn()},
            {"path", QString(paths.Get(element))},
            {"name", QString(element.GetName())},
            {"attributes", attributes},
            {"text", QString(element.GetText())}};
}

void PrintMatches(const std::vector<const DOMElement*>& matches)
{
    ElementPaths paths;
    for (const DOMElement* match : matches)
        Print(Describe(*match, paths));
}

void PrintMatchesAsJson(const std::vector<const DOMElement*>& matches)
{
    ElementPaths paths;
    JsonArray array;
    for (const DOMElement* match : matches)
        array.Add(ToJson(*match, paths));
}

void PrintCount(std::size_t count, bool isJson)
{
    if (isJson)
        PrintJson({{"count", static_cast<qint64>(count)}});
    else
        Print(TString::number(static_cast<unsigned long>(count)) + u"\n");
}

} // namespace

int RunQuery(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Prints the elements that a path finds, one a line: LINE:COLUMN of the end of the\n"
        "start tag, the element's own path, its attributes and the start of its text.\n\n"
        "The steps of a path are names, * for any element, or nothing for any number of\n"
        "levels. /a/b finds the children b of the document element a, //b all elements b.");
    parser.addPositionalArgument("PATH", "The path.");
    parser.addPositionalArgument("FILE", "The document, or - for standard input.");
    const QCommandLineOption count("count", "Print the number of matches and nothing else.");
    const QCommandLineOption allowEntities("allow-entities",
                                           "Let the document use entities that it defines itself.");
    const QCommandLineOption json = JsonOption();
    parser.addOptions({count, allowEntities, json});
    if (!ReadArguments(parser, arguments, 2, 2, c_examples))
        return UsageOrUnreadable;

    const QString path = parser.positionalArguments().front();
    // No name holds these; they are taken for conditions and attributes, which paths do not have.
    static const QRegularExpression s_other("[][@()='\"]");
    if (const auto match = s_other.match(path); match.hasMatch()) {
        return FailUsage(arguments, "'" + match.captured() +
                                        "' in the path: its steps are names, * or nothing.");
    }
    const std::unique_ptr<InputSource> source = OpenDocument(parser.positionalArguments().back());
    const ReadDocument document = DocumentReader({parser.isSet(allowEntities), true}).Read(*source);
    PrintDiagnostics(document.diagnostics);
    if (HasErrors(document.diagnostics))
        return DocumentHasErrors;

    const std::vector<const DOMElement*> matches =
        DOMPath::GetAll<const DOMElement>(*document.dom->GetDocumentRoot(), path);
    if (parser.isSet(count))
        PrintCount(matches.size(), parser.isSet(json));
    else if (parser.isSet(json))
        PrintMatchesAsJson(matches);
    else
        PrintMatches(matches);
    return matches.empty() ? NothingFound : Fine;
}
