#include "support/KesxmlProcess.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class KesxmlDiff : public KesxmlTest
{
protected:
    /// Compares two documents in the files a and b.
    KesxmlOutcome Diff(const QByteArray& first, const QByteArray& second)
    {
        Write("a", first);
        Write("b", second);
        return RunKesxml({"diff", "a", "b"}, {}, m_directory.path());
    }
};

} // namespace

TEST_F(KesxmlDiff, FindsNothingWhereNothingDiffersButForm)
{
    const KesxmlOutcome outcome =
        Diff("<?xml version='1.0'?><!-- c --><r a='1' b='2'><c/> t <d>x&amp;</d></r>",
             "<r\n b=\"2\" a=\"1\">\n  <c></c>t\n <d><![CDATA[x&]]></d>\n</r>\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(KesxmlDiff, TellsAttributesAndTextsThatDiffer)
{
    const KesxmlOutcome outcome = Diff("<r>\n<a x='1' y='2' z='3'>old</a><b/></r>",
                                       "<r><a w='&#10;' x='1' y='3'>new</a><b/></r>");
    EXPECT_EQ(outcome.status, 1);
    const std::string place = "a:2:1 b:1:4 /r/a: ";
    EXPECT_THAT(outcome.OutLines(),
                ElementsAre(place + "attribute y '2' | '3'", place + "attribute z '3' | none",
                            place + "attribute w none | '&#10;'",
                            place + "text \"old\" | \"new\""));
}

TEST_F(KesxmlDiff, TellsElementsThatOnlyOneHas)
{
    EXPECT_THAT(
        Diff("<r><a/><b/><c/><d x='1'/></r>", "<r><b/><e/><c/><d x='2'/><f/></r>").OutLines(),
        ElementsAre("a:1:4 /r/a: only here", "b:1:8 /r/e: only here",
                    "a:1:16 b:1:16 /r/d: attribute x '1' | '2'", "b:1:26 /r/f: only here"));
    EXPECT_THAT(Diff("<r><i>1</i><i>2</i><i>3</i></r>", "<r><i>1</i><i>3</i></r>").OutLines(),
                ElementsAre("a:1:12 /r/i[2]: only here"));
    EXPECT_THAT(Diff("<r/>", "<s/>").OutLines(),
                ElementsAre("a:1:1 /r: only here", "b:1:1 /s: only here"));
}

TEST_F(KesxmlDiff, LooksAtEveryDepthAndAtLongLists)
{
    const auto deep = [](const QByteArray& innermost) {
        return QByteArray("<a>").repeated(20000) + innermost + QByteArray("</a>").repeated(20000);
    };
    EXPECT_EQ(Diff(deep("<b/>"), deep("<b/>")).status, 0);
    EXPECT_THAT(Diff(deep("<b/>"), deep("<b x=''/>")).out,
                HasSubstr("/b: attribute x none | ''\n"));
    const auto list = [](const char* separator) {
        QByteArray document = "<r>";
        for (int i = 0; i < 5000; ++i)
            document += "<i n='" + QByteArray::number(i) + "'>" + separator + "</i>";
        return document + "</r>";
    };
    EXPECT_THAT(Diff(list("x"), list("y")).OutLines(), ::testing::SizeIs(5000));
}

TEST_F(KesxmlDiff, TakesADocumentWithErrorsForTrouble)
{
    const KesxmlOutcome outcome = Diff("<r/>", "<r>");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.OutLines(), IsEmpty());
    EXPECT_THAT(outcome.err, StartsWith("b:1:4: error: "));
    EXPECT_EQ(RunKesxml({"diff", "a", "none"}, {}, m_directory.path()).status, 2);
    const QByteArray entities = "<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;</r>";
    EXPECT_EQ(Diff(entities, entities).status, 2);
    EXPECT_EQ(
        RunKesxml({"diff", "--allow-entities", "a", "-"}, "<r>x</r>", m_directory.path()).status,
        0);
}
