#include <kesplatform/InitOnce.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

TEST(InitOnce, RunsTheFirstFunctionAndNoOther)
{
    InitOnce once;
    int runs = 0;
    once.Run([&] { runs += 1; });
    once.Run([&] { runs += 10; });
    once.Run([&] { runs += 100; });
    EXPECT_EQ(runs, 1);
}

TEST(InitOnce, RunsAgainAfterAThrow)
{
    InitOnce once;
    int runs = 0;
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(once.Run([&] {
            ++runs;
            throw std::runtime_error("not yet");
        }),
                     std::runtime_error);
    }
    EXPECT_EQ(runs, 3);
    once.Run([&] { ++runs; });
    once.Run([&] { ++runs; });
    EXPECT_EQ(runs, 4);
}

TEST(InitOnce, IsDoneWhenAnyThreadGoesOn)
{
    for (int round = 0; round < 50; ++round) {
        InitOnce once;
        std::atomic<int> runs{0};
        std::atomic<int> seen{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                // The first to come fails, and another one has to do it.
                try {
                    once.Run([&] {
                        if (runs++ == 0)
                            throw std::runtime_error("not yet");
                    });
                    seen += runs == 2 ? 1 : 0;
                } catch (const std::runtime_error&) {
                    seen += 1;
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(runs, 2);
        EXPECT_EQ(seen, 4);
    }
}
