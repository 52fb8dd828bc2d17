#include <kesplatform/TReadWriteLock.h>

bool TReadWriteLock::IsHeldByThisThread() const noexcept
{
    // Only this thread can have stored its own id, so an unordered load cannot mislead.
    return m_writer.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void TReadWriteLock::LockExclusive()
{
    if (!IsHeldByThisThread()) {
        m_mutex.lock();
        m_writer.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }
    ++m_depth;
}

void TReadWriteLock::UnlockExclusive() noexcept
{
    if (--m_depth > 0)
        return;
    m_writer.store(std::thread::id(), std::memory_order_relaxed);
    m_mutex.unlock();
}

void TReadWriteLock::LockShared()
{
    // Nested shared locks of one thread rely on std::shared_mutex letting readers in while a
    // writer waits, which is what the platform's pthread_rwlock_t does by default.
    if (IsHeldByThisThread())
        ++m_depth;
    else
        m_mutex.lock_shared();
}

void TReadWriteLock::UnlockShared() noexcept
{
    if (IsHeldByThisThread())
        UnlockExclusive();
    else
        m_mutex.unlock_shared();
}
