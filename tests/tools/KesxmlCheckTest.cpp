#include "support/KesxmlProcess.h"

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class KesxmlCheck : public KesxmlTest
{
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
