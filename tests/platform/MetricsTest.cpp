#include <kesplatform/Metrics.h>

#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Writes down what it is told. For scopes of one thread.
class RecordingSink : public Metrics::Sink
{
public:
    void ScopeOpened(std::string_view name, std::uint64_t flags) override
    {
        events.push_back("open " + std::string(name) + " " + std::to_string(flags));
    }
    void ValueEmitted(std::string_view scope, std::string_view key, std::int64_t value) override
    {
        events.push_back(std::string(scope) + " " + std::string(key) + "=" + std::to_string(value));
    }
    void BytesEmitted(std::string_view scope, std::string_view key, std::string_view bytes) override
    {
        events.push_back(std::string(scope) + " " + std::string(key) + "='" + std::string(bytes) +
                         "'");
    }
    void ScopeClosed(std::string_view name, std::int64_t nanoseconds) override
    {
        events.push_back("close " + std::string(name));
        durations.push_back(nanoseconds);
    }

    std::vector<std::string> events;
    std::vector<std::int64_t> durations;
};

class ThrowingSink : public Metrics::Sink
{
public:
    void ScopeOpened(std::string_view, std::uint64_t) override { Fail(); }
    void ValueEmitted(std::string_view, std::string_view, std::int64_t) override { Fail(); }
    void BytesEmitted(std::string_view, std::string_view, std::string_view) override { Fail(); }
    void ScopeClosed(std::string_view, std::int64_t) override { Fail(); }

    int calls = 0;

private:
    [[noreturn]] void Fail()
    {
        ++calls;
        throw std::runtime_error("the sink is broken");
    }
};

class CountingSink : public Metrics::Sink
{
public:
    void ScopeOpened(std::string_view, std::uint64_t) override { ++opened; }
    void ValueEmitted(std::string_view, std::string_view, std::int64_t value) override
    {
        sum += value;
    }
    void BytesEmitted(std::string_view, std::string_view, std::string_view) override {}
    void ScopeClosed(std::string_view, std::int64_t) override { ++closed; }

    std::atomic<int> opened{0};
    std::atomic<int> closed{0};
    std::atomic<std::int64_t> sum{0};
};

class MetricsTest : public testing::Test
{
protected:
    ~MetricsTest() override { Metrics::SetSink(nullptr); }
};

} // namespace

TEST_F(MetricsTest, ScopeIsNotOpenWithoutSink)
{
    const Metrics::Scope scope("a");
    EXPECT_FALSE(scope.IsOpen());
    scope.Emit("k", 1);
    scope.Emit("k", "v");
}

TEST_F(MetricsTest, SinkReceivesWhatHappensInOrder)
{
    const auto sink = std::make_shared<RecordingSink>();
    Metrics::SetSink(sink);
    {
        const Metrics::Scope outer("outer", 0x80000000000);
        EXPECT_TRUE(outer.IsOpen());
        outer.Emit("'xmls'", 7);
        {
            const Metrics::Scope inner("inner");
            inner.Emit("'xmlt'", std::string_view("a\0b", 3));
        }
        outer.Emit("last", -1);
    }
    EXPECT_THAT(sink->events, ElementsAre("open outer 8796093022208", "outer 'xmls'=7",
                                          "open inner 0", std::string("inner 'xmlt'='a\0b'", 18),
                                          "close inner", "outer last=-1", "close outer"));
}

TEST_F(MetricsTest, MeasuresTimeOfScopes)
{
    const auto sink = std::make_shared<RecordingSink>();
    Metrics::SetSink(sink);
    {
        const Metrics::Scope outer("outer");
        const Metrics::Scope inner("inner");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ASSERT_EQ(sink->durations.size(), 2U);
    EXPECT_GE(sink->durations[0], 2'000'000);
    EXPECT_GE(sink->durations[1], sink->durations[0]);
}

TEST_F(MetricsTest, ScopesKeepTheSinkThatTheyOpenedWith)
{
    const auto first = std::make_shared<RecordingSink>();
    const auto second = std::make_shared<RecordingSink>();
    Metrics::SetSink(first);
    {
        const Metrics::Scope scope("a");
        Metrics::SetSink(second);
        scope.Emit("k", 1);
        {
            const Metrics::Scope other("b");
        }
        Metrics::SetSink(nullptr);
        EXPECT_TRUE(scope.IsOpen());
        const Metrics::Scope closed("c");
        EXPECT_FALSE(closed.IsOpen());
    }
    EXPECT_THAT(first->events, ElementsAre("open a 0", "a k=1", "close a"));
    EXPECT_THAT(second->events, ElementsAre("open b 0", "close b"));
}

TEST_F(MetricsTest, ScopeOpenedWithoutSinkStaysClosed)
{
    const auto sink = std::make_shared<RecordingSink>();
    {
        const Metrics::Scope scope("a");
        Metrics::SetSink(sink);
        scope.Emit("k", 1);
        EXPECT_FALSE(scope.IsOpen());
    }
    EXPECT_THAT(sink->events, IsEmpty());
}

TEST_F(MetricsTest, WhatASinkThrowsIsDropped)
{
    const auto sink = std::make_shared<ThrowingSink>();
    Metrics::SetSink(sink);
    {
        const Metrics::Scope scope("a");
        EXPECT_TRUE(scope.IsOpen());
        scope.Emit("k", 1);
        scope.Emit("k", "v");
    }
    EXPECT_EQ(sink->calls, 4);
}

TEST_F(MetricsTest, ReplacedSinkEndsWithItsLastScope)
{
    auto sink = std::make_shared<RecordingSink>();
    const std::weak_ptr<RecordingSink> observer = sink;
    Metrics::SetSink(std::move(sink));
    {
        const Metrics::Scope scope("a");
        Metrics::SetSink(nullptr);
        EXPECT_FALSE(observer.expired());
    }
    EXPECT_TRUE(observer.expired());
}

TEST_F(MetricsTest, SinkMayInstallAnotherOneWhenItEnds)
{
    struct Heir : RecordingSink
    {
        explicit Heir(std::shared_ptr<Metrics::Sink> next) : heir(std::move(next)) {}
        ~Heir() override { Metrics::SetSink(heir); }
        std::shared_ptr<Metrics::Sink> heir;
    };
    const auto next = std::make_shared<RecordingSink>();
    Metrics::SetSink(std::make_shared<Heir>(next));
    Metrics::SetSink(nullptr);
    {
        const Metrics::Scope scope("a");
    }
    EXPECT_THAT(next->events, ElementsAre("open a 0", "close a"));
}

TEST_F(MetricsTest, ScopesOfManyThreadsReportWhileSinksChange)
{
    const std::vector<std::shared_ptr<CountingSink>> sinks = {std::make_shared<CountingSink>(),
                                                              std::make_shared<CountingSink>()};
    Metrics::SetSink(sinks[0]);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 2000; ++n) {
                const Metrics::Scope scope("a");
                scope.Emit("k", 1);
            }
        });
    }
    for (std::size_t n = 0; n < 2000; ++n)
        Metrics::SetSink(sinks[n % 2]);
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& sink : sinks) {
        EXPECT_EQ(sink->opened, sink->closed);
        EXPECT_EQ(sink->sum, sink->opened);
    }
    EXPECT_EQ(sinks[0]->opened + sinks[1]->opened, 8000);
}
