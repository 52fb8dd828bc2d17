#pragma once

#include <cstddef>
#include <fstream>
#include <string>

#include <malloc.h>
#include <sys/resource.h>

/// What a piece of work takes of the process: time of the processor, without that of the system,
/// and memory at its peak, beyond what the process held before. 0 bytes where the system does not
/// tell.
class ProcessFigures
{
public:
    void Begin()
    {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << 5;
        m_memory = ReadPeak();
        m_milliseconds = ReadMilliseconds();
    }
    void End()
    {
        m_milliseconds = ReadMilliseconds() - m_milliseconds;
        const std::size_t peak = ReadPeak();
        m_memory = peak > m_memory ? peak - m_memory : 0;
    }

    // Of what lies between the two.

    long GetMilliseconds() const noexcept { return m_milliseconds; }
    /// In bytes.
    std::size_t GetMemory() const noexcept { return m_memory; }
    std::string Describe() const
    {
        return std::to_string(m_milliseconds) + " ms and " + std::to_string(m_memory >> 20) +
               " MiB";
    }

private:
    static long ReadMilliseconds()
    {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_utime.tv_sec * 1000 + usage.ru_utime.tv_usec / 1000;
    }
    static std::size_t ReadPeak()
    {
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            std::size_t kibibytes = 0;
            if (word == "VmHWM:" && status >> kibibytes)
                return kibibytes * 1024;
        }
        return 0;
    }

    long m_milliseconds = 0;
    std::size_t m_memory = 0;
};
