#include "support/KesxmlProcess.h"

#include <QDir>

#include <map>
#include <random>

#include <sys/stat.h>

namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

QByteArray Schema(const QByteArray& content, const QByteArray& attributes = {})
{
    return "<?xml version='1.0' encoding='UTF-8'?>\n"
           "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' " +
           attributes + ">\n" + content + "\n</xs:schema>\n";
}

class KesxmlSchema : public KesxmlTest
{
protected:
    /// A schema for documents like "<n>1</n>".
    QString m_numbers =
        Write("numbers.xsd", Schema("<xs:element name='n' type='xs:positiveInteger'/>"));
};

/// Writes a random document of elements a, b and c in which some bear an attribute that the schema
/// does not know, and with it the report that is due.
class DocumentWithErrors
{
public:
    explicit DocumentWithErrors(unsigned int seed) : m_random(seed) { Add("", "a", 1, 0); }

    QByteArray document;
    std::vector<std::string> reports;

private:
    void Write(const char* text)
    {
        for (; *text != '\0'; ++text) {
            document += *text;
            m_column = *text == '\n' ? 1 : m_column + 1;
            m_line += *text == '\n' ? 1 : 0;
        }
    }

    void Add(const std::string& parent, const std::string& name, int depth, std::size_t index)
    {
        const std::string path =
            parent + "/" + name + (index == 0 ? "" : "[" + std::to_string(index) + "]");
        const bool isBad = m_random() % 3 == 0;
        const std::size_t count = depth < 7 ? m_random() % 5 : 0;
        const bool isShort = count == 0 && m_random() % 2 == 0;
        Write(("<" + name).c_str());
        if (isBad)
            Write(m_random() % 2 == 0 ? "\n  bad='1'" : " bad='1'");
        Write(isShort ? "/>" : ">");
        if (isBad) {
            reports.push_back("-:" + std::to_string(m_line) + ":" + std::to_string(m_column) +
                              ": error: attribute 'bad' is not declared for element '" + name +
                              "' in " + path + "/@bad: '1'");
        }
        if (isShort)
            return;
        std::vector<std::string> children;
        std::map<std::string, std::size_t> all;
        std::map<std::string, std::size_t> seen;
        for (std::size_t i = 0; i < count; ++i) {
            children.emplace_back(1, static_cast<char>('a' + m_random() % 3));
            ++all[children.back()];
        }
        for (const std::string& child : children) {
            if (m_random() % 4 == 0)
                Write("\n ");
            Add(path, child, depth + 1, all[child] > 1 ? ++seen[child] : 0);
        }
        Write(("</" + name + ">").c_str());
    }

    std::mt19937 m_random;
    int m_line = 1;
    int m_column = 1;
};

} // namespace

TEST_F(KesxmlSchema, ValidatesEveryDocument)
{
    const QString good = Write("good.xml", "<n>3</n>");
    const QString bad = Write("bad.xml", "<n>\n-3</n>");
    const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", m_numbers, bad, good, bad});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.OutLines(),
                ElementsAre(EndsWith("bad.xml: 1 error"), EndsWith("good.xml: fine"),
                            EndsWith("bad.xml: 1 error")));
    EXPECT_THAT(outcome.Reports(),
                Each(AllOf(StartsWith(bad.toStdString() + ":2:7: error: "), EndsWith(" in /n"))));
    EXPECT_EQ(RunKesxml({"check", bad, good}).status, 0);
    EXPECT_EQ(RunKesxml({"check", "--xsd", m_numbers, "-"}, "<n>3</n>").status, 0);
    EXPECT_EQ(RunKesxml({"check", "--xsd", m_numbers, "-"}, "<n>x</n>").status, 1);
}

TEST_F(KesxmlSchema, FindsTheElementOfEachOfManyErrors)
{
    const QString schema = Write("abc.xsd", Schema(R"(
        <xs:complexType name="any">
          <xs:choice minOccurs="0" maxOccurs="unbounded">
            <xs:element name="a" type="any"/>
            <xs:element name="b" type="any"/>
            <xs:element name="c" type="any"/>
          </xs:choice>
        </xs:complexType>
        <xs:element name="a" type="any"/>)"));
    std::size_t total = 0;
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        const DocumentWithErrors expected(seed);
        total += expected.reports.size();
        EXPECT_EQ(RunKesxml({"check", "--xsd", schema, "-"}, expected.document).Reports(),
                  expected.reports)
            << expected.document.toStdString();
    }
    EXPECT_GT(total, 500U);
}

TEST_F(KesxmlSchema, TakesSeveralSchemas)
{
    const QString words = Write(
        "words.xsd", Schema("<xs:element name='w' type='xs:NCName'/>", "targetNamespace='urn:w'"));
    const QStringList both{"check", "--xsd", m_numbers, "--xsd", words, "-"};
    EXPECT_EQ(RunKesxml(both, "<n>3</n>").status, 0);
    EXPECT_EQ(RunKesxml(both, "<w xmlns='urn:w'>x</w>").status, 0);
    EXPECT_EQ(RunKesxml(both, "<w xmlns='urn:w'>3</w>").status, 1);
    EXPECT_EQ(RunKesxml({"check", "--xsd", m_numbers, "-"}, "<w xmlns='urn:w'>x</w>").status, 1);
}

TEST_F(KesxmlSchema, WarnsWhenADocumentIsValidatedAgainstItsDocumentTypeInstead)
{
    const QStringList check{"check", "--xsd", m_numbers, "-"};
    const std::string warning = "': the document was validated against its document type instead";
    const KesxmlOutcome other = RunKesxml(
        check, "<!DOCTYPE x:o [<!ELEMENT x:o EMPTY><!ATTLIST x:o\n xmlns:x CDATA #IMPLIED a "
               "CDATA '1'>]>\n<x:o xmlns:x='urn:x' a='>'\n/>");
    EXPECT_EQ(other.status, 0);
    EXPECT_EQ(other.out, "-: fine, 1 warning\n");
    EXPECT_THAT(other.Reports(), ElementsAre("-:4:3: warning: no schema declares the element 'x:o" +
                                             warning + " in /x:o"));
    // The schema knows these, whatever stands in them.
    const QByteArray type = "<!DOCTYPE n [<!ELEMENT n ANY>]>";
    EXPECT_EQ(RunKesxml(check, type + "<n>3</n>").err, "");
    EXPECT_THAT(RunKesxml(check, type + "<n>x</n>").err, Not(HasSubstr("document type")));
    // Without a document type, it is an error.
    EXPECT_EQ(RunKesxml(check, "<o/>").status, 1);
}

TEST_F(KesxmlSchema, DoesNotTakeMissingAttributesForAnUnknownElement)
{
    // The document type gives the attribute that the schema requires.
    const QString schema =
        Write("a.xsd", Schema("<xs:element name='a'><xs:complexType><xs:attribute name='b' "
                              "use='required'/></xs:complexType></xs:element>"));
    const KesxmlOutcome outcome =
        RunKesxml({"check", "--xsd", schema, "-"},
                  "<!DOCTYPE a [<!ELEMENT a ANY><!ATTLIST a b CDATA '1'>]><a/>");
    EXPECT_THAT(outcome.err, Not(HasSubstr("no schema declares")));
}

TEST_F(KesxmlSchema, ReadsTheSchemaFromStandardInput)
{
    const QString bad = Write("bad.xml", "<n>x</n>");
    const QByteArray schema = Schema("<xs:include schemaLocation='numbers.xsd'/>");
    EXPECT_EQ(RunKesxml({"check", "--xsd", "-", bad}, schema, m_directory.path()).status, 1);
    Write("bad.xml", "<n>1</n>");
    EXPECT_EQ(RunKesxml({"check", "--xsd", "-", bad}, schema, m_directory.path()).status, 0);
}

TEST_F(KesxmlSchema, FindsWhatASchemaRefersToBesideTheSchema)
{
    QDir(m_directory.path()).mkpath("deep/er");
    Write("deep/main.xsd", Schema("<xs:include schemaLocation='er/part%20one.xsd'/>"));
    Write("deep/er/part one.xsd", Schema("<xs:import namespace='urn:t' schemaLocation='../t.xsd'/>"
                                         "<xs:include schemaLocation='../main.xsd'/>"
                                         "<xs:element name='n' type='t:small'/>",
                                         "xmlns:t='urn:t'"));
    Write("deep/t.xsd", Schema("<xs:simpleType name='small'><xs:restriction base='xs:int'>"
                               "<xs:maxInclusive value='9'/></xs:restriction></xs:simpleType>",
                               "targetNamespace='urn:t'"));
    const QString absolute = m_directory.filePath("deep/main.xsd");
    const std::pair<QString, QString> ways[] = {{absolute, "/"},
                                                {"deep/main.xsd", m_directory.path()},
                                                {"./deep/../deep/main.xsd", m_directory.path()},
                                                {"main.xsd", m_directory.filePath("deep")},
                                                {"../main.xsd", m_directory.filePath("deep/er")}};
    for (const auto& [schema, directory] : ways) {
        const KesxmlOutcome good =
            RunKesxml({"check", "--xsd", schema, "-"}, "<n>9</n>", directory);
        EXPECT_EQ(good.status, 0) << schema.toStdString() << '\n' << good.err;
        EXPECT_EQ(good.err, "");
        EXPECT_EQ(RunKesxml({"check", "--xsd", schema, "-"}, "<n>10</n>", directory).status, 1);
    }
}

TEST_F(KesxmlSchema, ReadsIncludedSchemasWithOtherThanAsciiCharactersWhole)
{
    const QString main = Write("main.xsd", Schema("<xs:include schemaLocation='part.xsd'/>"));
    // More bytes beyond one a character than the last element and the end tag have.
    const QByteArray comment = "<!-- " + QByteArray("\u20AC").repeated(200) + " -->";
    Write("part.xsd", Schema(comment + "<xs:element name='stra\u00DFe' type='xs:int'/>"));
    const KesxmlOutcome outcome =
        RunKesxml({"check", "--xsd", main, "-"}, "<stra\u00DFe>1</stra\u00DFe>");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(RunKesxml({"check", "--xsd", main, "-"}, "<stra\u00DFe>x</stra\u00DFe>").status, 1);
}

TEST_F(KesxmlSchema, ReportsErrorsOfASchemaUnderItsNameAndChecksNothing)
{
    const QString good = Write("good.xml", "<n>3</n>");
    const QString broken =
        Write("broken.xsd", Schema("<xs:element name='m'\n type='xs:nonsense'/>"));
    const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", m_numbers, "--xsd", broken, good});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, broken.toStdString() + ": 1 error\n");
    EXPECT_THAT(outcome.Reports(),
                ElementsAre(AllOf(StartsWith(broken.toStdString() + ":4:"), HasSubstr(": error: "),
                                  HasSubstr("nonsense"), Not(HasSubstr("(id: "))),
                            "kesxml: no document was checked."));
}

TEST_F(KesxmlSchema, ReportsErrorsOfAnIncludedSchemaUnderItsName)
{
    const QString main = Write("main.xsd", Schema("<xs:include schemaLocation='broken.xsd'/>"));
    const QString broken =
        Write("broken.xsd", Schema("<xs:element name='n'\n type='xs:nonsense'/>"));
    const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", main, "-"}, "<n>3</n>");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, main.toStdString() + ": 1 error\n");
    EXPECT_THAT(outcome.err, StartsWith(broken.toStdString() + ":4:"));
}

TEST_F(KesxmlSchema, ReportsASchemaThatIsNoSchema)
{
    for (const char* text : {"<a/>", "<a>", "no XML", ""}) {
        const QString schema = Write("no.xsd", text);
        const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", schema, "-"}, "<n>3</n>");
        EXPECT_EQ(outcome.status, 1) << text;
        EXPECT_THAT(outcome.err, StartsWith(schema.toStdString() + ":"));
        EXPECT_THAT(outcome.err, Not(HasSubstr("(id: ")));
        EXPECT_THAT(outcome.err, EndsWith("kesxml: no document was checked.\n"));
    }
}

TEST_F(KesxmlSchema, NamesASchemaThatCannotBeRead)
{
    const QString missing = m_directory.filePath("missing.xsd");
    const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", missing, "-"}, "<n>3</n>");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr(missing.toStdString()));
}

TEST_F(KesxmlSchema, NamesAnIncludedSchemaThatCannotBeRead)
{
    ASSERT_EQ(mkfifo(m_directory.filePath("pipe").toUtf8().constData(), 0600), 0);
    for (const char* location : {"missing.xsd", ".", "%00", "pipe"}) {
        const QString main = Write(
            "main.xsd", Schema("<xs:include schemaLocation='" + QByteArray(location) + "'/>"));
        const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", main, "-"}, "<n>3</n>");
        EXPECT_EQ(outcome.status, 1) << location;
        EXPECT_THAT(outcome.err, StartsWith(main.toStdString() + ": error: the schema '" +
                                            location + "' cannot be read\n"));
    }
}

TEST_F(KesxmlSchema, ReadsNothingOutsideOfTheFolderOfTheSchema)
{
    QDir(m_directory.path()).mkpath("in/deep");
    const QByteArray type =
        "<xs:simpleType name='t'><xs:restriction base='xs:int'/></xs:simpleType>";
    const QString outside = Write("t.xsd", Schema(type));
    for (const QByteArray& location :
         {QByteArray("../t.xsd"), QByteArray("%2e%2e/t.xsd"), QByteArray("..%2ft.xsd"),
          QByteArray("deep/../../t.xsd"), QByteArray("../in/../t.xsd"), outside.toUtf8(),
          "file://" + outside.toUtf8(), "file:" + outside.toUtf8(), QByteArray("/dev/zero"),
          QByteArray("file:///dev/zero")}) {
        const QString main = Write("in/main.xsd", Schema("<xs:include schemaLocation='" + location +
                                                         "'/><xs:element name='n' type='t'/>"));
        const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", main, "-"}, "<n>3</n>");
        EXPECT_EQ(outcome.status, 1) << location.toStdString();
        EXPECT_EQ(outcome.out.find("fine"), std::string::npos);
        EXPECT_THAT(outcome.err, StartsWith(main.toStdString() + ": error: the schema '" +
                                            location.toStdString() +
                                            "' is not read because it is not in the folder"));
    }
}

TEST_F(KesxmlSchema, NeedsNoSchemaOutsideOfTheFolderThatIsGivenBefore)
{
    QDir(m_directory.path()).mkpath("in");
    const QString outside = Write("t.xsd", Schema("<xs:simpleType name='t'><xs:restriction "
                                                  "base='xs:int'/></xs:simpleType>",
                                                  "targetNamespace='urn:t'"));
    const QString main =
        Write("in/main.xsd", Schema("<xs:import namespace='urn:t' schemaLocation='../t.xsd'/>"
                                    "<xs:element name='n' type='f:t' xmlns:f='urn:t'/>"));
    const QStringList both{"check", "--xsd", outside, "--xsd", main, "-"};
    EXPECT_EQ(RunKesxml(both, "<n>3</n>").err, "");
    EXPECT_EQ(RunKesxml(both, "<n>x</n>").status, 1);
}

TEST_F(KesxmlSchema, TakesLocationsThatAreFileAddresses)
{
    const QByteArray address = "file://" + m_numbers.toUtf8();
    const QString main =
        Write("main.xsd", Schema("<xs:include schemaLocation='" + address + "'/>"));
    EXPECT_EQ(RunKesxml({"check", "--xsd", main, "-"}, "<n>3</n>").err, "");
    EXPECT_EQ(RunKesxml({"check", "--xsd", main, "-"}, "<n>x</n>").status, 1);
}

TEST_F(KesxmlSchema, SaysShortlyThatADocumentIsNoSchema)
{
    for (const char* document : {"<?xml version='1.0'?>\n<!-- <schema> --><book:page\n a='>'>"
                                 "text<b/>text</book:page>",
                                 "<page/>", "<page>"}) {
        const QString file = Write("page.xml", document);
        const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", file, file});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.ErrLines(),
                    ElementsAre(file.toStdString() + ": error: not an XML Schema: its first "
                                                     "element is 'page'",
                                "kesxml: no document was checked."));
    }
    // What bears the name of a schema, or cannot be told, is left to the schema compiler.
    for (const char* document : {"<schema/>", "<!-- --", "text"}) {
        const QString file = Write("page.xml", document);
        EXPECT_THAT(RunKesxml({"check", "--xsd", file, file}).err, Not(HasSubstr("not an XML")));
        EXPECT_EQ(RunKesxml({"check", "--xsd", file, file}).status, 1);
    }
}

TEST_F(KesxmlSchema, FetchesNothingFromElsewhere)
{
    const QByteArray import = "<xs:import namespace='urn:far' "
                              "schemaLocation='http://far.invalid/schemas/far.xsd'/>";
    const QString main = Write("main.xsd", Schema(import + "<xs:element name='n' type='xs:int'/>"));
    const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", main, "-"}, "<n>3</n>");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err,
              main.toStdString() +
                  ": warning: the schema 'http://far.invalid/schemas/far.xsd' is not "
                  "read because it is not a local file; give a copy of it with an --xsd before "
                  "this one\n");
    // A copy that is given before takes its place.
    const QString copy = Write("far.xsd", Schema("<xs:simpleType name='t'><xs:restriction "
                                                 "base='xs:int'/></xs:simpleType>",
                                                 "targetNamespace='urn:far'"));
    Write("main.xsd", Schema(import + "<xs:element name='n' type='f:t' xmlns:f='urn:far'/>"));
    const QStringList both{"check", "--xsd", copy, "--xsd", main, "-"};
    EXPECT_EQ(RunKesxml(both, "<n>3</n>").err, "");
    EXPECT_EQ(RunKesxml(both, "<n>x</n>").status, 1);
}

TEST_F(KesxmlSchema, KnowsTheAttributesOfXmlItself)
{
    const QString schema =
        Write("main.xsd", Schema("<xs:import namespace='http://www.w3.org/XML/1998/namespace' "
                                 "schemaLocation='http://www.w3.org/2001/xml.xsd'/>"
                                 "<xs:element name='n'><xs:complexType>"
                                 "<xs:attribute ref='xml:lang'/></xs:complexType></xs:element>"));
    const KesxmlOutcome outcome = RunKesxml({"check", "--xsd", schema, "-"}, "<n xml:lang='de'/>");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(RunKesxml({"check", "--xsd", schema, "-"}, "<n xml:base='de'/>").status, 1);
}
