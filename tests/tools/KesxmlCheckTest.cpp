#include "support/KesxmlProcess.h"

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class KesxmlCheck : public KesxmlTest
{
protected:
    QString WriteSchema()
    {
        return Write("n.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                              "<xs:element name='n' type='xs:int'/></xs:schema>");
    }
};

} // namespace

TEST_F(KesxmlCheck, ReportsEachErrorWithPositionAndEachFileInALine)
{
    const QString good = Write("good.xml", "<a/>");
    const QString bad = Write("bad.xml", "<a>\n  <b></c>\n</a>");
    const KesxmlOutcome outcome = RunKesxml({"check", good, bad});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, good.toStdString() + ": fine\n" + bad.toStdString() + ": 1 error\n");
    EXPECT_THAT(outcome.err, StartsWith(bad.toStdString() + ":2:"));
    EXPECT_THAT(outcome.err, HasSubstr(": error: "));
    EXPECT_THAT(outcome.err, Not(HasSubstr("(id: ")));
}

TEST_F(KesxmlCheck, GoesOnAfterAFileThatCannotBeRead)
{
    const QString good = Write("good.xml", "<a/>");
    const KesxmlOutcome outcome = RunKesxml({"check", m_directory.filePath("missing.xml"), good});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, good.toStdString() + ": fine\n");
}

TEST_F(KesxmlCheck, IsNotTouchedByTheDocumentBefore)
{
    const QString refused = Write("refused.xml", "<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a>&e;</a>");
    const QString cut = Write("cut.xml", "<a><b>text");
    const QString good = Write("good.xml", "<a>good</a>");
    EXPECT_THAT(
        RunKesxml({"check", refused, good, cut, good}).OutLines(),
        ElementsAre(EndsWith("1 error"), EndsWith("fine"), EndsWith("1 error"), EndsWith("fine")));
}

TEST_F(KesxmlCheck, NamesTheElementInWhichAnErrorLies)
{
    EXPECT_THAT(RunKesxml({"check", "-"}, "<a><b/><c><d/>\n& </c></a>").Reports(),
                ElementsAre(EndsWith(" in /a/c")));
    EXPECT_THAT(RunKesxml({"check", "-"}, "<a><b/><c><d/></c>\n& </a>").Reports(),
                ElementsAre(EndsWith(" in /a")));
}

TEST_F(KesxmlCheck, NumbersTheElementAmongSiblingsOfItsName)
{
    EXPECT_THAT(RunKesxml({"check", "-"}, "<a><b/><c/><b/><c/><b>&").Reports(),
                ElementsAre(EndsWith(" in /a/b[3]")));
    EXPECT_THAT(RunKesxml({"check", "-"}, "<a><b/><c/><b/><d>&").Reports(),
                ElementsAre(EndsWith(" in /a/d")));
}

TEST_F(KesxmlCheck, NamesNoElementOutsideOfTheDocumentElement)
{
    for (const char* document : {"<!-- -- --><a/>", "<a/>\n\n&", "", "text"}) {
        const KesxmlOutcome outcome = RunKesxml({"check", "-"}, document);
        EXPECT_EQ(outcome.status, 1) << document;
        EXPECT_THAT(outcome.err, Not(HasSubstr(" in /"))) << document;
    }
}

TEST_F(KesxmlCheck, ShortensThePathOfADeepElement)
{
    const std::string steps = [] {
        std::string path;
        for (int i = 0; i < 100; ++i)
            path += "/a";
        return path;
    }();
    EXPECT_THAT(RunKesxml({"check", "-"}, QByteArray("<a>").repeated(100) + "&").Reports(),
                ElementsAre(EndsWith(" in " + steps)));
    EXPECT_THAT(RunKesxml({"check", "-"}, QByteArray("<a>").repeated(50000) + "&").Reports(),
                ElementsAre(EndsWith(" in /..." + steps)));
}

TEST_F(KesxmlCheck, KeepsControlCharactersOfADocumentOffTheTerminal)
{
    // U+009B begins a command to a terminal.
    const QString schema = Write("a.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                          "<xs:element name='a'><xs:simpleType>"
                                          "<xs:restriction base='xs:string'>"
                                          "<xs:pattern value='[0-9]+'/></xs:restriction>"
                                          "</xs:simpleType></xs:element></xs:schema>");
    const KesxmlOutcome outcome =
        RunKesxml({"check", "--xsd", schema, "-"}, "<a>\u009B2J\n\n\u00E9</a>");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.Reports(), ElementsAre(HasSubstr("'\uFFFD2J \u00E9'")));
}

TEST_F(KesxmlCheck, SaysWhichEntitiesAreLeftOut)
{
    const QByteArray document = "<!DOCTYPE p PUBLIC '-' 'p.dtd' [<!ENTITY known 'k'>]>\n"
                                "<p a='&nbsp;&amp;'>10&nbsp;000&euro;&#x20AC;<!-- &gone; -->"
                                "<![CDATA[&gone;]]></p>";
    for (const QString& name : {QString("-"), Write("a.xml", document)}) {
        const KesxmlOutcome outcome = RunKesxml({"check", name}, document);
        const std::string file = name.toStdString();
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out, file + ": fine, 2 warnings\n");
        const std::string declared = "' is declared nowhere in the document: ";
        EXPECT_THAT(outcome.Reports(),
                    ElementsAre(file + ":2:7: warning: the entity 'nbsp" + declared +
                                    "2 references to it are left out",
                                file + ":2:31: warning: the entity 'euro" + declared +
                                    "1 reference to it is left out in /p"));
    }
    QByteArray allowed = document;
    allowed.replace("&nbsp;", "&known;").replace("&euro;", "");
    EXPECT_EQ(RunKesxml({"check", "--allow-entities", "-"}, allowed).err, "");
    allowed.replace("'k'", "'&within;'");
    EXPECT_THAT(RunKesxml({"check", "--allow-entities", "-"}, allowed).Reports(),
                ElementsAre(StartsWith("-:2:7: warning: the entity 'within' is declared nowhere")));
}

TEST_F(KesxmlCheck, IsQuietWhenAskedTo)
{
    const QString good = Write("good.xml", "<a/>");
    const QString bad = Write("bad.xml", "<a>");
    EXPECT_EQ(RunKesxml({"check", "--quiet", good}).out, "");
    const KesxmlOutcome outcome = RunKesxml({"check", "-q", good, bad});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith(bad.toStdString() + ":1:4: error: "));
}

TEST_F(KesxmlCheck, ShowsAsManyErrorsAsAskedFor)
{
    const QString file = Write("a.xml", "<n a='' b='' c='' d='' e=''>1</n>");
    const KesxmlOutcome all = RunKesxml({"check", "--xsd", WriteSchema(), file});
    const std::size_t count = all.Reports().size();
    ASSERT_GT(count, 3U);
    const KesxmlOutcome some =
        RunKesxml({"check", "--max-errors", "2", "--xsd", WriteSchema(), file});
    EXPECT_EQ(some.status, 1);
    EXPECT_EQ(some.out, all.out);
    std::vector<std::string> expected = all.Reports();
    expected.resize(2);
    expected.push_back(file.toStdString() + ": " + std::to_string(count - 2) +
                       " more errors and warnings are not shown");
    EXPECT_EQ(some.Reports(), expected);
    EXPECT_THAT(
        RunKesxml({"check", "--json", "--max-errors", "2", "--xsd", WriteSchema(), file}).out,
        HasSubstr("\"omitted\":" + std::to_string(count - 2)));
    EXPECT_EQ(RunKesxml({"check", "--max-errors", "many", file}).status, 2);
}

TEST_F(KesxmlCheck, TellsTheSameOfManyFilesAtOnceAsOfEachAlone)
{
    const QString schema = WriteSchema();
    QStringList files;
    KesxmlOutcome expected{0, "", ""};
    for (int i = 0; i < 40; ++i) {
        const QByteArray number = QByteArray::number(i);
        files += Write(number + ".xml", i % 7 == 3   ? "<n>"
                                        : i % 5 == 2 ? "<n>x" + number + "</n>"
                                                     : "<n>1</n>");
    }
    files[20] = m_directory.filePath("missing.xml");
    for (const QString& file : files) {
        const KesxmlOutcome one = RunKesxml({"check", "--xsd", schema, file});
        expected = {std::max(expected.status, one.status), expected.out + one.out,
                    expected.err + one.err};
    }
    const KesxmlOutcome all = RunKesxml(QStringList{"check", "--xsd", schema} + files);
    EXPECT_EQ(all.status, expected.status);
    EXPECT_EQ(all.out, expected.out);
    EXPECT_EQ(all.err, expected.err);
}
