#pragma once

#include <mutex>

/// A lock that the thread which holds it may take again. Safe to use from several threads.
using TRecursiveMutex = std::recursive_mutex;
