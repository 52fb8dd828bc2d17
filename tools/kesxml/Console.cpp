#include "Console.h"

#include "CharacterWidths.h"
#include "OneLine.h"
#include "TerminalMarkup.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/// Why standard output stopped taking what it is given; 0 while it takes it.
int s_outputError = 0;

ColourMode s_colourMode = ColourMode::Auto;

bool ShowsColours(int stream)
{
    if (s_colourMode != ColourMode::Auto)
        return s_colourMode == ColourMode::Always;
    const QByteArray terminal = qgetenv("TERM");
    return isatty(stream) != 0 && qEnvironmentVariableIsEmpty("NO_COLOR") && !terminal.isEmpty() &&
           terminal != "dumb";
}

void Write(std::string_view utf8)
{
    if (s_outputError == 0 && std::fwrite(utf8.data(), 1, utf8.size(), stdout) != utf8.size())
        s_outputError = errno;
}

/// How wide the terminal is that standard error goes to.
int GetErrorColumns()
{
    winsize size{};
    constexpr int c_usual = 80;
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : c_usual;
}

/// The text, with an ellipsis in place of its end when it is too long for so many columns.
QString CutToWidth(const QString& text, int columns)
{
    const CharacterWidths widths;
    if (widths.Of(text) <= columns)
        return text;
    QString cut = text;
    while (!cut.isEmpty() && widths.Of(cut) >= columns)
        cut.chop(cut.size() > 1 && cut.back().isLowSurrogate() ? 2 : 1);
    return cut + QChar(0x2026);
}

} // namespace

void Print(const TString& text)
{
    Write(text.toStdString());
}

void PrintText(const TString& lines)
{
    Print(isatty(STDOUT_FILENO) != 0 ? ToSafeLines(lines) : lines);
}

void PrintDocument(std::string_view document)
{
    if (isatty(STDOUT_FILENO) != 0)
        Write(ToTerminalMarkup(document));
    else
        Write(document);
}

void PrintError(const TString& line)
{
    PrintErrorAsIs(ToEscaped(line));
}

void PrintErrorAsIs(const TString& line)
{
    if (s_outputError == 0 && std::fflush(stdout) != 0)
        s_outputError = errno;
    const std::string utf8 = line.toStdString() + '\n';
    std::fwrite(utf8.data(), 1, utf8.size(), stderr);
}

bool FlushOutput()
{
    if (s_outputError == 0 && std::fflush(stdout) != 0)
        s_outputError = errno;
    if (s_outputError == 0 || s_outputError == EPIPE)
        return true;
    PrintError(TString(u"kesxml: standard output: ") + TString(std::strerror(s_outputError)));
    return false;
}

void SetColourMode(ColourMode mode)
{
    s_colourMode = mode;
}

bool HasColours()
{
    return ShowsColours(STDOUT_FILENO);
}

bool HasErrorColours()
{
    return ShowsColours(STDERR_FILENO);
}

TString Colour(const char16_t* code, const TString& text)
{
    return TString(u"\x1b[") + code + u"m" + text + u"\x1b[0m";
}

bool HasProgressLine()
{
    return isatty(STDERR_FILENO) != 0;
}

void ShowProgress(const TString& line)
{
    // Carriage return, then the line, then "erase to the end of the line" of ECMA-48.
    const QString shown = CutToWidth(ToEscaped(line), GetErrorColumns() - 1);
    const std::string utf8 = '\r' + shown.toStdString() + "\x1b[K";
    std::fwrite(utf8.data(), 1, utf8.size(), stderr);
    std::fflush(stderr);
}
