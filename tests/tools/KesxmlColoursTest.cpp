#include "support/KesxmlProcess.h"
#include "support/Terminal.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class KesxmlColours : public KesxmlTest
{
protected:
    QString WriteBroken() { return Write("a.xml", "<a>\n<b></c>\n</a>"); }
};

} // namespace

TEST_F(KesxmlColours, TellErrorsOnATerminal)
{
    const QString file = WriteBroken();
    const std::string place = "\x1b[1m" + file.toStdString() + ":2:6:\x1b[0m ";
    for (const QString command : {"check", "format", "stats", "tree"}) {
        EXPECT_THAT(RunOnTerminal({command, file}, STDERR_FILENO),
                    HasSubstr(place + "\x1b[1;31merror:\x1b[0m expected end of tag 'b'"))
            << command.toStdString();
    }
    EXPECT_THAT(RunOnTerminal({"check", file}, STDERR_FILENO),
                HasSubstr("\r\n  <b></c>\r\n       \x1b[1;32m^\x1b[0m\r\n"));
}

TEST_F(KesxmlColours, TellWarningsOnATerminal)
{
    const QString file = Write("a.xml", "<a>text<b/>text</a>");
    EXPECT_THAT(RunOnTerminal({"format", "--lossy", file}, STDERR_FILENO),
                HasSubstr(" \x1b[1;35mwarning:\x1b[0m text between child elements "));
}

TEST_F(KesxmlColours, AreLeftOutWhereTheyAreNotWanted)
{
    const QString file = WriteBroken();
    const QStringList check{"check", file};
    EXPECT_THAT(RunOnTerminal(check, STDERR_FILENO, {{"NO_COLOR", "1"}}), Not(HasSubstr("\x1b")));
    EXPECT_THAT(RunOnTerminal(check, STDERR_FILENO, {{"TERM", "dumb"}}), Not(HasSubstr("\x1b")));
    EXPECT_THAT(RunOnTerminal(check, STDERR_FILENO, {{"TERM", ""}}), Not(HasSubstr("\x1b")));
    EXPECT_THAT(RunOnTerminal(check, STDERR_FILENO, {{"NO_COLOR", ""}}), HasSubstr("\x1b"));
}

TEST_F(KesxmlColours, AreThoseOfTheStreamThatIsATerminal)
{
    const QString file = WriteBroken();
    EXPECT_THAT(RunKesxml({"check", file}).err, Not(HasSubstr("\x1b")));
    // Standard output is the terminal, standard error is not.
    EXPECT_EQ(RunOnTerminal({"check", file}, STDOUT_FILENO), file.toStdString() + ": 1 error\r\n");
}

TEST_F(KesxmlColours, AreUsedAsAnOptionSays)
{
    const QString file = WriteBroken();
    EXPECT_THAT(RunKesxml({"check", "--color=always", file}).err, HasSubstr("\x1b[1;31m"));
    EXPECT_THAT(RunOnTerminal({"check", "--color", "never", file}, STDERR_FILENO),
                Not(HasSubstr("\x1b[1")));
    EXPECT_THAT(RunOnTerminal({"check", "--color", "auto", file}, STDERR_FILENO),
                HasSubstr("\x1b[1;31m"));
    EXPECT_EQ(RunKesxml({"check", "--color=blue", file}).status, 2);
}
