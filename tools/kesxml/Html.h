#pragma once

#include <QString>
#include <QStringView>

#include <cstddef>

/// What a document, a path or a message says, as text of a page: markup is escaped, white space
/// becomes blanks, and units that control something or turn the direction of writing become U+FFFD.
QString ToHtml(const QString& text);

/// A number as people read it: "1,234,567".
QString ToHtml(std::size_t number);

/// "1 error", "2 errors".
QString ToHtml(std::size_t number, const char* what);

/// Where `text` can be cut at or before `position` without tearing a character of two units.
qsizetype FindCut(QStringView text, qsizetype position);
