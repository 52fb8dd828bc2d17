#include "support/KesxmlProcess.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

class KesxmlExcerpt : public KesxmlTest
{
protected:
    /// The two lines below the only report of a check.
    std::vector<std::string> Excerpt(const QByteArray& document)
    {
        const QString file = Write("a.xml", document);
        const KesxmlOutcome outcome = RunKesxml({"check", file});
        std::vector<std::string> lines = outcome.ErrLines();
        EXPECT_THAT(outcome.Reports(), SizeIs(1)) << outcome.err;
        lines.erase(lines.begin());
        EXPECT_EQ(RunKesxml({"check", "-"}, document).ErrLines().size(), lines.size() + 1);
        return lines;
    }
};

} // namespace

TEST_F(KesxmlExcerpt, ShowsTheLineWithACaretUnderTheColumn)
{
    const QByteArray document = "<a>\n  <b></c>\n</a>";
    const KesxmlOutcome outcome = RunKesxml({"check", "-"}, document);
    ASSERT_THAT(outcome.ErrLines(), SizeIs(3));
    EXPECT_THAT(outcome.ErrLines()[0], StartsWith("-:2:8: "));
    EXPECT_EQ(outcome.ErrLines()[1], "    <b></c>");
    EXPECT_EQ(outcome.ErrLines()[2], "         ^");
    for (const QString command : {"format", "stats", "tree"}) {
        EXPECT_THAT(RunKesxml({command, "-"}, document).err,
                    HasSubstr("\n    <b></c>\n         ^\n"));
    }
    EXPECT_THAT(RunKesxml({"query", "a", "-"}, document).err,
                HasSubstr("\n    <b></c>\n         ^\n"));
}

TEST_F(KesxmlExcerpt, FindsTheLineWhateverEndsTheLines)
{
    for (const QByteArray end : {"\n", "\r\n", "\r"}) {
        const QByteArray document =
            "<a>" + end + end + "<!-- x -->" + end + " <b></c>" + end + "</a>" + end;
        EXPECT_THAT(Excerpt(document), ElementsAre("   <b></c>", "        ^"));
    }
}

TEST_F(KesxmlExcerpt, FindsLinesBeyondTheFirstPiecesOfASource)
{
    for (const QByteArray end : {"\n", "\r\n", "\r"}) {
        const QByteArray document =
            "<a>" + (QByteArray(99, 'x') + end).repeated(3000) + "<b></c></a>";
        EXPECT_THAT(Excerpt(document), ElementsAre("  <b></c></a>", "       ^"));
    }
}

TEST_F(KesxmlExcerpt, PointsBehindWideAndCombiningCharacters)
{
    EXPECT_THAT(Excerpt("<a>\u00E9\u4E2D\U0001F600e\u0301<b></c></a>"),
                ElementsAre("  <a>\u00E9\u4E2D\U0001F600e\u0301<b></c></a>", "                ^"));
}

TEST_F(KesxmlExcerpt, ShowsBlanksForTabsAndNothingThatSteersATerminal)
{
    EXPECT_THAT(Excerpt("<a>\t\u009B<b></c></a>"),
                ElementsAre("  <a> \uFFFD<b></c></a>", "            ^"));
}

TEST_F(KesxmlExcerpt, CutsALongLineAroundTheColumn)
{
    const QByteArray filler = QByteArray("x").repeated(100000);
    const std::vector<std::string> lines = Excerpt("<a>" + filler + "<b></c>" + filler + "</a>");
    const QByteArray expected =
        "  \u2026" + filler.left(55) + "<b></c>" + filler.left(58) + "\u2026";
    EXPECT_THAT(lines, ElementsAre(expected.toStdString(), std::string(63, ' ').append("^")));
}

TEST_F(KesxmlExcerpt, DoesNotTearCharactersApart)
{
    const QByteArray filler = QByteArray("\U0001F600").repeated(100);
    for (const char* shift : {"", "x"}) {
        const std::vector<std::string> lines =
            Excerpt("<a>" + filler + shift + "<b></c>" + shift + filler + "</a>");
        ASSERT_THAT(lines, SizeIs(2));
        EXPECT_EQ(lines[0].find("\uFFFD"), std::string::npos) << lines[0];
    }
}

TEST_F(KesxmlExcerpt, ShowsTextOfUnknownEncodingsAsFarAsItIsAscii)
{
    const QByteArray document = "<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>\xE9<b></c></a>";
    const KesxmlOutcome outcome = RunKesxml({"check", "-"}, document);
    EXPECT_THAT(outcome.err, HasSubstr("\n  <a>\uFFFD<b></c></a>\n           ^\n"));
    // A file is decoded.
    EXPECT_THAT(RunKesxml({"check", Write("a.xml", document)}).err,
                HasSubstr("\n  <a>\u00E9<b></c></a>\n           ^\n"));
}

TEST_F(KesxmlExcerpt, ShowsNothingOfAnEmptyLine)
{
    EXPECT_THAT(Excerpt("<a>\n\n"), SizeIs(0));
    EXPECT_THAT(Excerpt(""), SizeIs(0));
}

TEST_F(KesxmlExcerpt, ShowsTheLineOfASchema)
{
    const QString schema = Write("bad.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/"
                                            "XMLSchema'>\n<xs:element name='n' type='none'/>\n"
                                            "</xs:schema>");
    EXPECT_THAT(RunKesxml({"check", "--xsd", schema, "-"}, "<n/>").err,
                HasSubstr("\n  <xs:element name='n' type='none'/>\n"));
}

TEST_F(KesxmlExcerpt, ServesManyReportsOfOneDocument)
{
    const QString schema = Write("n.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                          "<xs:element name='r'><xs:complexType><xs:sequence>"
                                          "<xs:element name='n' type='xs:int' "
                                          "maxOccurs='unbounded'/>"
                                          "</xs:sequence></xs:complexType></xs:element>"
                                          "</xs:schema>");
    const QByteArray document = "<r>\n<n>x</n><n>y</n>\n\n<n>1</n>\n<n>zz</n>\n</r>";
    const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", schema, "-"}, document);
    EXPECT_THAT(outcome.ErrLines(),
                ElementsAre(StartsWith("-:2:9: "), "  <n>x</n><n>y</n>", "          ^",
                            StartsWith("-:2:17: "), "  <n>x</n><n>y</n>", "                  ^",
                            StartsWith("-:5:10: "), "  <n>zz</n>", "           ^"));
}
