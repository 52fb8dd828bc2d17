#include "CheckReport.h"
#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "ElementLocator.h"
#include "HtmlReport.h"
#include "Json.h"

#include <kesplatform/CorvinaException.h>

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

int CheckFile(DocumentReader& reader, const QString& file, CheckReport& report)
{
    try {
        const std::unique_ptr<InputSource> source = OpenDocument(file);
        ReadDocument document = reader.Read(*source);
        NameElements(document.diagnostics, file, *document.dom);
        report.Add(file, document.diagnostics, *source, *document.dom);
        return HasErrors(document.diagnostics) ? DocumentHasErrors : Fine;
    } catch (const CorvinaException& e) {
        report.AddUnreadable(file, e.GetConcatenatedMessages());
        return UsageOrUnreadable;
    }
}

int CheckFiles(DocumentReader& reader, const QStringList& files, CheckReport& report)
{
    int status = Fine;
    for (qsizetype i = 0; i < files.size(); ++i) {
        report.ShowProgress(i + 1, files.size(), files.at(i));
        status = std::max(status, CheckFile(reader, files.at(i), report));
    }
    return status;
}

/// Whether two names stand for one file.
bool IsSameFile(const QString& a, const QString& b)
{
    const QFileInfo first(a);
    return first.exists() && first == QFileInfo(b);
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
    const QCommandLineOption json = JsonOption();
    const QCommandLineOption html(
        "html",
        "Write a page, which needs no other file, with what was found beside the lines that it is "
        "about and with what is in the documents. A page that is there is replaced.",
        "REPORT.html");
    parser.addOptions({xsd, allowEntities, json, html});
    if (!ReadArguments(parser, arguments, 1, 0, c_examples))
        return UsageOrUnreadable;
    const QStringList files = parser.positionalArguments();
    const QStringList schemas = parser.values(xsd);
    std::unique_ptr<HtmlReport> page;
    if (parser.isSet(html)) {
        const QString name = parser.value(html);
        for (const QString& file : files + schemas) {
            if (IsSameFile(file, name))
                return FailUsage(arguments, "the report would replace '" + file + "'.");
        }
        page = std::make_unique<HtmlReport>(name);
    }

    DocumentReader reader({parser.isSet(allowEntities), true});
    CheckReport report(parser.isSet(json), files.size() > 20 && HasProgressLine(), page.get());
    int status = DocumentHasErrors;
    if (LoadSchemas(reader, schemas, report)) {
        if (page)
            page->SetSchemas(schemas);
        status = CheckFiles(reader, files, report);
    }
    if (page)
        page->Write();
    return status;
}
