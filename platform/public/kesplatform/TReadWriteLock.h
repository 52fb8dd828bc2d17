#pragma once

#include <kesplatform/Export.h>

#include <atomic>
#include <cstdint>
#include <pthread.h>

/// A lock held by one writer or by any number of readers, re-entrant for the thread that holds it:
/// write in write, read in write and read in read. A reader cannot become a writer (deadlock).
/// Every lock call needs its unlock call of the same kind on the same thread. Nobody may hold the
/// lock when it ends. Safe to use from several threads.
class KESPLATFORM_EXPORT TReadWriteLock
{
public:
    TReadWriteLock() = default;
    ~TReadWriteLock();
    TReadWriteLock(const TReadWriteLock&) = delete;
    TReadWriteLock& operator=(const TReadWriteLock&) = delete;

    /// Waits until no other thread holds the lock.
    void LockExclusive();
    /// Gives back what LockExclusive took.
    void UnlockExclusive() noexcept;
    /// Waits until no other thread holds the lock exclusively.
    void LockShared();
    /// Gives back what LockShared took.
    void UnlockShared() noexcept;

private:
    bool IsHeldByThisThread() const noexcept;

    /// That of POSIX, since the headers of std::shared_mutex would make up a tenth of the time that
    /// programs which use documents take to compile.
    pthread_rwlock_t m_lock = PTHREAD_RWLOCK_INITIALIZER;
    /// What only the writer's thread has an address of, or null.
    std::atomic<const void*> m_writer = nullptr;
    /// How often the writer holds the lock, in either way; touched by the writer only.
    std::uint32_t m_depth = 0;
};

/// Holds a lock, which must live longer, exclusively from construction to destruction. An object is
/// for the thread that made it.
class ScopedLock
{
public:
    /// Takes the lock exclusively.
    explicit ScopedLock(TReadWriteLock& lock) : m_lock(lock) { m_lock.LockExclusive(); }
    ~ScopedLock() { m_lock.UnlockExclusive(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    TReadWriteLock& m_lock;
};

/// Holds a lock, which must live longer, shared from construction to destruction. An object is for
/// the thread that made it.
class ScopedReadLock
{
public:
    /// Takes the lock together with other readers.
    explicit ScopedReadLock(TReadWriteLock& lock) : m_lock(lock) { m_lock.LockShared(); }
    ~ScopedReadLock() { m_lock.UnlockShared(); }
    ScopedReadLock(const ScopedReadLock&) = delete;
    ScopedReadLock& operator=(const ScopedReadLock&) = delete;

private:
    TReadWriteLock& m_lock;
};
