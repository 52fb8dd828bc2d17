#include "sinks/SAXSink.h"

#include "support/RecordingSink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

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

TEST(SAXSink, PassesRunsOfAllLengthsAndPiecesOn)
{
    Events events;
    std::vector<std::string> expected;
    for (const std::size_t pieces : {1U, 2U, 3U}) {
        for (const std::size_t length : {0U, 1U, 15U, 4095U, 4096U, 70000U, 2U}) {
            std::string whole;
            for (std::size_t i = 0; i < pieces; ++i) {
                events.sink.AppendText(std::u16string(length, static_cast<char16_t>(u'x' + i)));
                whole.append(length, static_cast<char>('x' + i));
            }
            events.sink.EndText();
            if (!whole.empty())
                expected.push_back("'" + whole + "'");
        }
    }
    EXPECT_EQ(events.recorded->events, expected);
}

TEST(SAXSink, LeavesTextsThatWereSharedAsTheyWere)
{
    class Keeping final : public SAXInterface
    {
    public:
        void StartElement(TString&&, std::unordered_map<TString, TString>&&) override {}
        void EndElement() override {}
        void TextContent(const TString& text) override { texts.push_back(text); }

        std::vector<TString> texts;
    };

    const auto keeping = std::make_shared<Keeping>();
    SAXSink sink(keeping);
    for (const char16_t* text : {u"one", u"two", u"six"}) {
        sink.AppendText(text);
        sink.EndText();
    }
    EXPECT_THAT(keeping->texts, ElementsAre(TString(u"one"), TString(u"two"), TString(u"six")));
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

TEST(SAXSink, RestartedPassesOnOnlyWhatIsNew)
{
    Events events;
    for (int round = 0; round < 2; ++round) {
        events.Start(u"a");
        events.sink.AppendText(u"x");
        events.Start(u"b");
        events.sink.AppendText(u"pending");
        if (round == 0)
            events.sink.Restart();
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
    events.sink.Restart();
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

TEST(SAXSink, RestartedIsDoneWhereItWas)
{
    const auto enough = std::make_shared<SecondIsEnough>();
    SAXSink sink(enough);
    ParsedNames names;
    sink.StartElement({names, names.Find(u"a"), {}, {}});
    sink.EndElement();
    sink.Restart();
    EXPECT_FALSE(sink.IsDone());
    sink.StartElement({names, names.Find(u"a"), {}, {}});
    EXPECT_FALSE(sink.IsDone());
    sink.EndElement();
    EXPECT_TRUE(sink.IsDone());
    EXPECT_EQ(enough->questions, 2);
}
