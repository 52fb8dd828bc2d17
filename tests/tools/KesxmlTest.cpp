#include "support/KesxmlProcess.h"

#include <QDir>
#include <QRegularExpression>

namespace {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAreArray;

/// A command with arguments that make it read `file`.
std::vector<QStringList> AllCommandsOn(const QString& file)
{
    return {{"format", file},
            {"check", file},
            {"query", "//a", file},
            {"version", file},
            {"stats", file},
            {"tree", file},
            {"edit", "--set-attribute", "x=1", "a", file}};
}

class Kesxml : public KesxmlTest
{
};

} // namespace

TEST_F(Kesxml, IsTriedWithEveryCommand)
{
    // It reads two documents, and so it has all of its tests elsewhere.
    std::vector<QString> tried{"diff"};
    for (const QStringList& arguments : AllCommandsOn("-"))
        tried.push_back(arguments.front());
    EXPECT_THAT(GetKesxmlCommands(), UnorderedElementsAreArray(tried));
}

TEST_F(Kesxml, NamesAFileThatCannotBeRead)
{
    const QString missing = m_directory.filePath("missing.xml");
    for (const QStringList& arguments : AllCommandsOn(missing)) {
        const KesxmlOutcome outcome = RunKesxml(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments.front().toStdString();
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(missing.toStdString()));
    }
    for (const QStringList& arguments : AllCommandsOn(m_directory.path()))
        EXPECT_EQ(RunKesxml(arguments).status, 2) << arguments.front().toStdString();
}

TEST_F(Kesxml, ReadsStandardInput)
{
    for (const QStringList& arguments : AllCommandsOn("-")) {
        const KesxmlOutcome outcome = RunKesxml(arguments, "<a version='1.2'>text</a>");
        EXPECT_EQ(outcome.status, 0) << arguments.front().toStdString();
        EXPECT_NE(outcome.out, "");
        EXPECT_EQ(outcome.err, "");
    }
}

TEST_F(Kesxml, ReadsStandardInputBesideAFileOfThatName)
{
    Write("-", "<other version='9'><a/></other>");
    const QByteArray document = "<a version='1.2'>text</a>";
    const QString elsewhere = QDir::rootPath();
    for (const QStringList& arguments :
         {QStringList{"format", "-"}, QStringList{"check", "-"}, QStringList{"query", "//a", "-"},
          QStringList{"version", "-"}, QStringList{"tree", "-"}}) {
        EXPECT_EQ(RunKesxml(arguments, document, m_directory.path()).out,
                  RunKesxml(arguments, document, elsewhere).out)
            << arguments.front().toStdString();
    }
    EXPECT_THAT(RunKesxml({"stats", "-"}, document, m_directory.path()).OutLines(),
                Contains(MatchesRegex("bytes +" + std::to_string(document.size()))));
    EXPECT_EQ(RunKesxml({"version", "./-"}, {}, m_directory.path()).out, "9\n");
}

TEST_F(Kesxml, ReadsStandardInputOnlyOnce)
{
    const KesxmlOutcome outcome = RunKesxml({"check", "-", "-"}, "<a/>");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "-: fine\n");
    EXPECT_EQ(outcome.err, "kesxml: standard input: it can be read only once.\n");
}

TEST_F(Kesxml, ReadsEveryEncodingFromFilesAndFromStandardInput)
{
    const QString text = QString::fromUtf8("<a version='1.2'>\u00E9\u0142</a>");
    QByteArray utf16("\xFF\xFE");
    QByteArray bigEndian;
    for (const QChar unit : text) {
        const char low = static_cast<char>(unit.unicode() & 0xFF);
        const char high = static_cast<char>(unit.unicode() >> 8);
        utf16.append(low).append(high);
        bigEndian.append(high).append(low);
    }
    bigEndian.prepend("\xFE\xFF");
    for (const QByteArray& document :
         {text.toUtf8(), "\xEF\xBB\xBF" + text.toUtf8(), utf16, bigEndian}) {
        const QString file = Write("a.xml", document);
        for (const QStringList& arguments : AllCommandsOn(file))
            EXPECT_EQ(RunKesxml(arguments).status, 0) << arguments.front().toStdString();
        for (const QStringList& arguments : AllCommandsOn("-"))
            EXPECT_EQ(RunKesxml(arguments, document).status, 0) << arguments.front().toStdString();
        EXPECT_THAT(RunKesxml({"query", "a", "-"}, document).out, HasSubstr("\u00E9\u0142"));
    }
}

TEST_F(Kesxml, ReportsAnErrorOfADocumentInEveryCommandThatParses)
{
    const QString file = Write("bad.xml", "<a>\n  <b></c>\n</a>");
    for (const QStringList& arguments : AllCommandsOn(file)) {
        if (arguments.front() == "version")
            continue;
        const KesxmlOutcome outcome = RunKesxml(arguments);
        EXPECT_EQ(outcome.status, 1) << arguments.front().toStdString();
        EXPECT_THAT(outcome.err, StartsWith(file.toStdString() + ":2:"));
        EXPECT_THAT(outcome.err, AllOf(HasSubstr(": error: "), Not(HasSubstr("(id: "))));
    }
}

TEST_F(Kesxml, CountsTheLinesBeforeTheDocument)
{
    const QString file = Write("late.xml", "\n\n<a></b>");
    EXPECT_THAT(RunKesxml({"check", file}).err, StartsWith(file.toStdString() + ":3:"));
    EXPECT_THAT(RunKesxml({"check", "-"}, "\n\n<a></b>").err, StartsWith("-:3:"));
}

TEST_F(Kesxml, RefusesEntitiesUnlessAllowed)
{
    const QByteArray document = "<!DOCTYPE a [<!ENTITY e 'text'>]><a>&e;</a>";
    for (const QStringList& arguments :
         {QStringList{"check", "-"}, QStringList{"query", "a", "-"}, QStringList{"tree", "-"}}) {
        EXPECT_EQ(RunKesxml(arguments, document).status, 1) << arguments.front().toStdString();
        EXPECT_THAT(RunKesxml(arguments, document).err, HasSubstr("; --allow-entities lifts it"));
        QStringList allowing = arguments;
        allowing.insert(1, "--allow-entities");
        EXPECT_EQ(RunKesxml(allowing, document).status, 0) << arguments.front().toStdString();
    }
}

TEST_F(Kesxml, ReportsARefusedExternalEntityOnce)
{
    const QByteArray document = "<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]>\n<a>&e;</a>";
    for (const QString command : {"check", "stats", "tree"}) {
        const KesxmlOutcome outcome = RunKesxml({command, "-"}, document);
        EXPECT_EQ(outcome.status, 1);
        ASSERT_EQ(outcome.Reports().size(), 1U) << outcome.err;
        EXPECT_THAT(outcome.err, StartsWith("-:1:"));
        EXPECT_THAT(outcome.err,
                    HasSubstr("error: XML External <!ENTITY> definitions are not allowed. 'e'"));
    }
}

TEST_F(Kesxml, ExplainsWhatIsWrongWithTheArguments)
{
    for (const QString& command : GetKesxmlCommands()) {
        const KesxmlOutcome outcome = RunKesxml({command, "--nonsense", "x", "y"});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr("nonsense"));
        EXPECT_THAT(outcome.err, HasSubstr("Try 'kesxml " + command.toStdString() + " --help'."));
        EXPECT_EQ(RunKesxml({command}).status, 2);
        if (command != "check" && command != "query") {
            EXPECT_THAT(RunKesxml({command, "x", "y", "z"}).err,
                        HasSubstr("is one argument too many"));
        }
    }
    EXPECT_THAT(RunKesxml({"nonsense"}).err, HasSubstr("unknown command 'nonsense'"));
    EXPECT_THAT(RunKesxml({"--nonsense"}).err, HasSubstr("unknown option '--nonsense'"));
    EXPECT_EQ(RunKesxml({}).status, 2);
}

TEST_F(Kesxml, SaysWhichArgumentsACommandTakesWhenOneIsMissing)
{
    for (const QString& command : GetKesxmlCommands()) {
        const KesxmlOutcome outcome = RunKesxml({command});
        EXPECT_EQ(outcome.status, 2);
        const std::string start = "kesxml " + command.toStdString();
        EXPECT_THAT(
            outcome.ErrLines().front(),
            AnyOf(start + ": an argument is missing: " + start + " [options] FILE",
                  start + ": an argument is missing: " + start + " [options] FILE...",
                  start + ": an argument is missing: " + start + " [options] PATH FILE",
                  start + ": an argument is missing: " + start + " [options] PATH FILE...",
                  start + ": an argument is missing: " + start + " [options] FIRST SECOND"));
    }
}

TEST_F(Kesxml, ShowsHelpWithAnExampleAndVersion)
{
    const KesxmlOutcome help = RunKesxml({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("Example"));
    for (const QString& command : GetKesxmlCommands()) {
        EXPECT_THAT(help.out, HasSubstr("\n  " + command.toStdString() + " "));
        const KesxmlOutcome own = RunKesxml({command, "--help"});
        const std::string call = "kesxml " + command.toStdString() + " ";
        EXPECT_EQ(own.status, 0);
        EXPECT_THAT(own.out, StartsWith("Usage: " + call + "[options]"));
        EXPECT_THAT(own.out.substr(own.out.find("Examples:")), HasSubstr(call));
        EXPECT_EQ(own.err, "");
    }
    EXPECT_THAT(RunKesxml({"--version"}).out, StartsWith("kesxml 1."));
}

TEST_F(Kesxml, ShowsHelpForACommandThatIsNamedBehindHelp)
{
    EXPECT_EQ(RunKesxml({"help"}).out, RunKesxml({"--help"}).out);
    for (const QString& command : GetKesxmlCommands())
        EXPECT_EQ(RunKesxml({"help", command}).out, RunKesxml({command, "--help"}).out);
    EXPECT_EQ(RunKesxml({"help", "nonsense"}).status, 2);
}

TEST_F(Kesxml, ShowsHelpThatFitsATerminal)
{
    std::vector<QStringList> calls{{"--help"}};
    for (const QString& command : GetKesxmlCommands())
        calls.push_back({command, "--help"});
    for (const QStringList& call : calls) {
        for (const std::string& line : RunKesxml(call).OutLines())
            EXPECT_LE(line.size(), 80U) << line;
    }
}

TEST_F(Kesxml, HasAManualPageOfAllCommandsAndOptions)
{
    QFile file(TESTS_SOURCE_DIR "/../docs/kesxml.1");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString page = file.readAll();
    const QString examples = page.mid(page.indexOf("\n.SH EXAMPLES\n"));
    for (const QString& command : GetKesxmlCommands()) {
        EXPECT_TRUE(page.contains("\n.SS " + command + "\n")) << command.toStdString();
        EXPECT_TRUE(examples.contains("kesxml " + command + " ")) << command.toStdString();
        const QString help = QString::fromStdString(RunKesxml({command, "--help"}).out);
        static const QRegularExpression s_option("--([a-z-]+)");
        for (auto match = s_option.globalMatch(help); match.hasNext();) {
            const QString option = match.next().captured(1).replace("-", "\\-");
            EXPECT_TRUE(page.contains("\\-\\-" + option)) << option.toStdString();
        }
    }
}

TEST_F(Kesxml, IsSilentWhenNobodyReadsOn)
{
    const QString file =
        Write("big.xml", "<a version='1'>" + QByteArray("<a>text</a>\n").repeated(20000) + "</a>");
    for (const QStringList& arguments : AllCommandsOn(file)) {
        // Both with the signal that ends a process, and in a shell that ignores it.
        for (const QString prefix : {"", "trap '' PIPE; "}) {
            const QString command = "'" KESXML_PATH "' '" + arguments.join("' '") + "'";
            const KesxmlOutcome outcome = RunProgram("/bin/sh", {"-c", prefix + command + " | :"});
            EXPECT_EQ(outcome.err, "") << command.toStdString();
        }
    }
}

TEST_F(Kesxml, EndsAsEverWhenNobodyReadsItsErrors)
{
    const QString file = Write("bad.xml", "<a>\n<b></c>");
    for (const QString redirection : {"2>&-", "2>/dev/full"}) {
        const QString command = "'" KESXML_PATH "' check '" + file + "' " + redirection;
        const KesxmlOutcome outcome = RunProgram("/bin/sh", {"-c", command});
        EXPECT_EQ(outcome.status, 1) << redirection.toStdString();
        EXPECT_EQ(outcome.out, file.toStdString() + ": 1 error\n");
    }
}

TEST_F(Kesxml, TakesASchemaFromStandardInput)
{
    const QByteArray schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                              "<xs:element name='n' type='xs:int'/></xs:schema>";
    EXPECT_EQ(RunKesxml({"check", "--xsd", "-", Write("good.xml", "<n>1</n>")}, schema).status, 0);
    EXPECT_EQ(RunKesxml({"check", "--xsd", "-", Write("bad.xml", "<n>x</n>")}, schema).status, 1);
}

TEST_F(Kesxml, SaysWhyItsOutputIsNotTaken)
{
    if (!QFile::exists("/dev/full"))
        GTEST_SKIP() << "there is no device that is always full";
    for (const QString arguments :
         {"tree -", "format -", "check -", "stats -", "--help", "check --help"}) {
        const KesxmlOutcome outcome = RunProgram(
            "/bin/sh", {"-c", "echo '<a/>' | '" KESXML_PATH "' " + arguments + " >/dev/full"});
        EXPECT_EQ(outcome.status, 2) << arguments.toStdString();
        EXPECT_THAT(outcome.err, StartsWith("kesxml: standard output: "));
    }
}
