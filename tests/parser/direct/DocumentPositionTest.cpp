#include "direct/DocumentPosition.h"

#include "support/GuardedString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

namespace {

struct Place
{
    int line;
    int column;

    bool operator==(const Place&) const = default;
};

/// Character by character.
Place CountSlowly(const std::string& text, std::size_t end)
{
    Place place{1, 1};
    for (std::size_t i = 0; i < end; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte == '\r' && text[i + 1] == '\n')
            continue;
        if (byte == '\n' || byte == '\r')
            place = {place.line + 1, 1};
        else if (byte < 0x80 || byte >= 0xC0)
            place.column += byte >= 0xF0 ? 2 : 1;
    }
    return place;
}

Place Get(const DocumentPosition& position)
{
    return {position.GetLine(), position.GetColumn()};
}

} // namespace

TEST(DocumentPosition, BeginsAtLineOneColumnOne)
{
    DocumentPosition position;
    const std::string text = "<a/>";
    position.Begin(text.data(), text.data() + text.size());
    EXPECT_EQ(Get(position), (Place{1, 1}));
}

TEST(DocumentPosition, CountsLinesAndUnitsInStepsOfAnySize)
{
    constexpr std::array<const char*, 15> c_pieces{
        "x",
        "y",
        "z",
        " ",
        "\n",
        "\r",
        "\r\n",
        "\xC3\xA9",
        "\xE0\xB0\xA4",
        "\xF0\x9F\x98\x80",
        "\t",
        "\xEF\xBF\xBD",
        "\xF4\x8F\xBF\xBD",
        "sixteen bytes and",
        "a long line without an end, so to say, of sixty-four bytes or more"};
    std::mt19937 random(20261122);
    for (int round = 0; round < 500; ++round) {
        std::string text;
        std::vector<std::size_t> ends;
        while (text.size() < 400) {
            text += c_pieces[random() % c_pieces.size()];
            ends.push_back(text.size());
        }
        DocumentPosition position;
        position.Begin(text.data(), text.data() + text.size());
        for (std::size_t i = 0; i < ends.size(); i += 1 + random() % 30) {
            // Never between the halves of a line end.
            if (text[ends[i] - 1] == '\r' && text[ends[i]] == '\n')
                continue;
            position.MoveTo(text.data() + ends[i]);
            ASSERT_EQ(Get(position), CountSlowly(text, ends[i]));
        }
    }
}

TEST(DocumentPosition, CountsTheSameInOneLongStep)
{
    constexpr std::array<const char*, 8> c_pieces{
        "x", "a word ", "\n", "\r", "\r\n", "\xC3\xA9", "\xE0\xB0\xA4", "\xF0\x9F\x98\x80"};
    std::mt19937 random(20261122);
    for (int round = 0; round < 100; ++round) {
        // Some have few lines, or one.
        const std::size_t kinds = round % 3 == 0 ? 2 : c_pieces.size();
        std::string text;
        while (text.size() < 5000 + random() % 3000)
            text += c_pieces[random() % 200 == 0 ? random() % c_pieces.size() : random() % kinds];
        text += 'x';
        DocumentPosition position;
        position.Begin(text.data(), text.data() + text.size());
        position.MoveTo(text.data() + text.size());
        ASSERT_EQ(Get(position), CountSlowly(text, text.size()));
    }
}

TEST(DocumentPosition, StaysWhereItIs)
{
    const std::string text = "a\nb<";
    DocumentPosition position;
    position.Begin(text.data(), text.data() + text.size());
    position.MoveTo(text.data() + 3);
    position.MoveTo(text.data() + 3);
    EXPECT_EQ(Get(position), (Place{2, 2}));
}

TEST(DocumentPosition, ReadsNothingBehindTheByteThatEndsTheDocument)
{
    for (std::size_t length = 0; length < 200; ++length) {
        const std::string text = std::string(length, 'x') + "\n\xC3\xA9y";
        const GuardedBytes guarded(text.size() + 1, GuardedBytes::Place::End);
        const char* const begin = std::copy(text.begin(), text.end(), guarded.Get()) - text.size();
        for (const std::size_t step : {1U, 15U, 16U, 17U, 64U, 300U}) {
            DocumentPosition position;
            position.Begin(begin, begin + text.size());
            for (std::size_t at = 0; at < length; at += step)
                position.MoveTo(begin + at);
            position.MoveTo(begin + text.size());
            ASSERT_EQ(Get(position), (Place{2, 3}));
        }
    }
}
