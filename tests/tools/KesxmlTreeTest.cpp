#include "support/KesxmlProcess.h"
#include "support/Terminal.h"

#include <unistd.h>

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

class KesxmlTree : public KesxmlTest
{
};

KesxmlOutcome Draw(const QByteArray& document, const QStringList& options = {})
{
    return RunKesxml(QStringList{"tree"} + options + QStringList{"-"}, document);
}

/// What is drawn on a terminal, with one variable of the environment set.
std::string DrawOnTerminal(const QString& file, const QString& variable, const QString& value)
{
    return RunOnTerminal({"tree", file}, STDOUT_FILENO, {{variable, value}});
}

} // namespace

TEST_F(KesxmlTree, DrawsElementsAndTextsInTheirOrder)
{
    const KesxmlOutcome outcome =
        Draw("<a y='2' x='1'>one<b><c/>\n two \n three</b>four<d/>\n<e>five</e></a>");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "a x='1' y='2'\n"
                           "├─ \"one\"\n"
                           "├─ b\n"
                           "│  ├─ c\n"
                           "│  └─ \"two three\"\n"
                           "├─ \"four\"\n"
                           "├─ d\n"
                           "└─ e\n"
                           "   └─ \"five\"\n");
    EXPECT_EQ(Draw("<a/>").out, "a\n");
}

TEST_F(KesxmlTree, CutsLongTextsAndAttributeValues)
{
    const std::string cut = std::string(59, 'x') + "\u2026";
    const QByteArray sixtyOne(61, 'x');
    EXPECT_EQ(Draw("<a b='" + sixtyOne + "'>" + sixtyOne + "</a>").out,
              "a b='" + cut + "'\n└─ \"" + cut + "\"\n");
    const QByteArray sixty(60, 'x');
    EXPECT_EQ(Draw("<a b='" + sixty + "'>" + sixty + "</a>").out,
              "a b='" + sixty.toStdString() + "'\n└─ \"" + sixty.toStdString() + "\"\n");
    // A reference is not torn.
    EXPECT_EQ(Draw("<a b='" + sixty.left(58) + "&lt;yz'/>").out,
              "a b='" + sixty.left(58).toStdString() + "&lt;\u2026'\n");
}

TEST_F(KesxmlTree, SaysHowMuchLiesDeeperThanItDraws)
{
    const QByteArray document = "<a><b>t<c><d/></c></b><b/><b>u</b></a>";
    EXPECT_EQ(Draw(document, {"--depth", "2"}).out, "a\n"
                                                    "├─ b\n"
                                                    "│  └─ … 3 more below\n"
                                                    "├─ b\n"
                                                    "└─ b\n"
                                                    "   └─ … 1 more below\n");
    EXPECT_EQ(Draw(document, {"--depth", "1"}).out, "a\n└─ … 7 more below\n");
    EXPECT_EQ(Draw(document, {"--depth", "9"}).out, Draw(document).out);
}

TEST_F(KesxmlTree, RefusesADepthThatIsNone)
{
    for (const char* depth : {"0", "-1", "x", ""}) {
        const KesxmlOutcome outcome = Draw("<a/>", {"--depth", depth});
        EXPECT_EQ(outcome.status, 2) << depth;
        EXPECT_THAT(outcome.err, HasSubstr("is no number of levels."));
    }
}

TEST_F(KesxmlTree, TakesDocumentsOfAnyDepth)
{
    const QString file = Write("deep.xml", QByteArray("<a>").repeated(200000) + "x" +
                                               QByteArray("</a>").repeated(200000));
    const QString command = "ulimit -s 256; '" KESXML_PATH "' tree '" + file + "' --depth ";
    const KesxmlOutcome outcome = RunProgram("/bin/sh", {"-c", command + "64"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.OutLines(), SizeIs(65));
    EXPECT_THAT(outcome.out, EndsWith("└─ … 199937 more below\n"));
    EXPECT_THAT(RunProgram("/bin/sh", {"-c", command + "2000"}).OutLines(), SizeIs(2001));
}

TEST_F(KesxmlTree, UsesColoursOnATerminalOnly)
{
    const QString file = Write("a.xml", "<a b='c'>text</a>");
    EXPECT_EQ(DrawOnTerminal(file, "LANG", "C"), "\x1b[1ma\x1b[0m \x1b[36mb\x1b[0m='c'\r\n"
                                                 "\x1b[2m└─ \x1b[0m\x1b[32m\"text\"\x1b[0m\r\n");
    EXPECT_THAT(RunKesxml({"tree", file}).out, Not(HasSubstr("\x1b")));
}

TEST_F(KesxmlTree, UsesNoColoursWhereTheyAreNotWanted)
{
    const QString file = Write("a.xml", "<a b='c'>text</a>");
    const std::string plain = "a b='c'\r\n└─ \"text\"\r\n";
    EXPECT_EQ(DrawOnTerminal(file, "NO_COLOR", "1"), plain);
    EXPECT_EQ(DrawOnTerminal(file, "TERM", "dumb"), plain);
    EXPECT_NE(DrawOnTerminal(file, "NO_COLOR", ""), plain);
}
