#include "support/KesxmlProcess.h"

namespace {

using ::testing::HasSubstr;

class KesxmlVersion : public KesxmlTest
{
};

} // namespace

TEST_F(KesxmlVersion, PrintsTheVersionOfTheDocumentElement)
{
    const QByteArray document = "<?xml version='1.0'?><!-- <x version='2'/> --><a version='10.4'/>";
    EXPECT_EQ(RunKesxml({"version", Write("a.xml", document)}).out, "10.4\n");
    const KesxmlOutcome outcome = RunKesxml({"version", "-"}, document);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "10.4\n");
    EXPECT_EQ(RunKesxml({"version", "-"}, "<a version='10.4.1-beta'/>").out, "10.4.1-beta\n");
}

TEST_F(KesxmlVersion, LooksAtAnotherAttributeWhenAskedTo)
{
    const QByteArray document = "<a version='1.0' schema-version='2.5'/>";
    EXPECT_EQ(RunKesxml({"version", "--attribute", "schema-version", "-"}, document).out, "2.5\n");
    EXPECT_EQ(RunKesxml({"version", "--attribute", "other", "-"}, document).status, 1);
}

TEST_F(KesxmlVersion, SaysSoWithStatusOneWhenThereIsNone)
{
    for (const char* document :
         {"<a/>", "<a><b version='1.0'/></a>", "", "text", "<a version='1"}) {
        const KesxmlOutcome outcome = RunKesxml({"version", "-"}, document);
        EXPECT_EQ(outcome.status, 1) << document;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "kesxml: -: no first tag with an attribute 'version'\n");
    }
}

TEST_F(KesxmlVersion, ReadsNoFurtherThanTheFirstTag)
{
    // What follows is neither XML nor UTF-8.
    const QString file =
        Write("a.xml", "<a version='3.1'>" + QByteArray(5000, ' ') + QByteArray(5000, '\xFF'));
    EXPECT_EQ(RunKesxml({"version", file}).out, "3.1\n");
}

TEST_F(KesxmlVersion, DecodesNoFurtherThanTheFirstTag)
{
    // What follows is half of a character, again and again.
    const QByteArray tag = "\xFF\xFE" + QByteArray("<\0a\0 \0", 6) +
                           QByteArray("v\0e\0r\0s\0i\0o\0n\0=\0'\0003\0.\0002\0'\0>\0", 28);
    const QByteArray rest =
        QByteArray("\x20\0", 2).repeated(100'000) + QByteArray("\x00\xD8", 2).repeated(100'000);
    EXPECT_EQ(RunKesxml({"version", Write("a.xml", tag + rest)}).out, "3.2\n");
    // Without a tag, what is wrong is what was wrong.
    EXPECT_EQ(RunKesxml({"version", Write("b.xml", "\xFF\xFE" + rest)}).status, 2);
}

TEST_F(KesxmlVersion, WaitsForNoMoreThanTheFirstTag)
{
    // Whoever writes goes on until nobody reads any more.
    const QString command = "(printf %s \"$1\"; while sleep 0.1; do printf ' ' || exit; done) | "
                            "timeout 20 '" KESXML_PATH "' version -";
    const QString tag =
        "<!-- <a version='1'> --><a version='3.4' b='" + QString(100000, 'x') + "'>";
    EXPECT_EQ(RunProgram("/bin/sh", {"-c", command, "sh", tag}).out, "3.4\n");
}
