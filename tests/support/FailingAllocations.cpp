#include "support/FailingAllocations.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KESCOREXML_TESTS_OWN_HEAP 0
#endif
#endif

#ifdef KESCOREXML_TESTS_OWN_HEAP
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
#define KESCOREXML_TESTS_OWN_HEAP 0
#else
#define KESCOREXML_TESTS_OWN_HEAP 1
#endif

namespace {

constexpr std::size_t c_unlimited = std::numeric_limits<std::size_t>::max();

thread_local std::size_t s_allowed = c_unlimited;
thread_local std::size_t s_failures = 0;
thread_local bool s_hasFailed = false;
std::atomic<std::size_t> s_failed = 0;
thread_local std::ptrdiff_t s_live = 0;

/// What PlacedAllocation hands over.
thread_local void* s_placed = nullptr;
/// 0 once it was given to somebody.
thread_local std::size_t s_placedSize = 0;

void* TakePlaced(std::size_t size) noexcept
{
    if (size != s_placedSize || size == 0)
        return nullptr;
    s_placedSize = 0;
    return s_placed;
}

/// Whether the next allocation is to succeed.
bool Allow() noexcept
{
    if (s_allowed == c_unlimited)
        return true;
    if (s_allowed > 0) {
        --s_allowed;
        return true;
    }
    if (s_failures == 0)
        return true;
    --s_failures;
    s_hasFailed = true;
    ++s_failed;
    return false;
}

} // namespace

FailingAllocations::FailingAllocations(std::size_t allowed, std::size_t failures) noexcept
{
    s_hasFailed = false;
    s_failures = failures;
    s_allowed = allowed;
}

FailingAllocations::~FailingAllocations()
{
    s_allowed = c_unlimited;
}

bool FailingAllocations::HasFailed() noexcept
{
    return s_hasFailed;
}

std::size_t CountFailedAllocations() noexcept
{
    return s_failed;
}

std::ptrdiff_t CountLiveAllocations() noexcept
{
    return s_live;
}

PlacedAllocation::PlacedAllocation(void* memory, std::size_t size) noexcept
{
    s_placed = memory;
    s_placedSize = size;
}

PlacedAllocation::~PlacedAllocation()
{
    s_placed = nullptr;
    s_placedSize = 0;
}

#if KESCOREXML_TESTS_OWN_HEAP

// The C library's own heap under its other names.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);

void* malloc(std::size_t size) noexcept
{
    if (void* placed = TakePlaced(size))
        return placed;
    void* memory = Allow() ? __libc_malloc(size) : nullptr;
    s_live += memory != nullptr ? 1 : 0;
    return memory;
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    void* memory = Allow() ? __libc_calloc(count, size) : nullptr;
    s_live += memory != nullptr ? 1 : 0;
    return memory;
}

void* realloc(void* old, std::size_t size) noexcept
{
    void* memory = Allow() ? __libc_realloc(old, size) : nullptr;
    s_live += old == nullptr && memory != nullptr ? 1 : 0;
    return memory;
}

void free(void* memory) noexcept
{
    if (memory != nullptr && memory == s_placed)
        return;
    s_live -= memory != nullptr ? 1 : 0;
    __libc_free(memory);
}
}

#else

void* operator new(std::size_t size)
{
    if (void* placed = TakePlaced(size))
        return placed;
    void* memory = Allow() ? std::malloc(size == 0 ? 1 : size) : nullptr;
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

// The sanitizer's own would not call the one above. A test may have one of its own.
[[gnu::weak]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allow() ? std::malloc(size == 0 ? 1 : size) : nullptr;
}

void operator delete(void* memory) noexcept
{
    if (memory == nullptr || memory != s_placed)
        std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}

#endif
