#include "sinks/SAXSink.h"

#include "support/RecordingSink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Events
{
public:
    void Start(std::u16string_view name)
    {
        sink.StartElement({m_names, m_names.Find(name), {}, {}});
    }

    std::shared_ptr<RecordingSink> recorded = std::make_shared<RecordingSink>();
    SAXSink sink{recorded};

private:
    ParsedNames m_names;
};

/// Done with the second question.
class SecondIsEnough : public SAXInterface
{
public:
    void StartElement(TString&&, std::unordered_map<TString, TString>&&) override {}
    void EndElement() override {}
    void TextContent(const TString&) override {}
    bool IsDone() override { return ++questions == 2; }

    int questions = 0;
};

} // namespace

TEST(SAXSink, PassesTextOnInWholeRuns)
{
    Events events;
    events.Start(u"a");
    events.sink.AppendText(u"x");
    events.sink.AppendText(u"y");
    events.sink.EndElement();
    EXPECT_THAT(events.recorded->events, ElementsAre("<a>", "'xy'", "</>"));
}

TEST(SAXSink, ForgetsTheTextOfADocumentThatWasAbandoned)
{
    Events events;
    events.Start(u"a");
    events.sink.AppendText(u"left");
    events.sink.BeginDocument();
    events.Start(u"b");
    events.sink.EndElement();
    EXPECT_THAT(events.recorded->events, ElementsAre("<a>", "<b>", "</>"));
}

TEST(SAXSink, RewoundPassesOnOnlyWhatIsNew)
{
    Events events;
    for (int round = 0; round < 2; ++round) {
        events.Start(u"a");
        events.sink.AppendText(u"x");
        events.Start(u"b");
        events.sink.AppendText(u"pending");
        if (round == 0)
            events.sink.Rewind();
    }
    events.sink.EndElement();
    events.sink.EndElement();
    EXPECT_THAT(events.recorded->events,
                ElementsAre("<a>", "'x'", "<b>", "'pending'", "</>", "</>"));
}

TEST(SAXSink, PassesOnAllOfTheNextDocument)
{
    Events events;
    events.Start(u"a");
    events.sink.Rewind();
    events.recorded->events.clear();
    events.Start(u"a");
    EXPECT_THAT(events.recorded->events, IsEmpty());
    events.sink.BeginDocument();
    events.Start(u"a");
    EXPECT_THAT(events.recorded->events, ElementsAre("<a>"));
}

TEST(SAXSink, IsAskedOnceBehindEachTagAndStaysDone)
{
    const auto enough = std::make_shared<SecondIsEnough>();
    SAXSink sink(enough);
    ParsedNames names;
    sink.StartElement({names, names.Find(u"a"), {}, {}});
    EXPECT_FALSE(sink.IsDone());
    sink.EndElement();
    EXPECT_TRUE(sink.IsDone());
    sink.StartElement({names, names.Find(u"a"), {}, {}});
    EXPECT_TRUE(sink.IsDone());
    EXPECT_EQ(enough->questions, 3);
}

TEST(SAXSink, RewoundIsDoneWhereItWas)
{
    const auto enough = std::make_shared<SecondIsEnough>();
    SAXSink sink(enough);
    ParsedNames names;
    sink.StartElement({names, names.Find(u"a"), {}, {}});
    sink.EndElement();
    sink.Rewind();
    EXPECT_FALSE(sink.IsDone());
    sink.StartElement({names, names.Find(u"a"), {}, {}});
    EXPECT_FALSE(sink.IsDone());
    sink.EndElement();
    EXPECT_TRUE(sink.IsDone());
    EXPECT_EQ(enough->questions, 2);
}
