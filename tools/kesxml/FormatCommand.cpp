#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "LossyFormat.h"
#include "MarkupFormatter.h"
#include "SavedFile.h"

#include <kesplatform/CorvinaException.h>

#include <algorithm>
#include <optional>

namespace {

constexpr const char* c_examples = "  kesxml format settings.xml\n"
                                   "  kesxml format -o pretty.xml settings.xml\n"
                                   "  kesxml format --in-place *.xml\n"
                                   "  kesxml format --no-header - <fragment.xml\n";

struct FormatOptions
{
    bool lossy = false;
    bool escapeAll = false;
    bool header = true;
    bool inPlace = false;
    QString output;
};

/// The document formatted; nothing, after saying why, when it has errors.
std::optional<std::string> Format(InputSource& source, const FormatOptions& options)
{
    // References are written as they stand; that they are expanded is only to see what they hold.
    DocumentReader reader({!options.lossy, false});
    if (options.lossy) {
        const ReadDocument document = reader.Read(source);
        PrintDiagnostics(document.diagnostics);
        if (HasErrors(document.diagnostics))
            return {};
        PrintDiagnostics(FindLosses(*document.dom, source));
        return FormatLossily(*document.dom, options.escapeAll, options.header);
    }
    const Diagnostics diagnostics = reader.Check(source);
    PrintDiagnostics(diagnostics);
    if (HasErrors(diagnostics))
        return {};
    return FormatMarkup(ReadText(source), options.header);
}

int FormatFile(const QString& file, const FormatOptions& options)
{
    const std::unique_ptr<InputSource> source = OpenDocument(file);
    const std::optional<std::string> formatted = Format(*source, options);
    if (!formatted)
        return DocumentHasErrors;
    if (options.inPlace)
        SaveFile(file, *formatted);
    else if (!options.output.isEmpty())
        SaveFile(options.output, *formatted);
    else
        PrintDocument(*formatted);
    return Fine;
}

int FormatFiles(const QStringList& files, const FormatOptions& options)
{
    int status = Fine;
    for (const QString& file : files) {
        try {
            status = std::max(status, FormatFile(file, options));
        } catch (const CorvinaException& e) {
            PrintError(u"kesxml: " + e.GetConcatenatedMessages());
            status = UsageOrUnreadable;
        }
    }
    return status;
}

/// What is wrong with the options together; empty when nothing is.
QString FindMistake(const QStringList& files, const FormatOptions& options)
{
    if (options.inPlace && !options.output.isEmpty())
        return "--in-place and --output exclude each other.";
    if (options.inPlace && files.contains("-"))
        return "standard input cannot be formatted in place.";
    if (!options.inPlace && files.size() > 1)
        return "'" + files.at(1) + "' is one argument too many without --in-place.";
    if (options.escapeAll && !options.lossy)
        return "--escape-all changes how text is written, and needs --lossy.";
    return {};
}

} // namespace

int RunFormat(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Writes a document formatted to standard output. Nothing but white space between\n"
        "markup changes; text, comments and references stay as they are written.");
    parser.addPositionalArgument("FILE", "A document, or - for standard input.", "FILE...");
    const QCommandLineOption output({"o", "output"}, "Write to this file.", "FILE");
    const QCommandLineOption inPlace({"i", "in-place"},
                                     "Replace each document by what was formatted.");
    const QCommandLineOption noHeader("no-header", "Leave the XML declaration out.");
    const QCommandLineOption lossy(
        "lossy", "Write what the library's tree holds, as the library writes it: without comments, "
                 "processing instructions and document type, and with attributes in order.");
    const QCommandLineOption escapeAll(
        "escape-all", "With --lossy, write text with references only, and tabs and line ends as "
                      "references.");
    parser.addOptions({output, inPlace, noHeader, lossy, escapeAll});
    if (!ReadArguments(parser, arguments, 1, 0, c_examples))
        return UsageOrUnreadable;

    FormatOptions options;
    options.lossy = parser.isSet(lossy);
    options.escapeAll = parser.isSet(escapeAll);
    options.header = !parser.isSet(noHeader);
    options.inPlace = parser.isSet(inPlace);
    options.output = parser.value(output);
    const QStringList files = parser.positionalArguments();
    if (const QString mistake = FindMistake(files, options); !mistake.isEmpty())
        return FailUsage(arguments, mistake);
    return FormatFiles(files, options);
}
