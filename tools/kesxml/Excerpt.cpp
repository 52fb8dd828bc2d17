#include "Excerpt.h"

#include "OneLine.h"
#include "SourceLines.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <vector>

namespace {

/// How much of a long line is shown on either side of the position, in UTF-16 units.
constexpr qsizetype c_unitsAround = 60;

/// The columns of a terminal that a character takes.
int WidthOf(char32_t character)
{
    if (QChar::isMark(character))
        return 0;
    struct Range
    {
        char32_t first;
        char32_t last;
    };
    // What Unicode's East Asian Width calls wide, by whole blocks.
    static constexpr Range s_wide[] = {
        {0x1100, 0x115F},   {0x2E80, 0xA4CF},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},
        {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F},
        {0x1F900, 0x1F9FF}, {0x20000, 0x2FFFD}, {0x30000, 0x3FFFD},
    };
    for (const Range& range : s_wide) {
        if (character >= range.first && character <= range.last)
            return 2;
    }
    return 1;
}

int WidthOf(const QString& text)
{
    int width = 0;
    for (const uint character : text.toUcs4())
        width += WidthOf(character);
    return width;
}

void SetExcerpt(Diagnostic& diagnostic, const QString& line)
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
    diagnostic.caret = WidthOf(safeBefore);
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
    SourceLines lines(source);
    QString text;
    for (Diagnostic* const diagnostic : inOrder) {
        // The end of a document that ends with a line end is on a line of its own.
        if (lines.GetNumber() < diagnostic->line)
            text = lines.GoTo(diagnostic->line);
        SetExcerpt(*diagnostic, text);
    }
}
