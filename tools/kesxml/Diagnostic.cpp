#include "Diagnostic.h"

#include "Console.h"
#include "OneLine.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

/// The units of " (id: )".
constexpr qsizetype c_nameFrame = 7;

/// The blanks before an excerpt, which tell it from a message.
constexpr qsizetype c_margin = 2;

/// Removes " (id: NAME)" from the end of a message and returns the name. Names may hold anything,
/// so only those that are known are looked for, and the longest wins.
TString TakeFile(QString& message, const std::vector<TString>& files)
{
    const TString* found = nullptr;
    for (const TString& file : files) {
        const bool isLonger = found == nullptr || file.length() > found->length();
        if (isLonger && message.endsWith(" (id: " + QString(file) + ")"))
            found = &file;
    }
    if (found == nullptr) {
        // What ends a schema altogether comes without a name.
        if (message.endsWith(" (id: )"))
            message.chop(c_nameFrame);
        return files.front();
    }
    message.chop(found->length() + c_nameFrame);
    return *found;
}

/// Takes a message apart: "Fatal Error(3,7): message (id: name)" or "message(3,7) 'entity'".
Diagnostic ToDiagnostic(const TString& text, bool isError, const std::vector<TString>& files)
{
    static const QRegularExpression s_kindAndPosition(
        "^(?:Warning|Error|Fatal Error)(?:\\((\\d+),(\\d+)\\))?: ");
    static const QRegularExpression s_positionAndName("\\((\\d+),(\\d+)\\) '");
    Diagnostic diagnostic;
    diagnostic.isError = isError;
    diagnostic.file = files.front();
    QString message = text;
    if (const auto match = s_kindAndPosition.match(message); match.hasMatch()) {
        diagnostic.line = match.captured(1).toInt();
        diagnostic.column = match.captured(2).toInt();
        message.remove(0, match.capturedLength());
        diagnostic.file = TakeFile(message, files);
    } else if (const auto position = s_positionAndName.match(message); position.hasMatch()) {
        diagnostic.line = position.captured(1).toInt();
        diagnostic.column = position.captured(2).toInt();
        message.replace(position.capturedStart(), position.capturedLength(), " '");
    }
    diagnostic.message = message;
    return diagnostic;
}

} // namespace

void AddDiagnostics(Diagnostics& diagnostics, const std::vector<TString>& messages, bool areErrors,
                    const std::vector<TString>& files)
{
    const TString* last = nullptr;
    for (const TString& message : messages) {
        // A parse that was given up is recorded twice, as error and as fatal error.
        if (last == nullptr || !(message == *last))
            diagnostics.push_back(ToDiagnostic(message, areErrors, files));
        last = &message;
    }
}

bool HasErrors(const Diagnostics& diagnostics)
{
    return std::any_of(diagnostics.begin(), diagnostics.end(),
                       [](const Diagnostic& diagnostic) { return diagnostic.isError; });
}

TString ToText(const Diagnostic& diagnostic)
{
    QString text = diagnostic.file;
    if (diagnostic.line > 0)
        text += ':' + QString::number(diagnostic.line);
    if (diagnostic.line > 0 && diagnostic.column > 0)
        text += ':' + QString::number(diagnostic.column);
    text += diagnostic.isError ? ": error: " : ": warning: ";
    text += QString(ToOneLine(diagnostic.message));
    if (!diagnostic.path.IsEmpty())
        text += " in " + QString(diagnostic.path);
    return text;
}

void PrintDiagnostics(const Diagnostics& diagnostics)
{
    for (const Diagnostic& diagnostic : diagnostics) {
        PrintError(ToText(diagnostic));
        if (diagnostic.excerpt.IsEmpty())
            continue;
        PrintError(QString(c_margin, ' ') + QString(diagnostic.excerpt));
        PrintError(QString(c_margin + diagnostic.caret, ' ') + "^");
    }
}

TString Summarise(const TString& file, const Diagnostics& diagnostics)
{
    const auto errors = std::count_if(diagnostics.begin(), diagnostics.end(),
                                      [](const Diagnostic& d) { return d.isError; });
    const auto warnings = std::ssize(diagnostics) - errors;
    const auto count = [](auto number, const char* what) {
        return QString("%1 %2%3").arg(number).arg(what, number == 1 ? "" : "s");
    };
    QString summary = errors > 0 ? count(errors, "error") : QString("fine");
    if (warnings > 0)
        summary += ", " + count(warnings, "warning");
    return QString(file) + ": " + summary;
}
