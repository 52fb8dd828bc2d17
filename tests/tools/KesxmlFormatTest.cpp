#include "support/KesxmlProcess.h"
#include "support/RealDocuments.h"

#include <kescorexml/SAXInterface.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <QDir>
#include <QFileInfo>

#include <map>
#include <memory>
#include <unordered_map>

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// All that a parser tells of a document, but for white space among elements, and for lines of it
/// elsewhere: these may stand among comments.
class Recorder : public SAXInterface
{
public:
    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override
    {
        FlushText(true);
        events += '<' + name.toStdString();
        for (const auto& [attribute, value] :
             std::map<TString, TString>(attributes.begin(), attributes.end()))
            events += '\n' + attribute.toStdString() + '=' + value.toStdString();
        m_isLeaf = true;
    }

    void EndElement() override
    {
        FlushText(!m_isLeaf);
        events += '>';
        m_isLeaf = false;
    }

    void TextContent(const TString& text) override { m_text += text.toStdString(); }

    std::string events;

private:
    void FlushText(bool isAmongElements)
    {
        const bool isBlank = m_text.find_first_not_of(" \t\r\n") == std::string::npos;
        const bool hasLines = m_text.find('\n') != std::string::npos;
        if (!isBlank || (!isAmongElements && !hasLines))
            events += '"' + m_text + '"';
        m_text.clear();
    }

    std::string m_text;
    bool m_isLeaf = false;
};

std::string EventsOf(const std::string& document)
{
    const auto recorder = std::make_shared<Recorder>();
    Utf8InputSource source(document, u"d", false);
    const auto parser = XercesXMLParser::Create(source, recorder);
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors());
    return recorder->events;
}

std::string WithoutWhiteSpace(std::string text)
{
    std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
    return text;
}

class KesxmlFormat : public KesxmlTest
{
protected:
    static std::string Format(const QByteArray& document)
    {
        const KesxmlOutcome outcome = RunKesxml({"format", "-"}, document);
        EXPECT_EQ(outcome.status, 0) << document.toStdString();
        EXPECT_EQ(outcome.err, "") << document.toStdString();
        return outcome.out;
    }

    static QByteArray Read(const QString& name)
    {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
};

} // namespace

TEST_F(KesxmlFormat, PutsEachTagOnALineOfItsOwnAndKeepsTheRest)
{
    const QString file = Write("a.xml", "<?xml version='1.0' standalone = 'yes'?><?go  on?>"
                                        "<!DOCTYPE a [ <!ENTITY e 'x'> ]>\n"
                                        "<a y='2'\n   x=\"1&amp;\" ><!-- of b -->"
                                        "<b >t&#x41;</b\n> <c></c><d /></a ><!-- end -->");
    const KesxmlOutcome outcome = RunKesxml({"format", file});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "<?xml version='1.0' standalone = 'yes'?>\n"
                           "<?go  on?>\n"
                           "<!DOCTYPE a [ <!ENTITY e 'x'> ]>\n"
                           "<a y='2' x=\"1&amp;\">\n"
                           "  <!-- of b -->\n"
                           "  <b>t&#x41;</b>\n"
                           "  <c></c>\n"
                           "  <d/>\n"
                           "</a> <!-- end -->\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(KesxmlFormat, KeepsOneEmptyLineBetweenWhatStandsOnLines)
{
    EXPECT_EQ(Format("\n\n<a>\n\n<b/>\n\n\n<c/>\n<d/> <!-- of d -->\n \n</a>\n\n\n<?x?>"),
              "<a>\n  <b/>\n\n  <c/>\n  <d/> <!-- of d -->\n</a>\n\n<?x?>\n");
}

TEST_F(KesxmlFormat, KeepsReferencesToEntitiesAsTheyAreWritten)
{
    const QByteArray undeclared = "<!DOCTYPE html SYSTEM \"x.dtd\">\n"
                                  "<p a=\"&nbsp;\">10&nbsp;000&euro;</p>\n";
    EXPECT_EQ(Format(undeclared), undeclared.toStdString());
    const QByteArray declared = "<!DOCTYPE a [<!ENTITY e \"<b/>\">]>\n<a>&e;</a>\n";
    EXPECT_EQ(Format(declared), declared.toStdString());
}

TEST_F(KesxmlFormat, LeavesMixedContentAndAllInItAlone)
{
    for (const QByteArray content :
         {"t<b/>u", "<b/>&#32;<c/>", "<b> <c/> </b>t", "<![CDATA[ ]]><b/>", "\n t\n", "  ", "\n \n",
          "<i xml:space='default'> <b/> </i>t"}) {
        const QByteArray document = "<a>" + content + "</a>\n";
        EXPECT_EQ(Format(document), document.toStdString());
    }
}

TEST_F(KesxmlFormat, HeedsXmlSpace)
{
    const QByteArray preserved = "<a xml:space=\"preserve\"> <b ><c/> </b >\n</a>\n";
    EXPECT_EQ(Format(preserved), preserved.toStdString());
    EXPECT_EQ(Format("<a xml:space='preserve'> <b xml:space='default'><c/><d/> </b></a>"),
              "<a xml:space='preserve'> <b xml:space='default'>\n"
              "    <c/>\n    <d/>\n  </b></a>\n");
    const QByteArray type = "<!DOCTYPE a [<!-- <!ATTLIST c --> <!ATTLIST b x CDATA #IMPLIED "
                            "xml:space (default|preserve) #FIXED 'preserve'>]>\n";
    EXPECT_EQ(Format(type + "<a><b> <c/></b><c> <b/></c></a>"),
              type.toStdString() + "<a>\n  <b> <c/></b>\n  <c>\n    <b/>\n  </c>\n</a>\n");
}

TEST_F(KesxmlFormat, LeavesWhatIsDeclaredToHoldTextAlone)
{
    const QByteArray type = "<!DOCTYPE a [\n<!ELEMENT a (p)><!ELEMENT p ( #PCDATA | b)*>"
                            "<!ELEMENT b EMPTY>]>\n";
    EXPECT_EQ(Format(type + "<a><p><b/> <b/></p></a>"),
              type.toStdString() + "<a>\n  <p><b/> <b/></p>\n</a>\n");
}

TEST_F(KesxmlFormat, IsNotMisledByWhatLooksLikeMarkup)
{
    const QByteArray document = "<!DOCTYPE a SYSTEM \"[>\" [\n"
                                "<!-- ]> ' --><?p ]> \" ?><!ENTITY e \"]><x>'\">\n"
                                "] >\n"
                                "<a b=\"/> '\">\n"
                                "  <!-- <b> -->\n"
                                "  <?p <b> ?>\n"
                                "  <c><![CDATA[</c> <b>]]></c>\n"
                                "  <d e='\">' f=\"'/>\"/>\n"
                                "</a>\n";
    EXPECT_EQ(Format(document), document.toStdString());
}

TEST_F(KesxmlFormat, WritesUtf8AndSaysSo)
{
    EXPECT_EQ(Format("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\u00E9</a>\n");
    EXPECT_EQ(Format("\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?><a>\u00E9</a>"),
              "<?xml version='1.0' encoding='utf-8'?>\n<a>\u00E9</a>\n");
    const QString file = Write("a.xml", "<?xml version='1.0' encoding='windows-1252'?><a>\x80</a>");
    EXPECT_EQ(RunKesxml({"format", "--no-header", file}).out, "<a>\u20AC</a>\n");
}

TEST_F(KesxmlFormat, MakesLineFeedsOfAllLineEnds)
{
    EXPECT_EQ(Format("<a>\r\n<b>x\r\ny\rz</b>\r</a>\r\n"), "<a>\n  <b>x\ny\nz</b>\n</a>\n");
}

TEST_F(KesxmlFormat, DoesNotWriteADocumentWithErrors)
{
    const QByteArray bad = "<a>\n<b></a>";
    const QString file = Write("bad.xml", bad);
    for (const QStringList& options : {QStringList{}, {"--lossy"}, {"--in-place"}}) {
        const KesxmlOutcome outcome =
            RunKesxml(QStringList{"format"} + options + QStringList{file});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, StartsWith(file.toStdString() + ":2:"));
    }
    EXPECT_EQ(Read(file), bad);
}

TEST_F(KesxmlFormat, ReplacesDocumentsInPlace)
{
    const QString first = Write("a.xml", "<a><b/></a>");
    const QString bad = Write("b.xml", "<a>");
    const QString last = Write("c.xml", "<c><d/></c>");
    QFile::setPermissions(first, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup);
    const QFile::Permissions permissions = QFile::permissions(first);
    const QString link = m_directory.filePath("link.xml");
    ASSERT_TRUE(QFile::link(last, link));
    const KesxmlOutcome outcome = RunKesxml({"format", "--in-place", first, bad, link});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(Read(first), "<a>\n  <b/>\n</a>\n");
    EXPECT_EQ(QFile::permissions(first), permissions);
    EXPECT_EQ(Read(bad), "<a>");
    EXPECT_EQ(Read(last), "<c>\n  <d/>\n</c>\n");
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files).size(), 4);
}

TEST_F(KesxmlFormat, WritesToAFile)
{
    const QString file = Write("a.xml", "<a><b/></a>");
    const QString output = m_directory.filePath("out.xml");
    for (const QString& name : {output, file}) {
        const KesxmlOutcome outcome = RunKesxml({"format", "-o", name, file});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(Read(name), "<a>\n  <b/>\n</a>\n");
    }
}

TEST_F(KesxmlFormat, KeepsWhatIsThereWhenItCannotBeReplaced)
{
    QByteArray document = "<a>" + QByteArray("<b/>").repeated(40000) + "</a>";
    const QString file = Write("a.xml", document);
    // A file may not grow beyond these blocks, as on a disk that is full.
    const QString command =
        "trap '' XFSZ; ulimit -f 8; '" KESXML_PATH "' format --in-place '" + file + "'";
    const KesxmlOutcome outcome = RunProgram("/bin/sh", {"-c", command});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, HasSubstr("a.xml: it cannot be written: "));
    EXPECT_EQ(Read(file), document);
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files).size(), 1);

    const KesxmlOutcome folder = RunKesxml({"format", "-o", m_directory.path(), file});
    EXPECT_EQ(folder.status, 2);
    EXPECT_THAT(folder.err, EndsWith(": it cannot be written: this is no regular file\n"));
    EXPECT_EQ(RunKesxml({"format", "-o", m_directory.filePath("no/a.xml"), file}).status, 2);
}

TEST_F(KesxmlFormat, KeepsWhatIsThereWhenTheDiskFails)
{
    const QString file = Write("a.xml", "<a><b/></a>");
    const QString output = Write("b.xml", "<b/>");
    const QString page = Write("page.html", "<!DOCTYPE html>");
    const auto run = [](const QString& words) {
        return RunProgram("/bin/sh",
                          {"-c", "LD_PRELOAD='" FAILING_DISK_PATH "' '" KESXML_PATH "' " + words});
    };
    const QString writes[] = {"format -i '" + file + "'",
                              "format -o '" + output + "' '" + file + "'",
                              "edit -i --remove //b '" + file + "'"};
    for (const QString& words : writes) {
        const KesxmlOutcome outcome = run(words);
        EXPECT_EQ(outcome.status, 2) << words.toStdString();
        EXPECT_THAT(outcome.err, EndsWith(".xml: it cannot be written: Input/output error\n"));
    }
    const KesxmlOutcome report = run("check --html '" + page + "' '" + file + "'");
    EXPECT_EQ(report.status, 2);
    EXPECT_THAT(report.err, EndsWith("page.html': Input/output error\n"));
    EXPECT_EQ(Read(file), "<a><b/></a>");
    EXPECT_EQ(Read(output), "<b/>");
    EXPECT_EQ(Read(page), "<!DOCTYPE html>");
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files).size(), 3);
}

TEST_F(KesxmlFormat, SaysWhichOptionsDoNotGoTogether)
{
    const QString file = Write("a.xml", "<a/>");
    for (const QStringList& arguments :
         {QStringList{"-i", "-o", "x", file}, {"-i", "-"}, {file, file}, {"--escape-all", file}}) {
        const KesxmlOutcome outcome = RunKesxml(QStringList{"format"} + arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr("Try 'kesxml format --help'."));
    }
    EXPECT_EQ(Read(file), "<a/>");
}

TEST_F(KesxmlFormat, WritesAsTheLibraryDoesWhenItMayLose)
{
    const QString file = Write("a.xml", "<!-- gone --><a y='2' x='1&amp;'><b>t</b><?gone?></a>");
    const KesxmlOutcome outcome = RunKesxml({"format", "--lossy", file});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "<?xml version='1.0' encoding='utf-8' ?>\n\n"
                           "<a x='1&amp;' y='2'>\n  <b>t</b>\n</a>\n");
    EXPECT_EQ(RunKesxml({"format", "--lossy", "--no-header", "-"}, "<a><b/></a>").out,
              "<a>\n  <b />\n</a>\n");
}

TEST_F(KesxmlFormat, KeepsLineEndsOfLongTextsUnlessAskedToEscapeAll)
{
    const QByteArray text = "a text of more than thirty-two units,\nin two lines";
    const QByteArray document = "<a>" + text + "</a>";
    EXPECT_THAT(RunKesxml({"format", "--lossy", "-"}, document).out, HasSubstr("units,\nin"));
    EXPECT_THAT(RunKesxml({"format", "--lossy", "--escape-all", "-"}, document).out,
                HasSubstr("units,&#10;in"));
}

TEST_F(KesxmlFormat, WarnsOfTextThatItMovesAndOfEntitiesThatItLoses)
{
    const KesxmlOutcome moved =
        RunKesxml({"format", "--lossy", "--no-header", "-"}, "<a>x<b/>y</a>");
    EXPECT_EQ(moved.status, 0);
    EXPECT_EQ(moved.err,
              "-: warning: text between child elements is written after them (in <a>)\n");
    const KesxmlOutcome lost =
        RunKesxml({"format", "--lossy", "-"}, "<!DOCTYPE p SYSTEM 'p.dtd'>\n<p>10&nbsp;000</p>");
    EXPECT_EQ(lost.status, 0);
    EXPECT_THAT(lost.err, StartsWith("-:2:6: warning: the entity 'nbsp' is declared nowhere in the "
                                     "document: 1 reference to it is left out\n"));
}

TEST_F(KesxmlFormat, ChangesNothingButWhiteSpaceInRealDocumentsAndNothingTheSecondTime)
{
    std::vector<std::string> originals{"/usr/share/mime/packages/freedesktop.org.xml"};
    std::vector<std::string> others = RealDocuments::Find("/usr/share/unicode/cldr");
    ASSERT_GT(others.size(), 100U);
    if (!RealDocuments::AreAllWanted())
        others = RealDocuments::Sample(others, 4'000'000);
    originals.insert(originals.end(), others.begin(), others.end());
    QStringList copies;
    for (const std::string& original : originals)
        copies += Write(QString::number(copies.size()) + ".xml",
                        QByteArray::fromStdString(RealDocuments::Read(original)));
    const KesxmlOutcome outcome =
        RunKesxml(QStringList{"format", "--in-place"} + copies, {}, m_directory.path());
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    std::vector<QByteArray> formatted;
    for (qsizetype i = 0; i < copies.size(); ++i) {
        const std::string& original = originals[static_cast<std::size_t>(i)];
        formatted.push_back(Read(copies.at(i)));
        EXPECT_EQ(WithoutWhiteSpace(formatted.back().toStdString()),
                  WithoutWhiteSpace(RealDocuments::Read(original)))
            << original;
        EXPECT_EQ(EventsOf(formatted.back().toStdString()), EventsOf(RealDocuments::Read(original)))
            << original;
    }
    EXPECT_EQ(RunKesxml(QStringList{"format", "--in-place"} + copies).status, 0);
    for (qsizetype i = 0; i < copies.size(); ++i)
        EXPECT_EQ(Read(copies.at(i)), formatted[static_cast<std::size_t>(i)])
            << originals[static_cast<std::size_t>(i)];
}
