#include "support/KesxmlProcess.h"

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::SizeIs;

const QByteArray c_document = "<r>\n"
                              "  <a x='1'/><b/>\n"
                              "  <a y='2' x='&lt;&#39;&#10;'>two\n  lines</a>\n"
                              "  <c><a/></c>\n"
                              "</r>\n";

class KesxmlQueryFiles : public KesxmlTest
{
};

KesxmlOutcome Query(const char* path, const QByteArray& document = c_document)
{
    return RunKesxml({"query", path, "-"}, document);
}

} // namespace

TEST(KesxmlQuery, PrintsPositionPathAttributesAndTextOfEachMatchInOrder)
{
    const KesxmlOutcome outcome = Query("//a");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.OutLines(),
                ElementsAre("2:3 /r/a[1] x='1'",
                            "3:3 /r/a[2] x='&lt;&apos;&#10;' y='2' \"two lines\"", "5:6 /r/c/a"));
    EXPECT_EQ(outcome.err, "");
}

TEST(KesxmlQuery, StartsAtTheDocumentElement)
{
    for (const char* path : {"/r/a", "r/a", "*/a", "/*/a"})
        EXPECT_THAT(Query(path).OutLines(), SizeIs(2)) << path;
    EXPECT_THAT(Query("/r//a").OutLines(), SizeIs(3));
    EXPECT_THAT(Query("/*").OutLines(), ElementsAre("1:1 /r"));
}

TEST(KesxmlQuery, FindsNothingWithStatusOne)
{
    for (const char* path : {"/a", "//d", "", "/", "r/"}) {
        const KesxmlOutcome outcome = Query(path);
        EXPECT_EQ(outcome.status, 1) << path;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "");
    }
}

TEST(KesxmlQuery, SaysThatAPathHasNoConditionsAndAttributes)
{
    const struct
    {
        const char* path;
        const char* culprit;
    } cases[] = {{"/r/a[1]", "'['"}, {"//@x", "'@'"}, {"//a/text()", "'('"}};
    for (const auto& c : cases) {
        const KesxmlOutcome outcome = Query(c.path);
        EXPECT_EQ(outcome.status, 2) << c.path;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(std::string(c.culprit) + " in the path"));
    }
}

TEST(KesxmlQuery, CountsOnlyWhenAskedTo)
{
    const KesxmlOutcome three = RunKesxml({"query", "--count", "//a", "-"}, c_document);
    EXPECT_EQ(three.status, 0);
    EXPECT_EQ(three.out, "3\n");
    const KesxmlOutcome none = RunKesxml({"query", "--count", "//d", "-"}, c_document);
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.out, "0\n");
}

TEST(KesxmlQuery, TellsWhereAStartTagBegins)
{
    EXPECT_THAT(Query("//a",
                      "\xEF\xBB\xBF<!-- <a> -->\r\n<r>\U0001F600<a\r\n b='>'/><![CDATA[<a>]]>"
                      "<a/></r>")
                    .OutLines(),
                ElementsAre("2:6 /r/a[1] b='&gt;'", "3:24 /r/a[2]"));
    const QByteArray entities = "<!DOCTYPE r [<!ENTITY e '<a/>'>]>\n<r>&e;<a/></r>";
    EXPECT_THAT(RunKesxml({"query", "--allow-entities", "//a", "-"}, entities).OutLines().back(),
                "2:7 /r/a[2]");
}

TEST_F(KesxmlQueryFiles, NameTheFileOfEachMatch)
{
    const QString first = Write("a.xml", "<r><a/></r>");
    const QString bad = Write("bad.xml", "<r><a>");
    const QString last = Write("c.xml", "<r><a/><a x='1'/></r>");
    const KesxmlOutcome found = RunKesxml({"query", "//a", first, last});
    EXPECT_EQ(found.status, 0);
    const std::string begin = first.toStdString() + ":1:4 /r/a";
    EXPECT_THAT(found.OutLines(), ElementsAre(begin, last.toStdString() + ":1:4 /r/a[1]",
                                              last.toStdString() + ":1:8 /r/a[2] x='1'"));
    EXPECT_THAT(RunKesxml({"query", "--count", "//a", first, last}).OutLines(),
                ElementsAre(first.toStdString() + ":1", last.toStdString() + ":2"));
    const KesxmlOutcome broken = RunKesxml({"query", "//a", bad, first});
    EXPECT_EQ(broken.status, 1);
    EXPECT_THAT(broken.OutLines(), ElementsAre(begin));
    const KesxmlOutcome missing = RunKesxml({"query", "//a", m_directory.filePath("no"), first});
    EXPECT_EQ(missing.status, 2);
    EXPECT_THAT(missing.OutLines(), ElementsAre(begin));
    EXPECT_EQ(RunKesxml({"query", "//b", first, last}).status, 1);
}

TEST(KesxmlQuery, PrintsTextsOrAttributesAlone)
{
    const auto query = [](const QStringList& options) {
        return RunKesxml(QStringList{"query"} + options + QStringList{"//a", "-"}, c_document);
    };
    EXPECT_EQ(query({"--text"}).out, "\ntwo\n  lines\n\n");
    EXPECT_EQ(query({"--attribute", "x"}).out, "1\n<'\n\n");
    EXPECT_EQ(query({"--attribute", "z"}).status, 1);
    for (const QStringList& options :
         {QStringList{"--text", "--count"}, {"--text", "--attribute", "x"}, {"--text", "--json"}}) {
        EXPECT_EQ(query(options).status, 2);
        EXPECT_EQ(query(options).out, "");
    }
}

TEST(KesxmlQuery, CutsLongTextsAtSixtyUnits)
{
    const QByteArray sixty(60, 'x');
    EXPECT_THAT(Query("a", "<a>\n " + sixty + "\n</a>").out,
                HasSubstr("\"" + sixty.toStdString() + "\""));
    EXPECT_THAT(Query("a", "<a>" + sixty + "x</a>").out,
                HasSubstr("\"" + sixty.left(59).toStdString() + "\u2026\""));
    // A character of two units is not torn.
    EXPECT_THAT(Query("a", "<a>" + sixty.left(58) + "\U0001F600xx</a>").out,
                HasSubstr("\"" + sixty.left(58).toStdString() + "\u2026\""));
    EXPECT_THAT(Query("a", "<a>" + sixty.left(58) + "\U0001F600</a>").out,
                HasSubstr("\"" + sixty.left(58).toStdString() + "\U0001F600\""));
}

TEST(KesxmlQuery, ShowsAttributesWhole)
{
    const QByteArray value(5000, 'x');
    EXPECT_THAT(Query("a", "<a b='" + value + "'/>").out,
                HasSubstr("b='" + value.toStdString() + "'"));
}

TEST(KesxmlQuery, KeepsAMatchOnOneLineWithoutControlCharacters)
{
    const KesxmlOutcome outcome =
        Query("a", "<a b='&#x9b;&#13;&#x202e;'>\u0085 \u009B\n\u202E\u2028x\u2066</a>");
    EXPECT_EQ(outcome.out, "1:1 /a b='\uFFFD&#13;\uFFFD' \"\uFFFD \uFFFD x\uFFFD\"\n");
    EXPECT_EQ(Query("a", "<?xml version='1.1'?><a b='&#27;'>&#27;</a>").out,
              "1:22 /a b='\\x1B;' \"\uFFFD\"\n");
}

TEST(KesxmlQuery, ShortensLongPaths)
{
    const KesxmlOutcome outcome =
        Query("//b", QByteArray("<a>").repeated(300) + "<b/>" + QByteArray("</a>").repeated(300));
    std::string steps;
    for (int i = 0; i < 99; ++i)
        steps += "/a";
    EXPECT_THAT(outcome.OutLines(), ElementsAre(EndsWith(" /..." + steps + "/b")));
}
