#include "Console.h"

#include <cstdio>
#include <string>

#include <unistd.h>

void Print(const TString& text)
{
    const std::string utf8 = text.toStdString();
    std::fwrite(utf8.data(), 1, utf8.size(), stdout);
}

void PrintError(const TString& line)
{
    std::fflush(stdout);
    const std::string utf8 = line.toStdString() + '\n';
    std::fwrite(utf8.data(), 1, utf8.size(), stderr);
}

bool FlushOutput()
{
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
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
