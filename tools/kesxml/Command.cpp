#include "Command.h"

#include "Console.h"

#include <QRegularExpression>

#include <array>
#include <cstdlib>

std::span<const Command> GetCommands()
{
    static constexpr std::array c_commands{
        Command{"format", "Write a document formatted to standard output.", RunFormat},
        Command{"check", "Report the errors and warnings of documents.", RunCheck},
        Command{"query", "Print the elements that a path finds.", RunQuery},
        Command{"diff", "Print how two documents differ.", RunDiff},
        Command{"edit", "Change the elements that a path finds.", RunEdit},
        Command{"version", "Print the version that a document names.", RunVersion},
        Command{"stats", "Count what is in a document and what it costs.", RunStats},
        Command{"tree", "Draw the elements and texts of a document.", RunTree},
    };
    return c_commands;
}

namespace {

bool ReadColourMode(const QString& when)
{
    if (when == "auto")
        SetColourMode(ColourMode::Auto);
    else if (when == "always")
        SetColourMode(ColourMode::Always);
    else if (when == "never")
        SetColourMode(ColourMode::Never);
    else
        return false;
    return true;
}

/// "kesxml NAME [options] FILE...", and help on all of it. The parser knows nothing of subcommands
/// and names the program instead.
QString GetHelp(const QCommandLineParser& parser, const QStringList& arguments)
{
    QString text = parser.helpText();
    return text.replace(0, text.indexOf(" [options]"), arguments.front());
}

} // namespace

bool ReadArguments(QCommandLineParser& parser, const QStringList& arguments, qsizetype minimum,
                   qsizetype maximum, const char* examples)
{
    const QCommandLineOption help({"h", "help"}, "Show this help.");
    const QCommandLineOption colour("color",
                                    "Use colours: always, never or auto, which "
                                    "is where a terminal shows them.",
                                    "WHEN");
    parser.addOptions({colour, help});
    const auto fail = [&](const QString& reason) {
        FailUsage(arguments, reason);
        return false;
    };
    if (!parser.parse(arguments))
        return fail(parser.errorText());
    if (parser.isSet(help)) {
        Print("Usage: " + GetHelp(parser, arguments) + "\nExamples:\n" + examples);
        std::exit(FlushOutput() ? Fine : UsageOrUnreadable);
    }
    if (parser.isSet(colour) && !ReadColourMode(parser.value(colour)))
        return fail("'" + parser.value(colour) + "' is not always, never or auto.");
    const qsizetype count = parser.positionalArguments().size();
    if (count < minimum)
        return fail("an argument is missing: " + GetHelp(parser, arguments).section('\n', 0, 0));
    if (maximum > 0 && count > maximum)
        return fail("'" + parser.positionalArguments().at(maximum) + "' is one argument too many.");
    return true;
}

QString FindMistakeInPath(const QString& path)
{
    // No name holds these; they are taken for conditions and attributes, which paths do not have.
    static const QRegularExpression s_other("[][@()='\"]");
    const QRegularExpressionMatch match = s_other.match(path);
    return match.hasMatch()
               ? "'" + match.captured() + "' in the path: its steps are names, * or nothing."
               : QString();
}

int FailUsage(const QStringList& arguments, const QString& reason)
{
    PrintError(arguments.front() + ": " + reason);
    PrintError("Try '" + arguments.front() + " --help'.");
    return UsageOrUnreadable;
}
