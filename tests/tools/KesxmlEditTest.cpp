#include "support/KesxmlProcess.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const QByteArray c_document = "<?xml version='1.0'?><!-- <a> -->\n"
                              "<!DOCTYPE r [<!ENTITY e 'x'>]>\n"
                              "<r  b = \"1\" >\n"
                              "  <a x='1' y=\"&e;\">old &e; </a ><a/>\n"
                              "  <c/>\n"
                              "\t<c><c/>t</c>\n"
                              "</r>\n";

class KesxmlEdit : public KesxmlTest
{
protected:
    static KesxmlOutcome Edit(const QStringList& options, const QString& path,
                              const QByteArray& document = c_document)
    {
        return RunKesxml(QStringList{"edit"} + options + QStringList{path, "-"}, document);
    }

    /// The document with `before` replaced.
    static std::string With(const char* before, const char* after, QByteArray document = c_document)
    {
        EXPECT_EQ(document.count(before), 1) << before;
        return document.replace(before, after).toStdString();
    }
};

} // namespace

TEST_F(KesxmlEdit, SetsTextsAndLeavesAllElseAsItIs)
{
    const KesxmlOutcome outcome = Edit({"--set-text", "<n> & \"\xC3\xA9\""}, "//a");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, With("old &e; </a ><a/>", "&lt;n&gt; &amp; \"\u00E9\"</a >"
                                                     "<a>&lt;n&gt; &amp; \"\u00E9\"</a>"));
}

TEST_F(KesxmlEdit, SetsAndRemovesAttributesInTheirPlaces)
{
    EXPECT_EQ(Edit({"--set-attribute", "x=<\"'\n", "--set-attribute", "z=="}, "/r/a").out,
              With("<a x='1' y=\"&e;\">old &e; </a ><a/>",
                   "<a x='&lt;&quot;&apos;&#10;' y=\"&e;\" z=\"=\">old &e; </a >"
                   "<a x=\"&lt;&quot;&apos;&#10;\" z=\"=\"/>"));
    EXPECT_EQ(Edit({"--remove-attribute", "y"}, "//a").out, With(" y=\"&e;\"", ""));
    EXPECT_EQ(Edit({"--remove-attribute", "b", "--set-attribute", "d=2"}, "r").out,
              With("<r  b = \"1\" >", "<r d=\"2\" >"));
}

TEST_F(KesxmlEdit, Renames)
{
    EXPECT_EQ(Edit({"--rename", "n"}, "//c").out,
              With("<c/>\n\t<c><c/>t</c>", "<n/>\n\t<n><n/>t</n>"));
    EXPECT_EQ(
        Edit({"--rename", "n", "--set-text", "t", "--set-attribute", "x=1"}, "r/c", "<r><c /></r>")
            .out,
        "<r><n x=\"1\" >t</n></r>");
}

TEST_F(KesxmlEdit, RemovesElementsWithTheirLines)
{
    EXPECT_EQ(Edit({"--remove"}, "//c").out, With("  <c/>\n\t<c><c/>t</c>\n", ""));
    EXPECT_EQ(Edit({"--remove"}, "//a").out,
              With("  <a x='1' y=\"&e;\">old &e; </a ><a/>\n", "  \n"));
}

TEST_F(KesxmlEdit, WritesNothingThatIsNotWellFormed)
{
    const QString file = Write("a.xml", c_document);
    for (const QStringList& options : {QStringList{"--remove"},
                                       {"--rename", "a b"},
                                       {"--rename", "1"},
                                       {"--set-attribute", "<=1"},
                                       {"--set-attribute", "z=1", "--set-attribute", "z=2"}}) {
        const KesxmlOutcome outcome =
            RunKesxml(QStringList{"edit", "-i"} + options + QStringList{"/r", file});
        EXPECT_EQ(outcome.status, 1) << options.join(' ').toStdString();
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, StartsWith("the edited document:"));
    }
    QFile written(file);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), c_document);
}

TEST_F(KesxmlEdit, RefusesWhatItCannotDo)
{
    const KesxmlOutcome mixed = Edit({"--set-text", "t"}, "/r/c");
    EXPECT_EQ(mixed.status, 2);
    EXPECT_EQ(mixed.out, "");
    EXPECT_THAT(mixed.err, EndsWith("6:2: this element holds more than text\n"));
    const KesxmlOutcome entity =
        Edit({"--remove"}, "//a", "<!DOCTYPE r [<!ENTITY e '<a/>'>]><r>&e;<b/></r>");
    EXPECT_EQ(entity.status, 2);
    EXPECT_EQ(entity.out, "");
    EXPECT_THAT(entity.err, HasSubstr("an element that stands in an entity cannot be edited"));
    const KesxmlOutcome none = Edit({"--remove"}, "//none");
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.out, "");
    EXPECT_EQ(none.err, "kesxml: -: '//none' finds no element; nothing is written\n");
    for (const QStringList& options : {QStringList{},
                                       {"--remove", "--rename", "a"},
                                       {"--set-attribute", "a"},
                                       {"-i", "--remove"}}) {
        const KesxmlOutcome outcome = Edit(options, "//a");
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr("Try 'kesxml edit --help'."));
    }
}

TEST_F(KesxmlEdit, WritesUtf8InPlaceOrToAFile)
{
    const QString file = Write("a.xml", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>");
    const QString output = m_directory.filePath("out.xml");
    const std::string expected = "<?xml version='1.0' encoding='UTF-8'?><b>\u00E9</b>";
    EXPECT_EQ(RunKesxml({"edit", "--rename", "b", "-o", output, "a", file}).status, 0);
    EXPECT_EQ(RunKesxml({"edit", "--rename", "b", "--in-place", "a", file}).status, 0);
    for (const QString& name : {output, file}) {
        QFile written(name);
        ASSERT_TRUE(written.open(QIODevice::ReadOnly));
        EXPECT_EQ(written.readAll().toStdString(), expected);
    }
}
