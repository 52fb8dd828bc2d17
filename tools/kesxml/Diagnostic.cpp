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

// Select Graphic Rendition of ECMA-48, as compilers use it.
constexpr const char16_t* c_placeColour = u"1";
constexpr const char16_t* c_errorColour = u"1;31";
constexpr const char16_t* c_warningColour = u"1;35";
constexpr const char16_t* c_caretColour = u"1;32";

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

/// "FILE:LINE:COLUMN:"; what is unknown is left out.
TString PlaceOf(const Diagnostic& diagnostic)
{
    QString place = diagnostic.file;
    if (diagnostic.line > 0)
        place += ':' + QString::number(diagnostic.line);
    if (diagnostic.line > 0 && diagnostic.column > 0)
        place += ':' + QString::number(diagnostic.column);
    return place + ':';
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

void PrintDiagnostics(const Diagnostics& diagnostics)
{
    const bool hasColours = HasErrorColours();
    const auto colour = [&](const char16_t* code, const TString& text) {
        return hasColours ? Colour(code, text) : text;
    };
    for (const Diagnostic& diagnostic : diagnostics) {
        const TString kind = diagnostic.isError ? colour(c_errorColour, u"error:")
                                                : colour(c_warningColour, u"warning:");
        TString text = colour(c_placeColour, PlaceOf(diagnostic)) + u" " + kind + u" " +
                       ToOneLine(diagnostic.message);
        if (!diagnostic.path.IsEmpty())
            text += u" in " + diagnostic.path;
        PrintError(text);
        if (diagnostic.excerpt.IsEmpty())
            continue;
        PrintError(QString(c_margin, ' ') + QString(diagnostic.excerpt));
        PrintError(TString(QString(c_margin + diagnostic.caret, ' ')) +
                   colour(c_caretColour, u"^"));
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
