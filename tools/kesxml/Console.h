#pragma once

#include <kesplatform/TString.h>

#include <QString>

/// Standard output and standard error, in UTF-8 whatever the locale.

/// Writes text as it stands to standard output, buffered.
void Print(const TString& text);
/// Writes a line to standard error, after what was printed so far.
void PrintError(const TString& line);
/// Writes out what is buffered. False, after saying why, when standard output did not take all; a
/// reader that has gone away has had enough, and that is true.
bool FlushOutput();
/// Whether standard output is a terminal that shows colours, and these are wanted.
bool HasColours();
/// The same of standard error.
bool HasErrorColours();
/// The text between the sequences that turn colours, as ECMA-48 numbers them ("1;31"), on and off.
TString Colour(const char16_t* code, const TString& text);
/// Whether standard error is a terminal that shows a line which is written over and over.
bool HasProgressLine();
/// Shows `line` in place of the one shown before; an empty one removes it.
void ShowProgress(const TString& line);
