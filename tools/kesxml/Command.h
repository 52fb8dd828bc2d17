#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <span>

/// What every subcommand ends with.
enum ExitStatus
{
    Fine = 0,
    DocumentHasErrors = 1,
    NothingFound = 1,
    Different = 1,
    UsageOrUnreadable = 2
};

/// A subcommand: its name, what it does in one line, and the function that does it, which gets its
/// arguments with "kesxml NAME" in front. What it throws is reported as an unreadable file.
struct Command
{
    const char* name;
    const char* summary;
    int (*run)(const QStringList& arguments);
};

/// All subcommands, in the order in which help lists them.
std::span<const Command> GetCommands();

/// Reads the arguments of a subcommand. Prints help, which ends with `examples`, and ends the
/// process when asked to. Returns false, after saying what is wrong, when an option is unknown or
/// the number of positional arguments is not within the limits (`maximum` 0: no upper limit).
bool ReadArguments(QCommandLineParser& parser, const QStringList& arguments, qsizetype minimum,
                   qsizetype maximum, const char* examples);

/// What in the path of a query cannot be meant; empty when all is fine.
QString FindMistakeInPath(const QString& path);

/// Says what is wrong with the arguments of a subcommand; returns the status to end with.
int FailUsage(const QStringList& arguments, const QString& reason);

int RunFormat(const QStringList& arguments);
int RunCheck(const QStringList& arguments);
int RunQuery(const QStringList& arguments);
int RunDiff(const QStringList& arguments);
int RunEdit(const QStringList& arguments);
int RunVersion(const QStringList& arguments);
int RunStats(const QStringList& arguments);
int RunTree(const QStringList& arguments);
