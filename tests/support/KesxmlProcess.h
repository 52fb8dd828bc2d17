#pragma once

#include <gmock/gmock.h>

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <string>
#include <vector>

/// What a run of the command did.
struct KesxmlOutcome
{
    int status;
    std::string out;
    std::string err;

    /// The lines that were printed, without their ends.
    std::vector<std::string> OutLines() const { return ToLines(out); }
    std::vector<std::string> ErrLines() const { return ToLines(err); }
    /// What was said on standard error, without the lines of documents that it is about.
    std::vector<std::string> Reports() const
    {
        std::vector<std::string> lines = ErrLines();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("  "); });
        return lines;
    }

private:
    static std::vector<std::string> ToLines(const std::string& text)
    {
        std::vector<std::string> lines;
        for (std::size_t start = 0; start < text.size();) {
            const std::size_t end = std::min(text.find('\n', start), text.size());
            lines.push_back(text.substr(start, end - start));
            start = end + 1;
        }
        return lines;
    }
};

/// Runs a program to its end.
inline KesxmlOutcome RunProgram(const QString& program, const QStringList& arguments,
                                const QByteArray& input = {}, const QString& directory = {})
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

inline KesxmlOutcome RunKesxml(const QStringList& arguments, const QByteArray& input = {},
                               const QString& directory = {})
{
    return RunProgram(KESXML_PATH, arguments, input, directory);
}

/// The subcommands that help lists.
inline QStringList GetKesxmlCommands()
{
    const QString help = QString::fromStdString(RunKesxml({"--help"}).out);
    const qsizetype start = help.indexOf("\nCommands:\n");
    const QString list = help.mid(start, help.indexOf("\nOptions:\n") - start);
    static const QRegularExpression s_command("^  ([a-z]+) ", QRegularExpression::MultilineOption);
    QStringList commands;
    for (auto match = s_command.globalMatch(list); match.hasNext();)
        commands.append(match.next().captured(1));
    EXPECT_GE(commands.size(), 6);
    return commands;
}

/// Files that live as long as the test.
class KesxmlTest : public ::testing::Test
{
protected:
    /// Writes a file and returns its path. `name` may hold folders that exist.
    QString Write(const QString& name, const QByteArray& content)
    {
        const QString path = m_directory.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }

    QTemporaryDir m_directory;
};
