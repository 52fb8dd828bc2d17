#include <kesplatform/ActivityScope.h>

#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SYSTEM_ALLOCATOR_IS_REPLACED
#endif

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class RecordingSink : public art::ActivitySink
{
public:
    void ActivityFinished(const art::ActivityRecord& record) override { records.push_back(record); }

    std::vector<art::ActivityRecord> records;
};

class ActivityScopeTest : public testing::Test
{
protected:
    ActivityScopeTest() { art::SetActivitySink(m_sink); }
    ~ActivityScopeTest() override { art::SetActivitySink(nullptr); }

    std::shared_ptr<RecordingSink> m_sink = std::make_shared<RecordingSink>();
};

constexpr std::size_t c_megabyte = 1024 * 1024;

} // namespace

TEST_F(ActivityScopeTest, IsClosedWithoutSink)
{
    art::SetActivitySink(nullptr);
    {
        art::ActivityScope scope("a");
        EXPECT_TRUE(scope.IsClosed());
        scope.AddAttribute(u"k", u"v");
        scope.AddAttribute(u"k", 1);
        art::SetActivitySink(m_sink);
        EXPECT_TRUE(scope.IsClosed());
    }
    EXPECT_THAT(m_sink->records, IsEmpty());
}

TEST_F(ActivityScopeTest, ReportsWhenItEnds)
{
    {
        const art::ActivityScope scope("dom-parser.parse-xml-file");
        EXPECT_FALSE(scope.IsClosed());
        EXPECT_THAT(m_sink->records, IsEmpty());
    }
    ASSERT_THAT(m_sink->records, SizeIs(1));
    EXPECT_EQ(m_sink->records[0].name, "dom-parser.parse-xml-file");
    EXPECT_THAT(m_sink->records[0].attributes, IsEmpty());
}

TEST_F(ActivityScopeTest, ReportsAttributesInTheOrderAdded)
{
    {
        art::ActivityScope scope("a");
        scope.AddAttribute(u"filename", u"x.xml");
        scope.AddAttribute(u"size", -9223372036854775807LL - 1);
        scope.AddAttribute(u"b", u"");
        scope.AddAttribute(u"filename", u"y.xml");
    }
    ASSERT_THAT(m_sink->records, SizeIs(1));
    EXPECT_THAT(m_sink->records[0].attributes,
                ElementsAre(Pair(TString(u"filename"), TString(u"x.xml")),
                            Pair(TString(u"size"), TString(u"-9223372036854775808")),
                            Pair(TString(u"b"), TString()),
                            Pair(TString(u"filename"), TString(u"y.xml"))));
}

TEST_F(ActivityScopeTest, NestedActivitiesFinishFromTheInside)
{
    {
        const art::ActivityScope outer("outer");
        const art::ActivityScope inner("inner");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ASSERT_THAT(m_sink->records, SizeIs(2));
    EXPECT_EQ(m_sink->records[0].name, "inner");
    EXPECT_EQ(m_sink->records[1].name, "outer");
    EXPECT_GE(m_sink->records[0].nanoseconds, 2'000'000);
    EXPECT_GE(m_sink->records[1].nanoseconds, m_sink->records[0].nanoseconds);
}

TEST_F(ActivityScopeTest, KeepsTheSinkThatItOpenedWith)
{
    const auto other = std::make_shared<RecordingSink>();
    {
        const art::ActivityScope scope("a");
        art::SetActivitySink(other);
        const art::ActivityScope next("b");
        art::SetActivitySink(nullptr);
    }
    ASSERT_THAT(m_sink->records, SizeIs(1));
    EXPECT_EQ(m_sink->records[0].name, "a");
    ASSERT_THAT(other->records, SizeIs(1));
    EXPECT_EQ(other->records[0].name, "b");
}

TEST_F(ActivityScopeTest, WhatASinkThrowsIsDropped)
{
    struct ThrowingSink : art::ActivitySink
    {
        void ActivityFinished(const art::ActivityRecord&) override
        {
            ++calls;
            throw std::runtime_error("the sink is broken");
        }
        int calls = 0;
    };
    const auto sink = std::make_shared<ThrowingSink>();
    art::SetActivitySink(sink);
    {
        const art::ActivityScope scope("a");
    }
    EXPECT_EQ(sink->calls, 1);
}

TEST_F(ActivityScopeTest, CountsTheMemoryAllocatedInside)
{
#ifdef SYSTEM_ALLOCATOR_IS_REPLACED
    GTEST_SKIP() << "a sanitizer's allocator does not count";
#endif
    // Many small blocks live in the heap, a large one has a mapping of its own.
    for (const std::size_t blockSize : {std::size_t{1000}, 8 * c_megabyte}) {
        m_sink->records.clear();
        std::vector<std::string> kept;
        kept.reserve(8 * c_megabyte / 1000);
        {
            const art::ActivityScope scope("a");
            while (kept.size() * blockSize < 8 * c_megabyte - blockSize + 1)
                kept.emplace_back(blockSize, 'x');
        }
        const auto allocated = static_cast<std::int64_t>(kept.size() * blockSize);
        ASSERT_THAT(m_sink->records, SizeIs(1));
        EXPECT_GE(m_sink->records[0].memoryUsed, allocated);
        EXPECT_LE(m_sink->records[0].memoryUsed, allocated + allocated / 4);
    }
}

TEST_F(ActivityScopeTest, MemoryFreedInsideIsNegative)
{
#ifdef SYSTEM_ALLOCATOR_IS_REPLACED
    GTEST_SKIP() << "a sanitizer's allocator does not count";
#endif
    std::string text(4 * c_megabyte, 'x');
    {
        const art::ActivityScope scope("a");
        text.clear();
        text.shrink_to_fit();
    }
    ASSERT_THAT(m_sink->records, SizeIs(1));
    EXPECT_LE(m_sink->records[0].memoryUsed, -static_cast<std::int64_t>(4 * c_megabyte));
}

TEST_F(ActivityScopeTest, MemoryAllocatedAndFreedInsideDoesNotCount)
{
    {
        const art::ActivityScope scope("a");
        const std::string text(4 * c_megabyte, 'x');
    }
    ASSERT_THAT(m_sink->records, SizeIs(1));
    EXPECT_LT(std::abs(m_sink->records[0].memoryUsed), static_cast<std::int64_t>(c_megabyte));
}

TEST_F(ActivityScopeTest, ActivitiesOfManyThreadsReportWhileSinksChange)
{
    struct CountingSink : art::ActivitySink
    {
        void ActivityFinished(const art::ActivityRecord&) override { ++finished; }
        std::atomic<int> finished{0};
    };
    const std::vector<std::shared_ptr<CountingSink>> sinks = {std::make_shared<CountingSink>(),
                                                              std::make_shared<CountingSink>()};
    art::SetActivitySink(sinks[0]);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 500; ++n) {
                art::ActivityScope scope("a");
                scope.AddAttribute(u"n", n);
            }
        });
    }
    for (std::size_t n = 0; n < 2000; ++n)
        art::SetActivitySink(sinks[n % 2]);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sinks[0]->finished + sinks[1]->finished, 2000);
}
