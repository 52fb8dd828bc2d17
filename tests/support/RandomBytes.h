#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// 8-bit texts and numbers from a fixed seed.
class RandomBytes
{
public:
    explicit RandomBytes(unsigned seed) : m_random(seed) {}

    /// From 0 to `end` - 1.
    std::size_t Below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random);
    }

    /// Up to `maxParts` of `parts`, one behind the other.
    std::string Join(const std::vector<std::string_view>& parts, std::size_t maxParts)
    {
        std::string text;
        for (std::size_t count = Below(maxParts + 1); count > 0; --count)
            text += parts[Below(parts.size())];
        return text;
    }

    /// Up to `maxLength` bytes of `alphabet`.
    std::string Of(std::string_view alphabet, std::size_t maxLength)
    {
        std::string text(Below(maxLength + 1), '\0');
        for (char& c : text)
            c = alphabet[Below(alphabet.size())];
        return text;
    }

private:
    std::mt19937 m_random;
};
