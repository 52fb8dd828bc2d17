#pragma once

#include <cstddef>
#include <limits>

/// Lets memory run out for the calling thread: while one lives, `allowed` allocations succeed, the
/// next `failures` fail, and all after them succeed again. Only one at a time.
///
/// Without sanitizers all of the heap is under its control; with them, which have a heap of their
/// own, only operator new.
class FailingAllocations
{
public:
    explicit FailingAllocations(
        std::size_t allowed,
        std::size_t failures = std::numeric_limits<std::size_t>::max()) noexcept;
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;
    ~FailingAllocations();

    /// Whether an allocation has failed.
    static bool HasFailed() noexcept;
};

/// How many allocations have failed in the process.
std::size_t CountFailedAllocations() noexcept;

/// How many allocations of the calling thread are not freed yet, as far as they can be counted: a
/// difference of two calls tells of leaks. Always 0 with sanitizers, which look for leaks
/// themselves.
std::ptrdiff_t CountLiveAllocations() noexcept;

/// Serves the calling thread's next allocation of exactly `size` bytes, if that is not 0, with
/// `memory`, which needs no alignment but that of what will lie there. It must be freed while this
/// lives, and by the same thread; nothing is done then. Only one at a time.
class PlacedAllocation
{
public:
    PlacedAllocation(void* memory, std::size_t size) noexcept;
    PlacedAllocation(const PlacedAllocation&) = delete;
    PlacedAllocation& operator=(const PlacedAllocation&) = delete;
    ~PlacedAllocation();
};
