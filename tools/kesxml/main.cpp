#include "Command.h"
#include "Console.h"
#include "NativeFile.h"

#include <kesplatform/CorvinaException.h>

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <exception>

namespace {

QString GetHelp()
{
    QString help = "Usage: kesxml COMMAND [OPTIONS] FILE...\n"
                   "Reads, checks, queries, edits and writes XML documents.\n\nCommands:\n";
    for (const Command& command : GetCommands())
        help += "  " + QString(command.name).leftJustified(10) + command.summary + "\n";
    help += "\nOptions:\n"
            "  -h, --help     Show this help; after a command, that of the command, as\n"
            "                 'kesxml help COMMAND' does.\n"
            "  -v, --version  Show the version.\n"
            "\nA FILE named - is standard input. Terminals get colours unless NO_COLOR is set.\n"
            "\nExit status: 0 fine, 1 a document has errors or nothing was found, 2 wrong\n"
            "arguments or an unreadable file.\n"
            "\nExamples:\n"
            "  kesxml check *.xml\n"
            "  kesxml query //item feed.xml\n"
            "  kesxml format - <settings.xml\n";
    return help;
}

int Run(const QStringList& arguments)
{
    const QString first = arguments.value(1);
    if (first == "-h" || first == "--help" || (first == "help" && arguments.size() == 2)) {
        Print(GetHelp());
        return Fine;
    }
    if (first == "-v" || first == "--version") {
        Print(QString("kesxml " KESXML_VERSION "\n"));
        return Fine;
    }
    if (first == "help" && arguments.size() > 2)
        return Run({arguments.front(), arguments.at(2), "--help"});
    const auto commands = GetCommands();
    const auto command = std::find_if(commands.begin(), commands.end(), [&](const Command& c) {
        return first == QLatin1String(c.name);
    });
    if (command == commands.end()) {
        PrintError(first.isEmpty()         ? QString("kesxml: a command is missing.")
                   : first.startsWith('-') ? "kesxml: unknown option '" + first + "'."
                                           : "kesxml: unknown command '" + first + "'.");
        PrintError(QString("Try 'kesxml --help'."));
        return UsageOrUnreadable;
    }
    return command->run(QStringList{"kesxml " + first} + arguments.mid(2));
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("kesxml");
    int status = UsageOrUnreadable;
    try {
        QStringList arguments;
        for (int i = 0; i < argc; ++i)
            arguments += FromNativeName(argv[i]);
        status = Run(arguments);
    } catch (const CorvinaException& e) {
        PrintError(u"kesxml: " + e.GetConcatenatedMessages());
    } catch (const std::exception& e) {
        PrintError(TString(u"kesxml: ") + TString(e.what()));
    }
    return FlushOutput() ? status : UsageOrUnreadable;
}
