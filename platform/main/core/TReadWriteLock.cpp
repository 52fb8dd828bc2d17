#include <kesplatform/TReadWriteLock.h>

#include <cassert>
#include <cerrno>

namespace {

/// An address that no other living thread has. Each copy of the library in a process has addresses
/// of its own, so that every call for a lock has to go to the same copy, as it does where the
/// library is shared.
const void* ThisThread() noexcept
{
    static thread_local const char s_place = 0;
    return &s_place;
}

} // namespace

TReadWriteLock::~TReadWriteLock()
{
    pthread_rwlock_destroy(&m_lock);
}

bool TReadWriteLock::IsHeldByThisThread() const noexcept
{
    // Only this thread can have stored its own address, so an unordered load cannot mislead.
    return m_writer.load(std::memory_order_relaxed) == ThisThread();
}

void TReadWriteLock::LockExclusive()
{
    if (!IsHeldByThisThread()) {
        // It can only refuse a thread that is the writer already.
        [[maybe_unused]] const int error = pthread_rwlock_wrlock(&m_lock);
        assert(error == 0);
        m_writer.store(ThisThread(), std::memory_order_relaxed);
    }
    ++m_depth;
}

void TReadWriteLock::UnlockExclusive() noexcept
{
    if (--m_depth > 0)
        return;
    m_writer.store(nullptr, std::memory_order_relaxed);
    pthread_rwlock_unlock(&m_lock);
}

void TReadWriteLock::LockShared()
{
    if (IsHeldByThisThread()) {
        ++m_depth;
        return;
    }
    // Nested shared locks of one thread rely on a lock that lets readers in while a writer waits,
    // as this one does by default. It refuses only when there are too many readers at the moment.
    while (pthread_rwlock_rdlock(&m_lock) == EAGAIN) {
    }
}

void TReadWriteLock::UnlockShared() noexcept
{
    if (IsHeldByThisThread())
        UnlockExclusive();
    else
        pthread_rwlock_unlock(&m_lock);
}
