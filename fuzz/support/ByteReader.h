#pragma once

#include <kesplatform/TString.h>

#include <cstddef>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

/// Makes choices and texts out of the bytes of a fuzzer, from front to back. At their end every
/// choice is the first one and every text is empty.
class ByteReader
{
public:
    explicit ByteReader(std::span<const unsigned char> bytes) noexcept : m_bytes(bytes) {}

    bool IsAtEnd() const noexcept { return m_bytes.empty(); }

    unsigned char Byte() noexcept
    {
        if (m_bytes.empty())
            return 0;
        const unsigned char byte = m_bytes.front();
        m_bytes = m_bytes.subspan(1);
        return byte;
    }

    /// From 0 to `end` - 1; one byte chooses, so beyond 256 not every number comes up.
    std::size_t Below(std::size_t end) noexcept { return Byte() % end; }

    /// A position of up to 65535.
    std::size_t Position() noexcept
    {
        const std::size_t high = Byte();
        return high << 8 | Byte();
    }

    template <typename Choices>
    const auto& Pick(const Choices& choices) noexcept
    {
        return choices[Below(std::size(choices))];
    }

    /// Up to 255 UTF-16 units without halves of surrogate pairs: a length, then ASCII as it is and
    /// for other bytes characters that need care.
    TString Text()
    {
        static constexpr std::u16string_view c_others =
            u"\u0080\u0081\u0085\u00A0\u00E9\u2028\u20AC\u3042\uD7FF\uE000\uFEFF\uFFFD\uFFFE\uFFFF";
        std::u16string text;
        for (std::size_t count = Byte(); count > 0 && !IsAtEnd(); --count) {
            const unsigned char byte = Byte();
            if (byte < 0x80)
                text += static_cast<char16_t>(byte);
            else if (byte == 0xFF)
                text += u"\U0001F600";
            else
                text += c_others[byte % c_others.size()];
        }
        return TString(text);
    }

    std::string Rest()
    {
        const std::string rest(m_bytes.begin(), m_bytes.end());
        m_bytes = {};
        return rest;
    }

private:
    std::span<const unsigned char> m_bytes;
};
