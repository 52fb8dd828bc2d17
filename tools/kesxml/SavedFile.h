#pragma once

#include <QSaveFile>
#include <QString>

#include <string_view>

/// Puts these bytes in place of a file, or makes it. Whatever goes wrong, what was there stays:
/// they are written beside it first. A file that a link leads to is replaced, not the link. Throws
/// a CorvinaException that says why not; what is there and no regular file is never replaced.
void SaveFile(const QString& file, std::string_view bytes);

/// Writes all of the bytes and puts the file in its place. False when `file`, which then tells the
/// error, did not take them.
bool WriteAndCommit(QSaveFile& file, std::string_view bytes);
