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
                ElementsAre("2:13 /r/a[1] x='1'",
                            "3:31 /r/a[2] x='&lt;&apos;&#10;' y='2' \"two lines\"", "5:10 /r/c/a"));
    EXPECT_EQ(outcome.err, "");
}

TEST(KesxmlQuery, StartsAtTheDocumentElement)
{
    for (const char* path : {"/r/a", "r/a", "*/a", "/*/a"})
        EXPECT_THAT(Query(path).OutLines(), SizeIs(2)) << path;
    EXPECT_THAT(Query("/r//a").OutLines(), SizeIs(3));
    EXPECT_THAT(Query("/*").OutLines(), ElementsAre("1:4 /r"));
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
    EXPECT_EQ(outcome.out, "1:28 /a b='\uFFFD&#13;\uFFFD' \"\uFFFD \uFFFD x\uFFFD\"\n");
    EXPECT_EQ(Query("a", "<?xml version='1.1'?><a b='&#27;'>&#27;</a>").out,
              "1:35 /a b='\\x1B;' \"\uFFFD\"\n");
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
