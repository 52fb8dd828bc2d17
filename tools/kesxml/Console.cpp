#include "Console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <unistd.h>

namespace {

/// Why standard output stopped taking what it is given; 0 while it takes it.
int s_outputError = 0;

bool ShowsColours(int stream)
{
    const QByteArray terminal = qgetenv("TERM");
    return isatty(stream) != 0 && qEnvironmentVariableIsEmpty("NO_COLOR") && !terminal.isEmpty() &&
           terminal != "dumb";
}

} // namespace

void Print(const TString& text)
{
    if (s_outputError != 0)
        return;
    const std::string utf8 = text.toStdString();
    if (std::fwrite(utf8.data(), 1, utf8.size(), stdout) != utf8.size())
        s_outputError = errno;
}

void PrintError(const TString& line)
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
    const std::string utf8 = '\r' + line.toStdString() + "\x1b[K";
    std::fwrite(utf8.data(), 1, utf8.size(), stderr);
    std::fflush(stderr);
}
