#include <kesplatform/TReadWriteLock.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

/// Whether another thread gets the lock at once. What it waits for is released afterwards, so a
/// wrong answer is a failure and not a hang.
template <typename Guard>
bool CanEnter(TReadWriteLock& lock, std::future<void>& entered)
{
    entered = std::async(std::launch::async, [&lock] { const Guard guard(lock); });
    return entered.wait_for(100ms) == std::future_status::ready;
}

} // namespace

TEST(TReadWriteLock, LetsTheWriterWriteAndReadAgain)
{
    TReadWriteLock lock;
    std::future<void> entered;
    {
        const ScopedLock outer(lock);
        {
            const ScopedLock inner(lock);
            const ScopedReadLock reading(lock);
            const ScopedReadLock readingAgain(lock);
            const ScopedLock innermost(lock);
        }
        EXPECT_FALSE(CanEnter<ScopedReadLock>(lock, entered)) << "the outer lock is still held";
    }
    entered.get();
    EXPECT_TRUE(CanEnter<ScopedLock>(lock, entered));
}

TEST(TReadWriteLock, ReleasesWhateverTheOrderOfKinds)
{
    TReadWriteLock lock;
    std::future<void> entered;
    lock.LockExclusive();
    lock.LockShared();
    lock.UnlockExclusive();
    EXPECT_FALSE(CanEnter<ScopedLock>(lock, entered));
    lock.UnlockShared();
    entered.get();
    EXPECT_TRUE(CanEnter<ScopedLock>(lock, entered));
}

TEST(TReadWriteLock, LetsSeveralReadersInButNoWriter)
{
    TReadWriteLock lock;
    std::future<void> reader;
    std::future<void> writer;
    {
        const ScopedReadLock reading(lock);
        EXPECT_TRUE(CanEnter<ScopedReadLock>(lock, reader));
        EXPECT_FALSE(CanEnter<ScopedLock>(lock, writer));
    }
    writer.get();
}

TEST(TReadWriteLock, LetsAReaderReadAgainWhileAWriterWaits)
{
    TReadWriteLock lock;
    std::atomic<bool> isReading = false;
    std::atomic<bool> writerWaits = false;
    auto reader = std::async(std::launch::async, [&] {
        const ScopedReadLock outer(lock);
        isReading = true;
        while (!writerWaits)
            std::this_thread::yield();
        const ScopedReadLock inner(lock);
    });
    while (!isReading)
        std::this_thread::yield();
    std::future<void> writer;
    EXPECT_FALSE(CanEnter<ScopedLock>(lock, writer));
    writerWaits = true;
    ASSERT_EQ(std::future_status::ready, reader.wait_for(20s)) << "the reader waits for itself";
    writer.get();
}

TEST(TReadWriteLock, KeepsWritersApart)
{
    TReadWriteLock lock;
    int first = 0;
    int second = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 5000; ++round) {
                if (round % 4 == 0) {
                    const ScopedReadLock reading(lock);
                    if (first != second)
                        ADD_FAILURE() << "a reader saw half of a change";
                    continue;
                }
                const ScopedLock writing(lock);
                ++first;
                const ScopedLock nested(lock);
                ++second;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(15000, first);
    EXPECT_EQ(15000, second);
}
