#include "HtmlExcerpts.h"

#include "Html.h"
#include "OneLine.h"
#include "SourceLines.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

/// How many lines are shown before and after one that a diagnostic speaks of.
constexpr int c_linesAround = 2;
/// Lines up to this length, in UTF-16 units, are shown whole.
constexpr qsizetype c_wholeUnits = 200;
constexpr qsizetype c_unitsBefore = 80;
constexpr qsizetype c_unitsAfter = 100;

/// Messages and paths may quote names of any length.
constexpr std::size_t c_messageUnits = 500;

const QChar c_ellipsis(0x2026);

using DiagnosticList = std::vector<const Diagnostic*>;

/// A part of a line, and what is said about it, in the order of the columns.
struct Part
{
    qsizetype first;
    qsizetype last;
    DiagnosticList diagnostics;
};

/// The index of the unit that a diagnostic points at: that behind the last for the end of the line,
/// -1 when it points at none.
qsizetype IndexOf(const Diagnostic& diagnostic, const QString& line)
{
    return diagnostic.column <= line.size() + 1 ? diagnostic.column - 1 : -1;
}

/// The parts of a line that show all columns which are spoken of.
std::vector<Part> Divide(const QString& line, const DiagnosticList& diagnostics)
{
    std::vector<Part> parts;
    for (const Diagnostic* diagnostic : diagnostics) {
        const qsizetype index = std::max<qsizetype>(0, IndexOf(*diagnostic, line));
        if (parts.empty() || index > parts.back().last) {
            const bool isWhole = line.size() <= c_wholeUnits;
            const qsizetype first = isWhole ? 0 : std::max<qsizetype>(0, index - c_unitsBefore);
            const qsizetype last =
                isWhole ? line.size() : std::min(line.size(), index + c_unitsAfter);
            parts.push_back({FindCut(line, first), FindCut(line, last), {}});
        }
        parts.back().diagnostics.push_back(diagnostic);
    }
    return parts;
}

QString DrawCode(int number, const QString& code, bool isSpokenOf)
{
    return QString("<div class=\"line%1\"><span class=\"at\">").arg(isSpokenOf ? " hit" : "") +
           ToHtml(static_cast<std::size_t>(number)) + "</span><code>" + code + "</code></div>\n";
}

/// A line that stands around one that is spoken of.
QString DrawContext(int number, const QString& line)
{
    const qsizetype last = FindCut(line, std::min(line.size(), c_wholeUnits));
    return DrawCode(number, ToHtml(line.left(last)) + (last < line.size() ? c_ellipsis : QString()),
                    false);
}

QString DrawMessage(const Diagnostic& diagnostic, const QString& position)
{
    const QString kind = diagnostic.isError ? "error" : "warning";
    QString html = "<p class=\"message " + kind + "\"><strong>" + kind + "</strong> ";
    if (!position.isEmpty())
        html += "<span class=\"position\">" + position + "</span> ";
    html +=
        "<span class=\"text\">" + ToHtml(ToOneLine(diagnostic.message, c_messageUnits)) + "</span>";
    if (!diagnostic.path.IsEmpty())
        html += " in <code>" + ToHtml(ToOneLine(diagnostic.path, c_messageUnits)) + "</code>" +
                ToHtml(GetValueNote(diagnostic));
    return html + "</p>\n";
}

QString DrawPart(int number, const QString& line, const Part& part)
{
    QString code = part.first > 0 ? QString(c_ellipsis) : QString();
    QString messages;
    qsizetype next = part.first;
    for (const Diagnostic* diagnostic : part.diagnostics) {
        const QString lineNumber = QString::number(diagnostic->line);
        messages +=
            DrawMessage(*diagnostic, diagnostic->column > 0
                                         ? lineNumber + ":" + QString::number(diagnostic->column)
                                         : lineNumber);
        const qsizetype start = FindCut(line, IndexOf(*diagnostic, line));
        if (start < next)
            continue;
        const bool isPair = start + 1 < line.size() && FindCut(line, start + 1) == start;
        const QString marked = line.mid(start, isPair ? 2 : 1);
        code += ToHtml(line.mid(next, start - next)) + "<mark>" +
                (marked.isEmpty() ? "&#160;" : ToHtml(marked)) + "</mark>";
        next = start + marked.size();
    }
    code += ToHtml(line.mid(next, std::max<qsizetype>(0, part.last - next)));
    if (part.last < line.size())
        code += c_ellipsis;
    return DrawCode(number, code, true) + messages;
}

QString DrawLine(int number, const QString& line, const DiagnosticList& diagnostics)
{
    QString html;
    for (const Part& part : Divide(line, diagnostics))
        html += DrawPart(number, line, part);
    return html;
}

/// All of one source, which is read once.
QString DrawLines(const DiagnosticList& inOrder, InputSource& source)
{
    QString html;
    SourceLines lines(source);
    for (std::size_t i = 0; i < inOrder.size();) {
        html += "<div class=\"excerpt\">\n";
        int number = std::max(inOrder[i]->line - c_linesAround, 1);
        int last = inOrder[i]->line + c_linesAround;
        for (; number <= last; ++number) {
            DiagnosticList here;
            for (; i < inOrder.size() && inOrder[i]->line == number; ++i)
                here.push_back(inOrder[i]);
            if (here.empty() && lines.GetNumber() < number - 1)
                lines.GoTo(number - 1);
            if (here.empty() && lines.IsAtEnd())
                break;
            const QString line = lines.GoTo(number);
            html += here.empty() ? DrawContext(number, line) : DrawLine(number, line, here);
            // What would overlap with the next excerpt is one with it.
            if (i < inOrder.size() && inOrder[i]->line - c_linesAround <= last + 1)
                last = inOrder[i]->line + c_linesAround;
        }
        html += "</div>\n";
    }
    return html;
}

/// At most `limit` diagnostics, rather errors than warnings.
DiagnosticList Choose(const Diagnostics& diagnostics, std::size_t limit)
{
    DiagnosticList chosen;
    for (const Diagnostic& diagnostic : diagnostics)
        chosen.push_back(&diagnostic);
    std::stable_partition(chosen.begin(), chosen.end(), [](auto* d) { return d->isError; });
    chosen.resize(std::min(chosen.size(), limit));
    return chosen;
}

} // namespace

QString DrawExcerpts(const Diagnostics& diagnostics, InputSource& source, std::size_t limit)
{
    DiagnosticList shown = Choose(diagnostics, limit);
    const auto withLines = std::stable_partition(shown.begin(), shown.end(), [&](auto* d) {
        return d->line <= 0 || d->file != source.Id();
    });
    QString html;
    for (auto i = shown.begin(); i != withLines; ++i) {
        const Diagnostic& diagnostic = **i;
        QString position = diagnostic.file != source.Id() ? ToHtml(diagnostic.file) : QString();
        if (diagnostic.line > 0)
            position += QString(":%1:%2").arg(diagnostic.line).arg(diagnostic.column);
        html += DrawMessage(diagnostic, position);
    }
    DiagnosticList inOrder(withLines, shown.end());
    std::stable_sort(inOrder.begin(), inOrder.end(), [](auto* a, auto* b) {
        return std::tie(a->line, a->column) < std::tie(b->line, b->column);
    });
    html += DrawLines(inOrder, source);
    if (diagnostics.size() > shown.size())
        html += "<p class=\"omitted\">" + ToHtml(diagnostics.size() - shown.size()) +
                " more of them are left out here.</p>\n";
    return html;
}
