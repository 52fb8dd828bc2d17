#include "support/KesxmlProcess.h"
#include "support/Terminal.h"

#include <sys/stat.h>

namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class KesxmlNames : public KesxmlTest
{
protected:
    /// Runs the command in the folder of the test with arguments as a shell of UTF-8 reads them.
    KesxmlOutcome RunInShell(const QString& arguments)
    {
        return RunProgram("/bin/bash", {"-c", "'" KESXML_PATH "' " + arguments}, {},
                          m_directory.path());
    }
};

} // namespace

TEST_F(KesxmlNames, OfFilesAreShownEscaped)
{
    const QString name = Write(QString("a\nb\x1b[31m\u009b\u202e\u2028.xml"), "<a>");
    const std::string shown = "/a\\nb\\x1B[31m\\x9B\\u202E\\u2028.xml";
    const KesxmlOutcome outcome = RunKesxml({"check", name});
    EXPECT_THAT(outcome.out, EndsWith(shown + ": 1 error\n"));
    EXPECT_THAT(outcome.err, HasSubstr(shown + ":1:4: error: "));
    EXPECT_THAT(RunKesxml({"check", name + "x"}).err, HasSubstr(shown + "x: "));
    EXPECT_THAT(RunKesxml({"query", "a", name, name}).err, HasSubstr(shown));
    const QString fine = Write(QString("a\x1b.xml"), "<a/>");
    EXPECT_THAT(RunKesxml({"query", "a", fine, fine}).out, HasSubstr("/a\\x1B.xml:1:1 /a\n"));
    EXPECT_THAT(RunKesxml({"version", fine}).err, HasSubstr("/a\\x1B.xml: no first tag"));
}

TEST_F(KesxmlNames, OfCommandsAndOptionsAreShownEscaped)
{
    for (const QStringList& arguments : {QStringList{"a\x1b\nb"},
                                         {"--a\x1b\nb"},
                                         {"check", "--a\x1b\nb"},
                                         {"version", "x", "a\x1b\nb"},
                                         {"tree", "--depth", "a\x1b\nb", "x"}}) {
        const KesxmlOutcome outcome = RunKesxml(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, AllOf(HasSubstr("a\\x1B\\nb"), Not(HasSubstr("\x1b"))));
        EXPECT_EQ(outcome.ErrLines().size(), 2U) << outcome.err;
    }
}

TEST_F(KesxmlNames, NeedNotBeUtf8)
{
    const KesxmlOutcome made = RunProgram(
        "/bin/bash", {"-c", "printf '<a version=\"1.5\"><b/></a>' >$'\\xff\\xe9 \\xc3\\xa9.xml'"},
        {}, m_directory.path());
    ASSERT_EQ(made.err, "");
    const QString name = "$'\\xff\\xe9 \\xc3\\xa9.xml'";
    EXPECT_EQ(RunInShell("check " + name).out, "\\xFF\\xE9 \u00E9.xml: fine\n");
    EXPECT_EQ(RunInShell("format --no-header " + name).out, "<a version=\"1.5\">\n  <b/>\n</a>\n");
    EXPECT_EQ(RunInShell("query //b " + name).out, "1:18 /a/b\n");
    EXPECT_EQ(RunInShell("version " + name).out, "1.5\n");
    EXPECT_EQ(RunInShell("tree " + name).status, 0);
    EXPECT_EQ(RunInShell("stats " + name).status, 0);
    const KesxmlOutcome refused = RunInShell("format -i " + name);
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.err, EndsWith(": it cannot be written: its name is not UTF-8\n"));
    EXPECT_THAT(RunInShell("check $'\\xff'").err, StartsWith("kesxml: \\xFF: No such file"));
    // The folder could not be removed with it.
    RunProgram("/bin/bash", {"-c", "rm " + name}, {}, m_directory.path());
}

TEST_F(KesxmlNames, OfPipesAreReadWhenSomebodyWritesAndRefusedWhenNobodyDoes)
{
    const QString pipe = m_directory.filePath("pipe");
    ASSERT_EQ(mkfifo(pipe.toUtf8().constData(), 0600), 0);
    EXPECT_THAT(RunKesxml({"check", pipe}).err, EndsWith("pipe: nobody writes to this pipe\n"));
    // A writer that comes late, and then is slow.
    const KesxmlOutcome outcome =
        RunInShell("check pipe & (sleep 0.3; printf '<a>'; sleep 0.3; printf '</a>') >pipe; wait");
    EXPECT_EQ(outcome.out, "pipe: fine\n");
}

TEST_F(KesxmlNames, AreCutWithTheProgressToTheWidthOfTheTerminal)
{
    const QString longName = Write(QString(200, 'x') + "\n.xml", "<a/>");
    QStringList arguments{"check"};
    for (int i = 0; i < 21; ++i)
        arguments += longName;
    const std::string shown = RunOnTerminal(arguments, STDERR_FILENO);
    EXPECT_THAT(shown, HasSubstr("\r[1/21] "));
    EXPECT_EQ(shown.find('\n'), std::string::npos);
    for (std::size_t start = shown.find('\r'); start != std::string::npos;) {
        const std::size_t end = std::min(shown.find('\r', start + 1), shown.size());
        // The ellipsis has three bytes, and the sequence that erases the rest three, too.
        EXPECT_LE(end - start, 1U + 79 + 2 + 3);
        start = shown.find('\r', start + 1);
    }
}

TEST_F(KesxmlNames, NeitherTheseNorTextsSteerATerminal)
{
    const QString file = Write("a.xml", "<a x='\u009B2J'>\u009B1m\u202E<!--\u009B--></a>");
    const std::string shown = RunOnTerminal({"format", file}, STDOUT_FILENO);
    EXPECT_EQ(shown, "<a x='&#x9B;2J'>&#x9B;1m&#x202E;<!--\uFFFD--></a>\r\n");
    // What goes into a file is the document itself.
    EXPECT_THAT(RunKesxml({"format", file}).out, HasSubstr(">\u009B1m\u202E<!--\u009B-->"));
    EXPECT_EQ(RunOnTerminal({"query", "--text", "a", file}, STDOUT_FILENO), "\uFFFD1m\uFFFD\r\n");
    EXPECT_THAT(RunKesxml({"query", "--json", "a", file}).out,
                HasSubstr("\"text\":\"\\u009b1m\\u202e\""));
}
