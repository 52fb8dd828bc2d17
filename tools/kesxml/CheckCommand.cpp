#include "Command.h"
#include "Console.h"
#include "Diagnostic.h"
#include "Document.h"
#include "ElementLocator.h"
#include "Json.h"

#include <kesplatform/CorvinaException.h>

#include <QJsonArray>

#include <algorithm>
#include <optional>
#include <utility>

namespace {

constexpr const char* c_examples =
    "  kesxml check *.xml\n"
    "  kesxml check --xsd invoice.xsd --xsd address.xsd invoice.xml\n"
    "  kesxml check --json *.xml | jq -r '.[] | select(.valid | not) | .file'\n"
    "  curl https://example.com/feed | kesxml check -\n";

/// Tells what was found, for people or for programs.
class CheckReport
{
public:
    CheckReport(bool isJson, bool showsProgress) : m_showsProgress(showsProgress)
    {
        if (isJson)
            m_array.emplace();
    }

    void ShowProgress(qsizetype number, qsizetype count, const QString& file)
    {
        if (m_showsProgress)
            ::ShowProgress(QString("[%1/%2] ").arg(number).arg(count) + file);
    }

    void Add(const QString& file, const Diagnostics& diagnostics)
    {
        HideProgress();
        if (!m_array) {
            PrintDiagnostics(diagnostics);
            Print(Summarise(file, diagnostics) + u"\n");
            return;
        }
        QJsonArray all;
        for (const Diagnostic& diagnostic : diagnostics)
            all.append(ToJson(diagnostic));
        m_array->Add(
            {{"file", file}, {"valid", !HasErrors(diagnostics)}, {"diagnostics", std::move(all)}});
    }

    void AddUnreadable(const QString& file, const TString& reason)
    {
        HideProgress();
        if (m_array)
            m_array->Add({{"file", file}, {"unreadable", QString(reason)}});
        else
            PrintError(u"kesxml: " + reason);
    }

private:
    void HideProgress()
    {
        if (m_showsProgress)
            ::ShowProgress({});
    }

    std::optional<JsonArray> m_array;
    bool m_showsProgress;
};

/// False when one of the schemas has errors, which makes checking against it pointless.
bool LoadSchemas(DocumentReader& reader, const QStringList& schemas, CheckReport& report,
                 bool isJson)
{
    bool areFine = true;
    for (const QString& schema : schemas) {
        const Diagnostics diagnostics = reader.LoadSchema(schema);
        if (HasErrors(diagnostics) || (isJson && !diagnostics.empty()))
            report.Add(schema, diagnostics);
        else
            PrintDiagnostics(diagnostics);
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
        report.Add(file, document.diagnostics);
        return HasErrors(document.diagnostics) ? DocumentHasErrors : Fine;
    } catch (const CorvinaException& e) {
        report.AddUnreadable(file, e.GetConcatenatedMessages());
        return UsageOrUnreadable;
    }
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
        "or includes are looked for beside it. Those that it names by a remote address are not "
        "fetched: give your copies of them first.",
        "SCHEMA.xsd");
    const QCommandLineOption allowEntities(
        "allow-entities", "Let documents use entities that they define themselves.");
    const QCommandLineOption json = JsonOption();
    parser.addOptions({xsd, allowEntities, json});
    if (!ReadArguments(parser, arguments, 1, 0, c_examples))
        return UsageOrUnreadable;

    DocumentReader reader({parser.isSet(allowEntities), true});
    const QStringList files = parser.positionalArguments();
    CheckReport report(parser.isSet(json), files.size() > 20 && HasProgressLine());
    if (!LoadSchemas(reader, parser.values(xsd), report, parser.isSet(json)))
        return DocumentHasErrors;

    int status = Fine;
    for (qsizetype i = 0; i < files.size(); ++i) {
        report.ShowProgress(i + 1, files.size(), files.at(i));
        status = std::max(status, CheckFile(reader, files.at(i), report));
    }
    return status;
}
