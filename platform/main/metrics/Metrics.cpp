#include <kesplatform/Metrics.h>

#include "../core/SinkSlot.h"

#include <chrono>

namespace {

constinit SinkSlot<Metrics::Sink> s_slot;

std::int64_t Now() noexcept
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// A receiver that fails must not change what is measured.
template <typename Report>
void Deliver(const Report& report) noexcept
{
    try {
        report();
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace

Metrics::Sink::~Sink() = default;

void Metrics::SetSink(std::shared_ptr<Sink> sink)
{
    s_slot.Set(std::move(sink));
}

Metrics::Scope::Scope(std::string_view name, std::uint64_t flags) noexcept
    : m_sink(s_slot.Get()), m_name(name)
{
    if (!IsOpen())
        return;
    Deliver([&] { m_sink->ScopeOpened(m_name, flags); });
    m_start = Now();
}

Metrics::Scope::~Scope()
{
    if (!IsOpen())
        return;
    const std::int64_t elapsed = Now() - m_start;
    Deliver([&] { m_sink->ScopeClosed(m_name, elapsed); });
}

void Metrics::Scope::Emit(std::string_view key, std::int64_t value) const noexcept
{
    if (IsOpen())
        Deliver([&] { m_sink->ValueEmitted(m_name, key, value); });
}

void Metrics::Scope::Emit(std::string_view key, std::string_view bytes) const noexcept
{
    if (IsOpen())
        Deliver([&] { m_sink->BytesEmitted(m_name, key, bytes); });
}
