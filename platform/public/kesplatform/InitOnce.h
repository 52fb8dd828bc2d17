#pragma once

#include <mutex>

/// Runs a function once, whichever thread comes first; the others wait for it. A function that
/// throws has not run, and the next caller tries again.
/// Safe to use from several threads.
class InitOnce
{
public:
    template <typename Function>
    void Run(Function&& function)
    {
        std::call_once(m_flag, static_cast<Function&&>(function));
    }

private:
    std::once_flag m_flag;
};
