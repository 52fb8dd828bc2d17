#include "support/KesxmlProcess.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

/// What is known of the element or attribute that a diagnostic is about.
struct Subject
{
    std::string path;
    std::string attribute;
    std::string value;

    friend bool operator==(const Subject&, const Subject&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Subject& subject)
    {
        return out << subject.path << ' ' << subject.attribute << '=' << subject.value;
    }
};

class KesxmlAttributeErrors : public KesxmlTest
{
protected:
    QString WriteSchema()
    {
        return Write("places.xsd", R"(
            <xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
              <xs:complexType name="place">
                <xs:sequence><xs:any processContents="lax" minOccurs="0" maxOccurs="9"/></xs:sequence>
                <xs:attribute name="x" type="xs:double"/>
                <xs:attribute name="y" type="xs:double"/>
                <xs:attribute name="id" type="xs:ID"/>
              </xs:complexType>
              <xs:complexType name="named">
                <xs:complexContent><xs:extension base="place">
                  <xs:attribute name="name" type="xs:NCName" use="required"/>
                </xs:extension></xs:complexContent>
              </xs:complexType>
              <xs:element name="places"><xs:complexType><xs:sequence>
                <xs:element name="place" type="place" maxOccurs="unbounded"/>
              </xs:sequence></xs:complexType></xs:element>
            </xs:schema>)");
    }

    KesxmlOutcome Check(const QByteArray& places, const QStringList& options = {})
    {
        return RunKesxml(QStringList{"check", "--xsd", WriteSchema()} + options + QStringList{"-"},
                         "<places>\n" + places + "</places>");
    }

    /// In the order in which they are told.
    std::vector<Subject> SubjectsIn(const QByteArray& places, const QStringList& options = {})
    {
        const KesxmlOutcome outcome = Check(places, QStringList{"--json"} + options);
        EXPECT_EQ(outcome.err, "");
        const QJsonArray documents =
            QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out)).array();
        std::vector<Subject> subjects;
        for (const QJsonValue& item : documents.first().toObject()["diagnostics"].toArray()) {
            const QJsonObject object = item.toObject();
            EXPECT_EQ(object.contains("attribute"), object.contains("value"));
            subjects.push_back({object["path"].toString().toStdString(),
                                object["attribute"].toString().toStdString(),
                                object["value"].toString().toStdString()});
        }
        return subjects;
    }
};

} // namespace

TEST_F(KesxmlAttributeErrors, NameTheAttributeAndShowItsValue)
{
    const KesxmlOutcome outcome = Check("<place x='1' y='east'/>");
    EXPECT_THAT(outcome.Reports(), ElementsAre("-:2:24: error: invalid character encountered in "
                                               "/places/place/@y: 'east'"));
    // Where the message has the value already, it is not said again.
    EXPECT_THAT(Check("<place id='1'/>").Reports(),
                ElementsAre(AllOf(HasSubstr("'1'"), EndsWith(" in /places/place/@id"))));
}

TEST_F(KesxmlAttributeErrors, HoldAttributeAndValueForPrograms)
{
    EXPECT_THAT(SubjectsIn("<place x='1'/><place y='a&amp;b&#x20AC;'/>"),
                ElementsAre(Subject{"/places/place[2]/@y", "y", "a&b\u20AC"}));
}

TEST_F(KesxmlAttributeErrors, AreToldOfEachAttributeOfATag)
{
    EXPECT_THAT(SubjectsIn("<place x='a' id='i'\n  y='b' z='c'><place x='d'/></place>"),
                ElementsAre(Subject{"/places/place/@x", "x", "a"},
                            Subject{"/places/place/@y", "y", "b"},
                            Subject{"/places/place/@z", "z", "c"}));
}

TEST_F(KesxmlAttributeErrors, NameNoAttributeInWhatIsSaidOfTheElement)
{
    const std::vector<Subject> content = SubjectsIn("<place x='1'>text</place><other/>");
    ASSERT_FALSE(content.empty());
    for (const Subject& subject : content)
        EXPECT_EQ(subject.attribute, "") << subject;
    // An attribute that is missing is none of those that are there.
    const QByteArray instance = " xmlns:i='http://www.w3.org/2001/XMLSchema-instance'";
    EXPECT_THAT(
        SubjectsIn("<place" + instance + " i:type='named' x='1' y='b'/>"),
        ElementsAre(Subject{"/places/place/@y", "y", "b"}, Subject{"/places/place", "", ""}));
}

TEST_F(KesxmlAttributeErrors, MayBeThoseOfTheDocumentElement)
{
    const KesxmlOutcome outcome =
        RunKesxml({"check", "--xsd", WriteSchema(), "-"},
                  "<!-- p --><places x='1' y='2'>\n<place x='a'/></places><!-- end -->");
    EXPECT_THAT(outcome.Reports(),
                ElementsAre(AllOf(HasSubstr("'x'"), EndsWith(" in /places/@x: '1'")),
                            AllOf(HasSubstr("'y'"), EndsWith(" in /places/@y: '2'")),
                            EndsWith(" in /places/place/@x: 'a'")));
}

TEST_F(KesxmlAttributeErrors, HeedTheTypeThatAnElementSays)
{
    const QByteArray instance = "<place xmlns:i='http://www.w3.org/2001/XMLSchema-instance' ";
    EXPECT_THAT(SubjectsIn(instance + "name='a b' x='1' i:type='named'/>"),
                ElementsAre(Subject{"/places/place/@name", "name", "a b"}));
}

TEST_F(KesxmlAttributeErrors, NameAnIdentifierThatAnotherElementHas)
{
    EXPECT_THAT(SubjectsIn("<place id='i' x='1'/><place x='1' id='i'/>"),
                ElementsAre(Subject{"/places/place[2]/@id", "id", "i"}));
}

TEST_F(KesxmlAttributeErrors, ShowTheValueAsItWasValidated)
{
    EXPECT_THAT(SubjectsIn("<place x='  a&#x20;&#x20;b '/>"),
                ElementsAre(Subject{"/places/place/@x", "x", "a b"}));
}

TEST_F(KesxmlAttributeErrors, AreFoundWhateverStandsBeforeThem)
{
    const QString file =
        Write("a.xml", "\xEF\xBB\xBF<?xml version='1.1'?>\r\n<!-- <place x='c'/> -->\r\n"
                       "<!DOCTYPE places [<!ENTITY e '7'>\r\n<!ATTLIST place y CDATA 'd'>]>"
                       "<places>\r\n<place x='1' y='2'><![CDATA[<place x='c'/>]]></place>"
                       "<place\r\n x='&e;' y = \"b>\U0001F600\"></place>\r\n</places>");
    const KesxmlOutcome outcome =
        RunKesxml({"check", "--allow-entities", "--xsd", WriteSchema(), file});
    EXPECT_THAT(outcome.err, HasSubstr(" in /places/place[2]/@y: 'b&gt;\U0001F600'"));
    EXPECT_THAT(outcome.err, Not(HasSubstr("/@x")));
}

TEST_F(KesxmlAttributeErrors, ShowLongValuesInPart)
{
    const QByteArray value(5000, 'v');
    const KesxmlOutcome outcome = Check("<place x='" + value + "'/>");
    EXPECT_THAT(outcome.err, HasSubstr("/@x: 'vvvv"));
    EXPECT_THAT(outcome.err, HasSubstr("v\u2026'"));
    EXPECT_LT(outcome.err.size(), 500U);
    EXPECT_EQ(SubjectsIn("<place x='" + value + "'/>").front().value, value.toStdString());
}

TEST_F(KesxmlAttributeErrors, AreShownOnAPage)
{
    const QString page = m_directory.filePath("page.html");
    Check("<place y='east'/>", {"--html", page});
    QFile file(page);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_THAT(file.readAll().toStdString(), HasSubstr("<code>/places/place/@y</code>: 'east'"));
}

TEST_F(KesxmlAttributeErrors, AreFoundInManyTagsAndDeepOnes)
{
    QByteArray places;
    std::vector<Subject> expected;
    for (int i = 1; i <= 500; ++i) {
        const QByteArray number = QByteArray::number(i);
        places += "<place x='a" + number + "' y='" + number + "'/>\n";
        expected.push_back(
            {"/places/place[" + number.toStdString() + "]/@x", "x", "a" + number.toStdString()});
    }
    EXPECT_EQ(SubjectsIn(places), expected);
    const QByteArray deep = QByteArray("<place><places>").repeated(2000) + "<place x='a'/>" +
                            QByteArray("</places></place>").repeated(2000);
    ASSERT_EQ(SubjectsIn(deep).size(), 1U);
    EXPECT_EQ(SubjectsIn(deep).front().attribute, "x");
}

TEST_F(KesxmlAttributeErrors, AreFoundInTagsWithVeryMany)
{
    QByteArray tag = "<place x='a'";
    std::vector<Subject> expected{{"/places/place/@x", "x", "a"}};
    for (int i = 0; i < 2000; ++i) {
        const QByteArray name = "a" + QByteArray::number(i);
        tag += " xmlns:n" + QByteArray::number(i) + "='urn:n' " + name + "='1'";
        expected.push_back({"/places/place/@" + name.toStdString(), name.toStdString(), "1"});
    }
    EXPECT_EQ(SubjectsIn(tag + "/>"), expected);
}
