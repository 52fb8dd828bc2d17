#pragma once

#include <pthread.h>
#include <sys/mman.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <stdexcept>

/// The stack that every operation has to make do with, whatever the depth of the document.
inline constexpr std::size_t c_smallStackBytes = 256 * 1024;

/// Memory for a stack, above a page that must not be touched.
class StackMemory
{
public:
    /// `bytes` are whole pages.
    explicit StackMemory(std::size_t bytes)
        : m_bytes(bytes), m_guard(static_cast<char*>(mmap(nullptr, c_guardBytes + bytes, PROT_NONE,
                                                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        if (m_guard == MAP_FAILED)
            throw std::runtime_error("StackMemory: mmap failed");
        if (mprotect(GetLowest(), bytes, PROT_READ | PROT_WRITE) != 0)
            throw std::runtime_error("StackMemory: mprotect failed");
    }
    ~StackMemory() { munmap(m_guard, c_guardBytes + m_bytes); }
    StackMemory(const StackMemory&) = delete;
    StackMemory& operator=(const StackMemory&) = delete;

    void* GetLowest() const noexcept { return m_guard + c_guardBytes; }

private:
    static constexpr std::size_t c_guardBytes = 4096;

    std::size_t m_bytes;
    char* m_guard;
};

/// Runs `work` on a thread of its own with a stack of `stackBytes`, waits for its end and throws
/// on what it threw. Work that recurses on the depth of a deep document crashes there. The stack is
/// not one that the C library chooses: that may be the larger one of a thread before.
inline void RunOnSmallStack(const std::function<void()>& work,
                            std::size_t stackBytes = c_smallStackBytes)
{
    struct Job
    {
        const std::function<void()>& work;
        std::exception_ptr failure;
    };
    Job job{work, nullptr};

    const StackMemory stack(stackBytes);
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        throw std::runtime_error("RunOnSmallStack: pthread_attr_init failed");
    const auto body = [](void* argument) -> void* {
        auto* own = static_cast<Job*>(argument);
        try {
            own->work();
        } catch (...) {
            own->failure = std::current_exception();
        }
        return nullptr;
    };
    pthread_t thread{};
    const bool isStarted = pthread_attr_setstack(&attributes, stack.GetLowest(), stackBytes) == 0 &&
                           pthread_create(&thread, &attributes, body, &job) == 0;
    pthread_attr_destroy(&attributes);
    if (!isStarted)
        throw std::runtime_error("RunOnSmallStack: no thread with such a stack");
    pthread_join(thread, nullptr);
    if (job.failure)
        std::rethrow_exception(job.failure);
}
