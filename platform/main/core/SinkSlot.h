#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

/// The place where a process keeps the one receiver of its measurements. Asking for it costs one
/// atomic load while there is none. Meant for static storage, where it is ready before any
/// constructor runs. Safe to use from several threads.
template <typename Sink>
class SinkSlot
{
public:
    constexpr SinkSlot() noexcept = default;
    SinkSlot(const SinkSlot&) = delete;
    SinkSlot& operator=(const SinkSlot&) = delete;
    /// Scopes that other static objects open in their destructors find no sink.
    ~SinkSlot() { Set(nullptr); }
    std::shared_ptr<Sink> Get() const noexcept
    {
        if (!m_filled.load(std::memory_order_relaxed))
            return nullptr;
        const std::lock_guard lock(m_mutex);
        return m_sink;
    }

    /// A sink that nobody uses any more ends here, on the calling thread and without the lock, so
    /// that its destructor may use the slot.
    void Set(std::shared_ptr<Sink> sink) noexcept
    {
        const std::lock_guard lock(m_mutex);
        m_filled.store(sink != nullptr, std::memory_order_relaxed);
        m_sink.swap(sink);
    }

private:
    std::atomic<bool> m_filled{false};
    mutable std::mutex m_mutex;
    std::shared_ptr<Sink> m_sink;
};
