#include "CheckReport.h"
#include "CheckedDocument.h"
#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "HtmlReport.h"
#include "Json.h"

#include <QFileInfo>

#include <algorithm>
#include <memory>

namespace {

constexpr const char* c_examples =
    "  kesxml check *.xml\n"
    "  kesxml check --xsd address.xsd --xsd invoice.xsd invoice.xml\n"
    "  kesxml check --html report.html *.xml\n"
    "  kesxml check --json *.xml | jq -r '.[] | select(.valid | not) | .file'\n"
    "  curl https://example.com/feed | kesxml check -\n";

struct CheckOptions
{
    QStringList files;
    QStringList schemas;
    bool allowEntities = false;
};

/// From so many documents on, threads are worth their making.
constexpr qsizetype c_manyFiles = 8;

std::unique_ptr<DocumentReader> MakeReaderFor(const CheckOptions& options)
{
    ReadOptions reading;
    reading.allowEntities = options.allowEntities;
    reading.lineNumbers = true;
    reading.hasEntityOption = true;
    return std::make_unique<DocumentReader>(reading);
}

/// False when one of the schemas has errors, which makes checking against it pointless.
bool LoadSchemas(DocumentReader& reader, const QStringList& schemas, CheckReport& report)
{
    bool areFine = true;
    for (const QString& schema : schemas) {
        const std::unique_ptr<InputSource> source = OpenDocument(schema);
        const Diagnostics diagnostics = reader.LoadSchema(*source);
        report.AddSchema(schema, diagnostics, *source);
        areFine = areFine && !HasErrors(diagnostics);
    }
    if (!areFine)
        PrintError(QString("kesxml: no document was checked."));
    return areFine;
}

int StatusOf(const CheckedDocument& document)
{
    if (!document.unreadable.IsEmpty())
        return UsageOrUnreadable;
    return HasErrors(document.diagnostics) ? DocumentHasErrors : Fine;
}

/// Whether the files can be read in any order, and schemas more than once.
bool CanBeCheckedInParallel(const CheckOptions& options)
{
    return options.files.size() >= c_manyFiles && !options.files.contains("-") &&
           std::none_of(options.schemas.begin(), options.schemas.end(),
                        [](const QString& schema) { return !QFileInfo(schema).isFile(); });
}

int CheckFiles(DocumentReader& reader, const CheckOptions& options, CheckReport& report,
               bool isTreeWanted)
{
    int status = Fine;
    const auto begin = [&](qsizetype i) {
        report.ShowProgress(i + 1, options.files.size(), options.files.at(i));
    };
    const auto add = [&](const CheckedDocument& document) {
        status = std::max(status, StatusOf(document));
        report.Add(document);
    };
    if (!isTreeWanted && CanBeCheckedInParallel(options)) {
        const auto makeReader = [&] {
            std::unique_ptr<DocumentReader> another = MakeReaderFor(options);
            for (const QString& schema : options.schemas)
                another->LoadSchema(*OpenDocument(schema));
            return another;
        };
        CheckInParallel(options.files, makeReader, begin, add);
        return status;
    }
    for (qsizetype i = 0; i < options.files.size(); ++i) {
        begin(i);
        add(CheckDocument(reader, options.files.at(i), isTreeWanted));
    }
    return status;
}

/// Whether two names stand for one file.
bool IsSameFile(const QString& a, const QString& b)
{
    const QFileInfo first(a);
    return first.exists() && first == QFileInfo(b);
}

int Check(const CheckOptions& options, const CheckReportOptions& reporting, HtmlReport* page)
{
    const std::unique_ptr<DocumentReader> reader = MakeReaderFor(options);
    CheckReport report(reporting, page);
    if (!LoadSchemas(*reader, options.schemas, report))
        return DocumentHasErrors;
    if (page != nullptr)
        page->SetSchemas(options.schemas);
    return CheckFiles(*reader, options, report, page != nullptr);
}

} // namespace

int RunCheck(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription("Reports the errors and warnings of documents.");
    parser.addPositionalArgument("FILE", "A document, or - for standard input.", "FILE...");
    const QCommandLineOption xsd(
        "xsd",
        "Validate against this XML Schema too; may be given several times. Schemas that it imports "
        "or includes are looked for in its folder and below. Give those first that lie elsewhere; "
        "nothing is fetched from a remote address.",
        "SCHEMA.xsd");
    const QCommandLineOption allowEntities(
        "allow-entities", "Let documents use entities that they define themselves.");
    const QCommandLineOption quiet({"q", "quiet"}, "Print nothing but errors and warnings.");
    const QCommandLineOption maxErrors(
        "max-errors", "Show at most this many errors and warnings of each document.", "N");
    const QCommandLineOption json = JsonOption();
    const QCommandLineOption html(
        "html",
        "Write a page, which needs no other file, with what was found beside the lines that it is "
        "about and with what is in the documents. A page that is there is replaced.",
        "REPORT.html");
    parser.addOptions({xsd, allowEntities, quiet, maxErrors, json, html});
    if (!ReadArguments(parser, arguments, 1, 0, c_examples))
        return UsageOrUnreadable;
    CheckOptions options;
    options.files = parser.positionalArguments();
    options.schemas = parser.values(xsd);
    options.allowEntities = parser.isSet(allowEntities);
    CheckReportOptions reporting;
    reporting.isJson = parser.isSet(json);
    reporting.isQuiet = parser.isSet(quiet);
    reporting.showsProgress = options.files.size() > 20 && HasProgressLine();
    if (bool isNumber = true; parser.isSet(maxErrors)) {
        reporting.maxErrors = parser.value(maxErrors).toUInt(&isNumber);
        if (!isNumber)
            return FailUsage(arguments,
                             "'" + parser.value(maxErrors) + "' is not a number of errors.");
    }
    if (!parser.isSet(html))
        return Check(options, reporting, nullptr);
    for (const QString& file : options.files + options.schemas) {
        if (IsSameFile(file, parser.value(html)))
            return FailUsage(arguments, "the report would replace '" + file + "'.");
    }
    HtmlReport page(parser.value(html));
    const int status = Check(options, reporting, &page);
    page.Write();
    return status;
}
