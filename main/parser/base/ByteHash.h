#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// A hash for short texts, such as names, of which documents hold many: what counts is that there
/// is little to do before and after the loop. Who does not know the seed cannot choose texts that
/// collide, for each step multiplies by a number made of it.
namespace ByteHash {

/// Both halves of the product of two numbers, folded into one.
inline std::uint64_t MultiplyFolded(std::uint64_t a, std::uint64_t b) noexcept
{
#if defined(__SIZEOF_INT128__)
    __extension__ using Product = unsigned __int128;
    const Product product = static_cast<Product>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
    const std::uint64_t low = (a & 0xFFFFFFFF) * (b & 0xFFFFFFFF);
    const std::uint64_t middle1 = (a >> 32) * (b & 0xFFFFFFFF) + (low >> 32);
    const std::uint64_t middle2 = (a & 0xFFFFFFFF) * (b >> 32) + (middle1 & 0xFFFFFFFF);
    const std::uint64_t high = (a >> 32) * (b >> 32) + (middle1 >> 32) + (middle2 >> 32);
    return (a * b) ^ high;
#endif
}

/// What a hash begins with; made of a number that nobody outside of the process knows.
class Seed
{
public:
    explicit Seed(std::uint64_t secret) noexcept
        : m_start(MultiplyFolded(secret ^ 0x9E3779B97F4A7C15U, 0xD6E8FEB86659FD93U)),
          m_factor(MultiplyFolded(secret ^ 0xA0761D6478BD642FU, 0xE7037ED1A0B428DBU) | 1)
    {
    }

    std::uint32_t Hash(const void* text, std::size_t count) const noexcept
    {
        const auto* bytes = static_cast<const unsigned char*>(text);
        std::uint64_t hash = MultiplyFolded(m_start ^ count, m_factor);
        for (; count >= 8; count -= 8, bytes += 8) {
            std::uint64_t word;
            std::memcpy(&word, bytes, 8);
            hash = MultiplyFolded(hash ^ word, m_factor);
        }
        return static_cast<std::uint32_t>(MultiplyFolded(hash ^ ReadRest(bytes, count), m_factor));
    }

private:
    /// Fewer than eight bytes as a number.
    static std::uint64_t ReadRest(const unsigned char* bytes, std::size_t count) noexcept
    {
        if (count >= 4) {
            std::uint32_t first;
            std::uint32_t last;
            std::memcpy(&first, bytes, 4);
            std::memcpy(&last, bytes + count - 4, 4);
            return std::uint64_t{last} << 32 | first;
        }
        if (count == 0)
            return 0;
        return bytes[0] | std::uint64_t{bytes[count / 2]} << 8 |
               std::uint64_t{bytes[count - 1]} << 16;
    }

    std::uint64_t m_start;
    std::uint64_t m_factor;
};

} // namespace ByteHash
