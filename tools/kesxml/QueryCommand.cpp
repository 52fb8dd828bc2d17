#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "Json.h"
#include "QueryOutput.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMPath.h>
#include <kesplatform/CorvinaException.h>

#include <algorithm>
#include <vector>

namespace {

constexpr const char* c_examples = "  kesxml query //sensor stations.xml\n"
                                   "  kesxml query '/stations/*/note' *.xml\n"
                                   "  kesxml query --text //title - <feed.xml\n"
                                   "  kesxml query --attribute href //a page.xml\n"
                                   "  kesxml query --count //item - <feed.xml\n"
                                   "  kesxml query --json //sensor stations.xml | jq '.[].text'\n";

/// Queries one document.
int QueryFile(DocumentReader& reader, const QString& path, const QString& file, QueryOutput& output)
{
    const std::unique_ptr<InputSource> source = OpenDocument(file);
    const ReadDocument document = reader.Read(*source);
    PrintDiagnostics(document.diagnostics);
    if (HasErrors(document.diagnostics))
        return DocumentHasErrors;
    output.Add(file, *source,
               DOMPath::GetAll<const DOMElement>(*document.dom->GetDocumentRoot(), path));
    return Fine;
}

int QueryFiles(DocumentReader& reader, const QString& path, const QStringList& files,
               QueryOutput& output)
{
    int status = Fine;
    for (const QString& file : files) {
        try {
            status = std::max(status, QueryFile(reader, path, file, output));
        } catch (const CorvinaException& e) {
            PrintError(u"kesxml: " + e.GetConcatenatedMessages());
            status = UsageOrUnreadable;
        }
    }
    return status;
}

/// What cannot be asked for; empty when all is fine.
QString FindMistake(const QString& path, const QueryOutputOptions& options)
{
    if (QString mistake = FindMistakeInPath(path); !mistake.isEmpty())
        return mistake;
    if (options.isCount + options.isText + !options.attribute.isEmpty() > 1)
        return "--count, --text and --attribute exclude each other.";
    if (options.isJson && (options.isText || !options.attribute.isEmpty()))
        return "--json holds text and attributes already.";
    return {};
}

} // namespace

int RunQuery(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Prints the elements that a path finds, one a line: LINE:COLUMN of the start tag,\n"
        "the element's own path, its attributes and the start of its text. Of several\n"
        "files, the name of the file stands before that.\n\n"
        "The steps of a path are names, * for any element, or nothing for any number of\n"
        "levels. /a/b finds the children b of the document element a, //b all elements b.");
    parser.addPositionalArgument("PATH", "The path.");
    parser.addPositionalArgument("FILE", "A document, or - for standard input.", "FILE...");
    const QCommandLineOption count("count", "Print the number of matches and nothing else.");
    const QCommandLineOption text("text", "Print the whole text of each match and nothing else.");
    const QCommandLineOption attribute(
        "attribute", "Print the value of this attribute of the matches that have it.", "NAME");
    const QCommandLineOption allowEntities("allow-entities",
                                           "Let documents use entities that they define "
                                           "themselves.");
    const QCommandLineOption json = JsonOption();
    parser.addOptions({count, text, attribute, allowEntities, json});
    if (!ReadArguments(parser, arguments, 2, 0, c_examples))
        return UsageOrUnreadable;

    const QString path = parser.positionalArguments().front();
    const QStringList files = parser.positionalArguments().mid(1);
    QueryOutputOptions options;
    options.isCount = parser.isSet(count);
    options.isText = parser.isSet(text);
    options.isJson = parser.isSet(json);
    options.attribute = parser.value(attribute);
    options.namesFiles = files.size() > 1;
    if (const QString mistake = FindMistake(path, options); !mistake.isEmpty())
        return FailUsage(arguments, mistake);

    ReadOptions reading;
    reading.allowEntities = parser.isSet(allowEntities);
    reading.lineNumbers = true;
    reading.hasEntityOption = true;
    DocumentReader reader(reading);
    QueryOutput output(options);
    const int status = QueryFiles(reader, path, files, output);
    output.End();
    if (status != Fine)
        return status;
    return output.HasMatches() ? Fine : NothingFound;
}
