#include "Diagnostic.h"

#include "Console.h"
#include "OneLine.h"

#include <algorithm>

namespace {

/// The blanks before an excerpt, which tell it from a message.
constexpr qsizetype c_margin = 2;

/// Of a longer value only the start is shown, in UTF-16 units.
constexpr std::size_t c_valueUnits = 80;

// Select Graphic Rendition of ECMA-48, as compilers use it.
constexpr const char16_t* c_placeColour = u"1";
constexpr const char16_t* c_errorColour = u"1;31";
constexpr const char16_t* c_warningColour = u"1;35";
constexpr const char16_t* c_caretColour = u"1;32";

/// What ends a schema altogether comes without a name.
Diagnostic ToDiagnostic(const XMLDiagnostic& recorded, const TString& file)
{
    Diagnostic diagnostic;
    diagnostic.isError = recorded.GetKind() != XMLDiagnostic::Kind::Warning;
    diagnostic.file = recorded.GetId().IsEmpty() ? file : recorded.GetId();
    diagnostic.line = recorded.GetLine();
    diagnostic.column = recorded.GetColumn();
    diagnostic.message = recorded.GetText();
    diagnostic.isInvalidUtf8 = recorded.IsInvalidUtf8();
    diagnostic.isEntityRefused = recorded.IsEntityRefused();
    diagnostic.attribute = recorded.GetAttribute();
    diagnostic.value = recorded.GetValue();
    return diagnostic;
}

/// Whether two diagnostics say the same of one place in different kinds. In one kind, they are
/// about two attributes.
bool IsRepeated(const XMLDiagnostic& a, const XMLDiagnostic& b)
{
    return a.GetKind() != b.GetKind() && a.GetLine() == b.GetLine() &&
           a.GetColumn() == b.GetColumn() && a.GetId() == b.GetId() && a.GetText() == b.GetText();
}

/// "FILE:LINE:COLUMN:"; what is unknown is left out.
TString PlaceOf(const Diagnostic& diagnostic)
{
    QString place = ToEscaped(diagnostic.file);
    if (diagnostic.line > 0)
        place += ':' + QString::number(diagnostic.line);
    if (diagnostic.line > 0 && diagnostic.column > 0)
        place += ':' + QString::number(diagnostic.column);
    return place + ':';
}

} // namespace

void AddDiagnostics(Diagnostics& diagnostics, const std::vector<XMLDiagnostic>& recorded,
                    const TString& file)
{
    const XMLDiagnostic* last = nullptr;
    for (const XMLDiagnostic& next : recorded) {
        // A parse that was given up is recorded twice, as error and as fatal error.
        if (last == nullptr || !IsRepeated(next, *last))
            diagnostics.push_back(ToDiagnostic(next, file));
        last = &next;
    }
}

bool HasErrors(const Diagnostics& diagnostics)
{
    return std::any_of(diagnostics.begin(), diagnostics.end(),
                       [](const Diagnostic& diagnostic) { return diagnostic.isError; });
}

TString GetValueNote(const Diagnostic& diagnostic)
{
    if (diagnostic.attribute.IsEmpty() ||
        diagnostic.message.contains(u"'" + diagnostic.value + u"'"))
        return {};
    return u": '" + ToAttributeText(diagnostic.value, c_valueUnits) + u"'";
}

void PrintDiagnostics(std::span<const Diagnostic> diagnostics)
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
            text += u" in " + diagnostic.path + GetValueNote(diagnostic);
        PrintErrorAsIs(text);
        if (diagnostic.excerpt.IsEmpty())
            continue;
        PrintErrorAsIs(QString(c_margin, ' ') + QString(diagnostic.excerpt));
        PrintErrorAsIs(TString(QString(c_margin + diagnostic.caret, ' ')) +
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
    return ToEscaped(file) + u": " + TString(summary);
}
