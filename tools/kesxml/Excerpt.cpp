#include "Excerpt.h"

#include "CharacterWidths.h"
#include "OneLine.h"
#include "SourceLines.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

/// How much of a long line is shown on either side of the position, in UTF-16 units.
constexpr qsizetype c_unitsAround = 60;

void SetExcerpt(Diagnostic& diagnostic, const QString& line, const CharacterWidths& widths)
{
    const qsizetype column = diagnostic.column - 1;
    if (column < 0 || column > line.size())
        return;
    qsizetype first = std::max<qsizetype>(0, column - c_unitsAround);
    qsizetype last = std::min(line.size(), column + c_unitsAround);
    // A character of two units is not torn.
    if (first > 0 && line.at(first).isLowSurrogate())
        ++first;
    if (last < line.size() && line.at(last).isLowSurrogate())
        --last;
    const QString before =
        (first > 0 ? QString(QChar(0x2026)) : QString()) + line.mid(first, column - first);
    const QString after =
        line.mid(column, last - column) + (last < line.size() ? QString(QChar(0x2026)) : QString());
    const QString safeBefore = ToSafeUnits(before);
    diagnostic.excerpt = safeBefore + QString(ToSafeUnits(after));
    diagnostic.caret = widths.Of(safeBefore);
}

} // namespace

void AddExcerpts(Diagnostics& diagnostics, InputSource& source)
{
    std::vector<Diagnostic*> inOrder;
    for (Diagnostic& diagnostic : diagnostics) {
        if (diagnostic.line > 0 && diagnostic.file == source.Id())
            inOrder.push_back(&diagnostic);
    }
    if (inOrder.empty())
        return;
    std::stable_sort(inOrder.begin(), inOrder.end(),
                     [](const Diagnostic* a, const Diagnostic* b) { return a->line < b->line; });
    const CharacterWidths widths;
    SourceLines lines(source);
    QString text;
    for (Diagnostic* const diagnostic : inOrder) {
        // The end of a document that ends with a line end is on a line of its own.
        if (lines.GetNumber() < diagnostic->line)
            text = lines.GoTo(diagnostic->line);
        SetExcerpt(*diagnostic, text, widths);
        if (!diagnostic->isInvalidUtf8)
            continue;
        if (const std::optional<unsigned char> byte = lines.FindInvalidByte())
            diagnostic->message = QString("the byte 0x%1 is not valid in UTF-8")
                                      .arg(QString::number(*byte, 16).toUpper());
    }
}
