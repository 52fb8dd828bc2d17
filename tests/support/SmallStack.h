#pragma once

#include <pthread.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <stdexcept>

/// The stack that every operation has to make do with, whatever the depth of the document.
inline constexpr std::size_t c_smallStackBytes = 256 * 1024;

/// Runs `work` on a thread of its own with a stack of `stackBytes`, waits for its end and throws
/// on what it threw. Work that recurses on the depth of a deep document crashes there.
inline void RunOnSmallStack(const std::function<void()>& work,
                            std::size_t stackBytes = c_smallStackBytes)
{
    struct Job
    {
        const std::function<void()>& work;
        std::exception_ptr failure;
    };
    Job job{work, nullptr};

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
    const bool isStarted = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                           pthread_create(&thread, &attributes, body, &job) == 0;
    pthread_attr_destroy(&attributes);
    if (!isStarted)
        throw std::runtime_error("RunOnSmallStack: no thread with such a stack");
    pthread_join(thread, nullptr);
    if (job.failure)
        std::rethrow_exception(job.failure);
}
