#include "direct/Utf8Sequence.h"

#include <kesplatform/TString.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>

namespace {

bool IsCharacterOfXml(char32_t value)
{
    return value < 0xD800 || (value >= 0xE000 && value < 0xFFFE) || value >= 0x10000;
}

/// Nothing unless the whole text is one sequence.
char32_t ReadAll(const std::string& text)
{
    const char* at = text.c_str();
    const char32_t character = Utf8Sequence::Read(at);
    if (character == Utf8Sequence::c_invalid) {
        EXPECT_EQ(at, text.c_str());
    } else {
        EXPECT_EQ(at, text.c_str() + text.size());
    }
    return character;
}

} // namespace

TEST(Utf8Sequence, ReadsEveryCharacterBeyondAsciiButThoseThatEndLinesInOneVersionOnly)
{
    for (char32_t value = 0x80; value <= 0x10FFFF; ++value) {
        if (value >= 0xD800 && value < 0xE000)
            continue;
        char16_t units[2];
        const char16_t* const end = Utf8Sequence::Write(value, units);
        const TString text{std::u16string_view(units, static_cast<std::size_t>(end - units))};
        const bool isRead = IsCharacterOfXml(value) && value != 0x85 && value != 0x2028;
        ASSERT_EQ(ReadAll(text.toStdString()), isRead ? value : Utf8Sequence::c_invalid)
            << static_cast<std::uint32_t>(value);
    }
}

TEST(Utf8Sequence, RefusesWhatIsMalformed)
{
    for (const char* const text : {"\x80",
                                   "\xBF",
                                   "\xC0\x80",
                                   "\xC1\xBF",
                                   "\xC2",
                                   "\xC2x",
                                   "\xC3\xC3",
                                   "\xE0\x80\x80",
                                   "\xE0\x9F\xBF",
                                   "\xE1\x80",
                                   "\xE1x\x80",
                                   "\xE1\x80x",
                                   "\xED\xA0\x80",
                                   "\xED\xBF\xBF",
                                   "\xEF\xBF\xBE",
                                   "\xEF\xBF\xBF",
                                   "\xF0\x80\x80\x80",
                                   "\xF0\x8F\xBF\xBF",
                                   "\xF1\x80\x80",
                                   "\xF1x\x80\x80",
                                   "\xF1\x80x\x80",
                                   "\xF1\x80\x80x",
                                   "\xF4\x90\x80\x80",
                                   "\xF5\x80\x80\x80",
                                   "\xF8\x88\x80\x80\x80",
                                   "\xFE",
                                   "\xFF"})
        EXPECT_EQ(ReadAll(text), Utf8Sequence::c_invalid) << text;
}

TEST(Utf8Sequence, ReadsThreeBytesAtOnceAsItReadsThemOneByOne)
{
    for (unsigned lead = 0; lead < 0x100; ++lead) {
        for (unsigned second = 0x70; second < 0xD0; ++second) {
            for (const unsigned third : {0x00U, 0x7FU, 0x80U, 0x9FU, 0xA8U, 0xBFU, 0xC0U, 0xE0U}) {
                std::string text;
                for (const unsigned byte : {lead, second, third, 0U})
                    text.push_back(static_cast<char>(byte));
                const char16_t unit = Utf8Sequence::ReadThreeBytes(text.data());
                const char* at = text.data();
                const char32_t character = Utf8Sequence::Read(at);
                const bool isCommon = character >= 0x800 && character < 0xD800;
                ASSERT_EQ(char32_t{unit}, isCommon ? character : 0) << lead << ' ' << second;
            }
        }
    }
}

TEST(Utf8Sequence, CopiesCharactersOfThreeBytesAsItReadsThem)
{
    constexpr const char* c_pieces[] = {"\xE0\xB0\xA4",     "\xE0\xA0\x80", "\xED\x9F\xBF",
                                        "\xE1\x80\x80",     "\xE2\x80\xA7", "\xE0\x9F\xBF",
                                        "\xE2\x80\xA8",     "\xED\xA0\x80", "\xEE\x80\x80",
                                        "\xF0\x9F\x98\x80", "\xC3\xA9",     "x"};
    std::mt19937 random(20261122);
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        while (text.size() < 60)
            text += c_pieces[random() % 10 == 0 ? random() % std::size(c_pieces) : random() % 5];
        const std::size_t size = random() % text.size();
        const std::size_t room = random() % 20;
        const char* const end = text.data() + size;
        std::u16string expected;
        const char* at = text.data();
        while (expected.size() < room && end - at >= 4) {
            const char16_t unit = Utf8Sequence::ReadThreeBytes(at);
            if (unit == u'\0')
                break;
            expected += unit;
            at += 3;
        }
        std::array<char16_t, 20> units{};
        char16_t* to = units.data();
        EXPECT_EQ(Utf8Sequence::CopyThreeBytes(text.data(), end, to, to + room), at);
        EXPECT_EQ(std::u16string(units.data(), to), expected);
    }
}
