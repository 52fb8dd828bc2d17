#include <kesplatform/CoreThreadContext.h>

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace {

class CoreThreadContextTest : public testing::Test
{
protected:
    CoreThreadContextTest() { CoreThreadContext::Clear(); }
    ~CoreThreadContextTest() override { CoreThreadContext::Clear(); }
};

/// Looks at the context while it is being destroyed by it.
struct Farewell
{
    bool* sawObject;
    std::shared_ptr<int> lastOwner = std::make_shared<int>();

    ~Farewell()
    {
        if (lastOwner.use_count() == 1)
            *sawObject = !CoreThreadContext::GetObject(u"farewell").empty();
    }
    Farewell(bool* saw) : sawObject(saw) {}
    Farewell(const Farewell&) = default;
    Farewell& operator=(const Farewell&) = default;
};

} // namespace

TEST_F(CoreThreadContextTest, StartsWithoutSessionAndObjects)
{
    EXPECT_FALSE(CoreThreadContext::HasSessionId());
    EXPECT_EQ(CoreThreadContext::GetSessionId(), u"");
    EXPECT_TRUE(CoreThreadContext::GetObject(u"a").empty());
}

TEST_F(CoreThreadContextTest, KeepsTheSessionId)
{
    CoreThreadContext::SetSessionId(u"s1");
    EXPECT_TRUE(CoreThreadContext::HasSessionId());
    EXPECT_EQ(CoreThreadContext::GetSessionId(), u"s1");
    CoreThreadContext::SetSessionId(u"s2");
    EXPECT_EQ(CoreThreadContext::GetSessionId(), u"s2");
}

TEST_F(CoreThreadContextTest, EmptySessionIdLeavesTheObjects)
{
    CoreThreadContext::SetSessionId(u"s");
    CoreThreadContext::SetObject(u"a", 1);
    CoreThreadContext::SetSessionId(u"");
    EXPECT_FALSE(CoreThreadContext::HasSessionId());
    EXPECT_EQ(boost::any_cast<int>(CoreThreadContext::GetObject(u"a")), 1);
}

TEST_F(CoreThreadContextTest, KeepsObjectsByName)
{
    CoreThreadContext::SetObject(u"a", 1);
    CoreThreadContext::SetObject(u"b", TString(u"two"));
    EXPECT_EQ(boost::any_cast<int>(CoreThreadContext::GetObject(u"a")), 1);
    EXPECT_EQ(boost::any_cast<TString>(CoreThreadContext::GetObject(u"b")), u"two");
    EXPECT_TRUE(CoreThreadContext::GetObject(u"A").empty());
    CoreThreadContext::SetObject(u"a", TString(u"one"));
    EXPECT_EQ(boost::any_cast<TString>(CoreThreadContext::GetObject(u"a")), u"one");
    CoreThreadContext::SetObject(u"a", boost::any());
    EXPECT_TRUE(CoreThreadContext::GetObject(u"a").empty());
}

TEST_F(CoreThreadContextTest, HandsOutCopies)
{
    CoreThreadContext::SetObject(u"a", 1);
    boost::any copy = CoreThreadContext::GetObject(u"a");
    boost::any_cast<int&>(copy) = 2;
    EXPECT_EQ(boost::any_cast<int>(CoreThreadContext::GetObject(u"a")), 1);
}

TEST_F(CoreThreadContextTest, ClearForgetsEverything)
{
    auto object = std::make_shared<int>();
    CoreThreadContext::SetSessionId(u"s");
    CoreThreadContext::SetObject(u"a", object);
    CoreThreadContext::Clear();
    EXPECT_FALSE(CoreThreadContext::HasSessionId());
    EXPECT_TRUE(CoreThreadContext::GetObject(u"a").empty());
    EXPECT_EQ(object.use_count(), 1);
}

TEST_F(CoreThreadContextTest, ObjectsMayUseTheContextWhenTheyEnd)
{
    bool sawObject = true;
    CoreThreadContext::SetObject(u"farewell", Farewell(&sawObject));
    CoreThreadContext::Clear();
    EXPECT_FALSE(sawObject);
    sawObject = false;
    CoreThreadContext::SetObject(u"farewell", Farewell(&sawObject));
    CoreThreadContext::SetObject(u"farewell", 1);
    EXPECT_TRUE(sawObject);
}

TEST_F(CoreThreadContextTest, EachThreadHasItsOwn)
{
    CoreThreadContext::SetSessionId(u"main");
    CoreThreadContext::SetObject(u"a", -1);
    std::vector<std::thread> threads;
    std::vector<int> isOwn(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i, &isOwn] {
            const bool startedEmpty =
                !CoreThreadContext::HasSessionId() && CoreThreadContext::GetObject(u"a").empty();
            CoreThreadContext::SetSessionId(TString::number(i));
            CoreThreadContext::SetObject(u"a", i);
            isOwn[static_cast<std::size_t>(i)] =
                startedEmpty && CoreThreadContext::GetSessionId() == TString::number(i) &&
                boost::any_cast<int>(CoreThreadContext::GetObject(u"a")) == i;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(isOwn, std::vector<int>(8, 1));
    EXPECT_EQ(CoreThreadContext::GetSessionId(), u"main");
    EXPECT_EQ(boost::any_cast<int>(CoreThreadContext::GetObject(u"a")), -1);
}

TEST_F(CoreThreadContextTest, ObjectsEndWithTheirThread)
{
    auto object = std::make_shared<int>();
    std::thread([&object] { CoreThreadContext::SetObject(u"a", object); }).join();
    EXPECT_EQ(object.use_count(), 1);
}

namespace {

/// Uses the thread's context when the thread ends, after the context has ended.
struct LateUser
{
    bool* foundNothing = nullptr;

    ~LateUser()
    {
        if (foundNothing == nullptr)
            return;
        *foundNothing = !CoreThreadContext::HasSessionId() &&
                        CoreThreadContext::GetSessionId().IsEmpty() &&
                        CoreThreadContext::GetObject(u"a").empty();
        CoreThreadContext::SetSessionId(u"another session");
        CoreThreadContext::SetObject(u"a", 2);
        CoreThreadContext::Clear();
        *foundNothing = *foundNothing && !CoreThreadContext::HasSessionId() &&
                        CoreThreadContext::GetObject(u"a").empty();
    }
};

} // namespace

TEST_F(CoreThreadContextTest, IsWithoutSessionOnceTheThreadHasEnded)
{
    bool foundNothing = false;
    std::thread([&foundNothing] {
        // What is made first ends last.
        static thread_local LateUser s_user;
        s_user.foundNothing = &foundNothing;
        CoreThreadContext::SetSessionId(u"a session whose id takes memory of its own");
        CoreThreadContext::SetObject(u"a", 1);
    }).join();
    EXPECT_TRUE(foundNothing);
}
