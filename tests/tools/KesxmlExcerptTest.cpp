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

TEST_F(KesxmlExcerpt, KnowsWhichCharactersTakeNoColumnOrTwo)
{
    struct Case
    {
        const char* text;
        std::size_t columns;
    };
    for (const Case& c : {Case{"\U0001F680", 2}, Case{"\U0001FA70", 2}, Case{"\u231A", 2},
                          Case{"\u200D", 0}, Case{"\u200B", 0}, Case{"\uFE0F", 0},
                          // A vowel sign of Devanagari stands beside its letter.
                          Case{"\u0915\u093E", 2}, Case{"\u1112\u1161", 2}, Case{"\uFF21", 2}}) {
        const QByteArray document = "<a>" + QByteArray(c.text) + "<b></c></a>";
        EXPECT_THAT(Excerpt(document),
                    ElementsAre("  " + document.toStdString(),
                                std::string(2 + 3 + c.columns + 5, ' ').append("^")))
            << c.text;
    }
}

TEST_F(KesxmlExcerpt, PointsAtTheFirstByteThatIsNotUtf8)
{
    const QByteArray far = "<a>\n" + QByteArray("<b>text</b>\n").repeated(10000);
    struct Case
    {
        QByteArray document;
        std::vector<std::string> lines;
    };
    for (const Case& c : {Case{"<a>\n \xE9t\xE9 \u00E9</a>",
                               {":2:2: error: the byte 0xE9 is not valid in UTF-8",
                                "   \uFFFDt\uFFFD \u00E9</a>", "   ^"}},
                          Case{"<a>\r\n\u00E9\U0001F600\xF5\x80\x80\x80</a>",
                               {":2:4: error: the byte 0xF5 is not valid in UTF-8",
                                "  \u00E9\U0001F600\uFFFD\uFFFD\uFFFD\uFFFD</a>", "     ^"}},
                          Case{"\xEF\xBB\xBF<a>\xED\xA0\x80</a>",
                               {":1:4: error: the byte 0xED is not valid in UTF-8",
                                "  <a>\uFFFD\uFFFD\uFFFD</a>", "     ^"}},
                          // A declaration that nobody can decode has no place for its reader.
                          Case{"<?xml version='1.0' \xE9?>\n<a/>",
                               {":1:21: error: the byte 0xE9 is not valid in UTF-8",
                                "  <?xml version='1.0' \uFFFD?>", "                      ^"}},
                          Case{far + "\xC0\x80</a>",
                               {":10002:1: error: the byte 0xC0 is not valid in UTF-8",
                                "  \uFFFD\uFFFD</a>", "  ^"}}}) {
        const QString file = Write("a.xml", c.document);
        for (const QStringList& arguments :
             {QStringList{"check"}, QStringList{"format"}, QStringList{"stats"},
              QStringList{"tree"}, QStringList{"query", "a"}}) {
            for (const QString& name : {file, QString("-")}) {
                const KesxmlOutcome outcome = RunKesxml(arguments + QStringList{name}, c.document);
                std::vector<std::string> expected = c.lines;
                expected[0].insert(0, name.toStdString());
                EXPECT_EQ(outcome.status, 1);
                EXPECT_EQ(outcome.ErrLines(), expected) << arguments.front().toStdString();
            }
        }
    }
}

TEST_F(KesxmlExcerpt, ShowsWhatIsWrongInAPipeWithoutReadingItAgain)
{
    const KesxmlOutcome outcome =
        RunProgram("/bin/bash", {"-c", "'" KESXML_PATH "' check <(printf '<a>\\xE9</a>')"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr(":1:4: error: the byte 0xE9 is not valid in UTF-8\n"
                                       "  <a>\uFFFD</a>\n     ^\n"));
}

TEST_F(KesxmlExcerpt, TakesNoOtherEncodingForBrokenUtf8)
{
    const QByteArray document = "<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>\xE9\n<b></c></a>";
    for (const QString& name : {Write("a.xml", document), QString("-")}) {
        EXPECT_THAT(RunKesxml({"check", name}, document).ErrLines(),
                    ElementsAre(StartsWith(name.toStdString() + ":3:6: error: expected end of tag"),
                                "  <b></c></a>", "       ^"));
    }
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

TEST_F(KesxmlExcerpt, ShowsTextOfOtherEncodings)
{
    const QByteArray document = "<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>\xE9<b></c></a>";
    for (const QString& name : {Write("a.xml", document), QString("-")})
        EXPECT_THAT(RunKesxml({"check", name}, document).err,
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
