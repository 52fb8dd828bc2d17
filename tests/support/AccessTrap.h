#pragma once

#include <functional>
#include <string>

/// What a piece of work did to the world outside of its process.
struct AccessOutcome
{
    /// The system cannot watch it; nothing was run.
    bool isUnsupported = false;
    /// What was attempted first, with the label that was set then; empty for nothing.
    std::string access;
    /// The work came to its end without an exception.
    bool isFinished = false;
};

/// Runs `warmUp` and then `work` in a process of their own. The first attempt of `work` to open a
/// file, to make a socket or to run a program ends it. `work` gets a function that labels what it
/// does next; labels must live as long as the process. What either does to memory is lost.
AccessOutcome RunWatchingAccess(const std::function<void()>& warmUp,
                                const std::function<void(void (*label)(const char*))>& work);
