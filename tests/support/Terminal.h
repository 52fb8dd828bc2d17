#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <map>
#include <string>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

/// Runs the command with a terminal, called "xterm" unless `variables` say otherwise, as its
/// standard output or standard error, `stream`. Returns the little that it wrote there: no more
/// than a terminal holds.
inline std::string RunOnTerminal(const QStringList& arguments, int stream,
                                 const std::map<QString, QString>& variables = {})
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_GE(terminal, 0);
    EXPECT_EQ(grantpt(terminal), 0);
    EXPECT_EQ(unlockpt(terminal), 0);
    const int other = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    EXPECT_GE(other, 0);
    QProcessEnvironment environment;
    environment.insert("TERM", "xterm");
    for (const auto& [name, value] : variables)
        environment.insert(name, value);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setChildProcessModifier([other, stream] { dup2(other, stream); });
    process.start(KESXML_PATH, arguments);
    process.waitForFinished(-1);
    EXPECT_LT(process.exitCode(), 2);
    close(other);
    // One read may give only a part. After the last part it fails: nobody holds the other end.
    std::string written;
    char part[4096];
    for (ssize_t count = 0; (count = read(terminal, part, sizeof part)) > 0;)
        written.append(part, static_cast<std::size_t>(count));
    close(terminal);
    return written;
}
