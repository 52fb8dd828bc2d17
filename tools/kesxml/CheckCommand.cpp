#include "Command.h"
#include "Console.h"
#include "Document.h"

#include <kesplatform/CorvinaException.h>

#include <algorithm>

namespace {

/// "FILE: 1 error, 2 warnings" or "FILE: fine".
QString Summarise(const QString& file, const ReadDocument& document)
{
    const auto errors = std::count_if(document.diagnostics.begin(), document.diagnostics.end(),
                                      [](const Diagnostic& d) { return d.isError; });
    const auto warnings = std::ssize(document.diagnostics) - errors;
    const auto count = [](auto number, const char* what) {
        return QString("%1 %2%3").arg(number).arg(what, number == 1 ? "" : "s");
    };
    QString summary = errors > 0 ? count(errors, "error") : QString("fine");
    if (warnings > 0)
        summary += ", " + count(warnings, "warning");
    return file + ": " + summary + "\n";
}

} // namespace

int RunCheck(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription("Reports the errors and warnings of documents.");
    parser.addPositionalArgument("FILE", "A document, or - for standard input.", "FILE...");
    const QCommandLineOption allowEntities(
        "allow-entities", "Let documents use entities that they define themselves.");
    parser.addOption(allowEntities);
    if (!ReadArguments(parser, arguments, 1, 0))
        return UsageOrUnreadable;

    const QStringList files = parser.positionalArguments();
    const bool showsProgress = files.size() > 20 && HasProgressLine();
    int status = Fine;
    for (qsizetype i = 0; i < files.size(); ++i) {
        const QString& file = files.at(i);
        if (showsProgress)
            ShowProgress(QString("[%1/%2] %3").arg(i + 1).arg(files.size()).arg(file));
        ReadDocument document;
        try {
            const std::unique_ptr<InputSource> source = OpenDocument(file);
            document = Read(*source, {parser.isSet(allowEntities), false});
        } catch (const CorvinaException& e) {
            if (showsProgress)
                ShowProgress({});
            PrintError(TString(u"kesxml: ") + e.GetConcatenatedMessages());
            status = UsageOrUnreadable;
            continue;
        }
        if (showsProgress)
            ShowProgress({});
        for (const Diagnostic& diagnostic : document.diagnostics)
            PrintError(ToText(file, diagnostic));
        Print(Summarise(file, document));
        if (document.HasErrors())
            status = std::max<int>(status, DocumentHasErrors);
    }
    return status;
}
