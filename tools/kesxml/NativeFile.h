#pragma once

#include <QByteArray>
#include <QString>

/// Names of files are bytes. In a QString, a byte that is not UTF-8 stands as a unit from U+DC80 to
/// U+DCFF, which is half of no pair, so that the name can be had back.

/// From an argument of the program.
QString FromNativeName(const char* name);
/// And back.
QByteArray ToNativeName(const QString& name);
/// Whether Qt, too, opens the file of that name.
bool IsUtf8Name(const QString& name);

/// Whether this is a pipe that has a name.
bool IsPipe(const QString& name);

/// All bytes of a file, whatever its name, or of a pipe. A pipe is waited for as long as somebody
/// has it open to write, and for some seconds when nobody has yet. A CorvinaException says what
/// cannot be read.
QByteArray ReadNativeFile(const QString& name);
