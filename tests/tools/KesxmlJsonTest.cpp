#include "support/KesxmlProcess.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

class KesxmlJson : public KesxmlTest
{
protected:
    static QJsonDocument Parse(const KesxmlOutcome& outcome)
    {
        QJsonParseError error;
        const auto document =
            QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out), &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << outcome.out;
        return document;
    }
};

} // namespace

TEST_F(KesxmlJson, TellsWhatACheckFound)
{
    const QString good = Write("good.xml", "<a/>");
    const QString bad = Write("bad.xml", "<a>\n  <b>\"</c>\n</a>");
    const QString missing = m_directory.filePath("missing.xml");
    const KesxmlOutcome outcome = RunKesxml({"check", "--json", good, bad, missing});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "");
    const QJsonArray array = Parse(outcome).array();
    ASSERT_EQ(array.size(), 3);
    EXPECT_EQ(array[0].toObject(),
              (QJsonObject{{"file", good}, {"valid", true}, {"diagnostics", QJsonArray()}}));
    EXPECT_EQ(array[1]["file"], bad);
    EXPECT_EQ(array[1]["valid"], false);
    ASSERT_EQ(array[1]["diagnostics"].toArray().size(), 1);
    const QJsonObject diagnostic = array[1]["diagnostics"][0].toObject();
    EXPECT_EQ(diagnostic["severity"], "error");
    EXPECT_EQ(diagnostic["file"], bad);
    EXPECT_EQ(diagnostic["line"], 2);
    EXPECT_EQ(diagnostic["column"], 9);
    EXPECT_EQ(diagnostic["path"], "/a/b");
    EXPECT_TRUE(diagnostic["message"].toString().contains("expected end of tag 'b'"))
        << diagnostic["message"].toString().toStdString();
    EXPECT_EQ(array[2]["file"], missing);
    EXPECT_TRUE(array[2]["unreadable"].toString().contains(missing));
    EXPECT_TRUE(array[2]["valid"].isUndefined());
}

TEST_F(KesxmlJson, TellsWhatIsWrongWithASchema)
{
    const QString schema = Write("bad.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/"
                                            "XMLSchema'><xs:element name='n' type='none'/>"
                                            "</xs:schema>");
    const KesxmlOutcome outcome = RunKesxml({"check", "--json", "--xsd", schema, "-"}, "<n/>");
    EXPECT_EQ(outcome.status, 1);
    const QJsonArray array = Parse(outcome).array();
    ASSERT_EQ(array.size(), 1);
    EXPECT_EQ(array[0]["file"], schema);
    EXPECT_EQ(array[0]["valid"], false);
    EXPECT_EQ(array[0]["diagnostics"][0]["file"], schema);
}

TEST_F(KesxmlJson, PrintsMatchesOfAQueryWhole)
{
    const std::string text(200, 'x');
    const QByteArray document =
        "<r>\n<a y='&lt;&#10;' x='2'>\"" + QByteArray::fromStdString(text) + "\n</a><a/></r>";
    const KesxmlOutcome outcome = RunKesxml({"query", "--json", "//a", "-"}, document);
    EXPECT_EQ(outcome.status, 0);
    const QJsonArray array = Parse(outcome).array();
    ASSERT_EQ(array.size(), 2);
    EXPECT_EQ(array[0].toObject(),
              (QJsonObject{{"file", "-"},
                           {"line", 2},
                           {"column", 1},
                           {"path", "/r/a[1]"},
                           {"name", "a"},
                           {"attributes", QJsonObject{{"x", "2"}, {"y", "<\n"}}},
                           {"text", QString::fromStdString("\"" + text + "\n")}}));
    EXPECT_EQ(array[1]["attributes"].toObject(), QJsonObject());
    EXPECT_EQ(array[1]["text"], "");
}

TEST_F(KesxmlJson, PrintsAnEmptyArrayWhenAQueryFindsNothing)
{
    const KesxmlOutcome outcome = RunKesxml({"query", "--json", "//b", "-"}, "<a/>");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(Parse(outcome).isArray());
    EXPECT_TRUE(Parse(outcome).array().isEmpty());
}

TEST_F(KesxmlJson, PrintsTheNumberOfMatches)
{
    const KesxmlOutcome outcome =
        RunKesxml({"query", "--json", "--count", "//b", "-"}, "<a><b/><b/></a>");
    EXPECT_EQ(Parse(outcome).object(), (QJsonObject{{"count", 2}}));
}

TEST_F(KesxmlJson, PrintsWhatStatsCounts)
{
    const QByteArray document = "<a x='1' y='2'>text<b/></a>";
    const KesxmlOutcome outcome = RunKesxml({"stats", "--json", "-"}, document);
    EXPECT_EQ(outcome.status, 0);
    const QJsonObject object = Parse(outcome).object();
    EXPECT_EQ(object["elements"], 2);
    EXPECT_EQ(object["attributes"], 2);
    EXPECT_EQ(object["depth"], 2);
    EXPECT_EQ(object["textUnits"], 4);
    EXPECT_EQ(object["bytes"], document.size());
    EXPECT_GT(object["parseNanoseconds"].toInteger(), 0);
}

TEST_F(KesxmlJson, LeavesErrorsOfADocumentThatIsNotCheckedToStandardError)
{
    for (const QStringList& arguments :
         {QStringList{"stats", "--json", "-"}, QStringList{"query", "--json", "//a", "-"},
          QStringList{"query", "--json", "--count", "//a", "-"}}) {
        const KesxmlOutcome outcome = RunKesxml(arguments, "<a>");
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
}
