#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

/// Makes texts for tests that compare two ways to the same result. The same seed gives the same
/// texts everywhere.
class RandomText
{
public:
    explicit RandomText(unsigned seed) : m_engine(seed) {}

    /// A number from 0 to `maximum`.
    std::size_t Number(std::size_t maximum) { return m_engine() % (maximum + 1); }

    /// Up to `maximum` units out of `alphabet`.
    std::u16string Of(std::u16string_view alphabet, std::size_t maximum)
    {
        std::u16string text(Number(maximum), u' ');
        for (char16_t& unit : text)
            unit = alphabet[Number(alphabet.size() - 1)];
        return text;
    }

    /// Up to `maximum` units of every kind: runs of ASCII, zeros, Latin, Greek, Chinese, surrogate
    /// pairs, halves of pairs and the ends of the ranges.
    std::u16string Any(std::size_t maximum)
    {
        std::u16string text;
        const std::size_t length = Number(maximum);
        while (text.size() < length)
            AppendPiece(text);
        text.resize(length);
        return text;
    }

    /// Up to `maximum` bytes: well-formed and broken UTF-8 side by side.
    std::string Bytes(std::size_t maximum)
    {
        constexpr std::string_view c_bytes(
            "a<\0\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1"
            "\xED\xEF\xF0\xF1\xF4\xF5\xFF",
            23);
        std::string text;
        const std::size_t length = Number(maximum);
        while (text.size() < length) {
            if (Number(3) == 0)
                text.append(Number(40), 'x');
            else
                text += c_bytes[Number(c_bytes.size() - 1)];
        }
        text.resize(length);
        return text;
    }

private:
    void AppendPiece(std::u16string& text)
    {
        constexpr std::u16string_view c_ends(
            u"\0\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFEFF\uFFFE\uFFFF", 10);
        switch (Number(7)) {
        case 0:
            text += c_ends[Number(c_ends.size() - 1)];
            break;
        case 1:
            text += static_cast<char16_t>(0xD800 + Number(0x7FF));
            break;
        case 2:
            text += static_cast<char16_t>(0xD800 + Number(0x3FF));
            text += static_cast<char16_t>(0xDC00 + Number(0x3FF));
            break;
        case 3:
            text += static_cast<char16_t>(0x80 + Number(0x780));
            break;
        case 4:
            text += static_cast<char16_t>(0x4E00 + Number(0xFFF));
            break;
        default:
            for (std::size_t count = Number(40); count > 0; --count)
                text += static_cast<char16_t>(' ' + Number(94));
        }
    }

    std::mt19937 m_engine;
};
