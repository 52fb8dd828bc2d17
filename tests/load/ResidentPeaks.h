#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <fstream>
#include <vector>

#include <unistd.h>

/// The most memory that the process has held in each of ten parts of its run.
class ResidentPeaks
{
public:
    static constexpr std::size_t c_parts = 10;

    /// Looks now; `part` counts from 0.
    void Look(std::size_t part)
    {
        m_peaks[std::min(part, c_parts - 1)] =
            std::max(m_peaks[std::min(part, c_parts - 1)], ReadResident());
    }
    /// In bytes.
    const std::vector<std::size_t>& Get() const noexcept { return m_peaks; }
    /// Whether the last part took no more than the second one; a tenth and 16 MiB are noise.
    bool AreFlat() const noexcept
    {
        constexpr std::size_t c_noise = 16 << 20;
        return m_peaks.back() <= m_peaks[1] + m_peaks[1] / 10 + c_noise;
    }

private:
    static std::size_t ReadResident()
    {
        std::ifstream file("/proc/self/statm");
        std::size_t pages = 0;
        file >> pages >> pages;
        return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    }

    std::vector<std::size_t> m_peaks = std::vector<std::size_t>(c_parts);
};
