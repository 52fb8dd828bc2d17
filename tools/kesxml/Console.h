#pragma once

#include <kesplatform/TString.h>

#include <QString>

#include <string_view>

/// Standard output and standard error, in UTF-8 whatever the locale.

/// Writes text as it stands to standard output, buffered.
void Print(const TString& text);
/// Writes lines of what a document says to standard output. To a terminal, units that would steer
/// it or turn the direction of writing go as U+FFFD.
void PrintText(const TString& lines);
/// Writes a document in UTF-8 to standard output. To a terminal, characters that would steer it or
/// turn the direction of writing go as references where a reference means the same, and as U+FFFD
/// elsewhere.
void PrintDocument(std::string_view document);
/// Writes a line to standard error, after what was printed so far. What steers a terminal, or would
/// end the line, is escaped.
void PrintError(const TString& line);
/// The same for a line with colours, in which nothing is escaped any more.
void PrintErrorAsIs(const TString& line);
/// Writes out what is buffered. False, after saying why, when standard output did not take all; a
/// reader that has gone away has had enough, and that is true.
bool FlushOutput();
/// When colours are used: where a terminal shows them, and the environment does not forbid it; or
/// whatever stands at the other end.
enum class ColourMode : unsigned char
{
    Auto,
    Always,
    Never
};
void SetColourMode(ColourMode mode);
/// Whether colours go to standard output.
bool HasColours();
/// The same of standard error.
bool HasErrorColours();
/// The text between the sequences that turn colours, as ECMA-48 numbers them ("1;31"), on and off.
TString Colour(const char16_t* code, const TString& text);
/// Whether standard error is a terminal that shows a line which is written over and over.
bool HasProgressLine();
/// Shows `line`, escaped as above and cut to the width of the terminal, in place of the one shown
/// before; an empty one removes it.
void ShowProgress(const TString& line);
