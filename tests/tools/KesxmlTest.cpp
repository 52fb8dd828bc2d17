#include <gmock/gmock.h>

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <string>

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Outcome
{
    int status;
    std::string out;
    std::string err;
};

Outcome RunKesxml(const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.start(KESXML_PATH, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

/// Files that live as long as the test.
class Kesxml : public ::testing::Test
{
protected:
    QString Write(const char* name, const QByteArray& content)
    {
        const QString path = m_directory.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }

    QTemporaryDir m_directory;
};

} // namespace

TEST_F(Kesxml, FormatsAFile)
{
    const QString file = Write("a.xml", "<a y='2' x='1&amp;'><b>t</b></a>");
    const Outcome outcome = RunKesxml({"format", file});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "<?xml version='1.0' encoding='utf-8' ?>\n\n"
                           "<a x='1&amp;' y='2'>\n  <b>t</b>\n</a>\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Kesxml, FormatsStandardInputWithoutHeader)
{
    const Outcome outcome = RunKesxml({"format", "--no-header", "-"}, "<a><b/></a>");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "<a>\n  <b />\n</a>\n");
}

TEST_F(Kesxml, KeepsLineEndsOfLongTextsUnlessAskedToEscapeAll)
{
    const QByteArray text = "a text of more than thirty-two units,\nin two lines";
    const QByteArray document = "<a>" + text + "</a>";
    EXPECT_THAT(RunKesxml({"format", "-"}, document).out, HasSubstr("units,\nin"));
    EXPECT_THAT(RunKesxml({"format", "--escape-all", "-"}, document).out, HasSubstr("units,&#10;in"));
}

TEST_F(Kesxml, WarnsWhenFormattingMovesText)
{
    const Outcome outcome = RunKesxml({"format", "--no-header", "-"}, "<a>x<b/>y</a>");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err,
              "-: warning: text between child elements is written after them (in <a>)\n");
}

TEST_F(Kesxml, DoesNotFormatADocumentWithErrors)
{
    const QString file = Write("bad.xml", "<a>\n<b></a>");
    const Outcome outcome = RunKesxml({"format", file});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith(file.toStdString() + ":2:"));
}

TEST_F(Kesxml, ReportsEachErrorWithPositionAndEachFileInALine)
{
    const QString good = Write("good.xml", "<a/>");
    const QString bad = Write("bad.xml", "<a>\n  <b></c>\n</a>");
    const Outcome outcome = RunKesxml({"check", good, bad});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, good.toStdString() + ": fine\n" + bad.toStdString() + ": 1 error\n");
    EXPECT_THAT(outcome.err, StartsWith(bad.toStdString() + ":2:"));
    EXPECT_THAT(outcome.err, HasSubstr(": error: "));
    EXPECT_THAT(outcome.err, ::testing::Not(HasSubstr("(id: ")));
}

TEST_F(Kesxml, RefusesEntitiesUnlessAllowed)
{
    const QByteArray document = "<!DOCTYPE a [<!ENTITY e 'text'>]><a>&e;</a>";
    EXPECT_EQ(RunKesxml({"check", "-"}, document).status, 1);
    EXPECT_EQ(RunKesxml({"check", "--allow-entities", "-"}, document).status, 0);
}

TEST_F(Kesxml, ReportsARefusedExternalEntityOnce)
{
    const Outcome outcome =
        RunKesxml({"check", "-"}, "<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]>\n<a>&e;</a>");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "-: 1 error\n");
    EXPECT_THAT(outcome.err, StartsWith("-:1:"));
    EXPECT_THAT(outcome.err,
                HasSubstr("error: XML External <!ENTITY> definitions are not allowed. 'e'"));
}

TEST_F(Kesxml, NamesAFileThatCannotBeRead)
{
    const QString missing = m_directory.filePath("missing.xml");
    for (const char* command : {"format", "check"}) {
        const Outcome outcome = RunKesxml({command, missing});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr(missing.toStdString()));
        EXPECT_EQ(RunKesxml({command, m_directory.path()}).status, 2);
    }
}

TEST_F(Kesxml, GoesOnCheckingAfterAFileThatCannotBeRead)
{
    const QString good = Write("good.xml", "<a/>");
    const Outcome outcome = RunKesxml({"check", m_directory.filePath("missing.xml"), good});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, good.toStdString() + ": fine\n");
}

TEST_F(Kesxml, ExplainsWhatIsWrongWithAnOption)
{
    for (const char* command : {"format", "check"}) {
        const Outcome outcome = RunKesxml({command, "--nonsense", "x"});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr("nonsense"));
    }
    EXPECT_THAT(RunKesxml({"nonsense"}).err, HasSubstr("unknown command 'nonsense'"));
    EXPECT_EQ(RunKesxml({}).status, 2);
    EXPECT_EQ(RunKesxml({"format"}).status, 2);
    EXPECT_EQ(RunKesxml({"format", "a", "b"}).status, 2);
}

TEST_F(Kesxml, ShowsHelpAndVersion)
{
    const Outcome help = RunKesxml({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* command : {"format", "check"}) {
        EXPECT_THAT(help.out, HasSubstr(command));
        const Outcome own = RunKesxml({command, "--help"});
        EXPECT_EQ(own.status, 0);
        EXPECT_THAT(own.out, HasSubstr(std::string("Usage: kesxml ") + command));
    }
    EXPECT_THAT(RunKesxml({"--version"}).out, StartsWith("kesxml 1."));
}
