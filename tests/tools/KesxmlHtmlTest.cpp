#include "support/HtmlPage.h"
#include "support/KesxmlProcess.h"

#include <QDir>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class KesxmlHtml : public KesxmlTest
{
protected:
    QString PagePath() const { return m_directory.filePath("report.html"); }

    /// Runs a check that writes a page.
    KesxmlOutcome Check(const QStringList& arguments, const QByteArray& input = {})
    {
        return RunKesxml(QStringList{"check", "--html", PagePath()} + arguments, input);
    }

    HtmlPage PageOf(const QStringList& arguments, const QByteArray& input = {})
    {
        const KesxmlOutcome outcome = Check(arguments, input);
        EXPECT_LT(outcome.status, 2) << outcome.err;
        return HtmlPage::Read(PagePath());
    }

    HtmlPage PageOfDocument(const QByteArray& document)
    {
        return PageOf({Write("a.xml", document)});
    }

    QString WriteSchema()
    {
        return Write("n.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                              "<xs:element name='r'><xs:complexType><xs:sequence>"
                              "<xs:element name='n' type='xs:int' maxOccurs='unbounded'/>"
                              "</xs:sequence></xs:complexType></xs:element></xs:schema>");
    }

    /// The lines of code that a page shows: "NUMBER TEXT", "[...]" around what is marked.
    static std::vector<std::string> Lines(const HtmlPage& page)
    {
        std::vector<std::string> lines;
        static const QRegularExpression s_line(
            "<div class=\"line(?: hit)?\"><span class=\"at\">([0-9,]+)</span><code>(.*)</code>");
        QString source = QString::fromStdString(page.source);
        source.replace("<mark>", "[").replace("</mark>", "]").replace("&#160;", "_");
        for (auto match = s_line.globalMatch(source); match.hasNext();) {
            const auto line = match.next();
            lines.push_back((line.captured(1) + " " + line.captured(2)).toStdString());
        }
        return lines;
    }

    /// The rows of the chart below a caption: "LABEL NUMBER".
    static std::vector<std::string> Chart(const HtmlPage& page, const QString& caption)
    {
        const QString source = QString::fromStdString(page.source);
        const qsizetype start = source.indexOf("<caption>" + caption + "</caption>");
        EXPECT_GE(start, 0) << caption.toStdString();
        const QString table = source.mid(start, source.indexOf("</table>", start) - start);
        static const QRegularExpression s_row(
            "<tr><th scope=\"row\">(.*)</th><td class=\"number\">(.*)</td><td class=\"bar\">");
        std::vector<std::string> rows;
        for (auto match = s_row.globalMatch(table); match.hasNext();) {
            const auto row = match.next();
            rows.push_back(
                (row.captured(1).remove("<code>").remove("</code>") + " " + row.captured(2))
                    .toStdString());
        }
        return rows;
    }
};

/// The luminance of a colour "#rrggbb" by which contrast is defined for web pages.
double Luminance(const QString& colour)
{
    const auto part = [&](qsizetype index) {
        const double value = colour.mid(index, 2).toInt(nullptr, 16) / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(1) + 0.7152 * part(3) + 0.0722 * part(5);
}

double Contrast(const QString& a, const QString& b)
{
    const double first = Luminance(a);
    const double second = Luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

} // namespace

TEST_F(KesxmlHtml, ShowsADiagnosticBelowItsLineWithAMarkAndSomeLinesAround)
{
    const HtmlPage page = PageOfDocument("<a>\n one\n two\n  <b></c>\n <d/>\n six\n seven\n</a>");
    EXPECT_THAT(Lines(page), ElementsAre("2  one", "3  two", "4   &lt;b&gt;&lt;/[c]&gt;",
                                         "5  &lt;d/&gt;", "6  six"));
    ASSERT_THAT(page.Texts("p", "message error"), SizeIs(1));
    EXPECT_THAT(page.Texts("p", "message error")[0],
                testing::MatchesRegex("error 4:8 expected end of tag 'b' in /a/b"));
}

TEST_F(KesxmlHtml, MarksTheColumnsOfSeveralDiagnosticsOfALineAndJoinsExcerptsThatMeet)
{
    const QByteArray document = "<r>\n<n>x</n><n>y</n>\n\n<n>1</n>\n\n\n<n>zz</n>\n</r>";
    const HtmlPage page = PageOf({"--xsd", WriteSchema(), Write("a.xml", document)});
    EXPECT_THAT(Lines(page),
                ElementsAre("1 &lt;r&gt;", "2 &lt;n&gt;x&lt;/n&gt;[&lt;]n&gt;y&lt;/n&gt;[_]", "3 ",
                            "4 &lt;n&gt;1&lt;/n&gt;", "5 ", "6 ", "7 &lt;n&gt;zz&lt;/n&gt;[_]",
                            "8 &lt;/r&gt;"));
    EXPECT_THAT(page.Texts("div", "excerpt"), SizeIs(1));
    EXPECT_THAT(page.Texts("p", "message error"),
                ElementsAre(StartsWith("error 2:9 "), StartsWith("error 2:17 "),
                            StartsWith("error 7:10 ")));
}

TEST_F(KesxmlHtml, ShowsExcerptsThatAreFarApartOnTheirOwn)
{
    const QByteArray document =
        "<r>\n<n>x</n>\n" + QByteArray("<n>1</n>\n").repeated(5) + "<n>x</n></r>";
    const HtmlPage page = PageOf({"--xsd", WriteSchema(), Write("a.xml", document)});
    EXPECT_THAT(page.Texts("div", "excerpt"), SizeIs(2));
    EXPECT_THAT(Lines(page), SizeIs(4 + 3));
}

TEST_F(KesxmlHtml, FindsTheSameLinesWhateverEndsThem)
{
    for (const QByteArray end : {"\n", "\r\n", "\r"}) {
        const HtmlPage page = PageOfDocument("<a>" + end + end + "<b></c>" + end + "</a>" + end);
        EXPECT_THAT(Lines(page),
                    ElementsAre("1 &lt;a&gt;", "2 ", "3 &lt;b&gt;&lt;/[c]&gt;", "4 &lt;/a&gt;"));
    }
}

TEST_F(KesxmlHtml, MarksTheEndOfADocumentThatStopsShort)
{
    EXPECT_THAT(Lines(PageOfDocument("<a>\n<b>")), ElementsAre("1 &lt;a&gt;", "2 &lt;b&gt;[_]"));
    EXPECT_THAT(Lines(PageOfDocument("")), SizeIs(1));
}

TEST_F(KesxmlHtml, CutsLongLinesAroundTheColumnsAndWithoutTearingCharacters)
{
    const QByteArray filler = QByteArray("\U0001F600").repeated(50000);
    for (const QByteArray shift : {"", "x"}) {
        const HtmlPage page =
            PageOfDocument(shift.isEmpty() ? "<a>" + filler + "<b></c>" + filler
                                           : "<a>x" + filler + "<b></c>x" + filler);
        const std::vector<std::string> lines = Lines(page);
        ASSERT_THAT(lines, SizeIs(1));
        EXPECT_THAT(lines[0], StartsWith("1 \u2026\U0001F600"));
        EXPECT_THAT(lines[0], HasSubstr("&lt;b&gt;&lt;/[c]&gt;"));
        EXPECT_THAT(lines[0], EndsWith("\U0001F600\u2026"));
        EXPECT_THAT(lines[0], Not(HasSubstr("\uFFFD")));
        EXPECT_LT(page.source.size(), 20000U);
    }
    // So are lines that stand beside one.
    const HtmlPage page = PageOfDocument("<a>" + filler + "\n<b></c>\n");
    ASSERT_THAT(Lines(page), SizeIs(2));
    EXPECT_THAT(Lines(page)[0], EndsWith("\U0001F600\u2026"));
    EXPECT_LT(page.source.size(), 20000U);
}

TEST_F(KesxmlHtml, ShowsEachColumnOfALongLineOnce)
{
    const QByteArray document = "<r><n>x</n><n>y</n>" + QByteArray("<n>1</n>").repeated(500) +
                                "<n>z</n>" + QByteArray("<n>1</n>").repeated(500) + "</r>";
    const HtmlPage page = PageOf({"--xsd", WriteSchema(), Write("a.xml", document)});
    const std::vector<std::string> lines = Lines(page);
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_THAT(lines[0],
                StartsWith("1 &lt;r&gt;&lt;n&gt;x&lt;/n&gt;[&lt;]n&gt;y&lt;/n&gt;[&lt;]n"));
    EXPECT_THAT(lines[1], HasSubstr("&lt;n&gt;z&lt;/n&gt;[&lt;]n"));
    EXPECT_THAT(page.Texts("mark"), SizeIs(3));
}

TEST_F(KesxmlHtml, CutsLongMessagesAndNames)
{
    const QByteArray name(100000, 'n');
    const HtmlPage page = PageOfDocument("<a " + name + "='1'><" + name + ">\n</b></a>");
    EXPECT_LT(page.source.size(), 30000U);
    EXPECT_THAT(page.Texts("p", "message error"), SizeIs(1));
    EXPECT_THAT(Chart(page, "Elements by name"), Contains(HasSubstr("nnn\u2026 1")));
}

TEST_F(KesxmlHtml, TellsHowManyDiagnosticsItLeavesOut)
{
    const QByteArray document = "<r>" + QByteArray("<n>x</n>\n").repeated(1234) + "</r>";
    const QString file = Write("a.xml", document);
    const HtmlPage page = PageOf({"--xsd", WriteSchema(), file});
    EXPECT_THAT(page.Texts("p", "message error"), SizeIs(200));
    EXPECT_THAT(page.Texts("p", "omitted"), ElementsAre("1,034 more of them are left out here."));
    EXPECT_THAT(page.Texts("p", "result errors"), ElementsAre("1,234 errors"));
    // All documents together have a limit too.
    QStringList files;
    for (int i = 0; i < 30; ++i)
        files.push_back(file);
    const HtmlPage large = PageOf(QStringList{"--xsd", WriteSchema()} + files);
    EXPECT_THAT(large.Texts("p", "message error"), SizeIs(5000));
    EXPECT_EQ(large.Texts("p", "omitted").back(), "1,234 more of them are left out here.");
}

TEST_F(KesxmlHtml, LeavesOutWarningsRatherThanErrors)
{
    // An attribute that is declared twice is worth a warning.
    QByteArray dtd = "<!DOCTYPE a [<!ELEMENT a ANY>";
    for (int i = 0; i < 250; ++i)
        dtd += "\n<!ATTLIST a b" + QByteArray::number(i) + " CDATA #IMPLIED b" +
               QByteArray::number(i) + " CDATA #IMPLIED>";
    const HtmlPage page = PageOfDocument(dtd + "]>\n<a></b>");
    ASSERT_THAT(page.Texts("p", "message warning"), Not(IsEmpty()));
    EXPECT_THAT(page.Texts("p", "message error"), Not(IsEmpty()));
    EXPECT_EQ(page.Texts("p", "message error").size() + page.Texts("p", "message warning").size(),
              200U);
}

TEST_F(KesxmlHtml, CountsWhatIsInADocument)
{
    const HtmlPage page =
        PageOfDocument("<a x='1'><b x='2' y='3'>four</b><b>text</b><c><b>!</b></c></a>");
    EXPECT_THAT(Chart(page, "Elements by name"), ElementsAre("b 3", "a 1", "c 1"));
    EXPECT_THAT(Chart(page, "Elements by level"), ElementsAre("1 1", "2 3", "3 1"));
    EXPECT_THAT(Chart(page, "Attributes by name"), ElementsAre("x 2", "y 1"));
    EXPECT_THAT(Chart(page, "Characters of text by element"), ElementsAre("b 9"));
    EXPECT_THAT(page.Texts("dd"), ElementsAre("5", "3", "3", "9"));
    // Bars are as long as the numbers say.
    EXPECT_THAT(page.source, HasSubstr("<rect width=\"100.00%\""));
    EXPECT_THAT(page.source, HasSubstr("<rect width=\"33.33%\""));
    // What a document has nothing of has no chart.
    EXPECT_THAT(PageOfDocument("<a/>").Texts("caption"),
                ElementsAre("Elements by name", "Elements by level"));
}

TEST_F(KesxmlHtml, SumsUpWhatThereIsTooMuchOf)
{
    QByteArray document = "<r>";
    for (int i = 0; i < 100; ++i)
        document += "<n" + QByteArray::number(i) + "/>";
    document += QByteArray("<d>").repeated(20000) + QByteArray("</d>").repeated(20000) + "</r>";
    const HtmlPage page = PageOfDocument(document);
    const std::vector<std::string> names = Chart(page, "Elements by name");
    ASSERT_THAT(names, SizeIs(13));
    EXPECT_EQ(names.front(), "d 20,000");
    EXPECT_EQ(names.back(), "90 other names 90");
    const std::vector<std::string> levels = Chart(page, "Elements by level");
    ASSERT_THAT(levels, SizeIs(13));
    EXPECT_EQ(levels.back(), "19,989 deeper levels 19,989");
}

TEST_F(KesxmlHtml, ListsAllDocumentsWithLinks)
{
    const QString good = Write("good.xml", "<a/>");
    const QString bad = Write("bad.xml", "<a></b>");
    const QString missing = m_directory.filePath("missing.xml");
    const KesxmlOutcome outcome = Check({good, bad, missing, "-"}, "<a/>");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, (good + ": fine\n" + bad + ": 1 error\n-: fine\n").toStdString());
    const HtmlPage page = HtmlPage::Read(PagePath());
    std::set<std::string> ids;
    std::vector<std::string> links;
    for (const HtmlPage::Element& element : page.elements) {
        if (!element.id.empty()) {
            EXPECT_TRUE(ids.insert("#" + element.id).second) << element.id;
        }
        if (element.name == "a" && element.text != "All documents")
            links.push_back(element.text);
    }
    EXPECT_THAT(links, ElementsAre(bad.toStdString(), missing.toStdString(), good.toStdString(),
                                   "standard input"));
    for (const HtmlPage::Element& element : page.elements) {
        if (!element.href.empty()) {
            EXPECT_TRUE(ids.contains(element.href)) << element.href;
        }
    }
    EXPECT_THAT(page.Texts("p", "result fine"), SizeIs(2));
    EXPECT_THAT(page.Texts("td", "result errors"), SizeIs(1));
    EXPECT_THAT(page.Texts("td", "result unreadable"), SizeIs(1));
    EXPECT_THAT(page.Texts("p", "result unreadable"),
                ElementsAre(HasSubstr(missing.toStdString())));
    EXPECT_THAT(page.Texts("title"),
                ElementsAre("Check: 4 documents, 2 without errors, 1 with errors, 1 unreadable"));
    EXPECT_THAT(page.Texts("h1"), SizeIs(1));
    EXPECT_THAT(page.source, StartsWith("<!DOCTYPE html>\n<html lang=\"en\">\n"));
}

TEST_F(KesxmlHtml, HasWhatIsWrongFirstAndWhatIsFineFoldedAtTheEnd)
{
    const QString doubtful = Write("doubtful.xml", "<!DOCTYPE a SYSTEM 'a.dtd'><a>&b;</a>");
    const QString bad = Write("bad.xml", "<a></b>");
    QStringList files;
    for (int i = 0; i < 30; ++i)
        files += Write("fine" + QString::number(i) + ".xml", "<a/>");
    files.insert(7, doubtful);
    files.insert(9, bad);
    const HtmlPage page = PageOf(files);
    std::vector<std::string> titles = page.Texts("h2");
    ASSERT_THAT(titles, SizeIs(4 + 30));
    titles.resize(4);
    EXPECT_THAT(titles,
                ElementsAre("Documents with errors or warnings", bad.toStdString(),
                            doubtful.toStdString(), "30 documents without errors or warnings"));
    EXPECT_THAT(page.source, HasSubstr("<details id=\"fine\">\n<summary>"));
    EXPECT_THAT(page.Texts("details"), SizeIs(1));
    // A few are shown at once, and nothing is said of what there is not.
    files.resize(5);
    const HtmlPage small = PageOf(files);
    EXPECT_THAT(small.source, HasSubstr("<details id=\"fine\" open=\"open\">"));
    EXPECT_THAT(small.source, Not(HasSubstr("Documents with errors")));
    EXPECT_THAT(PageOf({bad}).source, Not(HasSubstr("<details")));
}

TEST_F(KesxmlHtml, ShowsThousandsOfFilesInLessThanAMegabyte)
{
    // As long as the names of many projects' files.
    const QString folder = QString("documents-of-a-project/%1").arg("", 40, 'x');
    ASSERT_TRUE(QDir(m_directory.path()).mkpath(folder));
    QStringList files;
    for (int i = 0; i < 2000; ++i) {
        const QByteArray number = QByteArray::number(i);
        QByteArray document = "<list>\n";
        for (int item = 0; item < 12; ++item)
            document += "  <item" + QByteArray::number(item) + " id='" + number + "'>text of " +
                        number + "</item" + QByteArray::number(item) + ">\n";
        files += folder + "/" + QString::number(i) + ".xml";
        Write(files.back(), document + (i % 20 == 7 ? "</lists>" : "</list>"));
    }
    const KesxmlOutcome outcome = RunKesxml(
        QStringList{"check", "--quiet", "--html", PagePath()} + files, {}, m_directory.path());
    EXPECT_EQ(outcome.status, 1);
    const HtmlPage page = HtmlPage::Read(PagePath());
    EXPECT_LT(page.source.size(), 1'000'000U);
    EXPECT_THAT(page.Texts("p", "message error"), SizeIs(100));
    const std::vector<std::string> names = page.Texts("th");
    for (const QString& file : files)
        EXPECT_THAT(names, Contains(file.toStdString()));
    EXPECT_THAT(page.Texts("p", "omitted"),
                ElementsAre(StartsWith("The charts of "), StartsWith("The charts of 1,")));
    EXPECT_THAT(page.source, HasSubstr("<caption>Elements by name</caption>"));
}

TEST_F(KesxmlHtml, ShowsThousandsOfBadFilesInLessThanAMegabyte)
{
    const QString folder = QString("documents-of-a-project/%1").arg("", 40, 'x');
    ASSERT_TRUE(QDir(m_directory.path()).mkpath(folder));
    QStringList files;
    for (int i = 0; i < 2000; ++i) {
        const QByteArray number = QByteArray::number(i);
        files += folder + "/" + QString::number(i) + ".xml";
        Write(files.back(), "<list>\n  <item id='" + number + "'>text of " + number +
                                "</item>\n  <item id='more'>text</item>\n</lists>\n");
    }
    const KesxmlOutcome outcome = RunKesxml(
        QStringList{"check", "--quiet", "--html", PagePath()} + files, {}, m_directory.path());
    EXPECT_EQ(outcome.status, 1);
    const HtmlPage page = HtmlPage::Read(PagePath());
    EXPECT_LT(page.source.size(), 1'000'000U);
    // All are in the table, and those with a section are linked to it.
    EXPECT_THAT(page.Texts("td", "result errors"), SizeIs(2000));
    const std::size_t shown = page.Texts("p", "message error").size();
    EXPECT_GT(shown, 300U);
    EXPECT_THAT(page.Texts("section", "document"), SizeIs(shown));
    const std::vector<std::string> links = page.Texts("a");
    for (std::size_t i = 0; i < 2000; ++i) {
        const std::string file = files.at(static_cast<qsizetype>(i)).toStdString();
        EXPECT_EQ(std::count(links.begin(), links.end(), file), i < shown ? 1 : 0) << file;
    }
    const std::string leftOut = "What was found in 1," + std::to_string(2000 - shown - 1000) +
                                " more documents is left out";
    EXPECT_THAT(page.Texts("p", "omitted"), Contains(StartsWith(leftOut)));
}

TEST_F(KesxmlHtml, WorksTogetherWithSchemasAndJson)
{
    const QString schema = WriteSchema();
    const QString file = Write("a.xml", "<r>\n<n>x</n></r>");
    const KesxmlOutcome plain = RunKesxml({"check", "--json", "--xsd", schema, file});
    const KesxmlOutcome outcome = Check({"--json", "--xsd", schema, file});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, plain.out);
    EXPECT_EQ(outcome.err, "");
    const HtmlPage page = HtmlPage::Read(PagePath());
    EXPECT_THAT(page.Texts("p", "message error"), SizeIs(1));
    EXPECT_THAT(page.Texts("header")[0], HasSubstr("Validated against " + schema.toStdString()));
}

TEST_F(KesxmlHtml, ShowsWhatIsWrongWithASchema)
{
    const QString schema = Write("bad.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/"
                                            "XMLSchema'>\n<xs:element name='n' type='none'/>\n"
                                            "</xs:schema>");
    const HtmlPage page = PageOf({"--xsd", schema, "-"}, "<n/>");
    EXPECT_THAT(page.Texts("td", "result errors"), SizeIs(1));
    EXPECT_THAT(Lines(page), Contains(HasSubstr("type='none'")));
    EXPECT_THAT(page.Texts("header")[0], Not(HasSubstr("Validated")));
}

TEST_F(KesxmlHtml, TakesNothingForMarkup)
{
    const QByteArray script = "<script>alert(1)</script>";
    const QString name = "<script>&\"'>.xml";
    const QByteArray document = "<a>" + script +
                                "\n<img src='http://127.0.0.1/' onerror='x()'/>"
                                "</style></title><!-- <b> --><![CDATA[" +
                                script + "]]>\n&lt;\"'%1%2</c>";
    const QString schema = Write("s.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                          "<xs:element name='v'><xs:simpleType><xs:restriction "
                                          "base='xs:string'><xs:enumeration value='a'/>"
                                          "</xs:restriction></xs:simpleType></xs:element>"
                                          "</xs:schema>");
    const QString hostile = Write(name, document);
    const QString quoting = Write("v.xml", "<v>&lt;script>alert(1)&lt;/script></v>");
    const HtmlPage page = PageOf({"--xsd", schema, hostile, quoting});
    const std::set<std::string> known{
        "html",    "head",  "meta",   "title",  "style", "body",   "header", "h1",  "h2",
        "h3",      "p",     "main",   "code",   "a",     "table",  "tr",     "th",  "td",
        "thead",   "tbody", "div",    "span",   "dl",    "dt",     "dd",     "svg", "rect",
        "section", "mark",  "strong", "footer", "time",  "caption"};
    for (const HtmlPage::Element& element : page.elements)
        EXPECT_TRUE(known.contains(element.name)) << element.name;
    EXPECT_THAT(page.source, Not(HasSubstr("<script")));
    EXPECT_THAT(page.Texts("a"), Contains(hostile.toStdString()));
    // A message that quotes the document.
    EXPECT_THAT(page.Texts("p", "message error"), Contains(HasSubstr("<script>alert(1)</script>")));
    EXPECT_THAT(Lines(page), Contains(HasSubstr("%1%2")));
}

TEST_F(KesxmlHtml, RefersToNothingElse)
{
    const HtmlPage page = PageOfDocument("<a>\n<b></c></a>");
    EXPECT_THAT(page.source, Not(HasSubstr("src=")));
    EXPECT_THAT(page.source, Not(HasSubstr("url(")));
    EXPECT_THAT(page.source, Not(HasSubstr("@import")));
    EXPECT_THAT(page.source, Not(HasSubstr("http:")));
    EXPECT_THAT(page.source, Not(HasSubstr("https:")));
    EXPECT_THAT(page.source, HasSubstr("content=\"default-src 'none'; style-src 'sha256-"));
    for (const HtmlPage::Element& element : page.elements)
        EXPECT_TRUE(element.href.empty() || element.href[0] == '#') << element.href;
}

TEST_F(KesxmlHtml, ShowsControlCharactersAndOtherEncodingsSafely)
{
    // U+202E turns the direction of writing; U+009B begins a command to a terminal.
    const HtmlPage page = PageOfDocument("<a>\u202E\u009B\t<b></c></a>");
    EXPECT_THAT(Lines(page),
                ElementsAre("1 &lt;a&gt;\uFFFD\uFFFD &lt;b&gt;&lt;/[c]&gt;&lt;/a&gt;"));
    const QByteArray latin = "<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>\xE9<b></c></a>";
    EXPECT_THAT(Lines(PageOf({"-"}, latin)), Contains(HasSubstr("&lt;a&gt;\u00E9&lt;b")));
}

TEST_F(KesxmlHtml, IsReadableInBothSchemesAndOnPaper)
{
    const HtmlPage page = PageOfDocument("<a/>");
    std::vector<std::map<QString, QString>> schemes;
    static const QRegularExpression s_scheme(":root \\{([^}]*)\\}");
    static const QRegularExpression s_colour("--([a-z-]+): (#[0-9a-f]{6});");
    const QString source = QString::fromStdString(page.source);
    for (auto scheme = s_scheme.globalMatch(source); scheme.hasNext();) {
        schemes.emplace_back();
        for (auto colour = s_colour.globalMatch(scheme.next().captured(1)); colour.hasNext();) {
            const auto match = colour.next();
            schemes.back()[match.captured(1)] = match.captured(2);
        }
    }
    ASSERT_THAT(schemes, SizeIs(3));
    EXPECT_GT(Luminance(schemes[0]["page"]), 0.9);
    EXPECT_LT(Luminance(schemes[1]["page"]), 0.1);
    EXPECT_GT(Luminance(schemes[2]["page"]), 0.9);
    const std::vector<std::pair<QString, QString>> pairs{
        {"text", "page"},           {"text", "panel"},       {"text", "mark"},
        {"faint", "page"},          {"faint", "panel"},      {"link", "page"},
        {"error", "page"},          {"error", "error-back"}, {"text", "error-back"},
        {"warning", "page"},        {"fine", "page"},        {"text", "warning-back"},
        {"warning", "warning-back"}};
    for (auto& scheme : schemes) {
        for (const auto& [text, back] : pairs)
            EXPECT_GE(Contrast(scheme[text], scheme[back]), 4.5)
                << text.toStdString() << " on " << back.toStdString();
    }
}

TEST_F(KesxmlHtml, ReplacesAReportOnlyByAWholeOne)
{
    const QString file = Write("a.xml", "<a/>");
    EXPECT_EQ(Check({file}).status, 0);
    const std::string first = HtmlPage::Read(PagePath()).source;
    // What is written is more than may be written.
    const QString command = "ulimit -f 1; trap '' XFSZ; exec '" KESXML_PATH "' check --html '" +
                            PagePath() + "' '" + file + "'";
    const KesxmlOutcome outcome = RunProgram("/bin/sh", {"-c", command});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, StartsWith("kesxml: the report '" + PagePath().toStdString() + "': "));
    EXPECT_TRUE(HtmlPage::Read(PagePath()).source == first);
    EXPECT_THAT(QDir(m_directory.path()).entryList(QDir::Files), SizeIs(2));
    const HtmlPage second = PageOf({Write("b.xml", "<b></c>")});
    EXPECT_THAT(second.Texts("td", "result errors"), SizeIs(1));
}

TEST_F(KesxmlHtml, SaysWhyAReportCannotBeWritten)
{
    const QString file = Write("a.xml", "<a/>");
    for (const QString& report : {m_directory.filePath("no/folder.html"), m_directory.path(),
                                  QString("/dev/null"), QString("-"), QString("")}) {
        const KesxmlOutcome outcome = RunKesxml({"check", "--html", report, file});
        EXPECT_EQ(outcome.status, 2) << report.toStdString();
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr("the report '" + report.toStdString() + "': "));
    }
}

TEST_F(KesxmlHtml, ReplacesNoDocument)
{
    const QByteArray content = "<a/>";
    const QString first = Write("a.xml", content);
    const QString second = Write("b.xml", "<b/>");
    const QString schema = WriteSchema();
    for (const QStringList& arguments : {QStringList{first, second}, QStringList{first, first},
                                         QStringList{schema, "--xsd", schema, second},
                                         QStringList{m_directory.path() + "/./a.xml", first}}) {
        const KesxmlOutcome outcome = RunKesxml(QStringList{"check", "--html"} + arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr("replace"));
    }
    QFile file(first);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), content);
}

TEST_F(KesxmlHtml, TakesDocumentsOfAnyDepth)
{
    const QString file = Write("deep.xml", QByteArray("<a>").repeated(200000) + "&" +
                                               QByteArray("</a>").repeated(200000));
    const KesxmlOutcome outcome =
        RunProgram("/bin/sh", {"-c", "ulimit -s 256; '" KESXML_PATH "' check --html '" +
                                         PagePath() + "' '" + file + "'"});
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_THAT(HtmlPage::Read(PagePath()).Texts("dd"), Contains("200,000"));
}
