#pragma once

#include <mutex>

/// Runs a function once, whichever thread comes first; the others wait for it. A function that
/// throws has not run, and the next caller tries again.
/// Safe to use from several threads.
class InitOnce
{
public:
    /// Runs `function` unless it, or another one given here, has run to its end. Others wait
    /// meanwhile. What it throws leaves it to be run by a later call.
    template <typename Function>
    void Run(Function&& function)
    {
        std::call_once(m_flag, static_cast<Function&&>(function));
    }

private:
    std::once_flag m_flag;
};
