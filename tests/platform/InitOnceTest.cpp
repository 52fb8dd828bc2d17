#include <kesplatform/InitOnce.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

TEST(InitOnce, RunsTheFirstFunctionOnly)
{
    InitOnce once;
    int first = 0;
    int second = 0;
    once.Run([&] { ++first; });
    once.Run([&] { ++first; });
    once.Run([&] { ++second; });
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
}

TEST(InitOnce, RunsAgainAfterAFunctionThatThrew)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "an exception that leaves std::call_once blocks all later calls under TSan";
#endif
    InitOnce once;
    int runs = 0;
    for (int i = 0; i < 3; ++i)
        EXPECT_THROW(once.Run([&] {
            ++runs;
            throw std::runtime_error("told to fail");
        }),
                     std::runtime_error);
    EXPECT_EQ(runs, 3);
    once.Run([&] { ++runs; });
    once.Run([&] { ++runs; });
    EXPECT_EQ(runs, 4);
}

TEST(InitOnce, LetsOtherThreadsWaitForTheFirst)
{
    InitOnce once;
    std::atomic<int> runs = 0;
    std::atomic<int> early = 0;
    bool isReady = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            once.Run([&] {
                ++runs;
                std::this_thread::yield();
                isReady = true;
            });
            early += isReady ? 0 : 1;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(early, 0);
}
