#include "base/ByteScan.h"

#include "support/GuardedString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace {

using ByteScan::c_npos;

/// Units between pages that must not be read.
template <class Unit>
class GuardedUnits
{
public:
    explicit GuardedUnits(std::basic_string_view<Unit> units)
        : m_bytes(units.size() * sizeof(Unit), GuardedBytes::Place::End), m_size(units.size())
    {
        std::memcpy(m_bytes.Get(), units.data(), units.size() * sizeof(Unit));
    }

    Unit* Data() noexcept { return reinterpret_cast<Unit*>(m_bytes.Get()); }
    std::basic_string_view<Unit> View() noexcept { return {Data(), m_size}; }

private:
    GuardedBytes m_bytes;
    std::size_t m_size;
};

/// A pair and two others; those of two bytes have a byte in common with each of the pair.
template <class Unit>
std::vector<Unit> MakeAlphabet()
{
    if constexpr (std::is_same_v<Unit, char>)
        return {'<', '>', 'v', '\xFF'};
    else
        return {u'<', u'>', u'v', u'\x3C3E'};
}

template <class Unit>
class ByteScanOf : public testing::Test
{
};

using Units = testing::Types<char, char16_t>;
TYPED_TEST_SUITE(ByteScanOf, Units);

TYPED_TEST(ByteScanOf, FindsEachPatternAtEveryPlaceUpToTheLastUnit)
{
    using Unit = TypeParam;
    const std::vector<Unit> units = MakeAlphabet<Unit>();
    const ByteScan::One<Unit> one{units[0]};
    for (std::size_t size = 1; size < 170; ++size) {
        for (std::size_t pos = 0; pos < size; ++pos) {
            std::basic_string<Unit> text(size, units[2]);
            text[pos] = units[0];
            GuardedUnits<Unit> guarded(text);
            ASSERT_EQ(ByteScan::FindFirst(guarded.Data(), 0, size, one), pos) << size;
            ASSERT_EQ(ByteScan::FindFirst(guarded.Data(), 0, pos, one), c_npos) << size;
            ASSERT_EQ(ByteScan::FindFirst(guarded.Data(), pos + 1, size, one), c_npos) << size;
        }
    }
}

TYPED_TEST(ByteScanOf, FindsPairsAsOneByOne)
{
    using Unit = TypeParam;
    const std::vector<Unit> units = MakeAlphabet<Unit>();
    for (const std::size_t distance : {0U, 1U, 2U, 9U, 70U}) {
        const ByteScan::UnitPair<Unit> pair{units[0], units[distance == 0 ? 0 : 1], distance};
        for (std::size_t size = 1; size < 300; size += size < 80 ? 1 : 7) {
            for (std::size_t pos = 0; pos < size; pos += 3) {
                std::basic_string<Unit> text(size + distance, units[3]);
                text[pos] = pair.first;
                text[pos + distance] = pair.second;
                // Halves of a pair here and there.
                for (std::size_t i = 5; i < pos; i += 11)
                    text[i] = units[i % 2];
                GuardedUnits<Unit> guarded(text);
                ASSERT_EQ(ByteScan::FindFirst(guarded.Data(), 0, size, pair),
                          ByteScan::FindFirstPortably(guarded.Data(), 0, size, pair))
                    << size << ' ' << pos << ' ' << distance;
                ASSERT_LE(ByteScan::FindFirstPortably(guarded.Data(), 0, size, pair), pos);
            }
        }
    }
}

#if defined(__SSE2__)

TYPED_TEST(ByteScanOf, SkipsTheSameStretchesWithEveryInstructionSet)
{
    using Unit = TypeParam;
    using UnitPair = ByteScan::UnitPair<Unit>;
    constexpr std::size_t c_stretch = 64 / sizeof(Unit);
    const std::vector<Unit> units = MakeAlphabet<Unit>();
    const UnitPair pair{units[0], units[1], 9};
    for (std::size_t pos = 0; pos < 6 * c_stretch; ++pos) {
        std::basic_string<Unit> text(5 * c_stretch + 20, units[2]);
        const std::size_t end = text.size() - pair.distance;
        const std::size_t from = pos % 7;
        text[0] = pair.second;
        // A place behind the end stands for none.
        if (pos >= from && pos < end) {
            text[pos] = pair.first;
            text[pos + pair.distance] = pair.second;
        }
        GuardedUnits<Unit> guarded(text);
        const std::size_t match = std::min(pos >= from ? pos : end, end);
        const std::size_t stretches =
            std::min((match - from) / c_stretch, (end - from) / c_stretch);
        const std::size_t expected = from + stretches * c_stretch;
        const auto narrow = ByteScan::SkipStretches<Unit, UnitPair>;
        EXPECT_EQ(narrow(guarded.Data(), from, end, pair), expected) << pos;
        EXPECT_EQ(ByteScan::SkipStretches(guarded.Data(), from, end, pair), expected) << pos;
#if defined(__GNUC__)
        if (ByteScan::HasAvx2()) {
            EXPECT_EQ(ByteScan::SkipStretchesWithAvx2(guarded.Data(), from, end, pair), expected)
                << pos;
        }
#endif
    }
}

#endif

TYPED_TEST(ByteScanOf, FindsTextsOfEveryLengthAtTheEnd)
{
    using Unit = TypeParam;
    const std::vector<Unit> units = MakeAlphabet<Unit>();
    const auto never = [](auto, auto, std::size_t) {
        ADD_FAILURE() << "asked for patience";
        return c_npos;
    };
    for (std::size_t length = 1; length < 40; ++length) {
        std::basic_string<Unit> sub(length, units[2]);
        sub.front() = units[0];
        sub.back() = units[1];
        for (std::size_t changed = 1; changed <= length; ++changed) {
            // The same but for one unit between the ends, and behind it, at the end, the text.
            std::basic_string<Unit> other = sub;
            if (changed + 1 < length)
                other[changed] = units[3];
            const bool isOther = other != sub;
            GuardedUnits<Unit> text(std::basic_string_view<Unit>(other + sub));
            ASSERT_EQ(ByteScan::FindText<Unit>(text.View(), sub, 0, never), isOther ? length : 0)
                << changed;
        }
    }
}

TEST(ByteScan, FindsAByteThatComesSoonOrLate)
{
    for (std::size_t size = 0; size < 80; ++size) {
        for (std::size_t pos = 0; pos <= size; ++pos) {
            std::string text(size, 'a');
            text.insert(pos, 1, '<');
            GuardedUnits<char> guarded(text);
            for (std::size_t from = 0; from <= text.size() + 1; ++from)
                ASSERT_EQ(ByteScan::FindByteSoon(guarded.View(), '<', from), text.find('<', from));
        }
    }
}

} // namespace
