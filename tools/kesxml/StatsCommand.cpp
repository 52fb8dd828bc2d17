#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "Excerpt.h"
#include "Heap.h"
#include "Json.h"
#include "Statistics.h"

#include <kescorexml/DOMParser.h>

#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdint>

namespace {

constexpr const char* c_examples = "  kesxml stats catalogue.xml\n"
                                   "  zcat catalogue.xml.gz | kesxml stats -\n"
                                   "  kesxml stats --json catalogue.xml | jq .depth\n";

/// A parse and what it cost.
struct MeasuredParse
{
    std::unique_ptr<DOM> dom;
    std::int64_t nanoseconds = 0;
    std::optional<std::size_t> heap;
};

MeasuredParse Parse(InputSource& source)
{
    // What the first parse of a process sets up is no part of the document.
    DOMParser().ParseXmlString("<a/>", u"");
    MeasuredParse parse;
    const std::optional<std::size_t> before = GetHeapInUse();
    {
        const DOMParser parser;
        QElapsedTimer timer;
        timer.start();
        parse.dom = parser.ParseXmlInputSource(source, false);
        parse.nanoseconds = timer.nsecsElapsed();
    }
    if (const std::optional<std::size_t> after = GetHeapInUse())
        parse.heap = *after > *before ? *after - *before : 0;
    return parse;
}

void PrintLine(const char* name, const QString& value, const char* unit = "")
{
    Print(QString(name).leftJustified(12) + value.rightJustified(14) + unit + "\n");
}

void PrintAsText(const Statistics& statistics, const MeasuredParse& parse, std::int64_t bytes)
{
    PrintLine("elements", QString::number(statistics.elements));
    PrintLine("attributes", QString::number(statistics.attributes));
    PrintLine("depth", QString::number(statistics.depth));
    PrintLine("text units", QString::number(statistics.textUnits));
    PrintLine("bytes", QString::number(bytes));
    PrintLine("parse time", QString::number(static_cast<double>(parse.nanoseconds) / 1e6, 'f', 2),
              " ms");
    if (parse.heap)
        PrintLine("heap", QString::number(*parse.heap), " bytes");
}

void PrintAsJson(const Statistics& statistics, const MeasuredParse& parse, std::int64_t bytes)
{
    QJsonObject object{{"elements", static_cast<qint64>(statistics.elements)},
                       {"attributes", static_cast<qint64>(statistics.attributes)},
                       {"depth", static_cast<qint64>(statistics.depth)},
                       {"textUnits", static_cast<qint64>(statistics.textUnits)},
                       {"bytes", static_cast<qint64>(bytes)},
                       {"parseNanoseconds", static_cast<qint64>(parse.nanoseconds)}};
    if (parse.heap)
        object["heapBytes"] = static_cast<qint64>(*parse.heap);
    PrintJson(object);
}

} // namespace

int RunStats(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Counts what is in a document and measures what it costs to parse: the time,\n"
        "without that for reading the file, and the heap that the tree takes.");
    parser.addPositionalArgument("FILE", "The document, or - for standard input.");
    const QCommandLineOption json = JsonOption();
    parser.addOption(json);
    if (!ReadArguments(parser, arguments, 1, 1, c_examples))
        return UsageOrUnreadable;

    const QString file = parser.positionalArguments().front();
    const std::unique_ptr<InputSource> source = OpenDocument(file);
    const MeasuredParse parse = Parse(*source);
    Diagnostics diagnostics;
    AddDiagnostics(diagnostics, parse.dom->GetErrorDiagnostics(), source->Id());
    AddExcerpts(diagnostics, *source);
    PrintDiagnostics(diagnostics);
    if (HasErrors(diagnostics))
        return DocumentHasErrors;

    const Statistics statistics = Count(*parse.dom);
    const QFileInfo info(file);
    // A file that is not UTF-8 was decoded before.
    const std::int64_t bytes = file != "-" && info.isFile() ? info.size() : source->Size();
    if (parser.isSet(json))
        PrintAsJson(statistics, parse, bytes);
    else
        PrintAsText(statistics, parse, bytes);
    return Fine;
}
