#pragma once

#include <kesplatform/TReadWriteLock.h>

#include <functional>

/// Holds two locks exclusively, the one at the higher address taken first, so that threads that
/// work on the same two documents in opposite directions cannot deadlock. Both may be the same.
class LockedPair
{
public:
    LockedPair(TReadWriteLock& a, TReadWriteLock& b)
        : m_first(std::greater<>()(&a, &b) ? a : b), m_second(std::greater<>()(&a, &b) ? b : a)
    {
    }

private:
    // Members are made in this order and ended in the opposite one.
    ScopedLock m_first;
    ScopedLock m_second;
};
