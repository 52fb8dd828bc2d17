#include <kesplatform/TScanString.h>

#include <kesplatform/TCType.h>

#include "support/GuardedString.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>

TEST(TCType, KnowsSixUnitsOfWhiteSpace)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const bool expected = (unit >= 9 && unit <= 13) || unit == 32;
        ASSERT_EQ(expected, TCType::isSpace(static_cast<char16_t>(unit))) << unit;
    }
}

TEST(TScanString, SkipsToTheFirstUnitThatIsText)
{
    EXPECT_EQ(0U, TScanString::skipWhitespace(u"a b"));
    EXPECT_EQ(6U, TScanString::skipWhitespace(u" \t\n\v\f\ra b"));
    EXPECT_EQ(1U, TScanString::skipWhitespace(u" \u00A0"));
    EXPECT_EQ(2U, TScanString::skipWhitespace(u"a b", 1));
    EXPECT_EQ(0U, TScanString::skipWhitespace(std::u16string_view(u"\0 ", 2)));
}

TEST(TScanString, GivesTheLengthWhereThereIsOnlyWhiteSpace)
{
    EXPECT_EQ(0U, TScanString::skipWhitespace(u""));
    EXPECT_EQ(3U, TScanString::skipWhitespace(u" \n "));
    EXPECT_EQ(3U, TScanString::skipWhitespace(u"abc", 3));
    EXPECT_EQ(3U, TScanString::skipWhitespace(u"abc", 99));
}

TEST(TScanString, ReadsNothingBehindTheText)
{
    const std::u16string blanks(5, u' ');
    const GuardedBytes bytes(blanks.size() * sizeof(char16_t), GuardedBytes::Place::End);
    std::memcpy(bytes.Get(), blanks.data(), blanks.size() * sizeof(char16_t));
    const std::u16string_view text(reinterpret_cast<const char16_t*>(bytes.Get()), blanks.size());
    EXPECT_EQ(5U, TScanString::skipWhitespace(text));
    EXPECT_EQ(5U, TScanString::skipWhitespace(text, 5));
}
