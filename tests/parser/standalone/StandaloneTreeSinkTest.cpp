#include "standalone/StandaloneTreeSink.h"

#include "support/FailingAllocations.h"

#include <gtest/gtest.h>

#include <new>

namespace {

class StandaloneTreeSinkTest : public testing::Test
{
protected:
    void Start(std::u16string_view name) { sink.StartElement({names, names.Find(name), {}, {}}); }

    ParsedNames names;
    StandaloneTreeSink sink{true};
};

} // namespace

TEST_F(StandaloneTreeSinkTest, GivesWhatIsStillOpenToItsParents)
{
    Start(u"a");
    sink.AppendText(u"1");
    Start(u"b");
    sink.EndElement();
    Start(u"c");
    Start(u"d");
    sink.AppendText(u"lost");
    const auto root = sink.TakeRoot();
    EXPECT_EQ(root->GetName(), u"Document");
    const StandaloneDOMElement& a = root->GetChildren().at(0);
    EXPECT_EQ(a.GetAllText(), u"1");
    ASSERT_EQ(a.GetChildren().size(), 2U);
    EXPECT_EQ(a.GetChildren()[0].get().GetName(), u"b");
    EXPECT_NE(a.GetChild(u"c")->GetChild(u"d"), nullptr);
    EXPECT_FALSE(a.GetChild(u"c")->GetChild(u"d")->HasText());
}

TEST_F(StandaloneTreeSinkTest, LosesNoElementWhenMemoryFailsAtItsEnd)
{
    Start(u"r");
    for (std::size_t ended = 0; ended < 1000; ++ended) {
        Start(u"x");
        bool hasFailed = false;
        {
            const FailingAllocations failing(0);
            try {
                sink.EndElement();
            } catch (const std::bad_alloc&) {
                hasFailed = true;
            }
        }
        if (hasFailed && ended > 100) {
            EXPECT_EQ(sink.TakeRoot()->GetChild(u"r")->GetChildren().size(), ended + 1);
            return;
        }
        if (hasFailed)
            sink.EndElement();
    }
    FAIL() << "the end of an element never needed memory";
}
