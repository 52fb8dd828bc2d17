#include "support/KesxmlProcess.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class KesxmlFormat : public KesxmlTest
{
};

} // namespace

TEST_F(KesxmlFormat, FormatsAFile)
{
    const QString file = Write("a.xml", "<a y='2' x='1&amp;'><b>t</b></a>");
    const KesxmlOutcome outcome = RunKesxml({"format", file});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "<?xml version='1.0' encoding='utf-8' ?>\n\n"
                           "<a x='1&amp;' y='2'>\n  <b>t</b>\n</a>\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(KesxmlFormat, FormatsStandardInputWithoutHeader)
{
    const KesxmlOutcome outcome = RunKesxml({"format", "--no-header", "-"}, "<a><b/></a>");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "<a>\n  <b />\n</a>\n");
}

TEST_F(KesxmlFormat, KeepsLineEndsOfLongTextsUnlessAskedToEscapeAll)
{
    const QByteArray text = "a text of more than thirty-two units,\nin two lines";
    const QByteArray document = "<a>" + text + "</a>";
    EXPECT_THAT(RunKesxml({"format", "-"}, document).out, HasSubstr("units,\nin"));
    EXPECT_THAT(RunKesxml({"format", "--escape-all", "-"}, document).out,
                HasSubstr("units,&#10;in"));
}

TEST_F(KesxmlFormat, WarnsWhenItMovesText)
{
    const KesxmlOutcome outcome = RunKesxml({"format", "--no-header", "-"}, "<a>x<b/>y</a>");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err,
              "-: warning: text between child elements is written after them (in <a>)\n");
}

TEST_F(KesxmlFormat, DoesNotWriteADocumentWithErrors)
{
    const QString file = Write("bad.xml", "<a>\n<b></a>");
    const KesxmlOutcome outcome = RunKesxml({"format", file});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith(file.toStdString() + ":2:"));
}
