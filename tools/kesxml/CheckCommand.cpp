#include "Command.h"
#include "Console.h"
#include "Diagnostic.h"
#include "Document.h"
#include "ElementLocator.h"

#include <kesplatform/CorvinaException.h>

#include <algorithm>

namespace {

constexpr const char* c_examples =
    "  kesxml check *.xml\n"
    "  kesxml check --xsd invoice.xsd --xsd address.xsd invoice.xml\n"
    "  curl https://example.com/feed | kesxml check -\n";

/// False when one of the schemas has errors, which makes checking against it pointless.
bool LoadSchemas(DocumentReader& reader, const QStringList& schemas)
{
    bool areFine = true;
    for (const QString& schema : schemas) {
        const Diagnostics diagnostics = reader.LoadSchema(schema);
        PrintDiagnostics(diagnostics);
        if (HasErrors(diagnostics))
            Print(Summarise(schema, diagnostics) + u"\n");
        areFine = areFine && !HasErrors(diagnostics);
    }
    if (!areFine)
        PrintError(QString("kesxml: no document was checked."));
    return areFine;
}

/// The progress, where it is shown, is gone before anything else is written.
int CheckFile(DocumentReader& reader, const QString& file, bool showsProgress)
{
    const auto hideProgress = [showsProgress] {
        if (showsProgress)
            ShowProgress({});
    };
    try {
        const std::unique_ptr<InputSource> source = OpenDocument(file);
        ReadDocument document = reader.Read(*source);
        NameElements(document.diagnostics, file, *document.dom);
        hideProgress();
        PrintDiagnostics(document.diagnostics);
        Print(Summarise(file, document.diagnostics) + u"\n");
        return HasErrors(document.diagnostics) ? DocumentHasErrors : Fine;
    } catch (const CorvinaException& e) {
        hideProgress();
        PrintError(TString(u"kesxml: ") + e.GetConcatenatedMessages());
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
    parser.addOptions({xsd, allowEntities});
    if (!ReadArguments(parser, arguments, 1, 0, c_examples))
        return UsageOrUnreadable;

    DocumentReader reader({parser.isSet(allowEntities), true});
    if (!LoadSchemas(reader, parser.values(xsd)))
        return DocumentHasErrors;

    const QStringList files = parser.positionalArguments();
    const bool showsProgress = files.size() > 20 && HasProgressLine();
    int status = Fine;
    for (qsizetype i = 0; i < files.size(); ++i) {
        const QString& file = files.at(i);
        if (showsProgress)
            ShowProgress(QString("[%1/%2] ").arg(i + 1).arg(files.size()) + file);
        status = std::max(status, CheckFile(reader, file, showsProgress));
    }
    return status;
}
