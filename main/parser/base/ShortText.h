#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Comparing and copying texts that are short as a rule, such as names and values, where a call of
/// the C library would cost more than the work.
namespace ShortText {

template <typename Word>
Word Load(const void* from) noexcept
{
    Word word;
    std::memcpy(&word, from, sizeof(word));
    return word;
}

/// Whether so many bytes are the same.
inline bool Equals(const char* a, const char* b, std::size_t count) noexcept
{
    if (count >= 8) {
        // The last step overlaps the one before it.
        const std::size_t last = count - 8;
        for (std::size_t at = 0; at < last; at += 8) {
            if (Load<std::uint64_t>(a + at) != Load<std::uint64_t>(b + at))
                return false;
        }
        return Load<std::uint64_t>(a + last) == Load<std::uint64_t>(b + last);
    }
    if (count >= 4) {
        return Load<std::uint32_t>(a) == Load<std::uint32_t>(b) &&
               Load<std::uint32_t>(a + count - 4) == Load<std::uint32_t>(b + count - 4);
    }
    for (std::size_t at = 0; at < count; ++at) {
        if (a[at] != b[at])
            return false;
    }
    return true;
}

/// Whether `text` stands at `at`, before `end`.
inline bool StandsAt(const char* at, const char* end, std::string_view text) noexcept
{
    return static_cast<std::size_t>(end - at) >= text.size() &&
           Equals(at, text.data(), text.size());
}

/// Copies so many units to where they do not overlap.
inline void Copy(const char16_t* from, char16_t* to, std::size_t count) noexcept
{
    constexpr std::size_t c_step = 8;
    constexpr std::size_t c_long = 64;
    if (count >= c_long) {
        std::memcpy(to, from, count * sizeof(char16_t));
        return;
    }
    const auto copy = [&]<std::size_t units>(std::size_t at) {
        std::memcpy(to + at, from + at, units * sizeof(char16_t));
    };
    if (count >= c_step) {
        for (std::size_t at = 0; at < count - c_step; at += c_step)
            copy.template operator()<c_step>(at);
        copy.template operator()<c_step>(count - c_step);
    } else if (count >= 4) {
        copy.template operator()<4>(0);
        copy.template operator()<4>(count - 4);
    } else {
        for (std::size_t at = 0; at < count; ++at)
            to[at] = from[at];
    }
}

} // namespace ShortText
