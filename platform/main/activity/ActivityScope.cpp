#include <kesplatform/ActivityScope.h>

#include "../core/SinkSlot.h"

#include <chrono>

#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
#include <malloc.h>
#define KESPLATFORM_HAS_MALLINFO2
#endif

namespace {

constinit SinkSlot<art::ActivitySink> s_slot;

std::int64_t Now() noexcept
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Bytes in use, those of large blocks, which have mappings of their own, included. 0 where the
/// system library does not count.
std::int64_t AllocatedMemory() noexcept
{
#ifdef KESPLATFORM_HAS_MALLINFO2
    const struct mallinfo2 info = mallinfo2();
    return static_cast<std::int64_t>(info.uordblks) + static_cast<std::int64_t>(info.hblkhd);
#else
    return 0;
#endif
}

} // namespace

art::ActivitySink::~ActivitySink() = default;

void art::SetActivitySink(std::shared_ptr<ActivitySink> sink)
{
    s_slot.Set(std::move(sink));
}

art::ActivityScope::ActivityScope(std::string_view name) noexcept : m_sink(s_slot.Get())
{
    if (IsClosed())
        return;
    m_record.name = name;
    m_memoryAtStart = AllocatedMemory();
    m_start = Now();
}

art::ActivityScope::~ActivityScope()
{
    if (IsClosed())
        return;
    m_record.nanoseconds = Now() - m_start;
    m_record.memoryUsed = AllocatedMemory() - m_memoryAtStart;
    try {
        m_sink->ActivityFinished(m_record);
    } catch (...) { // NOLINT(bugprone-empty-catch): a failing receiver must not change what it sees
    }
}

void art::ActivityScope::AddAttribute(const TString& key, const TString& value)
{
    if (!IsClosed())
        m_record.attributes.emplace_back(key, value);
}

void art::ActivityScope::AddAttribute(const TString& key, std::int64_t value)
{
    if (!IsClosed())
        m_record.attributes.emplace_back(key, TString::number(value));
}
