#include "direct/WideRun.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

using WideRun::Controls;

template <class Form, class Stop>
std::u16string CopyWith(const std::string& text, Stop stop, std::size_t room, std::size_t& stopped)
{
    // What may be written behind the units that count.
    std::vector<char16_t> units(room);
    char16_t* to = units.data();
    const char* const at =
        Form::Copy(text.data(), text.data() + text.size(), stop, to, units.data() + room);
    stopped = static_cast<std::size_t>(at - text.data());
    return {units.data(), to};
}

/// Texts of any bytes, most of which stop nothing.
std::string DrawText(std::mt19937& random)
{
    constexpr std::string_view c_odd("<&]'\"\r\n\t\0\x1F\x7F\x80\xFF", 13);
    std::string text(random() % 70, 'x');
    for (char& c : text) {
        if (random() % 20 == 0)
            c = c_odd[random() % c_odd.size()];
        else
            c = static_cast<char>('a' + random() % 26);
    }
    return text;
}

template <Controls controls>
void ExpectSameAsPortable()
{
    std::mt19937 random(20261122);
    const WideRun::Stops<controls> stops{'<', '&', ']'};
    for (int round = 0; round < 20000; ++round) {
        const std::string text = DrawText(random);
        const std::size_t room = random() % 2 == 0 ? 80 : random() % 80;
        std::size_t stopped = 0;
        std::size_t expectedStop = 0;
        const auto expected = CopyWith<WideRun::Portable>(text, stops, room, expectedStop);
        EXPECT_EQ(CopyWith<WideRun::Best>(text, stops, room, stopped), expected);
        EXPECT_EQ(stopped, expectedStop);
        const char* const end = text.data() + text.size();
        EXPECT_EQ(WideRun::Best::Skip(text.data(), end, stops),
                  WideRun::Portable::Skip(text.data(), end, stops));
    }
}

} // namespace

TEST(WideRun, IsTheSameSixteenBytesAtATimeAsOneAtATime)
{
    ExpectSameAsPortable<Controls::StopAll>();
    ExpectSameAsPortable<Controls::PassTabAndLineFeed>();
}

TEST(WideRun, PassesOverAsciiInStepsOfAnySize)
{
    for (std::size_t length = 0; length < 200; ++length) {
        const std::string ascii(length, '\x7F');
        const char* const end = ascii.data() + length;
        EXPECT_EQ(WideRun::Best::SkipAscii(ascii.data(), end), end);
        EXPECT_EQ(WideRun::Portable::SkipAscii(ascii.data(), end), end);
        for (std::size_t place = 0; place < length; ++place) {
            std::string text = ascii;
            text[place] = '\x80';
            text.back() = '\xFF';
            const char* const begin = text.data();
            EXPECT_EQ(WideRun::Best::SkipAscii(begin, begin + length), begin + place);
            EXPECT_EQ(WideRun::Portable::SkipAscii(begin, begin + length), begin + place);
        }
    }
}

TEST(WideRun, StopsAtWhatIsNamedAtControlCharactersAndBeyondAscii)
{
    const WideRun::Stops<Controls::StopAll> all{'a', 'b', 'c'};
    const WideRun::Stops<Controls::PassTabAndLineFeed> most{'a', 'b', 'c'};
    for (unsigned value = 0; value < 256; ++value) {
        const auto byte = static_cast<char>(value);
        const bool isNamed = byte == 'a' || byte == 'b' || byte == 'c';
        const bool isPlain = value >= 0x20 && value < 0x80 && !isNamed;
        EXPECT_EQ(all(byte), !isPlain) << value;
        EXPECT_EQ(most(byte), !isPlain && byte != '\t' && byte != '\n') << value;
        // At each place of a step.
        for (std::size_t place = 0; place < WideRun::c_step; ++place) {
            std::string text(WideRun::c_step * 2, 'x');
            text[place] = byte;
            const char* const end = text.data() + text.size();
            const std::size_t stopped = isPlain ? text.size() : place;
            EXPECT_EQ(WideRun::Skip(text.data(), end, all), text.data() + stopped);
        }
    }
}

TEST(WideRun, CopiesAsMuchAsThereIsRoomFor)
{
    const WideRun::Stops<Controls::StopAll> stops{'<', '<', '<'};
    const std::string text(100, 'x');
    for (std::size_t room = 0; room < 100; ++room) {
        std::size_t stopped = 0;
        EXPECT_EQ(CopyWith<WideRun::Best>(text, stops, room, stopped), std::u16string(room, u'x'));
        EXPECT_EQ(stopped, room);
    }
}
